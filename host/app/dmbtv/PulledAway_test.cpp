// What becomes of the viewer when something is taken away from it: its source, the program that receives for it, its sound card.
#include "tests/app/ViewerFixture.h"

#include <signal.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <sstream>
#include <thread>

namespace dmbtv {

namespace {

constexpr UINT kReasonElement = 71, kRadioReasonElement = 73;
constexpr const char16_t* kTooWeak = u"The signal is too weak to receive.";
constexpr const char16_t* kNothingToReceiveFrom =
    u"Nothing to receive from.\nCheck the receiver or the broadcast file.";
constexpr const char16_t* kNoBroadcast = u"No broadcast found here.\nCheck the antenna or choose another channel.";

class PulledAway : public ViewerTest {
protected:
    bool NoSignal() { return Text(kElementInfo) == kTooWeak; }
    // Television shows moving pictures and no notice.
    bool PlaysAgain() {
        const std::uint64_t before = session->Shell().Video().FrameCount();
        return Until([&] {
            return Mode() == kPlayModePlaying && !NoSignal() && Text(kReasonElement).empty() &&
                   session->Shell().Video().FrameCount() > before + 10;
        });
    }
};

} // namespace

// Edge case: the source is removed and comes back
TEST_F(PulledAway, ASourceThatGoesIsTriedAgainUntilItComesBack) {
    OpenPlaying();
    fs::rename(base / "air" / "12B.eti", base / "away.eti");
    Press(Action::Digit2);
    ASSERT_TRUE(Until([this] { return Mode() == kPlayModeStopped; }));
    const GButton* info = session->Shell().Element(kElementInfo);
    EXPECT_TRUE(info->IsVisible());
    fs::rename(base / "away.eti", base / "air" / "12B.eti");
    EXPECT_TRUE(Until([this] { return Mode() == kPlayModePlaying; }));
    EXPECT_EQ(Title(), u"[CH12] SECOND TV");
}

// Edge case: the file that plays is cut to nothing and restored
TEST_F(PulledAway, AFileCutToNothingPlaysByItselfWhenItIsBack) {
    OpenPlaying();
    const std::string whole = ReadWhole(AirFile("8A"));
    fs::resize_file(AirFile("8A"), 0);
    EXPECT_TRUE(Until([this] { return NoSignal() && Text(kReasonElement) == kNothingToReceiveFrom; }));
    std::ofstream(AirFile("8A"), std::ios::binary) << whole;
    EXPECT_TRUE(PlaysAgain());
    EXPECT_EQ(Title(), u"[CH8] FIRST TV");
}

// Edge case: the same happens to a radio
TEST_F(PulledAway, ARadioWhoseFileWasCutPlaysByItselfWhenItIsBack) {
    OpenPlaying();
    PostMessageW(View().GetSafeHwnd(), WM_DMB_CHANGECHANNEL, 1, 0);
    ASSERT_TRUE(Until([this] { return Mode() == kPlayModePlaying && Title() == u"[CH8] RADIO"; }));
    const std::string whole = ReadWhole(AirFile("8A"));
    fs::resize_file(AirFile("8A"), 0);
    EXPECT_TRUE(Until([this] { return Mode() == kPlayModeStopped && NoSignal(); }));
    EXPECT_TRUE(Until([this] { return Text(kRadioReasonElement) == kNothingToReceiveFrom; }));
    std::ofstream(AirFile("8A"), std::ios::binary) << whole;
    EXPECT_TRUE(
        Until([this] { return Mode() == kPlayModePlaying && !NoSignal() && Text(kRadioReasonElement).empty(); }));
}

// Edge case: the file that plays is overwritten with zeros, as by a disk that fails
TEST_F(PulledAway, AFileOfZerosIsNoBroadcast) {
    OpenPlaying();
    const std::string whole = ReadWhole(AirFile("8A"));
    const std::string zeros(whole.size(), '\0');
    std::ofstream(AirFile("8A"), std::ios::binary) << zeros;
    EXPECT_TRUE(Until([this] { return NoSignal() && Text(kReasonElement) == kNoBroadcast; }));
    std::ofstream(AirFile("8A"), std::ios::binary) << whole;
    EXPECT_TRUE(PlaysAgain());
    // Chosen when it is so already.
    std::ofstream(AirFile("12B"), std::ios::binary) << zeros;
    Press(Action::Digit2);
    EXPECT_TRUE(Until([this] { return Mode() == kPlayModeStopped && Text(kReasonElement) == kNoBroadcast; }));
}

// A demodulator that can be unplugged, killed and stopped.
class PulledAwayCommand : public PulledAway {
protected:
    void OpenPlayingCommand() {
        const std::string air = base / "air";
        options.source.clear();
        options.command = "sh -c 'test -e " + Unplugged() + " && exit 1; test -e " + air +
                          "/{block}.eti || exit 1; echo $$ > " + std::string(base / "pid") + "; while cat " + air +
                          "/{block}.eti; do :; done'";
        OpenPlaying();
    }
    [[nodiscard]] std::string Unplugged() const { return base / "unplugged"; }
    [[nodiscard]] int Program() const { return std::atoi(ReadWhole(base / "pid").c_str()); }

    // Whether a process of the group still runs. One that has ended and that nobody has collected yet, as long as its new
    // parent takes, does not.
    static bool Runs(int group) {
        for (const fs::directory_entry& entry : fs::directory_iterator("/proc")) {
            std::ifstream file(entry.path() / "stat");
            std::string line;
            std::getline(file, line);
            // pid (name) state parent group ..., where the name may hold anything
            std::istringstream rest(line.substr(std::min(line.size(), line.rfind(')') + 1)));
            char state = 0;
            int parent = 0;
            int inGroup = 0;
            if (rest >> state >> parent >> inGroup && inGroup == group && state != 'Z' && state != 'X')
                return true;
        }
        return false;
    }
};

// Edge case: the demodulator is killed while it plays
TEST_F(PulledAwayCommand, AKilledDemodulatorIsStartedAgain) {
    OpenPlayingCommand();
    const int first = Program();
    ASSERT_GT(first, 0);
    std::ofstream(Unplugged()) << "its receiver too";
    ASSERT_EQ(kill(-first, SIGKILL), 0);
    EXPECT_TRUE(Until([this] { return NoSignal() && Text(kReasonElement) == kNothingToReceiveFrom; }));
    fs::remove(Unplugged());
    EXPECT_TRUE(PlaysAgain());
    EXPECT_NE(Program(), first);
}

// Edge case: the demodulator hangs while it plays
TEST_F(PulledAwayCommand, AHangingDemodulatorIsEndedAndStartedAgain) {
    OpenPlayingCommand();
    const int first = Program();
    ASSERT_GT(first, 0);
    ASSERT_EQ(kill(-first, SIGSTOP), 0);
    ASSERT_TRUE(Runs(first));
    EXPECT_TRUE(Until([this] { return NoSignal() && Text(kReasonElement) == kNothingToReceiveFrom; }));
    EXPECT_TRUE(PlaysAgain());
    EXPECT_NE(Program(), first);
    EXPECT_TRUE(Until([this, first] { return !Runs(first); })) << "nobody of its group is left";
}

// A sound card on a cable.
class CableCard final : public filters::SoundDevice {
public:
    ~CableCard() { Stop(); }
    bool Start(filters::SoundSource& source) override {
        Stop();
        ++starts;
        if (!plugged)
            return false;
        stopping = false;
        puller = std::thread([this, &source] {
            std::vector<std::int16_t> frames(960);
            for (ce::Millis next = clock.Now(); !stopping; next += 10) {
                if (plugged) {
                    source.Pull(frames);
                    ++pulls;
                }
                (void)wake.Wait(next);
            }
        });
        return true;
    }
    void Stop() override {
        stopping = true;
        wake.Raise();
        if (puller.joinable())
            puller.join();
    }
    int LatencyMs() const override { return 20; }

    std::atomic<bool> plugged{true};
    std::atomic<int> starts{0};
    std::atomic<int> pulls{0};

private:
    ce::RealClock clock;
    ce::Signal wake{clock};
    std::atomic<bool> stopping{false};
    std::thread puller;
};

// Edge case: the sound card is pulled out and put back
TEST_F(PulledAway, ASoundCardThatComesBackIsHeardAgainByItself) {
    CableCard cable;
    card = &cable;
    OpenPlaying();
    EXPECT_TRUE(Until([&] { return cable.pulls > 20; }));
    cable.plugged = false;
    const int starts = cable.starts;
    // The picture goes on, and the card is looked for.
    EXPECT_TRUE(Until([&] { return cable.starts > starts; }));
    EXPECT_TRUE(PlaysAgain());
    const int pulls = cable.pulls;
    cable.plugged = true;
    EXPECT_TRUE(Until([&] { return cable.pulls > pulls + 20; }));
    EXPECT_TRUE(PlaysAgain());
    controls.reset();
    session.reset();
    card = nullptr;
}

} // namespace dmbtv
