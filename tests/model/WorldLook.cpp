// What is seen of the view after a step, and what is left over when it has gone.
#include <algorithm>
#include <string_view>

#include "host/shell/skin/Element.h"
#include "platform/velshell/VelDocument.h"
#include "tests/model/World.h"
#include "view/DMBView.h"

namespace model {

namespace {

std::string Narrow(const WCHAR* text) {
    std::string narrow;
    for (; text != nullptr && *text != 0; ++text)
        narrow += *text < 0x80 ? static_cast<char>(*text) : '?';
    return narrow;
}

bool StartsWith(const std::string& line, std::string_view part) {
    return line.compare(0, part.size(), part) == 0;
}

// The lines of which the model speaks.
bool IsPredicted(const std::string& line) {
    static constexpr std::string_view starts[] = {"post view ",
                                                  "post main ",
                                                  "mode ",
                                                  "aspect ",
                                                  "title ",
                                                  "controls ",
                                                  "video ",
                                                  "box ",
                                                  "answer ",
                                                  "unanswered",
                                                  "host ",
                                                  "small ",
                                                  "full",
                                                  "hold",
                                                  "back",
                                                  "open ",
                                                  "preloaded",
                                                  "close",
                                                  "tuner.",
                                                  "stream.",
                                                  "audio.Run",
                                                  "audio.Pause",
                                                  "audio.Stop",
                                                  "parser.Load(",
                                                  "parser.SetCapture",
                                                  "parser.StartCapture",
                                                  "parser.StopCapture",
                                                  "parser.GetParam",
                                                  "parser.SetParam",
                                                  "picture.HoldVideo",
                                                  "picture.ResumeVideo",
                                                  "picture.put_",
                                                  "dab.FetchPadInfo"};
    if (StartsWith(line, "post view 257 ") || StartsWith(line, "post main 257 ")) // input
        return false;
    if (std::any_of(std::begin(starts), std::end(starts),
                    [&](std::string_view part) { return StartsWith(line, part); }))
        return true;
    return line.ends_with(".End") || line.find(".Create") != std::string::npos;
}

const shell::Element& ElementOf(const CVelDMBView& view, UINT id) {
    return *static_cast<const shell::Element*>(view.Find(id));
}

} // namespace

std::vector<std::string> World::TakeLog() {
    std::vector<std::string> lines = device.shell.Log();
    constexpr std::size_t kMostLines = 10000;
    logWasFull = lines.size() >= kMostLines;
    device.shell.ClearLog();
    stage.log.Clear();
    std::erase_if(lines, [](const std::string& line) { return !IsPredicted(line); });
    return lines;
}

Snapshot World::Look() {
    using N = Number;
    Snapshot seen;
    seen[N::Open] = view != nullptr;
    seen[N::Clock] = device.clock.Now();
    seen[N::Filters] = stage.Alive();
    seen[N::Minimized] = device.shell.Document().IsMinimized();
    seen[N::PictureShown] = device.shell.Video().visible;
    if (view == nullptr) {
        stream = nullptr;
        return seen;
    }
    DMBViewPeer& p = *peer;
    if (stream != nullptr && stream != p.LiveStream())
        lostStreams.push_back(stream);
    stream = p.LiveStream();
    const std::pair<N::Name, long long> values[] = {{N::Mode, view->GetPlayMode()},
                                                    {N::Current, p.CurChannel()},
                                                    {N::Last, p.LastChannel()},
                                                    {N::Pending, p.PendingChannel()},
                                                    {N::LastTelevision, p.LastDMBChannel()},
                                                    {N::LastRadio, p.LastDABChannel()},
                                                    {N::Count, p.ChannelCount()},
                                                    {N::File, p.FileIndex()},
                                                    {N::Retries, p.StartRetries()},
                                                    {N::OnAir, p.OnAirFlag()},
                                                    {N::NoSignal, p.NoSignal()},
                                                    {N::SignalWait, p.SignalWait()},
                                                    {N::ChangeBusy, p.ChangeBusy()},
                                                    {N::MsgBoxUp, p.MsgBoxUp()},
                                                    {N::Scanning, p.Scanning()},
                                                    {N::ToggleGuard, p.ToggleGuard()},
                                                    {N::Dirty, p.ProfileDirty()},
                                                    {N::RecordTime, p.RecordTimeField()},
                                                    {N::Ratio, p.RatioField()},
                                                    {N::SnrDebug, p.SNRDebugField()},
                                                    {N::SlideReady, p.SlideReady()},
                                                    {N::FoundBlocks, p.FoundBlockCount()},
                                                    {N::CurrentType, p.CurrentType()},
                                                    {N::LastType, p.LastType()},
                                                    {N::HasGraph, p.Graph() != nullptr},
                                                    {N::HasController, p.FilterControl() != nullptr},
                                                    {N::HasControl, p.Control() != nullptr},
                                                    {N::HasEvent, p.Event() != nullptr},
                                                    {N::HasVideo, p.VideoWindow() != nullptr},
                                                    {N::HasTuner, p.LiveControl() != nullptr},
                                                    {N::ToolsShown, view->IsToolVisibled()},
                                                    {N::ToggleEnabled, view->IsToggleEnabled()},
                                                    {N::KeepsAspect, view->IsPreserveAspectRatio()},
                                                    {N::ModalDepth, device.shell.ModalDepth()},
                                                    {N::LabelLeft, p.DlsRect().left},
                                                    {N::LabelBottom, p.DlsRect().bottom}};
    for (const auto& [name, value] : values)
        seen[name] = value;
    for (UINT_PTR id = kRecordTimer; id <= kChangeGuardTimer; ++id)
        seen[N::Timers] |= device.ce.loop().HasTimer(view->GetSafeHwnd(), id) ? 1 << (id - kRecordTimer) : 0;
    for (const WString& text : p.Labels())
        seen.labels.push_back(Narrow(text.c_str()));
    seen.mask.assign(reinterpret_cast<const char*>(p.ScanMask()), kRows);
    seen.title = Narrow(device.shell.Title());
    LookAtElements(seen);
    return seen;
}

void World::LookAtElements(Snapshot& seen) {
    using N = Number;
    const auto visible = [this](UINT id) { return ElementOf(*view, id).IsVisible(); };
    const auto state = [this](UINT id) { return ElementOf(*view, id).GetState(); };
    const auto face = [this](UINT id) { return ElementOf(*view, id).State().face; };
    const auto text = [this](UINT id) { return Narrow(ElementOf(*view, id).GetText()); };
    const RECT& info = ElementOf(*view, 43).GetRect();
    const std::pair<N::Name, long long> values[] = {{N::InfoShown, visible(43)},
                                                    {N::InfoTop, info.top},
                                                    {N::InfoRight, info.right},
                                                    {N::SmallToggleLeft, ElementOf(*view, 26).GetRect().left},
                                                    {N::AntennaState, state(10)},
                                                    {N::DebugTextShown, visible(9)},
                                                    {N::BackgroundShown, visible(42)},
                                                    {N::GroupShown, visible(2)},
                                                    {N::ScanBoxShown, visible(49)},
                                                    {N::ScanTextShown, visible(50)},
                                                    {N::SmallToggleShown, visible(26)},
                                                    {N::StateScan, state(20)},
                                                    {N::StateList, state(21)},
                                                    {N::StateSetting, state(22)},
                                                    {N::StateRecord, state(23)},
                                                    {N::StateDown, state(24)},
                                                    {N::StateUp, state(25)},
                                                    {N::StateToggle, state(27)},
                                                    {N::FaceRecord, face(23)},
                                                    {N::FaceDown, face(24)},
                                                    {N::FaceSmallToggle, face(26)},
                                                    {N::FaceFullToggle, face(27)}};
    for (const auto& [name, value] : values)
        seen[name] = value;
    for (const UINT id : {20U, 21U, 22U, 23U, 24U, 25U, 27U})
        seen[N::ToolShown] |= visible(id) ? 1 << (id - 20) : 0;
    const shell::Element& antenna = ElementOf(*view, 10);
    seen[N::AntennaLevel] = -1;
    for (int level = 0; level < 7; ++level)
        if (antenna.State().background != nullptr &&
            antenna.State().background == antenna.GetImageSet()->GetImage(level))
            seen[N::AntennaLevel] = level;
    seen.info = text(43);
    seen.antenna = text(10);
    seen.debug = text(9);
    seen.scan = text(50);
}

std::vector<std::string> World::Leaks(int lostFilters, int streamsLostByRule) {
    std::vector<std::string> leaks = device.shell.Leaks();
    if (stage.Alive() != lostFilters)
        leaks.push_back(std::to_string(stage.Alive()) + " filters, lost by rule " + std::to_string(lostFilters));
    for (int i = 0; i < kKinds; ++i)
        while (scripted::ScriptedFilter* filter = stage.Last(static_cast<scripted::Kind>(i)))
            if (filter->Release() != 0) {
                leaks.push_back("a lost filter is held by others too");
                break;
            }
    if (scripted::Tuner().controlsAlive != 0)
        leaks.push_back(std::to_string(scripted::Tuner().controlsAlive) + " tuner controls");
    if (scripted::Tuner().streamsAlive != streamsLostByRule)
        leaks.push_back(std::to_string(scripted::Tuner().streamsAlive) + " tuner streams, lost by rule " +
                        std::to_string(streamsLostByRule));
    for (CDMBLiveStream* lost : lostStreams)
        delete lost;
    lostStreams.clear();
    if (scripted::Tuner().streamsAlive != 0)
        leaks.push_back("a tuner stream that nobody knows");
    device.shell.ClearLog();
    return leaks;
}

} // namespace model
