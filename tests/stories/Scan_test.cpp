// The channel scan and the list that it opens.
#include <algorithm>

#include "host/shell/core/Access.h"
#include "host/shell/core/DialogImpl.h"
#include "tests/stories/Story.h"

using namespace stories;

namespace {
class ScanStory : public Story {
protected:
    void OnlyRows(std::initializer_list<int> rows) {
        BYTE mask[kChannelTableRows] = {};
        for (const int row : rows)
            mask[row] = 1;
        view->SetScanFrequency(mask);
    }
    static int Frequency(int row) { return static_cast<int>(ChannelTable[row].frequency); }
};
} // namespace

TEST_F(ScanStory, EveryRowIsAskedAndTheListIsRebuiltWrittenAndOpened) {
    Open();
    Tune(kNews);
    scripted::Tuner().AddService(Frequency(4), "KURZ", 0, 0xE202);
    scripted::Tuner().AddService(Frequency(15), "TV ONE", 8, 0xF1E00401);
    Forget();
    bool listWasOpen = false;
    device.shell.DuringModal([&] {
        listWasOpen = CVelDialog::FromHandle(GView::GetFrontWindow()) != nullptr;
        device.shell.Key(27);
    });
    const ce::Millis before = device.clock.Now();
    Command(kCmdScan);
    EXPECT_EQ(device.clock.Now() - before, 250 + 21 * 20);
    EXPECT_TRUE(listWasOpen);
    EXPECT_EQ(Count("tuner.GetChannel"), 21);
    EXPECT_EQ(peer->ChannelCount(), 2);
    EXPECT_EQ(peer->FoundBlockCount(), 2);
    EXPECT_EQ(harness::ReadFile(device.Profile() / "DMBChannel.lst").size(), 64u);
    EXPECT_EQ(peer->CurChannel(), -1);
    EXPECT_EQ(view->GetPlayMode(), kPlayModeStopped);
    EXPECT_EQ(peer->Scanning(), 0);
    EXPECT_EQ(peer->ProfileDirty(), 1);
    EXPECT_FALSE(HasTimer(eCHANGE_TIMER));
}

TEST_F(ScanStory, ButtonsComeBackButForRecord) {
    Open();
    scripted::Tuner().AddService(Frequency(4), "KURZ", 0, 1);
    std::vector<int> during;
    scripted::Tuner().onGetChannel = [&](int) {
        if (during.empty()) {
            for (const UINT id : {20u, 21u, 22u, 23u, 24u, 25u, 27u})
                during.push_back(Element(id).GetState());
        }
        EXPECT_EQ(peer->Scanning(), 1);
    };
    Command(kCmdScan);
    EXPECT_EQ(during, std::vector<int>(7, kButtonDisabled));
    for (const UINT id : {20u, 21u, 22u, 24u, 25u, 27u})
        EXPECT_EQ(Element(id).GetState(), kButtonNormal) << id;
    EXPECT_EQ(Element(23).GetState(), kButtonDisabled); // on purpose
    EXPECT_FALSE(Element(49).IsVisible());
    EXPECT_FALSE(Element(50).IsVisible());
    EXPECT_EQ(WString(Element(50).GetText()), WString());
}

// Edge case: a mask of rows 0 and 20 asks two blocks, and the bar goes from 1/21 to 21/21 in two steps.
TEST_F(ScanStory, MaskOfTwoRowsAsksTwoBlocks) {
    Open();
    OnlyRows({0, 20});
    Forget();
    constexpr int kLine = 222 * 800 + 215; // in the middle of the bar, from its left end
    std::vector<std::uint32_t> empty;
    std::vector<int> bars;
    device.shell.SetScreenListener([&] {
        if (empty.empty() || !Element(kElementScanBox).IsVisible())
            return;
        const std::uint32_t* line = device.shell.Screen() + kLine;
        int length = 0;
        while (length < 400 && line[length] != empty[static_cast<std::size_t>(length)])
            ++length;
        if (bars.empty() || bars.back() != length)
            bars.push_back(length);
    });
    scripted::Tuner().onGetChannel = [&](int) {
        if (empty.empty())
            empty.assign(device.shell.Screen() + kLine, device.shell.Screen() + kLine + 400);
    };
    const ce::Millis before = device.clock.Now();
    Command(kCmdScan);
    EXPECT_EQ(Count("tuner.GetChannel"), 2);
    EXPECT_TRUE(InOrder({"tuner.GetChannel 175280000", "tuner.GetChannel 214736000"}));
    EXPECT_EQ(device.clock.Now() - before, 2 * 20);
    EXPECT_EQ(bars, (std::vector<int>{365 / 21, 365}));
    device.shell.SetScreenListener(nullptr);
}

// Edge case: a mask of zeros scans nothing, rewrites the file empty and shows the notice.
TEST_F(ScanStory, EmptyMaskScansNothingAndShowsTheNotice) {
    Open();
    OnlyRows({});
    Forget();
    Command(kCmdScan);
    EXPECT_EQ(Count("tuner.GetChannel"), 0);
    EXPECT_EQ(peer->ChannelCount(), 0);
    EXPECT_EQ(harness::ReadFile(device.Profile() / "DMBChannel.lst").size(), 0u);
    EXPECT_TRUE(Saw("post view 1031 1001 2"));
}

// Edge case: two television and three radio services after a block with one television service show 3 and 3.
TEST_F(ScanStory, CountsAddUpOverTheBlocks) {
    Open();
    scripted::Tuner().AddService(Frequency(0), "A", 8, 1);
    for (int i = 0; i < 2; ++i)
        scripted::Tuner().AddService(Frequency(1), "T", 8, 2);
    for (int i = 0; i < 3; ++i)
        scripted::Tuner().AddService(Frequency(1), "R", 0, 3);
    scripted::Tuner().AddService(Frequency(1), "D", 5, 4);
    WString last;
    scripted::Tuner().onGetChannel = [&](int) { last = Element(50).GetText(); };
    Command(kCmdScan);
    EXPECT_EQ(last, WTEXT("  3                       3 "));
}

// Edge case: with eleven answering blocks the slot after the last may hold a block of the scan before.
TEST_F(ScanStory, SlotAfterTheEleventhBlockKeepsTheScanBefore) {
    Open();
    for (int row = 0; row < 13; ++row)
        scripted::Tuner().AddService(Frequency(row), "OLD", 8, static_cast<std::uint32_t>(row));
    Command(kCmdScan);
    ASSERT_EQ(peer->ChannelCount(), 13);
    scripted::Tuner().blocks.clear();
    for (int row = 0; row < 11; ++row)
        scripted::Tuner().AddService(Frequency(row), "NEW", 8, static_cast<std::uint32_t>(row));
    Command(kCmdScan);
    EXPECT_EQ(peer->FoundBlockCount(), 11);
    EXPECT_EQ(peer->ChannelCount(), 12); // the twelfth slot is the old one
    ChannelRecord record;
    ASSERT_TRUE(peer->List().GetRecordAt(11, record));
    EXPECT_STREQ(record.label, "OLD");
}

TEST_F(ScanStory, TenBlocksUseUpTheClearedSlots) {
    Open();
    for (int row = 0; row < 11; ++row)
        scripted::Tuner().AddService(Frequency(row), "OLD", 8, static_cast<std::uint32_t>(row));
    Command(kCmdScan);
    scripted::Tuner().blocks.clear();
    for (int row = 0; row < 10; ++row)
        scripted::Tuner().AddService(Frequency(row), "TEN", 8, static_cast<std::uint32_t>(row));
    Command(kCmdScan);
    EXPECT_EQ(peer->FoundBlockCount(), 10);
    EXPECT_EQ(peer->ChannelCount(), 11); // the eleventh slot was not cleared
    ChannelRecord record;
    ASSERT_TRUE(peer->List().GetRecordAt(10, record));
    EXPECT_STREQ(record.label, "OLD");
}

TEST_F(ScanStory, NineBlocksLeaveAClearedSlotBehindThem) {
    Open();
    for (int row = 0; row < 21; ++row)
        scripted::Tuner().AddService(Frequency(row), "OLD", 8, 1);
    Command(kCmdScan);
    ASSERT_EQ(peer->ChannelCount(), 21);
    scripted::Tuner().blocks.clear();
    for (int row = 0; row < 9; ++row)
        scripted::Tuner().AddService(Frequency(row), "NEW", 8, 1);
    Command(kCmdScan);
    EXPECT_EQ(peer->ChannelCount(), 9);
}

// Edge case: a scan while a dialog is in front closes the dialog first.
TEST_F(ScanStory, DialogInFrontIsClosedFirst) {
    Open();
    bool scanned = false;
    scripted::Tuner().onGetChannel = [&](int) {
        CVelDialog* settings = CVelDialog::FromHandle(GView::GetFrontWindow());
        scanned = settings != nullptr && VelShellAccess::Dialog(*settings).ended;
    };
    device.shell.DuringModal([&] {
        ASSERT_NE(CVelDialog::FromHandle(GView::GetFrontWindow()), nullptr);
        OnlyRows({0});
        Send(WM_COMMAND, kCmdScan);
    });
    Forget();
    Command(kCmdSetting);
    EXPECT_TRUE(scanned) << "with the dialog at its end before the first block";
    EXPECT_FALSE(Saw("unanswered")) << "the dialog would be open still";
    EXPECT_EQ(device.shell.ModalDepth(), 0);
    EXPECT_FALSE(std::filesystem::exists(device.Profile() / "DMB.dat")) << "its result is not OK";
    EXPECT_EQ(peer->ChannelCount(), 0);
}

TEST_F(ScanStory, ScanWithoutATunerFindsNothing) {
    scripted::Tuner().opens = false;
    Open();
    Command(kCmdScan);
    EXPECT_EQ(peer->ChannelCount(), 0);
    EXPECT_TRUE(Saw("post view 1031 1001 2"));
}

TEST_F(ScanStory, ScanForgetsPendingAndLastChannels) {
    Open();
    Tune(kNews);
    Command(kCmdChannelUp);
    ASSERT_TRUE(HasTimer(eCHANGE_TIMER));
    OnlyRows({});
    Command(kCmdScan);
    EXPECT_EQ(peer->PendingChannel(), -1);
    EXPECT_EQ(peer->LastDMBChannel(), -1);
    EXPECT_FALSE(HasTimer(eCHANGE_TIMER));
    EXPECT_EQ(WString(device.shell.Title()), WString());
}
