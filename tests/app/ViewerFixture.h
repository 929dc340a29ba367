// For tests of the viewer without its window: a broadcast made for the purpose, the session that plays it, and what a user could do.
// Waits are for events, each with a limit.
#pragma once

#include <algorithm>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "host/app/dmbtv/Controls.h"
#include "host/app/dmbtv/ExitStatus.h"
#include "host/app/dmbtv/Player.h"
#include "host/app/dmbtv/ScriptRunner.h"
#include "host/app/dmbtv/ViewLook.h"
#include "host/headend/Headend.h"
#include "view/DMBViewIds.h"

namespace dmbtv {

using shell::sdl::Action;
using shell::sdl::Input;

namespace fs = std::filesystem;

inline constexpr const char* kBroadcast = R"({"seconds": 6, "ensembles": [
  {"block": "8A", "id": "0xE1C1", "label": {"text": "ONE"}, "services": [
    {"kind": "television", "id": "0xE1C10101", "subChannel": 1, "bitRate": 256, "label": {"text": "FIRST TV"},
     "video": {"scene": "bars", "width": 160, "height": 120, "framesPerSecond": 15}, "sound": {"melody": "tone:440"}},
    {"kind": "radio", "id": "0xE1C2", "subChannel": 2, "bitRate": 128, "label": {"text": "RADIO"},
     "sound": {"melody": "tone:440"}}]},
  {"block": "12B", "id": "0xE1E1", "label": {"text": "TWO"}, "services": [
    {"kind": "television", "id": "0xE1E10101", "subChannel": 1, "bitRate": 256, "label": {"text": "SECOND TV"},
     "video": {"scene": "bars", "width": 160, "height": 120, "framesPerSecond": 15}, "sound": {"melody": "tone:660"}}]}]})";

inline const headend::Broadcast& TestBroadcast() {
    static const headend::Broadcast made =
        headend::MakeBroadcast(headend::ParseDescription(kBroadcast, "test broadcast", {}));
    return made;
}

inline std::string ReadWhole(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

class ViewerTest : public ::testing::Test {
protected:
    ViewerTest() {
        std::string pattern = (fs::temp_directory_path() / "dmbtv-test-XXXXXX").string();
        base = mkdtemp(pattern.data());
        headend::WriteBroadcast(TestBroadcast(), base / "air");
        options.source = (base / "air").string();
        options.profile = base / "profile";
        options.card = base / "card";
        options.deviceRoot = base / "device";
        options.language = "en";
        SetLogLevel(LogLevel::Error);
    }
    ~ViewerTest() override {
        controls.reset();
        session.reset();
        std::error_code ignored;
        fs::remove_all(base, ignored);
    }

    void Open() {
        session.emplace(options, SessionPorts{card, nullptr, {}, {}});
        controls.emplace(*session, frames, inputs, state);
        CancelUnanswered(session->Shell());
    }
    // With a list and the first service playing.
    void OpenPlaying() {
        Open();
        ASSERT_EQ(Play("expect mode 4"), kExitDone);
        controls.reset();
        session.reset();
        Open();
        session->OpenView();
        ASSERT_TRUE(Until([this] {
            return Mode() == kPlayModePlaying && session->Shell().Video().FrameCount() > 0 &&
                   frames.Take().frame->video;
        }));
    }

    int Play(const std::string& script) {
        const Script read = ReadScript(script);
        EXPECT_EQ(read.error, "");
        return dmbtv::Play(*session, options, read);
    }

    // Lets the shell work until the condition holds; false when it does not come about.
    bool Until(const std::function<bool()>& condition, ce::Millis limit = 20000) {
        ce::MessageLoop& loop = session->System().loop();
        bool over = false;
        const HWND alarm = loop.AddWindow([&over](HWND, UINT, WPARAM, LPARAM) -> LRESULT {
            over = true;
            return 0;
        });
        loop.StartTimer(alarm, 1, static_cast<UINT>(limit));
        const HWND look = loop.AddWindow([](HWND, UINT, WPARAM, LPARAM) -> LRESULT { return 0; });
        loop.StartTimer(look, 1, 10);
        (void)loop.RunUntil([&] { return over || condition(); });
        loop.RemoveWindow(alarm);
        loop.RemoveWindow(look);
        return condition();
    }

    void Press(Action action) { inputs.Push({Input::Kind::Key, {}, action, 0}); }
    int Mode() { return session->Shell().View()->GetPlayMode(); }
    std::u16string Title() { return session->Shell().Title(); }
    const CVelDMBView& View() { return static_cast<const CVelDMBView&>(*session->Shell().View()); }

    // Size of the first recording.
    [[nodiscard]] std::uintmax_t RecordedBytes() const {
        std::error_code error;
        const fs::directory_iterator recordings(options.card / "DMB", error);
        return recordings == fs::directory_iterator() ? 0 : fs::file_size(recordings->path());
    }

    // The text of an element, nothing while it is hidden.
    std::u16string Text(UINT element) {
        const GButton* shown = session->Shell().Element(element);
        return shown != nullptr && shown->IsVisible() ? std::u16string(shown->GetText()) : std::u16string();
    }
    [[nodiscard]] std::string AirFile(const char* block) const { return base / "air" / (block + std::string(".eti")); }

    fs::path base;
    Options options;
    filters::SoundDevice* card = nullptr;
    WindowState state;
    shell::sdl::Frames frames;
    shell::sdl::Inputs inputs;
    std::optional<Session> session;
    std::optional<Controls> controls;
};

} // namespace dmbtv
