#include "tests/golden/Scenes.h"

namespace golden {

using scripted::Kind;

namespace {

// ---- The view itself ---------------------------------------------------------------------------------------------------

void NoChannels(ScreenStory& story) {
    story.StartEmpty();
    story.Take();
}

void SavedChannelGone(ScreenStory& story) {
    story.Start(WORD{77});
    story.Take();
}

void Scanning(ScreenStory& story) {
    story.Start(WORD{ScreenStory::kCity});
    constexpr int kThirteenthBlock = 13;
    int block = 0;
    scripted::Tuner().onGetChannel = [&](int) {
        if (++block == kThirteenthBlock)
            story.Take();
    };
    story.Command(kCmdScan);
    scripted::Tuner().onGetChannel = {};
}

void NothingFound(ScreenStory& story) {
    story.Start(WORD{ScreenStory::kCity});
    story.TakeInside();
    story.Command(kCmdScan);
    if (!story.Taken())
        story.Take();
}

void Television(ScreenStory& story) {
    story.WatchTelevision();
    story.Take();
}

void TelevisionBare(ScreenStory& story) {
    story.WatchTelevision();
    story.HideControls();
    story.Take();
}

void TelevisionButtonHeld(ScreenStory& story) {
    story.WatchTelevision();
    const RECT list = story.view->Find(kElementList)->GetRect();
    story.device.shell.TouchDown(list.left + 20, list.top + 20);
    story.Idle();
    story.Take();
    story.device.shell.TouchUp(0, 0);
}

void TelevisionRecording(ScreenStory& story) {
    story.WatchTelevision();
    story.Command(kCmdRecord);
    constexpr int kUntilTheNoticeIsGone = 3500;
    story.Wait(kUntilTheNoticeIsGone);
    story.view->ShowControls(1, 1);
    story.Idle();
    story.Take();
}

// The larger of the two small sizes, which is wide enough for the long text.
void LargerSmallNoSignal(ScreenStory& story) {
    story.WatchTelevision();
    story.device.shell.Minimize();
    story.device.shell.MoveSmall({312, 112, 792, 472});
    story.LoseSignal();
    story.device.shell.MoveSmall({311, 112, 791, 472});
    story.Idle();
    story.Take();
}

void SmallRecording(ScreenStory& story) {
    story.WatchTelevision();
    story.Command(kCmdRecord);
    constexpr int kUntilTheNoticeIsGone = 3500;
    story.Wait(kUntilTheNoticeIsGone);
    story.device.shell.Minimize();
    story.Idle();
    story.Take();
}

void TelevisionStepping(ScreenStory& story) {
    story.WatchTelevision();
    story.Command(kCmdChannelUp);
    story.Take();
}

void TelevisionNoSignal(ScreenStory& story) {
    story.WatchTelevision();
    story.LoseSignal();
    story.Take();
}

void TelevisionSignalDebug(ScreenStory& story) {
    story.WatchTelevision();
    story.view->SetSNRDebug(1);
    constexpr int kPoll = 3000;
    story.Wait(kPoll);
    story.view->ShowControls(1, 1);
    story.Take();
}

void Radio(ScreenStory& story) {
    story.HearRadio();
    story.Take();
}

void RadioTuned(ScreenStory& story) {
    story.Start(WORD{ScreenStory::kNight});
    story.Take();
}

void RadioNoSignal(ScreenStory& story) {
    story.HearRadio();
    for (int i = 0; i < 6; ++i)
        story.Report(Kind::DABSource, IDMB_EVENT_NO_SIGNAL);
    story.Take();
}

// ---- The small form ----------------------------------------------------------------------------------------------------

void SmallTelevision(ScreenStory& story) {
    story.WatchTelevision();
    story.device.shell.Minimize();
    story.Idle();
    story.Take();
}

void SmallRadio(ScreenStory& story) {
    story.HearRadio();
    story.device.shell.Minimize();
    story.Idle();
    story.Take();
}

void SmallNoSignal(ScreenStory& story) {
    story.WatchTelevision();
    story.device.shell.Minimize();
    story.LoseSignal();
    story.Take();
}

// ---- Why there is no picture -------------------------------------------------------------------------------------------

template <shell::Reason why> void TelevisionReason(ScreenStory& story) {
    story.WatchTelevision();
    story.device.shell.Video().Clear();
    story.GiveReason({why, false});
    story.HideControls();
    story.Take();
}

void RadioReason(ScreenStory& story) {
    story.HearRadio();
    story.GiveReason({shell::Reason::WeakSignal, true});
    story.Take();
}

void SmallReason(ScreenStory& story) {
    story.WatchTelevision();
    story.device.shell.Video().Clear();
    story.device.shell.Minimize();
    story.GiveReason({shell::Reason::Scrambled, false});
    story.Take();
}

// ---- The home screen ---------------------------------------------------------------------------------------------------

void HomeAfterExit(ScreenStory& story) {
    story.WatchTelevision();
    story.Command(kCmdExit);
    story.Forsake();
    story.Take();
}

void HomeWhileRadioPlays(ScreenStory& story) {
    story.HearRadio();
    story.device.shell.ShowHome();
    story.Idle();
    story.Take();
    story.device.shell.ShowView();
}

void HomeWhileHeld(ScreenStory& story) {
    story.WatchTelevision();
    story.device.shell.ShowHome();
    story.Idle();
    const int tileX = 100, tileY = 250;
    story.device.shell.TouchDown(tileX, tileY);
    story.Idle();
    story.Take();
    story.device.shell.TouchUp(0, 0);
    story.Idle();
}

// ---- The list ----------------------------------------------------------------------------------------------------------

constexpr UINT kTelevisionTab = 60, kRadioTab = 61, kFileTab = 62, kThirdRow = 42, kSecondRow = 41;

void ListTelevision(ScreenStory& story) {
    story.WatchTelevision();
    story.TakeInside([&story] { story.device.shell.Press(kSecondRow); });
    story.Command(kCmdList);
}

void ListRadio(ScreenStory& story) {
    story.HearRadio();
    story.TakeInside([&story] { story.device.shell.Press(kRadioTab); });
    story.Command(kCmdList);
}

void ListFiles(ScreenStory& story) {
    story.WatchTelevision();
    story.PutRecordings();
    story.device.shell.DuringModal([&story] { story.device.shell.Press(kFileTab); });
    story.TakeInside([&story] { story.device.shell.Press(kThirdRow); });
    story.Command(kCmdList);
}

void ListLong(ScreenStory& story) {
    story.StartWithManyChannels();
    story.TakeInside();
    story.Command(kCmdList);
}

void ListEmpty(ScreenStory& story) {
    story.StartEmpty();
    story.TakeInside([&story] { story.device.shell.Press(kFileTab); });
    story.Command(kCmdList);
}

// ---- Settings ----------------------------------------------------------------------------------------------------------

void Settings(ScreenStory& story) {
    story.WatchTelevision();
    story.TakeInside();
    story.Command(kCmdSetting);
}

void SettingsInDebugMode(ScreenStory& story) {
    story.WatchTelevision();
    story.device.shell.SetDebugMode(true);
    constexpr UINT kNextLength = 13, kRatioOn = 14;
    story.device.shell.DuringModal([&story] { story.device.shell.Press(kNextLength); });
    story.TakeInside([&story] { story.device.shell.Press(kRatioOn); });
    story.Command(kCmdSetting);
}

void Debug(ScreenStory& story) {
    story.WatchTelevision();
    story.device.shell.SetDebugMode(true);
    constexpr UINT kDebug = 7, kFifthBlock = 14;
    story.device.shell.DuringModal([&story] { story.device.shell.Press(kDebug); });
    story.TakeInside([&story] { story.device.shell.Press(kFifthBlock); });
    story.Command(kCmdSetting);
}

// ---- Boxes -------------------------------------------------------------------------------------------------------------

// A box that nobody waits for, by its number.
template <WORD textId, int style> void Box(ScreenStory& story) {
    story.WatchTelevision();
    PostMessageW(story.view->GetSafeHwnd(), WM_PLAYER_MSGBOX, textId, style);
    story.Idle();
    story.Take();
}

void BoxCard(ScreenStory& story) {
    story.WatchTelevision();
    PostMessageW(story.view->GetMainWindow(), WM_PLAYER_MSGBOX, kTextCardError, kBoxError);
    story.Idle();
    story.Take();
}

void BoxStopRecording(ScreenStory& story) {
    story.WatchTelevision();
    story.Command(kCmdRecord);
    constexpr int kUntilTheNoticeIsGone = 3500;
    story.Wait(kUntilTheNoticeIsGone);
    story.TakeInside();
    story.Command(kCmdExit);
}

} // namespace

const std::vector<Scene>& Scenes() {
    static const std::vector<Scene> scenes = {
        {"no-channels", NoChannels},
        {"saved-channel-gone", SavedChannelGone},
        {"scanning", Scanning},
        {"nothing-found", NothingFound},
        {"television", Television},
        {"television-bare", TelevisionBare},
        {"television-button-held", TelevisionButtonHeld},
        {"television-recording", TelevisionRecording},
        {"television-stepping", TelevisionStepping},
        {"television-no-signal", TelevisionNoSignal},
        {"television-signal-debug", TelevisionSignalDebug},
        {"radio", Radio},
        {"radio-tuned", RadioTuned},
        {"radio-no-signal", RadioNoSignal},
        {"small-television", SmallTelevision},
        {"small-radio", SmallRadio},
        {"small-no-signal", SmallNoSignal},
        {"small-larger-no-signal", LargerSmallNoSignal},
        {"small-recording", SmallRecording},
        {"reason-source", TelevisionReason<shell::Reason::Source>},
        {"reason-sync", TelevisionReason<shell::Reason::Sync>},
        {"reason-service", TelevisionReason<shell::Reason::Service>},
        {"reason-scrambled", TelevisionReason<shell::Reason::Scrambled>},
        {"reason-decoder", TelevisionReason<shell::Reason::Decoder>},
        {"reason-weak-signal", TelevisionReason<shell::Reason::WeakSignal>},
        {"reason-file", TelevisionReason<shell::Reason::File>},
        {"reason-no-picture", TelevisionReason<shell::Reason::NoPicture>},
        {"radio-reason", RadioReason},
        {"small-reason", SmallReason},
        {"home-after-exit", HomeAfterExit},
        {"home-while-radio-plays", HomeWhileRadioPlays},
        {"home-while-held", HomeWhileHeld},
        {"list-television", ListTelevision},
        {"list-radio", ListRadio},
        {"list-files", ListFiles},
        {"list-long", ListLong},
        {"list-empty", ListEmpty},
        {"settings", Settings},
        {"settings-debug-mode", SettingsInDebugMode},
        {"debug", Debug},
        {"box-stop-recording", BoxStopRecording},
        {"box-record-started", Box<kTextRecordStarted, kBoxNotice>},
        {"box-record-stopped", Box<kTextRecordStopped, kBoxNotice>},
        {"box-no-space", Box<kTextNoSpace, kBoxError>},
        {"box-no-radio", Box<kTextNoDAB, kBoxNotice>},
        {"box-no-television", Box<kTextNoDMB, kBoxNotice>},
        {"box-card", BoxCard},
    };
    return scenes;
}

} // namespace golden
