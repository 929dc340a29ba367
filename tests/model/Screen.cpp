// The elements of the skin, the title and the settings that show at once.
#include <algorithm>
#include <cstdint>

#include "tests/model/Model.h"

namespace model {

namespace {

constexpr Place kInfoPlace = {1010, 20, 1060, 30};
constexpr Place kLabelPlace = {10, 40, 60, 60};
constexpr Place kSmallTogglePlace = {700, 400, 710, 410};
constexpr int kToolIds[] = {20, 21, 22, 23};

} // namespace

// What the test's skin gives.
void Model::ResetElements() {
    elements = {};
    for (const int id : {9, 42, 43, 49, 50})
        At(id).shown = false;
    At(10).state = At(23).state = 2;
    At(26).state = At(27).state = toggleOn ? 0 : 2;
    info = kInfoPlace;
    labels = kLabelPlace;
    smallToggle = kSmallTogglePlace;
    level = -1;
}

void Model::Theme() {
    ResetElements();
    mask.assign(kRows, '\1');
}

void Model::ShowControls(int show) {
    BaseShowControls(show);
    if (show == 0)
        return;
    if (minimized)
        ShowToolButtons(false);
    else
        At(26).shown = false;
}

void Model::ShowToolButtons(bool show) {
    At(2).shown = show;
    for (const int id : kToolIds)
        At(id).shown = show;
}

void Model::ShowBackground(bool show) {
    At(42).shown = show;
}

void Model::ShowInfo(const std::string* text) {
    At(43).shown = text != nullptr;
    if (text != nullptr)
        At(43).text = *text;
}

void Model::ShowInfoText(int id) {
    const std::string text = Text(id);
    ShowInfo(&text);
}

std::string Model::ChannelName(unsigned frequency) const {
    for (int row = 0; row < kRows; ++row)
        if (FrequencyOf(row) == frequency)
            return "[CH" + std::to_string(7 + row / 3) + "]";
    return "[" + std::to_string(static_cast<std::int32_t>(frequency)) + "]";
}

void Model::ShowChannelLabel(int index, bool useIndex) {
    std::string text;
    if (current >= 0 && fileIndex < 0) {
        const auto position = static_cast<std::size_t>(std::max(useIndex ? index : current, 0));
        if (position < list.size())
            text = ChannelName(list[position].frequency) + " " + list[position].label;
    }
    if (!minimized)
        ShowControls(1);
    SetTitle(text);
}

// ---- The small window ----------------------------------------------------------------------------------------------------

void Model::FitTo(long width, long height) {
    info.top = height - 86;
    info.bottom = height - 54;
    info.right = width;
    if (noSignal && At(43).shown && current >= 0)
        At(43).text = Text(width < 458 ? 1012 : 1008);
    labels = width == 800 || height == 480 ? kLabelPlace : Place{10, 68, width - 10, height - 68};
}

void Model::RestoreFrom(bool storedObject) {
    if (!storedObject)
        dirty = true;
    At(26).shown = false;
    At(24).face = At(25).face = 0;
    if (!toggleOn)
        ShowToolButtons(true);
    if (CurrentType() == kRadioType)
        ShowBackground(true);
    At(27).face = CurrentType() != kRadioType ? 1 : 0;
    if (!fullInfo.Empty())
        info = fullInfo;
    if (!storedObject)
        storedPlace = smallPlace;
    minimized = false;
}

// ---- Settings --------------------------------------------------------------------------------------------------------------

void Model::SetRecordTime(unsigned value) {
    const unsigned stored = std::min(value, 4U);
    dirty = dirty || stored != recordTime;
    recordTime = stored;
}

void Model::SetRatio(int value) {
    if (value == ratio)
        return;
    ratio = value;
    dirty = true;
    const int type = CurrentType();
    if ((mode == kPlaying || mode == kRecording) && (type == kTelevision || type == kFileType)) {
        keepsAspect = value;
        Note("aspect " + std::to_string(value));
    }
}

void Model::SetMask(const std::string& bytes) {
    mask = bytes;
}

void Model::SetSnrDebug(int value) {
    snrDebug = value;
    if (value != 0) {
        At(10).state = 1;
        ShowControls(1);
        EnableToggle(0);
        return;
    }
    At(10).text.clear();
    At(10).state = 0;
    At(9).text.clear();
    At(9).shown = false;
    if (CurrentType() != kRadioType && mode == kPlaying && !noSignal)
        EnableToggle(1);
}

// ---- What is seen ----------------------------------------------------------------------------------------------------------

Snapshot Model::Look() const {
    Snapshot seen;
    const auto set = [&seen](Number::Name name, long long value) { seen[name] = value; };
    set(Number::Open, open);
    set(Number::Clock, now);
    set(Number::Filters, static_cast<long long>(filters.size()));
    set(Number::Minimized, minimized);
    set(Number::PictureShown, pictureShown);
    if (!open)
        return seen;
    using N = Number;
    const std::pair<N::Name, long long> values[] = {{N::Mode, mode},
                                                    {N::Current, current},
                                                    {N::Last, last},
                                                    {N::Pending, pending},
                                                    {N::LastTelevision, lastTelevision},
                                                    {N::LastRadio, lastRadio},
                                                    {N::Count, count},
                                                    {N::File, fileIndex},
                                                    {N::Retries, retries},
                                                    {N::OnAir, onAir},
                                                    {N::NoSignal, noSignal},
                                                    {N::SignalWait, signalWait},
                                                    {N::ChangeBusy, changeBusy},
                                                    {N::MsgBoxUp, msgBoxUp},
                                                    {N::Scanning, scanning},
                                                    {N::ToggleGuard, toggleGuard},
                                                    {N::Dirty, dirty},
                                                    {N::RecordTime, recordTime},
                                                    {N::Ratio, ratio},
                                                    {N::SnrDebug, snrDebug},
                                                    {N::SlideReady, slideReady},
                                                    {N::FoundBlocks, foundBlocks},
                                                    {N::CurrentType, CurrentType()},
                                                    {N::LastType, LastType()},
                                                    {N::HasGraph, hasGraph},
                                                    {N::HasController, hasController},
                                                    {N::HasControl, hasControl},
                                                    {N::HasEvent, hasEvent},
                                                    {N::HasVideo, hasVideo},
                                                    {N::HasTuner, hasTuner},
                                                    {N::ToolsShown, toolsShown},
                                                    {N::ToggleEnabled, toggleOn},
                                                    {N::KeepsAspect, keepsAspect},
                                                    {N::InfoShown, At(43).shown},
                                                    {N::InfoTop, info.top},
                                                    {N::InfoRight, info.right},
                                                    {N::LabelLeft, labels.left},
                                                    {N::LabelBottom, labels.bottom},
                                                    {N::SmallToggleLeft, smallToggle.left},
                                                    {N::AntennaState, At(10).state},
                                                    {N::AntennaLevel, level},
                                                    {N::DebugTextShown, At(9).shown},
                                                    {N::BackgroundShown, At(42).shown},
                                                    {N::GroupShown, At(2).shown},
                                                    {N::ScanBoxShown, At(49).shown},
                                                    {N::ScanTextShown, At(50).shown},
                                                    {N::SmallToggleShown, At(26).shown},
                                                    {N::StateScan, At(20).state},
                                                    {N::StateList, At(21).state},
                                                    {N::StateSetting, At(22).state},
                                                    {N::StateRecord, At(23).state},
                                                    {N::StateDown, At(24).state},
                                                    {N::StateUp, At(25).state},
                                                    {N::StateToggle, At(27).state},
                                                    {N::FaceRecord, At(23).face},
                                                    {N::FaceDown, At(24).face},
                                                    {N::FaceSmallToggle, At(26).face},
                                                    {N::FaceFullToggle, At(27).face},
                                                    {N::ModalDepth, static_cast<long long>(modals.size())}};
    for (const auto& [name, value] : values)
        set(name, value);
    for (unsigned id = kRecordTimer; id <= kChangeGuardTimer; ++id)
        seen[N::Timers] |= HasTimer(id) ? 1 << (id - kRecordTimer) : 0;
    for (const int id : {20, 21, 22, 23, 24, 25, 27})
        seen[N::ToolShown] |= At(id).shown ? 1 << (id - 20) : 0;
    seen.info = At(43).text;
    seen.title = title;
    seen.antenna = At(10).text;
    seen.debug = At(9).text;
    seen.scan = At(50).text;
    seen.labels = history;
    seen.mask = mask;
    return seen;
}

} // namespace model
