#include "tests/golden/Scenes.h"

#include <chrono>

#include "dataservice/PadInfo.h"
#include "host/ce/Text.h"

namespace golden {

using scripted::Kind;

namespace {

constexpr DWORD k8A = 181280000, k8B = 183008000, k8C = 184736000;
// A quiet evening, so that the home screen's clock shows 19:30 on a Tuesday.
constexpr TimeSeconds kEvening = 1777977000;

ChannelRecord Korean(DWORD frequency, const char* label, DWORD id, LONG kind) {
    return harness::Channel(frequency, ce::WideToNarrow(ce::FromUtf8(label)), id, kind);
}

std::vector<ChannelRecord> KoreanChannels() {
    return {Korean(k8A, "한빛 TV", 0x11, kKindDMB), Korean(k8A, "별밤 라디오", 0x21, kKindDAB),
            Korean(k8B, "푸른바다 TV", 0x12, kKindDMB), Korean(k8B, "한강 FM", 0x22, kKindDAB)};
}

} // namespace

void ScreenStory::Start(std::optional<WORD> channel) {
    device.clock.SetWall(kEvening);
    Open(KoreanChannels(), channel);
}

void ScreenStory::StartEmpty() {
    device.clock.SetWall(kEvening);
    Open({});
}

void ScreenStory::StartWithManyChannels() {
    device.clock.SetWall(kEvening);
    std::vector<ChannelRecord> channels = KoreanChannels();
    for (int i = 1; i <= 12; ++i)
        channels.push_back(
            Korean(k8C, ("우리동네 방송 " + std::to_string(i)).c_str(), static_cast<DWORD>(0x100 + i), kKindDMB));
    Open(channels, WORD{kCity});
}

// A picture like broadcast: light and dark parts under every element, and something round.
void ScreenStory::PresentPicture() {
    constexpr int kWidth = 320, kHeight = 240;
    std::vector<std::uint32_t> pixels(std::size_t{kWidth} * kHeight);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
            constexpr std::uint32_t kSky = 0x9CC9EE, kHill = 0x3F7A4A, kField = 0xD8C27A, kSun = 0xFFF3B0;
            const int hill = 130 + (x - 160) * (x - 160) / 400;
            const bool sun = (x - 240) * (x - 240) + (y - 60) * (y - 60) < 30 * 30;
            pixels[static_cast<std::size_t>(y * kWidth + x)] = sun ? kSun : y < hill ? kSky : y < 190 ? kHill : kField;
        }
    device.shell.Video().Present(kWidth, kHeight, pixels, 4.0 / 3);
}

void ScreenStory::WatchTelevision() {
    Start(WORD{kCity});
    PresentPicture();
    Report(Kind::VideoRenderer, EC_VIDEOFRAMEREADY);
    Wait(3000); // the antenna has been read
}

void ScreenStory::HearRadio() {
    Start(WORD{kNight});
    Wait(500);
    OnAir();
    Label(ce::WideToNarrow(ce::FromUtf8("별밤 라디오 - 잠 못 드는 밤의 친구")));
    Label(ce::WideToNarrow(ce::FromUtf8("지금 나오는 곡: 베토벤, 엘리제를 위하여")));
    std::filesystem::copy_file(harness::TestData("broadcast/slide.jpg"), device.Root() / "MotBody.dat",
                               std::filesystem::copy_options::overwrite_existing);
    Command(kCmdDecodeSlide);
    Idle();
}

void ScreenStory::LoseSignal() {
    for (int i = 0; i < 6; ++i)
        Report(Kind::Parser, IDMB_EVENT_NO_SIGNAL);
}

void ScreenStory::PutRecordings() {
    std::filesystem::create_directories(device.Card() / "DMB");
    const struct {
        const char* name;
        std::size_t bytes;
        int daysAgo;
    } files[] = {{"한빛 TV_260502193000.dmb", 1200000, 3},
                 {"푸른바다 TV_260503193000.dmb", 400000000, 2},
                 {"한빛 TV_260504193000.dmb", 400000, 1}};
    // At the rate of a sub-channel; the smallest is taken for damaged.
    device.shell.SetPlayingTimeSource([this](const WCHAR* path) -> std::optional<UINT> {
        constexpr std::uintmax_t kBytesPerSecond = 68000, kLeast = 1000000;
        const WString name = WString(path).substr(WString(path).rfind(u'\\') + 1);
        const std::uintmax_t bytes = std::filesystem::file_size(device.Card() / "DMB" / ce::ToUtf8(name));
        return bytes < kLeast ? std::nullopt : std::optional(static_cast<UINT>(bytes / kBytesPerSecond));
    });
    for (const auto& file : files) {
        const std::filesystem::path path = device.Card() / "DMB" / file.name;
        harness::WriteFile(path, "");
        std::filesystem::resize_file(path, file.bytes);
        const auto written = std::chrono::sys_seconds(std::chrono::seconds(kEvening)) - std::chrono::days(file.daysAgo);
        std::filesystem::last_write_time(path, std::chrono::file_clock::from_sys(written));
    }
}

void ScreenStory::HideControls() {
    view->ShowControls(0, 1);
    Idle();
}

void ScreenStory::GiveReason(shell::ReasonShown reason) {
    device.shell.SetReasonSource([reason] { return reason; });
    constexpr int kHalfSecond = 500;
    Wait(kHalfSecond);
}

Picture ScreenStory::Look() {
    const std::uint32_t* screen = device.shell.Screen();
    const int scale = device.shell.Scale();
    Picture picture{800 * scale, 480 * scale, {screen, screen + std::size_t{800} * 480 * scale * scale}};
    for (std::uint32_t& pixel : picture.pixels)
        pixel &= 0xFFFFFF;
    return picture;
}

void ScreenStory::Take() {
    taken = Look();
}

void ScreenStory::TakeInside(std::function<void()> before) {
    if (before)
        device.shell.DuringModal(std::move(before));
    device.shell.DuringModal([this] { Take(); });
}

} // namespace golden
