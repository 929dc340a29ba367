// Graph events, timers and keys.
#include "tests/model/Model.h"

namespace model {

namespace {

constexpr int kReportsTolerated = 5;
constexpr std::size_t kHistory = 4;

} // namespace

void Model::MediaNotify() {
    while (hasEvent && graph && !graph->events.empty()) {
        const int code = graph->events.front();
        graph->events.pop_front();
        switch (code) {
        case kComplete:
            StopDMB();
            break;
        case kFirstPicture:
            ShowInfo(nullptr);
            if (snrDebug == 0)
                EnableToggle(1);
            CheckRecordButton();
            break;
        case kAudioChange:
            StopDMB();
            HandleAudioChange();
            RunDMB();
            break;
        case kPadText:
            LabelEvent();
            break;
        case kSlideReady:
            SlideEvent();
            break;
        case kTimeReset:
            ResetDMB();
            break;
        case kSignalGone:
            NoSignalEvent();
            break;
        case kSignalBack:
            SignalEvent();
            break;
        default:
            break;
        }
    }
}

void Model::NoSignalEvent() {
    if (noSignal || ++noSignalReports <= kReportsTolerated)
        return;
    if (CurrentType() == kTelevision) {
        if (hasVideo)
            PostTo(kView, kVideoRequest);
        CheckRecordButton();
    }
    ShowInfoText(NoSignalText());
    ShowControls(1);
    EnableToggle(0);
    noSignal = true;
}

void Model::SignalEvent() {
    noSignalReports = 0;
    if (!noSignal || CurrentType() != kTelevision)
        return;
    ShowInfo(nullptr);
    if (snrDebug == 0)
        EnableToggle(1);
    noSignal = false;
    CheckRecordButton();
    if (hasVideo)
        PostTo(kView, kVideoRequest, kShowVideo);
}

void Model::LabelEvent() {
    if (mode != kPlaying || !onAir || !hasController || field[kRadio] < 0)
        return;
    Note(in.padFails ? "dab.FetchPadInfo = 80004005" : "dab.FetchPadInfo");
    if (in.padFails || in.padMissing || in.pad.empty())
        return;
    if (!history.empty() && history.back() == in.pad)
        return;
    if (history.size() >= kHistory)
        history.erase(history.begin());
    history.push_back(in.pad);
}

void Model::SlideEvent() {
    if (mode == kPlaying && onAir)
        PostTo(kView, kCommand, 97);
}

// ---- Timers ------------------------------------------------------------------------------------------------------------

void Model::OnTimer(unsigned id) {
    switch (id) {
    case kMenuTimer:
        KillTimer(id);
        if (pictureShown)
            ShowControls(0);
        break;
    case kRecordTimer:
        if (now / 1000 - recordStart >= kRecordSeconds[recordTime])
            PostTo(kView, kCommand, 23);
        break;
    case kSignalTimer:
        PollSignal();
        break;
    case kNoSignalTimer:
        KillTimer(id);
        Stop();
        ShowInfoText(NoSignalText());
        noSignal = true;
        break;
    case kChangeTimer:
        KillTimer(id);
        changeBusy = true;
        if (ChangeTo(pending, nullptr))
            StartTimer(kChangeGuardTimer, 3000);
        else
            changeBusy = false;
        pending = -1;
        break;
    case kStartTimer:
        if (current > -1) {
            const int channel = current;
            current = -1;
            ++retries;
            PostTo(kView, kChangeChannel, channel);
        }
        break;
    case kToggleTimer:
        KillTimer(id);
        toggleGuard = false;
        break;
    case kScanTimer:
        KillTimer(id);
        PostTo(kView, kCommand, 20);
        break;
    case kScanPrepTimer:
        KillTimer(id);
        if (!toolsShown)
            ShowControls(1);
        StartTimer(kScanTimer, 100);
        break;
    case kChangeGuardTimer:
        KillTimer(id);
        changeBusy = false;
        break;
    default:
        Note("host timer " + std::to_string(id));
        break;
    }
}

// ---- Keys --------------------------------------------------------------------------------------------------------------

void Model::OnKeyUp(unsigned key, unsigned repeat) {
    if (scanning)
        return;
    switch (key) {
    case 27:
        if (msgBoxUp && ForceBox(2)) {
            msgBoxUp = false;
            return;
        }
        break;
    case 33:
    case 34:
        if (repeat == 1 && count > 0) {
            StepBy(1000, key == 33 ? -1 : +1);
            ShowControls(1);
        }
        break;
    case 180:
        if (minimized) {
            PostTo(kMain, kCommand, 17);
            StartTimer(kScanPrepTimer, 100);
        } else {
            if (!toolsShown)
                ShowControls(1);
            StartTimer(kScanTimer, 100);
        }
        break;
    case 193:
        if (CurrentType() == kTelevision && (mode == kPlaying || mode == kRecording))
            PostTo(kView, kCommand, 23);
        break;
    case 195:
        if (ForceBox(1))
            msgBoxUp = false;
        return;
    default:
        break;
    }
    Note("host key " + std::to_string(key));
    if (key == 27)
        (void)ForceBox(2);
}

} // namespace model
