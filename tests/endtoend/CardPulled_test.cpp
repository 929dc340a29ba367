// The card is pulled while it is used. The card is a folder; pulled, it has no path any more, and the system answers every reading and
// writing of what was open on it with EIO, as it does for a device that is gone.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "host/ce/Text.h"
#include "host/filters/Recording.h"
#include "tests/endtoend/Probe.h"
#include "tests/endtoend/Receiver.h"
#include "view/DMBViewIds.h"

using namespace endtoend;
namespace fs = std::filesystem;

namespace {

constexpr UINT kFilesTab = 62, kFirstRow = 40, kEscape = 27;

std::string ReadAll(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

class CardPulled : public ::testing::Test {
protected:
    CardPulled() {
        receiver.Command(kCmdScan);
        receiver.PickFromList("ORBIT ONE");
        EXPECT_TRUE(receiver.WaitFor([this] { return receiver.eye.Seen() > 0; }, 10));
    }

    // Returns how many files were open on the card.
    int Pull() {
        fs::rename(receiver.Card(), away);
        // Nothing lies at the lowest addresses of a process, so its memory answers there as a card does that is gone.
        const int gone = open("/proc/self/mem", O_RDWR | O_CLOEXEC);
        int count = 0;
        for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/fd")) {
            std::error_code ignored;
            const std::string target = fs::read_symlink(entry.path(), ignored).string();
            if (target.rfind(away.string() + "/", 0) != 0)
                continue;
            EXPECT_GE(dup3(gone, std::stoi(entry.path().filename()), O_CLOEXEC), 0);
            ++count;
        }
        close(gone);
        return count;
    }
    void PutBack() { fs::rename(away, receiver.Card()); }

    [[nodiscard]] std::vector<fs::path> Files() const {
        std::vector<fs::path> files;
        for (const fs::directory_entry& entry : fs::directory_iterator(receiver.Card() / "DMB"))
            files.push_back(entry.path());
        std::sort(files.begin(), files.end());
        return files;
    }
    // How often the box about the card was shown.
    [[nodiscard]] long CardBoxes() const {
        const auto& boxes = receiver.shell->BoxRecords();
        return std::count_if(boxes.begin(), boxes.end(), [](const shell::BoxRecord& box) {
            return box.resource == u"VelMain" && box.textId == kTextCardError && box.style == kBoxError;
        });
    }
    void Record(int milliseconds) {
        receiver.Command(kCmdRecord);
        ASSERT_EQ(receiver.view->GetPlayMode(), kPlayModeRecording);
        receiver.Wait(milliseconds);
    }
    void ExpectTelevision() {
        receiver.eye.Forget();
        receiver.ear.Forget();
        receiver.Wait(2000);
        EXPECT_GT(receiver.eye.Moved(), 5);
        EXPECT_GT(receiver.ear.Loudness(), kHeard);
    }
    // The first row of the third tab, without picking it.
    [[nodiscard]] WString FirstFileInTheList() {
        WString text;
        receiver.shell->DuringModal([this] { receiver.shell->Press(kFilesTab); });
        receiver.shell->DuringModal([&] {
            text = receiver.shell->Element(kFirstRow)->GetText();
            receiver.shell->Key(kEscape);
        });
        receiver.Command(kCmdList);
        return text;
    }

    Receiver receiver{DemoAndLoss()};
    const fs::path away = receiver.Folder() / "card in a hand";
};

} // namespace

TEST_F(CardPulled, WhileRecordingTheRecordingEndsWithTheCardsBoxAndKeepsWhatWasWritten) {
    Record(6000);
    const std::vector<fs::path> files = Files();
    ASSERT_EQ(files.size(), 1u);
    const std::string before = ReadAll(files[0]);
    ASSERT_GT(before.size(), 100000u);

    EXPECT_EQ(Pull(), 1);
    ASSERT_TRUE(receiver.WaitFor([this] { return receiver.view->GetPlayMode() == kPlayModePlaying; }, 2));
    receiver.Wait(100);
    EXPECT_EQ(CardBoxes(), 1);
    EXPECT_TRUE(receiver.shell->IsBoxOpen()) << "it stays until it is answered";
    ExpectTelevision();

    receiver.Command(kCmdRecord);
    EXPECT_EQ(receiver.view->GetPlayMode(), kPlayModePlaying) << "no card, no recording";
    EXPECT_EQ(CardBoxes(), 2);
    EXPECT_EQ(FirstFileInTheList(), WString());

    PutBack();
    EXPECT_EQ(ReadAll(files[0]), before) << "every byte that was written, and nothing else";
    ExpectPlays(files[0], receiver.Folder(), 60, 3);
    receiver.clock.SetWall(1762001000);
    Record(3000);
    receiver.Command(kCmdRecord);
    EXPECT_EQ(Files().size(), 2u);
    EXPECT_EQ(ReadAll(files[0]), before);
    EXPECT_EQ(CardBoxes(), 2);
}

TEST_F(CardPulled, WhilePlayingBackTheCardsBoxSaysItAndTheFilePlaysAgainWhenTheCardIsBack) {
    Record(12000);
    receiver.Command(kCmdRecord);
    const std::string before = ReadAll(Files().at(0));
    receiver.PickFirstFile();
    receiver.eye.Forget();
    ASSERT_TRUE(receiver.WaitFor([this] { return receiver.eye.Seen() > 30; }, 5));
    EXPECT_EQ(receiver.peer->CurrentType(), kSessionFile);

    EXPECT_EQ(Pull(), 1);
    ASSERT_TRUE(receiver.WaitFor([this] { return receiver.view->GetPlayMode() == kPlayModeStopped; }, 15));
    EXPECT_EQ(CardBoxes(), 1);
    EXPECT_TRUE(receiver.shell->IsBoxOpen());
    EXPECT_EQ(FirstFileInTheList(), WString());
    receiver.Tune("ORBIT ONE");
    ASSERT_TRUE(receiver.WaitFor([this] { return receiver.peer->CurrentType() == kSessionDMB; }, 5));
    receiver.Wait(3000);
    ExpectTelevision();

    PutBack();
    EXPECT_EQ(ReadAll(Files().at(0)), before);
    receiver.PickFirstFile();
    receiver.eye.Forget();
    ASSERT_TRUE(receiver.WaitFor([this] { return receiver.view->GetPlayMode() == kPlayModeStopped; }, 20));
    EXPECT_GT(receiver.eye.Seen(), 250) << "to its end";
    EXPECT_EQ(CardBoxes(), 1);
}

TEST_F(CardPulled, BetweenTwoRecordingsTheListIsEmptyAndComesBack) {
    Record(4000);
    receiver.Command(kCmdRecord);
    const WString name = FirstFileInTheList();
    ASSERT_FALSE(name.empty());
    EXPECT_EQ(Pull(), 0) << "nothing is left open on the card";
    EXPECT_EQ(FirstFileInTheList(), WString());
    EXPECT_EQ(CardBoxes(), 0) << "looking alone is no fault";
    EXPECT_FALSE(filters::PlayingSeconds((u"\\SDMMC Card\\DMB\\" + name).c_str()));
    PutBack();
    EXPECT_EQ(FirstFileInTheList(), name);
    const auto seconds =
        filters::PlayingSeconds((u"\\SDMMC Card\\DMB\\" + ce::FromUtf8(Files().at(0).filename().string())).c_str());
    ASSERT_TRUE(seconds);
    EXPECT_GE(*seconds, 2u);
    EXPECT_LE(*seconds, 4u);
}
