// The other side of the randomised test: the module in the headless shell, over the scripted tuner and the scripted filters, under
// a manual clock. It does the same steps as the model and tells what was seen.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "dataservice/PadInfo.h"
#include "tests/graph/ScriptedFilters.h"
#include "tests/harness/DMBViewPeer.h"
#include "tests/harness/DeviceFixture.h"
#include "tests/model/Inputs.h"
#include "tests/model/Model.h"
#include "tests/model/Snapshot.h"

namespace model {

class World {
public:
    World();
    ~World();

    // The surroundings are so from here on.
    void Apply(const Inputs& surroundings);

    void Open(const std::vector<Record>& channels, bool listFile, std::optional<int> savedChannel, int recordTime,
              int ratio);
    void Close();
    void Settle();
    void Post(unsigned message, std::int64_t w, std::int64_t l);
    void Send(unsigned message, std::int64_t w, std::int64_t l);
    void KeyUp(unsigned code, unsigned repeat);
    void Wait(int milliseconds);
    void Idle();
    void Report(Kind kind, int code);
    void Hold(int hold);
    void Pause();
    void Stop();
    void ReleaseInterface();
    void ShowControls(int show);
    void Minimize();
    void MoveSmall(const Place& place);
    void Restore();
    void ShowHome();
    void ShowView();
    void SaveAll();
    void SetSnrDebug(int value);
    void SetRatio(int value);
    void SetRecordTime(unsigned value);
    void SetMask(const std::string& bytes);
    void Reading(int snr);
    void PlayFile(const std::string& path);
    void ToggleKind();
    void Theme();

    // What the last step did, as far as the model speaks of it.
    [[nodiscard]] std::vector<std::string> TakeLog();
    // It did more than the shell's log can hold.
    [[nodiscard]] bool LogWasFull() const { return logWasFull; }
    [[nodiscard]] Snapshot Look();
    // What is left over when no view is open: one line each. Filters that were lost by rule are let go.
    [[nodiscard]] std::vector<std::string> Leaks(int lostFilters, int streamsLostByRule);

private:
    bool GiveAnswer();
    void Sync();
    void LookAtElements(Snapshot& seen);

    ce::ManualClock graphClock;           // of the graphs alone, which never wait here
    dshow::ClassTable graphs{graphClock}; // makes them as long as there are any
    harness::Device device;
    scripted::Stage stage;
    std::unique_ptr<PadInfo> pad;
    CVelDMBView* view = nullptr;
    std::unique_ptr<DMBViewPeer> peer;
    std::deque<Answer> answers;
    int pickStep = 0; // of an answer that takes several presses
    bool slideWritten = false;
    Inputs::Slide slide = Inputs::NoSlide;
    bool graphExists = true;
    bool logWasFull = false;
    CDMBLiveStream* stream = nullptr; // the view's, after the last step
    std::vector<CDMBLiveStream*> lostStreams;
};

} // namespace model
