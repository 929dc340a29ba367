// Sessions: what starts, runs, stops and closes them.
#include "tests/model/Model.h"

namespace model {

void Model::Preload() {
    if (hasController) {
        if (hasStream)
            ++leakedStreams; // each preload makes a stream, and the one before is forgotten
        hasStream = true;
        if (!hasTuner) {
            Note("tuner.Open");
            hasTuner = in.tunerOpens;
        }
        // The list is added to what is there; a missing file counts -1.
        if (fileExists)
            list.insert(list.end(), fileList.begin(), fileList.end());
        count = fileExists ? static_cast<int>(fileList.size()) : -1;
        if (count < 1)
            ShowInfoText(1002);
        else if (current < 0 || current >= count)
            ShowInfoText(1005);
        else
            PostTo(kView, kChangeChannel, current);
    }
    Note("preloaded");
}

bool Model::CreateGraphBuilder() {
    if (hasController)
        return true;
    MakeGraph();
    hasController = hasGraph;
    ForgetFilters();
    return hasGraph;
}

void Model::ReleaseGraphBuilder() {
    hasController = hasVideo = hasControl = false;
    ForgetFilters();
    DropGraph();
}

int Model::CurrentType() const {
    if (fileIndex >= 0)
        return kFileType;
    if (current < 0 || current >= static_cast<int>(list.size()))
        return kNone;
    return list[static_cast<std::size_t>(current)].kind;
}

int Model::LastType() const {
    if (last < 0)
        return fileIndex >= 0 ? kTelevision : kNone;
    return last < static_cast<int>(list.size()) ? list[static_cast<std::size_t>(last)].kind : kNone;
}

void Model::RunDMB() {
    if (!hasControl)
        return;
    GraphRun();
    SetMode(kPlaying);
    if (hasVideo) {
        if (keepsAspect != ratio) {
            keepsAspect = ratio;
            Note("aspect " + std::to_string(ratio));
        }
        PostTo(kView, kVideoRequest, kShowVideo);
        if (!active && CountInGraph(kPicture) > 0) {
            Note("picture.put_AutoShow(false)");
            Note("picture.put_Visible(false)");
        }
    }
    if (noSignal) {
        ShowInfo(nullptr);
        if (snrDebug == 0)
            EnableToggle(1);
        noSignal = false;
        CheckRecordButton();
    } else if (CurrentType() == kTelevision) {
        StartTimer(kSignalTimer, 3000);
    }
}

void Model::StopDMB() {
    if (!hasControl || (mode != kPlaying && mode != kPaused && mode != kRecording))
        return;
    GraphStop();
    if (mode == kRecording)
        StopRecording();
    SetMode(kStopped);
}

void Model::RunDAB() {
    if (!hasGraph || !hasControl)
        return;
    hasVideo = false;
    GraphRun();
    SetMode(kPlaying);
    if (!noSignal && !signalWait)
        StartTimer(kSignalTimer, 500);
    noSignal = signalWait = false;
}

void Model::StopDAB() {
    if (!hasControl || !GraphStop())
        return;
    slideReady = false;
    history.clear();
    if (!noSignal && !signalWait)
        ShowBackground(false);
    SetMode(kStopped);
}

void Model::CloseDMBDAB() {
    const int type = LastType();
    KillTimer(kSignalTimer);
    Reading(-1);
    if (type == kTelevision) {
        StopDMB();
        Sleep(250);
        CloseTelevision();
        if (hasVideo)
            PostTo(kView, kVideoRequest);
    } else if (type == kRadioType) {
        StopDAB();
        CloseRadio();
        ShowBackground(false);
    }
    last = fileIndex = -1;
}

void Model::ResetDMB() {
    if (mode != kPlaying && mode != kRecording)
        return;
    Stop();
    ReleaseInterface();
    noSignal = signalWait = false;
    const int type = CurrentType();
    if (type == kTelevision && InitTelevision(nullptr)) {
        ConnectInterface();
        RunDMB();
        lastTelevision = current;
    }
    if (type == kRadioType && InitRadio()) {
        ConnectInterface();
        RunDAB();
        lastRadio = current;
    }
    last = current;
}

bool Model::ChangeDMBDAB() {
    int type = CurrentType();
    if (type == kFileType || (type == kNone && count == 0))
        return false;
    if (type == kNone)
        type = kRadioType;
    const int remembered = type == kTelevision ? lastRadio : type == kRadioType ? lastTelevision : -1;
    if (remembered >= 0) {
        PostTo(kView, kChangeChannel, remembered);
        return true;
    }
    for (std::size_t i = 0; i < list.size(); ++i)
        if (list[i].kind != type) {
            PostTo(kView, kChangeChannel, static_cast<int>(i));
            return true;
        }
    PostTo(kView, kBoxRequest, type == kTelevision ? 1014 : 1015, 2);
    return false;
}

void Model::ToggleKind() {
    ChangeDMBDAB();
}

void Model::ClickToggle() {
    if (toggleGuard)
        return;
    StartTimer(kToggleTimer, 3000);
    toggleGuard = true;
    ChangeDMBDAB();
}

void Model::ToggleFace() {
    At(minimized ? 26 : 27).face = CurrentType() == kTelevision ? 1 : 0;
}

void Model::OnAirMessage() {
    if (CurrentType() != kRadioType)
        return;
    ShowInfo(nullptr);
    if (!minimized)
        ShowBackground(true);
    onAir = true;
}

int Model::Stop() {
    if (CurrentType() == kTelevision)
        StopDMB();
    else if (CurrentType() == kRadioType)
        StopDAB();
    onAir = false;
    return 1;
}

void Model::Pause() {
    if (mode == kPlaying && hasControl && GraphPause())
        SetMode(kPaused);
}

void Model::Hold(int hold) {
    if (!hasVideo || CountInGraph(kPicture) == 0)
        return;
    if (hold != 0) {
        Pause();
        Note("picture.HoldVideo");
    } else {
        Note("picture.ResumeVideo");
        RunDMB();
    }
}

void Model::ReleaseInterface() {
    CloseDMBDAB();
    BaseReleaseInterface();
}

void Model::ClickExit() {
    if (toggleGuard)
        return;
    if (mode == kRecording) {
        if (msgBoxUp || Ask(1011) != 1)
            return;
        StopRecording();
    }
    PostTo(kMain, kCloseView);
}

void Model::Destroy() {
    KillTimer(kSignalTimer);
    if (mode == kPlaying || mode == kRecording) {
        Stop();
        KillTimer(kRecordTimer);
    }
    if (hasTuner)
        Note("tuner.Close");
    if (hasStream)
        Note("stream.Close");
    ReleaseInterface(); // the base's, through the view
    DropGraph();
    hasController = false;
    hasTuner = hasStream = false;
}

} // namespace model
