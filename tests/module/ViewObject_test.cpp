// The view object: defaults, settings, settings file. In the real headless shell.
#include <cstring>
#include <thread>

#include <gtest/gtest.h>

#include "platform/velshell/VelDocument.h"
#include "tests/harness/DMBViewPeer.h"
#include "tests/harness/DeviceFixture.h"

using harness::Device;

namespace {

class ViewObject : public ::testing::Test {
protected:
    ViewObject() : device(harness::TestData("skin-two")) {}

    CVelDMBView& Open() {
        view = static_cast<CVelDMBView*>(device.shell.OpenView(CVelDMBView::classCVelDMBView));
        device.shell.RunUntilIdle();
        return *view;
    }
    void TearDown() override {
        if (view != nullptr)
            device.shell.CloseView();
        device.shell.RunUntilIdle();
        EXPECT_EQ(device.shell.Leaks(), std::vector<std::string>{});
    }

    // 16 bytes: length word, channel, record time, four values, ratio.
    static std::string ProfileBytes(WORD length, WORD channel, WORD recordTime, WORD ratio) {
        std::string bytes;
        for (const WORD word : {length, channel, recordTime, WORD{1}, WORD{2}, WORD{3}, WORD{4}, ratio}) {
            bytes.push_back(static_cast<char>(word & 0xFF));
            bytes.push_back(static_cast<char>(word >> 8));
        }
        return bytes;
    }

    Device device;
    CVelDMBView* view = nullptr;
};

} // namespace

TEST_F(ViewObject, FreshViewHoldsItsDefaults) {
    DMBViewPeer peer(Open());
    EXPECT_EQ(peer.CurChannel(), -1);
    EXPECT_EQ(peer.LastChannel(), -1);
    EXPECT_EQ(peer.PendingChannel(), -1);
    EXPECT_EQ(peer.LastDMBChannel(), -1);
    EXPECT_EQ(peer.LastDABChannel(), -1);
    EXPECT_EQ(peer.FileIndex(), -1);
    EXPECT_EQ(peer.ChannelCount(), -1); // no list file
    for (const LONG flag : {peer.OnAirFlag(), peer.NoSignal(), peer.SignalWait(), peer.ChangeBusy(), peer.MsgBoxUp(),
                            peer.Scanning(), peer.ToggleGuard(), peer.StartRetries(), peer.SlideReady()})
        EXPECT_EQ(flag, 0);
    for (int row = 0; row < kChannelTableRows; ++row)
        EXPECT_EQ(peer.ScanMask()[row], 1) << row; // set by the theme
    EXPECT_EQ(peer.CurrentType(), kSessionNone);
    EXPECT_EQ(peer.LastType(), kSessionNone);
    EXPECT_TRUE(peer.Labels().empty());
    EXPECT_TRUE(peer.FileName().empty());
    EXPECT_EQ(peer.MotBody(), nullptr);
    EXPECT_EQ(peer.SlideDib(), nullptr);
}

// Edge case: values beyond a setting's range are clamped, and only a change raises the dirty flag.
TEST_F(ViewObject, SettersClampAndRaiseTheDirtyFlagOnlyOnAChange) {
    DMBViewPeer peer(Open());
    struct Setting {
        void (*set)(CVelDMBView&, unsigned);
        unsigned (*get)(const CVelDMBView&);
        unsigned given, stored;
    };
    const Setting settings[] = {
        {[](CVelDMBView& v, unsigned value) { v.SetPIPPos(value); }, [](const CVelDMBView& v) { return v.GetPIPPos(); },
         7, 3},
        {[](CVelDMBView& v, unsigned value) { v.SetRecordTime(value); },
         [](const CVelDMBView& v) { return v.GetRecordTime(); }, 9, 4},
        {[](CVelDMBView& v, unsigned value) { v.SetPIPOnOff(value); }, nullptr, 5, 1},
        {[](CVelDMBView& v, unsigned value) { v.SetDLSOnOff(value); },
         [](const CVelDMBView& v) { return v.GetDLSOnOff(); }, 5, 1},
        {[](CVelDMBView& v, unsigned value) { v.SetPIPSize(value); },
         [](const CVelDMBView& v) { return v.GetPIPSize(); }, 2, 1},
        {[](CVelDMBView& v, unsigned value) { v.SetDLSPos(value); }, [](const CVelDMBView& v) { return v.GetDLSPos(); },
         0xFFFFFFFF, 1},
    };
    for (const Setting& setting : settings) {
        peer.ProfileDirty() = 0;
        setting.set(*view, setting.given);
        EXPECT_EQ(peer.ProfileDirty(), 1);
        if (setting.get != nullptr)
            EXPECT_EQ(setting.get(*view), setting.stored);
        else
            EXPECT_EQ(peer.PIPOnOffField(), static_cast<LONG>(setting.stored));
        peer.ProfileDirty() = 0;
        setting.set(*view, setting.given);
        EXPECT_EQ(peer.ProfileDirty(), 0);
    }
}

// Edge case.
TEST_F(ViewObject, PipIsAlwaysAllowedWhateverWasSet) {
    Open().SetPIPOnOff(0);
    EXPECT_EQ(view->GetPIPOnOff(), 1u);
    view->SetPIPOnOff(1);
    view->SetPIPOnOff(0);
    EXPECT_EQ(view->GetPIPOnOff(), 1u);
}

TEST_F(ViewObject, RatioIsStoredUnchangedAndAppliedOnlyToAPicture) {
    DMBViewPeer peer(Open());
    peer.List().AppendRecord(harness::Channel(205280000, "TV", 1, kKindDMB));
    peer.List().AppendRecord(harness::Channel(183008000, "RADIO", 2, kKindDAB));
    peer.CurChannel() = 0;
    view->SetPlayMode(kPlayModeStopped);
    view->SetRatioOnOff(1);
    EXPECT_EQ(view->GetRatioOnOff(), 1u);
    EXPECT_EQ(peer.ProfileDirty(), 1);
    EXPECT_EQ(view->IsPreserveAspectRatio(), 0); // nothing plays

    view->SetPlayMode(kPlayModePlaying);
    view->SetRatioOnOff(1); // no change: nothing happens
    EXPECT_EQ(view->IsPreserveAspectRatio(), 0);
    view->SetRatioOnOff(7);
    EXPECT_EQ(view->GetRatioOnOff(), 7u);
    EXPECT_EQ(view->IsPreserveAspectRatio(), 7);

    peer.CurChannel() = 1; // radio has no picture
    view->SetRatioOnOff(0);
    EXPECT_EQ(view->IsPreserveAspectRatio(), 7);

    peer.FileIndex() = 0; // a recording has one
    view->SetPlayMode(kPlayModeRecording);
    view->SetRatioOnOff(1);
    EXPECT_EQ(view->IsPreserveAspectRatio(), 1);
    peer.FileIndex() = -1;
    view->SetPlayMode(kPlayModeStopped);
}

TEST_F(ViewObject, ScanMaskIsReadAndReplacedWhole) {
    Open();
    BYTE mask[kChannelTableRows];
    for (int i = 0; i < kChannelTableRows; ++i)
        mask[i] = static_cast<BYTE>(i);
    view->SetScanFrequency(mask);
    EXPECT_EQ(std::memcmp(view->GetScanFrequency(), mask, sizeof mask), 0);
}

TEST_F(ViewObject, DebugModeIsTheDocuments) {
    Open();
    EXPECT_EQ(view->IsDebugMode(), 0);
    device.shell.SetDebugMode(true);
    EXPECT_NE(view->IsDebugMode(), 0);
}

TEST_F(ViewObject, SignalDebugWithoutItsElementOnlyStores) {
    DMBViewPeer peer(Open());
    peer.ProfileDirty() = 0;
    view->SetSNRDebug(3); // the skin of two elements has no element 10
    EXPECT_EQ(view->GetSNRDebug(), 3u);
    EXPECT_EQ(peer.ProfileDirty(), 0);
    view->SetSNRDebug(0);
}

// Edge case: word 1 of 65535 loads as no channel.
TEST_F(ViewObject, ProfileChannel65535LoadsAsNone) {
    device.WriteProfile(ProfileBytes(16, 65535, 2, 1));
    DMBViewPeer peer(Open());
    EXPECT_EQ(peer.CurChannel(), -1);
    EXPECT_EQ(view->GetRecordTime(), 2u);
    EXPECT_EQ(view->GetRatioOnOff(), 1u);
    EXPECT_EQ(peer.PipRect().left, 1);
    EXPECT_EQ(peer.PipRect().bottom, 4);
}

// Edge case: 18 bytes whose first word is 16 are rejected and the defaults apply, the small rectangle's too.
TEST_F(ViewObject, ProfileOfEighteenBytesWithWordSixteenGivesTheDefaults) {
    device.WriteProfile(ProfileBytes(16, 5, 2, 1) + std::string(2, '\0'));
    DMBViewPeer peer(Open());
    EXPECT_EQ(peer.CurChannel(), -1);
    EXPECT_EQ(view->GetRecordTime(), 0u);
    EXPECT_EQ(view->GetRatioOnOff(), 0u);
    EXPECT_NE(peer.PipRect().left, 1); // reset by the shell to its own place
    EXPECT_NE(peer.PipRect().right, 3);
}

TEST_F(ViewObject, BrokenProfilesGiveTheDefaultsSilently) {
    const std::string broken[] = {"",
                                  "\x01",
                                  ProfileBytes(0, 5, 2, 1),
                                  ProfileBytes(16, 5, 2, 1).substr(0, 15),
                                  std::string("\x02\0", 2),
                                  std::string(70000, '\xFF')};
    for (const std::string& bytes : broken) {
        device.WriteProfile(bytes);
        DMBViewPeer peer(Open());
        EXPECT_EQ(peer.CurChannel(), -1);
        EXPECT_EQ(view->GetRecordTime(), 0u);
        EXPECT_EQ(device.shell.BoxRecords().size(), 0u);
        device.shell.CloseView();
        view = nullptr;
    }
}

TEST_F(ViewObject, ProfileThatCannotBeReadGivesTheDefaults) {
    device.WriteProfile(ProfileBytes(16, 5, 2, 1));
    device.ce.files().SetFaults({.readBytes = 10});
    DMBViewPeer peer(Open());
    device.ce.files().SetFaults({});
    EXPECT_EQ(peer.CurChannel(), -1);
    EXPECT_EQ(view->GetRecordTime(), 0u);
}

// Edge case: no channel is written as 0xFFFF.
TEST_F(ViewObject, SavingWithoutAChannelWrites65535) {
    Open().SetRecordTime(1);
    view->SaveProfile();
    const std::string bytes = device.ReadProfile();
    ASSERT_EQ(bytes.size(), 16u);
    EXPECT_EQ(bytes.substr(0, 6), std::string("\x10\0\xFF\xFF\x01\0", 6));
}

TEST_F(ViewObject, FiveSettingsAskForASaveAndAreInNoFile) {
    const std::string stored = ProfileBytes(16, 5, 2, 1);
    device.WriteProfile(stored);
    DMBViewPeer peer(Open());
    view->SetPIPOnOff(1);
    view->SetDLSOnOff(1);
    view->SetPIPSize(1);
    view->SetPIPPos(3);
    view->SetDLSPos(1);
    EXPECT_EQ(peer.ProfileDirty(), 1);
    view->SaveProfile();
    EXPECT_EQ(peer.ProfileDirty(), 0);
    EXPECT_EQ(device.ReadProfile(), stored);
    device.shell.CloseView();
    DMBViewPeer fresh(Open());
    EXPECT_EQ(view->GetDLSOnOff() + view->GetPIPSize() + view->GetPIPPos() + view->GetDLSPos(), 0u);
    EXPECT_EQ(fresh.PIPOnOffField(), 0);
}

// The thread sanitizer looks at this one.
TEST_F(ViewObject, SettingsMayBeStoredFromAnyThread) {
    DMBViewPeer peer(Open());
    std::thread other([this] {
        for (unsigned i = 0; i <= 1000; ++i)
            view->SetRecordTime(i % 4 + 1);
    });
    for (int i = 0; i < 20; ++i)
        view->SaveProfile();
    other.join();
    EXPECT_EQ(view->GetRecordTime(), 1u);
    peer.ProfileDirty() = 0;
    std::thread([this] { view->SetRecordTime(2); }).join();
    EXPECT_EQ(peer.ProfileDirty(), 1);
    view->SaveProfile();
    EXPECT_EQ(device.ReadProfile()[4], 2);
}

// Edge case: nothing changed and nothing asked for writes nothing.
TEST_F(ViewObject, UnchangedProfileIsNotWritten) {
    Open().SaveProfile();
    EXPECT_FALSE(std::filesystem::exists(device.Profile() / "DMB.dat"));
}

TEST_F(ViewObject, SaveRequestWritesAnUnchangedProfileAndIsCleared) {
    Open();
    device.shell.SaveAll();
    EXPECT_EQ(device.ReadProfile().size(), 16u);
    EXPECT_EQ(device.shell.Document().IsSaveRequested(), 0);
}

TEST_F(ViewObject, ProfileThatCannotBeCreatedStaysDirty) {
    DMBViewPeer peer(Open());
    view->SetRecordTime(2);
    device.ce.files().SetFaults({.refuseCreate = true});
    device.shell.SaveAll();
    EXPECT_EQ(peer.ProfileDirty(), 1);
    EXPECT_EQ(device.shell.Document().IsSaveRequested(), 0);
    device.ce.files().SetFaults({});
    view->SaveProfile(); // the next save tries again
    EXPECT_EQ(peer.ProfileDirty(), 0);
    EXPECT_EQ(device.ReadProfile().size(), 16u);
}

TEST_F(ViewObject, FullDiskInASaveKeepsTheOldProfile) {
    const std::string old = ProfileBytes(16, 1, 1, 1);
    device.WriteProfile(old);
    Open().SetRecordTime(3);
    device.ce.files().SetFaults({.diskFullAfter = 4});
    view->SaveProfile();
    device.ce.files().SetFaults({});
    EXPECT_EQ(device.ReadProfile(), old);
}

TEST_F(ViewObject, ResetProfileClearsWhatIsStored) {
    device.WriteProfile(ProfileBytes(16, 5, 2, 1));
    DMBViewPeer peer(Open());
    peer.ResetProfile();
    EXPECT_EQ(peer.CurChannel(), -1);
    EXPECT_EQ(view->GetRecordTime(), 0u);
    EXPECT_EQ(view->GetRatioOnOff(), 0u);
    EXPECT_NE(peer.PipRect().left, 1);
}

// Edge cases: two blanks are cut; four blanks leave an empty text; length 0 leaves an empty text.
TEST_F(ViewObject, TrimEndSpaceCutsBlanksAndZeros) {
    char text[] = "AB  x";
    DMBViewPeer::TrimEndSpace(text, 4);
    EXPECT_STREQ(text, "AB");
    char blanks[] = "    x";
    DMBViewPeer::TrimEndSpace(blanks, 4);
    EXPECT_STREQ(blanks, "");
    char none[] = "x";
    DMBViewPeer::TrimEndSpace(none, 0);
    EXPECT_STREQ(none, "");
    char zeros[] = {'A', 0, ' ', 0, 'x'};
    DMBViewPeer::TrimEndSpace(zeros, 4);
    EXPECT_STREQ(zeros, "A");
    char full[] = "ABCDx";
    DMBViewPeer::TrimEndSpace(full, 4);
    EXPECT_STREQ(full, "ABCD");
}
