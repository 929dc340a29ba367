#include "tests/stories/Story.h"

#include <algorithm>
#include <cstring>

#include "dataservice/PadInfo.h"
#include "host/shell/skin/Element.h"

namespace stories {

using scripted::Kind;

std::vector<ChannelRecord> UsualChannels() {
    return {harness::Channel(205280000, "NEWS", 0x11, kKindDMB), harness::Channel(205280000, "MUSIC", 0x21, kKindDAB),
            harness::Channel(207008000, "SPORT", 0x12, kKindDMB), harness::Channel(183008000, "JAZZ", 0x22, kKindDAB),
            harness::Channel(183008000, "MOVIE", 0x13, kKindDMB)};
}

Story::Story(const std::filesystem::path& skin) : device(skin), pad(std::make_unique<PadInfo>()) {
    for (std::size_t i = 0; i < scripted::kKinds; ++i) {
        const auto kind = static_cast<Kind>(i);
        device.classes.Add(scripted::InfoOf(kind).classId,
                           [this, kind](REFIID iid, void** object) { return stage.Create(kind, iid, object); });
    }
    stage[Kind::Parser].live = true;
    stage[Kind::DABSource].live = true;
    stage[Kind::AudioRenderer].renderer = true;
    stage[Kind::VideoRenderer].renderer = true;
    stage[Kind::DABSource].padInfo = pad.get();
    stage.log.listener = [this](const std::string& line) { device.shell.Note(line); };
}

Story::~Story() {
    stage.log.listener = nullptr;
}

void Story::TearDown() {
    if (view != nullptr)
        Close();
}

void Story::Open(const std::vector<ChannelRecord>& channels, std::optional<WORD> savedChannel) {
    device.WriteChannels(channels);
    if (savedChannel) {
        std::string bytes(16, '\0');
        bytes[0] = 16;
        bytes[2] = static_cast<char>(*savedChannel & 0xFF);
        bytes[3] = static_cast<char>(*savedChannel >> 8);
        device.WriteProfile(bytes);
    }
    view = static_cast<CVelDMBView*>(device.shell.OpenView(CVelDMBView::classCVelDMBView));
    ASSERT_NE(view, nullptr);
    peer = std::make_unique<DMBViewPeer>(*view);
    Idle();
}

void Story::Close() {
    device.shell.CloseView();
    Idle();
    view = nullptr;
    peer.reset();
    EXPECT_EQ(stage.Alive(), leaked) << "filters are left over";
    EXPECT_EQ(scripted::Tuner().controlsAlive, 0);
    EXPECT_EQ(scripted::Tuner().streamsAlive, 0);
    EXPECT_EQ(device.shell.Leaks(), std::vector<std::string>{});
}

void Story::CloseLeaking(std::initializer_list<Kind> kinds) {
    leaked = static_cast<int>(kinds.size());
    Close();
    for (const Kind kind : kinds) {
        scripted::ScriptedFilter* filter = stage.Last(kind);
        ASSERT_NE(filter, nullptr) << scripted::InfoOf(kind).logName;
        EXPECT_EQ(filter->Release(), 0u);
    }
    EXPECT_EQ(stage.Alive(), 0);
}

void Story::Tune(LONG index) {
    PostMessageW(view->GetSafeHwnd(), WM_DMB_CHANGECHANNEL, static_cast<WPARAM>(index), 0);
    Idle();
}

void Story::Command(UINT id) {
    PostMessageW(view->GetSafeHwnd(), WM_COMMAND, id, 0);
    Idle();
}

void Story::Send(UINT message, WPARAM wParam, LPARAM lParam) {
    device.ce.loop().Send(view->GetSafeHwnd(), message, wParam, lParam);
}

void Story::Report(Kind kind, LONG code) {
    scripted::ScriptedFilter* filter = stage.Last(kind);
    ASSERT_NE(filter, nullptr);
    filter->Report(code);
    Idle();
}

void Story::Label(const std::string& bytes, std::uint32_t charset) {
    pad->dlsCharset = charset;
    pad->dlsLength = static_cast<std::int32_t>(bytes.size());
    std::memcpy(pad->dlsText, bytes.data(), bytes.size());
    Report(Kind::DABSource, IDMB_EVENT_PAD);
}

void Story::OnAir() {
    PostMessageW(view->GetSafeHwnd(), WM_DMB_ONAIR, 0, 0);
    Idle();
}

int Story::Count(const std::string& part) const {
    const std::vector<std::string> log = device.shell.Log();
    return static_cast<int>(std::count_if(
        log.begin(), log.end(), [&](const std::string& line) { return line.find(part) != std::string::npos; }));
}

::testing::AssertionResult Story::InOrder(std::initializer_list<std::string> parts) const {
    const std::vector<std::string> log = device.shell.Log();
    auto position = log.begin();
    for (const std::string& part : parts) {
        position = std::find_if(position, log.end(),
                                [&](const std::string& line) { return line.find(part) != std::string::npos; });
        if (position == log.end()) {
            auto failure = ::testing::AssertionFailure() << "'" << part << "' is missing or too early; the log:\n";
            for (const std::string& line : log)
                failure << "  " << line << "\n";
            return failure;
        }
        ++position;
    }
    return ::testing::AssertionSuccess();
}

GButton& Story::Element(UINT id) const {
    GButton* button = view->Find(id);
    if (button == nullptr)
        throw std::runtime_error("the skin has no element " + std::to_string(id));
    return *button;
}

int Story::FaceOf(UINT id) const {
    return static_cast<const shell::Element&>(Element(id)).State().face;
}

WString Story::Info() const {
    GButton& info = Element(kElementInfo);
    return info.IsVisible() ? WString(info.GetText()) : WString();
}

} // namespace stories
