// The shell around the view, as far as the view's doings show through it.
#include "tests/model/Model.h"

namespace model {

namespace {

constexpr int kMenuTimeout = 5000;
constexpr int kNoticeTime = 3000;
constexpr Place kScreen = {0, 0, 800, 480};
constexpr Place kDefaultSmall = {472, 232, 792, 472};

bool IsUsable(const Place& place) {
    return place.right - place.left >= 120 && place.bottom - place.top >= 120 && place.left >= 0 && place.top >= 0 &&
           place.right <= 800 && place.bottom <= 480;
}

std::string PlaceText(const Place& place) {
    return std::to_string(place.left) + " " + std::to_string(place.top) + " " + std::to_string(place.right) + " " +
           std::to_string(place.bottom);
}

} // namespace

// ---- Life ----------------------------------------------------------------------------------------------------------------

void Model::Open(const std::vector<Record>& channels, bool listFile, std::optional<int> savedChannel, int savedTime,
                 int savedRatio) {
    open = true;
    settled = false;
    list.clear();
    last = pending = lastTelevision = lastRadio = fileIndex = -1;
    count = retries = snrDebug = foundBlocks = 0;
    onAir = noSignal = signalWait = changeBusy = msgBoxUp = scanning = toggleGuard = dirty = false;
    hasTuner = hasStream = hasControl = hasEvent = hasVideo = false;
    history.clear();
    slideReady = false;
    labelField.clear();
    title.clear();
    slots = {};
    recordStart = 0;
    seenRssi = 0;
    seenRssiValue = 0;
    fullInfo = {};
    mode = kStopped;
    toolsShown = true;
    keepsAspect = 0;
    Note("open CVelDMBView");
    MakeGraph();
    hasController = hasGraph;
    toggleOn = false;
    Theme();
    // The settings file, or the defaults; a first small place is the shell's.
    current = savedChannel.value_or(-1);
    recordTime = savedChannel ? static_cast<unsigned>(savedTime) : 0;
    ratio = savedChannel ? savedRatio : 0;
    storedPlace = savedChannel ? Place{} : kDefaultSmall;
    fileList = channels;
    fileExists = listFile;
    Preload();
    active = true;
}

void Model::Close() {
    CloseNow();
}

void Model::Settle() {
    Idle();
    noticeUp = false;
    KillTimer(kNoticeTimer, kBox);
    settled = true;
}

void Model::CloseNow() {
    if (!open)
        return;
    if (!modals.empty()) {
        closePending = true;
        return;
    }
    Note("close");
    SaveProfile();
    Destroy();
    noticeUp = false;
    open = false;
    std::erase_if(queue, [](const Posted& message) { return message.window == kView; });
    timers.clear();
    pictureShown = false;
    minimized = homeInFront = active = false;
}

// The home screen holds the view; in front again it is active first and goes on then.
void Model::ShowHome() {
    if (homeInFront || minimized)
        return;
    Note("hold");
    Hold(1);
    active = false;
    homeInFront = true;
}

void Model::ShowView() {
    if (!modals.empty())
        return;
    if (minimized) {
        Restore();
        return;
    }
    if (!homeInFront)
        return;
    Note("back");
    homeInFront = false;
    active = true;
    Hold(0);
}

// ---- The base ------------------------------------------------------------------------------------------------------------

void Model::BaseShowControls(int show) {
    toolsShown = show != 0;
    if (toolsShown)
        ResetMenuTimeout();
    else
        KillTimer(kMenuTimer);
    Note(toolsShown ? "controls on" : "controls off");
}

void Model::ResetMenuTimeout() {
    if (toolsShown)
        StartTimer(kMenuTimer, kMenuTimeout);
}

void Model::EnableToggle(int enable) {
    toggleOn = enable != 0;
    At(26).state = At(27).state = toggleOn ? 0 : 2;
}

void Model::SetMode(int newMode) {
    mode = newMode;
    Note("mode " + std::to_string(mode));
}

void Model::SetTitle(const std::string& text) {
    title = text;
    Note("title " + text);
}

void Model::PostedBox(const char* resource, int textId, int style) {
    noticeUp = true;
    noticeStyle = style;
    KillTimer(kNoticeTimer, kBox);
    Note(std::string("box ") + resource + " " + std::to_string(textId) + " style " + std::to_string(style));
    if (style == 2)
        StartTimer(kNoticeTimer, kNoticeTime, kBox);
}

bool Model::ConnectInterface() {
    if (!hasGraph)
        return false;
    hasControl = hasEvent = hasVideo = true;
    if (!graph->events.empty())
        PostTo(kView, kGraphNotice);
    return true;
}

void Model::BaseReleaseInterface() {
    hasEvent = hasVideo = hasControl = false;
}

// Commands: the view's, then the base's.
void Model::CommandToBase(int id) {
    switch (id) {
    case 17:
        Restore();
        break;
    case 18:
        ClickExit();
        break;
    case 19:
        Minimize();
        break;
    case 20:
        Scan();
        break;
    case 21:
        ShowList();
        break;
    case 22:
        ShowSettings();
        break;
    case 23:
        ClickRecord();
        break;
    case 24:
    case 25:
        ClickUpDown(id);
        break;
    case 26:
    case 27:
        ClickToggle();
        break;
    case 96:
        ToggleFace();
        break;
    case 97:
        if (in.slide == Inputs::GoodSlide)
            slideReady = true;
        break;
    case 64954:
        Preload();
        break;
    default:
        break;
    }
}

void Model::SaveAll() {
    saveRequested = true;
    SaveProfile();
}

void Model::SaveProfile() {
    if (saveRequested)
        dirty = true;
    saveRequested = false;
    if (dirty && !in.profileLocked)
        dirty = false;
}

// ---- The small window ------------------------------------------------------------------------------------------------------

void Model::Minimize() {
    if (minimized)
        return;
    if (!IsUsable(storedPlace))
        storedPlace = kDefaultSmall;
    if (count == 0 || current < 0)
        return;
    smallPlace = storedPlace;
    smallMoved = false;
    Note("small " + PlaceText(smallPlace));
    // Becoming small.
    minimized = true;
    if (fullInfo.Empty())
        fullInfo = info;
    if (!toggleOn)
        ShowToolButtons(false);
    if (CurrentType() == kRadioType)
        ShowBackground(false);
    At(26).face = CurrentType() == kTelevision ? 1 : 0;
    if (toolsShown)
        At(26).shown = true;
    At(24).face = At(25).face = 1;
    const long grown = smallPlace.right - smallPlace.left - 800;
    smallToggle.left += grown;
    smallToggle.right += grown;
    FitTo(smallPlace.right - smallPlace.left, smallPlace.bottom - smallPlace.top);
}

void Model::MoveSmall(const Place& place) {
    if (!minimized || !IsUsable(place) || place == smallPlace)
        return;
    const long grown = place.right - place.left - (smallPlace.right - smallPlace.left);
    smallPlace = place;
    smallMoved = true;
    Note("small " + PlaceText(smallPlace));
    smallToggle.left += grown;
    smallToggle.right += grown;
    FitTo(place.right - place.left, place.bottom - place.top);
}

void Model::Restore() {
    if (!minimized)
        return;
    Note("full");
    const long grown = kScreen.right - (smallPlace.right - smallPlace.left);
    smallToggle.left += grown;
    smallToggle.right += grown;
    FitTo(800, 480);
    RestoreFrom(!smallMoved);
}

} // namespace model
