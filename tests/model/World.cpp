#include "tests/model/World.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "platform/velshell/VelDocument.h"
#include "view/DMBView.h"

namespace model {

namespace {

WString Widen(const std::string& text) {
    return {text.begin(), text.end()};
}

// Saves are flushed to the disk; in memory that costs nothing.
const std::filesystem::path& FastSkin() {
    static const std::filesystem::path skin = [] {
        const char* memory = "/dev/shm";
        std::error_code ignored;
        if (std::filesystem::is_directory(memory, ignored))
            ::setenv("TMPDIR", memory, 0);
        return harness::TestData("skin-model");
    }();
    return skin;
}

scripted::Kind Scripted(Kind kind) {
    return static_cast<scripted::Kind>(kind);
}

const WCHAR* TextOf(std::int64_t ref) {
    static const std::vector<WString> wide = [] {
        std::vector<WString> all;
        for (int i = 0; i < Model::kFirstText + 6; ++i)
            all.push_back(Model::texts[i] != nullptr ? Widen(Model::texts[i]) : WString());
        return all;
    }();
    return ref == Model::kNull ? nullptr : wide[static_cast<std::size_t>(ref)].c_str();
}

} // namespace

World::World() : device(FastSkin()), pad(std::make_unique<PadInfo>()) {
    for (int i = 0; i < kKinds; ++i) {
        const auto kind = static_cast<scripted::Kind>(i);
        device.classes.Add(scripted::InfoOf(kind).classId,
                           [this, kind](REFIID iid, void** object) { return stage.Create(kind, iid, object); });
    }
    device.classes.Add(CLSID_FilterGraph, [this](REFIID iid, void** object) {
        *object = nullptr;
        return graphExists ? graphs.Create(CLSID_FilterGraph, nullptr, iid, object) : E_FAIL;
    });
    stage[scripted::Kind::Parser].live = true;
    stage[scripted::Kind::Parser].audioInfo = {7, 9};
    stage[scripted::Kind::DABSource].live = true;
    stage[scripted::Kind::AudioRenderer].renderer = true;
    stage[scripted::Kind::VideoRenderer].renderer = true;
    stage.log.listener = [this](const std::string& line) { device.shell.Note(line); };
    device.shell.SetIdleInput([this] { return GiveAnswer(); });
    std::filesystem::create_directory(device.Card() / "DMB");
    for (const char* name : {"a.dmb", "b.dmb"})
        harness::WriteFile(device.Card() / "DMB" / name, "x");
}

World::~World() {
    device.shell.CloseView();
    stage.log.listener = nullptr;
}

// ---- Surroundings --------------------------------------------------------------------------------------------------------

void World::Apply(const Inputs& in) {
    scripted::TunerScript& tuner = scripted::Tuner();
    tuner.opens = in.tunerOpens;
    if (in.tunes)
        tuner.tunes = nullptr;
    else
        tuner.tunes = [](int, int, int) { return false; };
    tuner.snr = in.snr;
    tuner.rssi = {in.rssi, in.rssiValue};
    tuner.log.clear();
    tuner.blocks.clear();
    for (int row = 0; row < kRows; ++row)
        for (const Service& service : in.air[static_cast<std::size_t>(row)])
            tuner.AddService(static_cast<int>(FrequencyOf(row)), service.label, service.type, service.id);
    for (int i = 0; i < kKinds; ++i) {
        scripted::Script& script = stage[static_cast<scripted::Kind>(i)];
        script.create = in.createFails[static_cast<std::size_t>(i)] ? E_FAIL : S_OK;
        script.join = in.joinFails[static_cast<std::size_t>(i)] ? E_FAIL : S_OK;
    }
    scripted::Script& parser = stage[scripted::Kind::Parser];
    parser.unknownPins.clear();
    if (in.parserPinUnknown)
        parser.unknownPins.insert(kParserAudioPin);
    parser.captureName = in.nameFails ? E_FAIL : S_OK;
    parser.startCapture = in.captureFails ? E_FAIL : S_OK;
    parser.noAudioInfo = in.noAudioInfo;
    scripted::Script& radio = stage[scripted::Kind::DABSource];
    radio.unknownPins.clear();
    if (in.radioPinUnknown)
        radio.unknownPins.insert(kDABSourcePin);
    radio.fetch = in.padFails ? E_FAIL : S_OK;
    radio.padInfo = in.padMissing ? nullptr : pad.get();
    scripted::Script& audio = stage[scripted::Kind::AudioRenderer];
    audio.pause = in.pauseFails ? E_FAIL : S_OK;
    audio.run = in.runFails ? E_FAIL : S_OK;
    audio.stopped = in.stopFails ? E_FAIL : S_OK;

    pad->dlsCharset = in.padWide ? 4 : 0;
    pad->dlsLength = 0;
    for (const char c : in.pad) {
        if (in.padWide)
            pad->dlsText[pad->dlsLength++] = 0;
        pad->dlsText[pad->dlsLength++] = static_cast<BYTE>(c);
    }
    ce::FileFaults faults;
    faults.refuseCreate = in.profileLocked;
    faults.cardAbsent = !in.cardIn;
    faults.freeBytes = in.freeBytes;
    device.ce.files().SetFaults(faults);
    if (in.slide != slide || !slideWritten) {
        slide = in.slide;
        slideWritten = true;
        const std::filesystem::path file = device.Root() / "MotBody.dat";
        std::filesystem::remove(file);
        if (slide == Inputs::BadSlide)
            harness::WriteFile(file, "no picture");
        else if (slide == Inputs::GoodSlide)
            std::filesystem::copy_file(harness::TestData("broadcast/slide.jpg"), file);
    }
    graphExists = in.graphExists;
    answers = in.answers;
    pickStep = 0;
}

// Called when a box or a dialog waits for nothing else.
bool World::GiveAnswer() {
    if (answers.empty())
        return false;
    const Answer answer = answers.front();
    shell::Shell& shell = device.shell;
    if (answer.act == Answer::Pick && pickStep == 0) {
        const bool isList = shell.Element(60) != nullptr;
        const bool isSettings = shell.Element(16) != nullptr;
        if (!isList && !isSettings) {
            answers.pop_front();
            shell.Press(4);
            return true;
        }
        shell.Press(isList ? 60U + static_cast<UINT>(answer.tab) : 12U + static_cast<UINT>(answer.row % 4));
        pickStep = isList ? 1 : 2;
        return true;
    }
    if (answer.act == Answer::Pick && pickStep == 1) {
        shell.Press(40U + static_cast<UINT>(answer.row));
        pickStep = 2;
        return true;
    }
    answers.pop_front();
    pickStep = 0;
    switch (answer.act) {
    case Answer::Pick:
    case Answer::Ok:
        shell.Press(3);
        break;
    case Answer::Cancel:
        shell.Press(4);
        break;
    case Answer::EscapeKey:
        shell.Key(27);
        break;
    case Answer::OkKey:
        shell.Key(195);
        break;
    }
    return true;
}

// ---- Steps -----------------------------------------------------------------------------------------------------------------

// The view may have been closed by what a step set off.
void World::Sync() {
    if (view != nullptr && device.shell.View() == nullptr) {
        view = nullptr;
        peer.reset();
    }
}

void World::Open(const std::vector<Record>& channels, bool listFile, std::optional<int> savedChannel, int recordTime,
                 int ratio) {
    std::vector<ChannelRecord> records;
    for (const Record& record : channels)
        records.push_back(harness::Channel(record.frequency, record.label, record.id, record.kind));
    device.WriteChannels(records);
    if (!listFile)
        std::filesystem::remove(device.Profile() / "DMBChannel.lst");
    std::filesystem::remove(device.Profile() / "DMB.dat");
    if (savedChannel) {
        std::string bytes(16, '\0');
        bytes[0] = 16;
        bytes[2] = static_cast<char>(*savedChannel & 0xFF);
        bytes[3] = static_cast<char>(*savedChannel < 0 ? 0xFF : 0);
        bytes[4] = static_cast<char>(recordTime);
        bytes[14] = static_cast<char>(ratio);
        device.WriteProfile(bytes);
    }
    view = static_cast<CVelDMBView*>(device.shell.OpenView(CVelDMBView::classCVelDMBView));
    peer = std::make_unique<DMBViewPeer>(*view);
}

void World::Close() {
    device.shell.CloseView();
    Sync();
}

void World::Settle() {
    device.shell.RunUntilIdle();
    device.shell.Press(12); // the lone OK of a box that stays
    if (device.shell.IsBoxOpen())
        device.shell.Click(400, 240); // a notice goes with a touch
    device.shell.RunUntilIdle();
}

void World::Post(unsigned message, std::int64_t w, std::int64_t l) {
    const bool text = message == kChangeChannel || (message == kUpdateInfo && w == 0);
    PostMessageW(view->GetSafeHwnd(), message, static_cast<WPARAM>(w),
                 text ? reinterpret_cast<LPARAM>(TextOf(l)) : static_cast<LPARAM>(l));
}

void World::Send(unsigned message, std::int64_t w, std::int64_t l) {
    device.ce.loop().Send(view->GetSafeHwnd(), message, static_cast<WPARAM>(w), static_cast<LPARAM>(l));
    Sync();
}

void World::KeyUp(unsigned code, unsigned repeat) {
    device.shell.Key(code, repeat);
}

void World::Wait(int milliseconds) {
    device.shell.Wait(milliseconds);
    Sync();
}

void World::Idle() {
    device.shell.RunUntilIdle();
    Sync();
}

void World::Report(Kind kind, int code) {
    if (scripted::ScriptedFilter* filter = stage.Last(Scripted(kind)))
        filter->Report(code);
}

void World::Hold(int hold) {
    view->HoldForBackView(hold);
}

void World::Pause() {
    view->Pause();
}

void World::Stop() {
    view->Stop();
}

void World::ReleaseInterface() {
    view->ReleaseInterface(0);
}

void World::ShowControls(int show) {
    view->ShowControls(show, 1);
}

void World::Minimize() {
    device.shell.Minimize();
}

void World::MoveSmall(const Place& place) {
    device.shell.MoveSmall({static_cast<LONG>(place.left), static_cast<LONG>(place.top), static_cast<LONG>(place.right),
                            static_cast<LONG>(place.bottom)});
}

void World::Restore() {
    device.shell.Restore();
}

void World::ShowHome() {
    device.shell.ShowHome();
}

void World::ShowView() {
    device.shell.ShowView();
}

void World::SaveAll() {
    device.shell.SaveAll();
}

void World::SetSnrDebug(int value) {
    view->SetSNRDebug(static_cast<unsigned>(value));
}

void World::SetRatio(int value) {
    view->SetRatioOnOff(static_cast<unsigned>(value));
}

void World::SetRecordTime(unsigned value) {
    view->SetRecordTime(value);
}

void World::SetMask(const std::string& bytes) {
    view->SetScanFrequency(reinterpret_cast<const BYTE*>(bytes.data()));
}

void World::Reading(int snr) {
    view->UpdateAntena(snr);
}

void World::PlayFile(const std::string& path) {
    peer->PlayDMBFile(Widen(path).c_str());
}

void World::ToggleKind() {
    peer->ChangeDMBDAB();
}

void World::Theme() {
    view->Theme();
}

} // namespace model
