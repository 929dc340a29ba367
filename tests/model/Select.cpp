// Choosing a channel and stepping through the list.
#include "tests/model/Model.h"

namespace model {

namespace {

constexpr int kWithoutSession = 3; // a kind that is tuned and saved, nothing more

} // namespace

void Model::PostLabelReset() {
    PostTo(kView, kUpdateInfo, 0, kEmpty);
    PostTo(kView, kShowLabel);
}

void Model::PostLabel(const std::string& label, int textId) {
    labelField = label + " " + Text(textId);
    PostTo(kView, kUpdateInfo, 0, kLabelField);
}

bool Model::RetryLater(int milliseconds) {
    PostTo(kView, kShowLabel);
    StartTimer(kStartTimer, milliseconds);
    return false;
}

bool Model::ChangeTo(int index, const std::string* label) {
    if (index == -1 && label == nullptr)
        return false;
    if (mode == kRecording) {
        msgBoxUp = true;
        const int answer = Ask(1011);
        msgBoxUp = false;
        if (answer != 1) {
            PostLabelReset();
            return false;
        }
        StopRecording();
    }
    if (index == -1) {
        for (std::size_t i = 0; i < list.size() && index == -1; ++i)
            if (list[i].label == *label)
                index = static_cast<int>(i);
        if (index == -1) {
            PostLabelReset();
            return false;
        }
    }
    const auto position =
        static_cast<std::size_t>(index < 0 ? 0 : index); // the list takes a negative one for the first
    if (position >= list.size()) {
        ShowInfoText(1002);
        return false;
    }
    const Record record = list[position];
    if (mode == kPlaying || mode == kRecording) {
        if (index == current) {
            PostLabelReset();
            return false;
        }
        Stop();
        ShowControls(1);
        EnableToggle(0);
    }
    if (index != current) {
        current = index;
        dirty = true;
    }
    if (LastType() != CurrentType())
        PostTo(kView, kCommand, 96);
    if (hasStream)
        Note("stream.Close");
    ReleaseInterface();
    KillTimer(kStartTimer);
    ReleaseGraphBuilder();
    Sleep(100);
    if (!CreateGraphBuilder())
        return RetryLater(100);
    Sleep(100);
    if (hasTuner) {
        char line[80];
        std::snprintf(line, sizeof line, "tuner.SetChannel %u %d %X 0", record.frequency, record.kind == 1 ? 0 : 8,
                      record.id);
        Note(line);
    }
    if (!hasTuner || !in.tunes) {
        ShowInfoText(NoSignalText());
        return RetryLater(5000);
    }
    PostLabel(record.label, 1016);
    if (record.kind == kWithoutSession) {
        SaveProfile();
        return true;
    }
    noSignal = signalWait = false;
    retries = 0;
    if (record.kind == kTelevision) {
        if (!InitTelevision(nullptr) || !ConnectInterface())
            return RetryLater(100);
        RunDMB();
        lastTelevision = current;
    } else if (record.kind == kRadioType && InitRadio()) {
        ConnectInterface();
        RunDAB();
        lastRadio = current;
    }
    last = current;
    PostTo(kView, kShowLabel);
    SaveProfile();
    return true;
}

bool Model::StepBy(int delay, int step) {
    if (changeBusy || count <= 0)
        return false;
    if (current < 0 && !list.empty()) {
        PostTo(kView, kChangeChannel, 0);
        return true;
    }
    int position = pending >= 0 ? pending : current;
    const int kind = CurrentType();
    for (int tried = 0; tried < count; ++tried) {
        position += step;
        if (position < 0)
            position = count - 1;
        else if (position >= count)
            position = 0;
        const auto at = static_cast<std::size_t>(position);
        if (at >= list.size() || list[at].kind != kind)
            continue;
        KillTimer(kChangeTimer);
        PostLabel(list[at].label, 1004);
        PostTo(kView, kShowLabel, position, 1);
        pending = position;
        StartTimer(kChangeTimer, delay);
        return true;
    }
    return false;
}

void Model::ClickUpDown(int id) {
    ResetMenuTimeout();
    PostTo(kView, kStep, 1000, id == 24 ? -1 : +1);
}

} // namespace model
