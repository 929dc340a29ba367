// The reference: what the view does, predicted from the tables of its states, messages, timers and events.
//
// It knows nothing of the module's sources; it is written from the rules alone, and the rules of the shell, the message loop and
// the filter graph around the view are here as far as they can be seen. One operation is called for every step of the random
// walk; each adds to `log` what must happen and leaves the state that must follow. The sources: Loop (messages, timers, modal
// windows), Host (the shell's base), Graph (filters), Session, Events, Select, Signal, Scan, Record, Screen.
#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tests/model/Inputs.h"
#include "tests/model/Numbers.h"
#include "tests/model/Snapshot.h"

namespace model {

struct Place {
    long left = 0, top = 0, right = 0, bottom = 0;
    [[nodiscard]] bool Empty() const { return right <= left || bottom <= top; }
    friend bool operator==(const Place&, const Place&) = default;
};

class Model {
public:
    explicit Model(Inputs& surroundings) : in(surroundings) {}

    // ---- The steps -------------------------------------------------------------------------------------------------------
    void Open(const std::vector<Record>& channels, bool listFile, std::optional<int> savedChannel, int recordTime,
              int ratio);
    void Close();  // the shell closes the view
    void Settle(); // after that: what waits is done, boxes close
    void Post(unsigned message, std::int64_t w, std::int64_t l);
    void Send(unsigned message, std::int64_t w, std::int64_t l);
    void KeyUp(unsigned code, unsigned repeat);
    void Wait(int milliseconds);
    void Idle();
    void Report(Kind kind, int code);
    void Hold(int hold);
    void Pause();
    int Stop();
    void ReleaseInterface();
    void ShowControls(int show);
    void Minimize();
    void MoveSmall(const Place& place);
    void Restore();
    void ShowHome(); // another screen in front, and back
    void ShowView();
    void SaveAll();
    void SetSnrDebug(int value);
    void SetRatio(int value);
    void SetRecordTime(unsigned value);
    void SetMask(const std::string& bytes);
    void Reading(int snr);
    void PlayFile(const std::string& path);
    void ToggleKind(); // the toggle's own work, without its guard
    void Theme();

    // Texts that a step posts by address: 0 none, 1 empty, 2 the view's label field, then `texts`.
    enum TextRef { kNull, kEmpty, kLabelField, kFirstText };
    static const char* const texts[];

    // ---- What is seen ------------------------------------------------------------------------------------------------------
    [[nodiscard]] Snapshot Look() const;
    std::vector<std::string> log;
    bool open = false;
    bool settled = true; // nothing is left of the view before
    int leakedStreams = 0;
    [[nodiscard]] bool Alive(Kind kind) const;
    [[nodiscard]] bool IsHeld() const { return homeInFront; }
    [[nodiscard]] int LeakedFilters() const { return static_cast<int>(filters.size()); }
    void ForgetLeaks() { filters.clear(), leakedStreams = 0; }

private:
    Inputs& in;

    // ---- Loop.cpp ----------------------------------------------------------------------------------------------------------
    enum Window { kMain, kView, kBox };
    struct Posted {
        Window window;
        unsigned message;
        std::int64_t w, l;
    };
    struct Timer {
        Window window;
        unsigned id;
        std::int64_t period, due;
    };
    void PostTo(Window window, unsigned message, std::int64_t w = 0, std::int64_t l = 0);
    void StartTimer(unsigned id, int period, Window window = kView);
    void KillTimer(unsigned id, Window window = kView);
    [[nodiscard]] bool HasTimer(unsigned id) const;
    [[nodiscard]] std::int64_t NextDue() const;
    bool DispatchOne();
    std::int64_t Dispatch(const Posted& message);
    void Sleep(int milliseconds) { now += milliseconds; }
    void Note(const std::string& line) { log.push_back(line); }

    enum class Modal { Question, List, Settings };
    struct Dialog {
        Modal kind = Modal::Question;
        bool ended = false;
        int result = 0;
        // Of a list.
        int tab = 0, selection = -1;
        std::vector<int> lines[3]; // list positions of the channel tabs; files by number
        int marked[3] = {-1, -1, -1};
        // Of the settings.
        int recordTime = 0, ratio = 0;
    };
    void RunModal(Dialog& dialog); // until it has ended, or nothing can happen
    bool AnswerModal();
    bool PressModal(unsigned element);
    void KeyToModal(unsigned key);
    void EndDialog(Dialog& dialog, int result);
    [[nodiscard]] Dialog* FrontQuestion();
    void ConfirmModal(Dialog& dialog); // its OK
    void EndFrontDialog();
    int Ask(int textId); // a question; 1 is OK
    [[nodiscard]] bool ForceBox(int result);

    std::deque<Posted> queue;
    std::vector<Timer> timers;
    std::int64_t now = 0;
    std::vector<Dialog*> modals;
    std::vector<Dialog*> questions;
    bool noticeUp = false; // a box that nobody waits for
    int noticeStyle = 0;
    bool closePending = false;

    // ---- Host.cpp ----------------------------------------------------------------------------------------------------------
    void BaseShowControls(int show);
    void ResetMenuTimeout();
    void EnableToggle(int enable);
    void SetMode(int mode);
    void SetTitle(const std::string& text);
    void CloseNow();
    void PostedBox(const char* resource, int textId, int style);
    bool ConnectInterface();
    void BaseReleaseInterface();
    void CommandToBase(int id);
    [[nodiscard]] static std::string Text(int id) { return "T" + std::to_string(id); }

    int mode = kStopped;
    bool toolsShown = true;
    bool toggleOn = true;
    bool minimized = false;
    bool homeInFront = false; // the view is held behind it
    bool active = false;
    bool saveRequested = false;
    bool pictureShown = false;
    int keepsAspect = 0;
    std::string title;
    Place smallPlace, storedPlace;
    bool smallMoved = false;

    // ---- Graph.cpp ---------------------------------------------------------------------------------------------------------
    struct Filter {
        int number;
        Kind kind;
        bool inGraph;
    };
    enum State { kGraphStopped, kGraphPaused, kGraphRunning };
    struct GraphState {
        State state = kGraphStopped;
        bool halfPaused = false;
        bool clockChosen = false;
        bool counting = false;
        int renderers = 0, completions = 0;
        std::deque<int> events;
    };
    void MakeGraph();
    void DropGraph();
    void Enqueue(int code);
    bool GraphRun();
    bool GraphPause();
    bool GraphStop();
    bool PauseAudio();
    bool StartAudio();
    [[nodiscard]] int CountInGraph(Kind kind) const;
    [[nodiscard]] Filter* Find(int number);
    bool CreateInto(Kind kind);
    bool InitTelevision(const std::string* file);
    bool ConnectTelevision() const;
    bool InitRadio();
    void CloseTelevision();
    void CloseRadio();
    bool DeleteFilter(Kind kind);
    void ForgetFilters();
    void HandleAudioChange();
    bool StartCapture();
    bool StopCapture();
    [[nodiscard]] bool HasParser() const { return hasController && field[kParser] >= 0; }

    std::optional<GraphState> graph;
    bool hasGraph = false, hasController = false, hasControl = false, hasEvent = false, hasVideo = false;
    std::vector<Filter> filters; // alive, in order of birth
    int field[kKinds] = {-1, -1, -1, -1, -1, -1, -1};
    bool capturing = false; // of the parser in the field
    int nextFilter = 0;

    // ---- Session.cpp -------------------------------------------------------------------------------------------------------
    void Preload();
    bool CreateGraphBuilder();
    void ReleaseGraphBuilder();
    [[nodiscard]] int CurrentType() const;
    [[nodiscard]] int LastType() const;
    void RunDMB();
    void StopDMB();
    void RunDAB();
    void StopDAB();
    void CloseDMBDAB();
    void ResetDMB();
    bool ChangeDMBDAB();
    void ClickToggle();
    void ToggleFace();
    void OnAirMessage();
    void ClickExit();
    void Destroy();
    void SaveProfile();

    std::vector<Record> list;
    int current = -1, last = -1, pending = -1, lastTelevision = -1, lastRadio = -1;
    int count = 0, fileIndex = -1, retries = 0;
    bool onAir = false, noSignal = false, signalWait = false, changeBusy = false, msgBoxUp = false, scanning = false,
         toggleGuard = false, dirty = false;
    unsigned recordTime = 0;
    int ratio = 0, snrDebug = 0;
    bool hasTuner = false, hasStream = false;
    std::int64_t recordStart = 0;
    std::string labelField;
    std::vector<Record> fileList; // what the list file holds
    bool fileExists = false;

    // ---- Events.cpp --------------------------------------------------------------------------------------------------------
    void MediaNotify();
    void NoSignalEvent();
    void SignalEvent();
    void LabelEvent();
    void SlideEvent();
    void OnTimer(unsigned id);
    void OnKeyUp(unsigned key, unsigned repeat);
    [[nodiscard]] int NoSignalText() const { return minimized ? 1012 : 1008; }

    std::vector<std::string> history; // radio texts
    bool slideReady = false;

    // ---- Select.cpp --------------------------------------------------------------------------------------------------------
    bool ChangeTo(int index, const std::string* label);
    bool RetryLater(int milliseconds);
    void PostLabelReset();
    void PostLabel(const std::string& label, int textId);
    bool StepBy(int delay, int step);
    void ClickUpDown(int id);

    // ---- Signal.cpp --------------------------------------------------------------------------------------------------------
    void FollowRadio(int snr);
    void PollSignal();

    // One set for the module, whatever view is open.
    int samples[4] = {};
    int sampleCount = 0, lastLevel = -1;
    bool armed = false;
    int noSignalReports = 0;
    float seenRssi = 0;
    int seenRssiValue = 0;

    // ---- Scan.cpp ----------------------------------------------------------------------------------------------------------
    void Scan();
    void ShowCounts(int television, int radio);
    void RebuildList();
    void ShowList();
    void ShowSettings();

    struct Slot {
        unsigned frequency = 0;
        std::vector<Service> services;
    };
    std::array<Slot, kRows> slots;
    int foundBlocks = 0;
    std::string mask = std::string(kRows, '\1');

    // ---- Record.cpp --------------------------------------------------------------------------------------------------------
    void ClickRecord();
    void BeginRecording();
    void StopRecording();
    void CheckRecordButton();

    // ---- Screen.cpp --------------------------------------------------------------------------------------------------------
    struct Element {
        bool shown = true;
        int state = 0;
        int face = 0;
        std::string text;
    };
    void ResetElements();
    void ShowInfo(const std::string* text);
    void ShowInfoText(int id);
    void ShowBackground(bool show);
    void ShowToolButtons(bool show);
    void ShowChannelLabel(int index, bool useIndex);
    void FitTo(long width, long height);
    void RestoreFrom(bool storedObject);
    [[nodiscard]] std::string ChannelName(unsigned frequency) const;
    Element& At(int id) { return elements[static_cast<std::size_t>(id)]; }
    [[nodiscard]] const Element& At(int id) const { return elements[static_cast<std::size_t>(id)]; }

    std::array<Element, 52> elements;
    Place info, fullInfo, labels, smallToggle;
    int level = -1; // of the antenna picture
};

} // namespace model
