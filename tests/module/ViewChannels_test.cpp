// The view's channel list: loading at preload, rebuilding from a scan, session types.
#include <cstring>

#include <gtest/gtest.h>

#include "tests/harness/DMBViewPeer.h"
#include "tests/harness/DeviceFixture.h"

using harness::Channel;
using harness::Device;

namespace {

class ViewChannels : public ::testing::Test {
protected:
    ViewChannels() : device(harness::TestData("skin-two")) {}
    ~ViewChannels() override { device.shell.CloseView(); }

    CVelDMBView& Open() {
        view = static_cast<CVelDMBView*>(device.shell.OpenView(CVelDMBView::classCVelDMBView));
        return *view;
    }
    [[nodiscard]] WString Info() const { return view->Find(43)->GetText(); }

    Device device;
    CVelDMBView* view = nullptr;
};

} // namespace

// Edge case: an empty file is an empty list; the text is that of no channels, not that of a lost one.
TEST_F(ViewChannels, EmptyListFileShowsThatThereAreNoChannels) {
    device.WriteChannels({});
    DMBViewPeer peer(Open());
    EXPECT_EQ(peer.ChannelCount(), 0);
    EXPECT_EQ(Info(), WTEXT("채널이 없습니다."));
}

TEST_F(ViewChannels, MissingListFileCountsMinusOne) {
    DMBViewPeer peer(Open());
    EXPECT_EQ(peer.ChannelCount(), -1);
    EXPECT_EQ(Info(), WTEXT("채널이 없습니다."));
}

TEST_F(ViewChannels, ListWithoutAValidSavedChannelAsksToChoose) {
    device.WriteChannels({Channel(205280000, "TV", 1, kKindDMB)});
    DMBViewPeer peer(Open());
    EXPECT_EQ(peer.ChannelCount(), 1);
    EXPECT_EQ(Info(), WTEXT("채널을 선택해 주세요."));
}

TEST_F(ViewChannels, SavedChannelOutsideTheListAsksToChoose) {
    device.WriteProfile(std::string("\x10\0\x01\0\0\0\0\0\0\0\0\0\0\0\0\0", 16));
    device.WriteChannels({Channel(205280000, "TV", 1, kKindDMB)});
    Open();
    EXPECT_EQ(Info(), WTEXT("채널을 선택해 주세요."));
}

// The loader does not clear the list first, and a new tuner stream is made on every preload.
TEST_F(ViewChannels, SecondPreloadAppendsAndMakesAnotherStream) {
    device.WriteChannels({Channel(205280000, "TV", 1, kKindDMB)});
    DMBViewPeer peer(Open());
    CDMBLiveStream* first = peer.LiveStream();
    device.ce.loop().Send(view->GetSafeHwnd(), WM_COMMAND, 64954, 0);
    EXPECT_EQ(peer.ChannelCount(), 1);
    ChannelRecord record;
    EXPECT_TRUE(peer.List().GetRecordAt(1, record));
    EXPECT_EQ(scripted::Tuner().streamsAlive, 2);
    EXPECT_EQ(scripted::Tuner().controlsAlive, 1);
    delete first;
}

TEST_F(ViewChannels, TunerThatDoesNotOpenIsDeleted) {
    scripted::Tuner().opens = false;
    DMBViewPeer peer(Open());
    EXPECT_EQ(peer.LiveControl(), nullptr);
    EXPECT_EQ(scripted::Tuner().controlsAlive, 0);
    EXPECT_EQ(scripted::Tuner().streamsAlive, 1);
}

TEST_F(ViewChannels, TypesFollowTheSelectionAndTheSession) {
    device.WriteChannels({Channel(205280000, "TV", 1, kKindDMB), Channel(183008000, "RADIO", 2, kKindDAB)});
    DMBViewPeer peer(Open());
    peer.CurChannel() = 1;
    EXPECT_EQ(peer.CurrentType(), kSessionDAB);
    EXPECT_EQ(peer.LastType(), kSessionNone);
    peer.LastChannel() = 0;
    EXPECT_EQ(peer.LastType(), kSessionDMB);
    peer.CurChannel() = 7; // not in the list
    EXPECT_EQ(peer.CurrentType(), kSessionNone);
    peer.LastChannel() = 7;
    EXPECT_EQ(peer.LastType(), kSessionNone);
    peer.FileIndex() = 0;
    EXPECT_EQ(peer.CurrentType(), kSessionFile);
    peer.FileIndex() = -1;
    peer.LastChannel() = -1;
}

// Edge case: a playing file without a channel is torn down like television.
TEST_F(ViewChannels, LastTypeOfAPlayingFileIsTelevision) {
    DMBViewPeer peer(Open());
    peer.FileIndex() = 0;
    EXPECT_EQ(peer.LastType(), kSessionDMB);
    EXPECT_EQ(peer.CurrentType(), kSessionFile);
    peer.FileIndex() = -1;
    EXPECT_EQ(peer.LastType(), kSessionNone);
}

TEST_F(ViewChannels, RebuiltListReplacesTheOldOneAndIsWritten) {
    device.WriteChannels({Channel(205280000, "OLD", 1, kKindDMB)});
    DMBViewPeer peer(Open());
    scripted::Tuner().AddService(183008000, "KURZ", 0, 0xE202);
    scripted::Tuner().AddService(183008000, "TV", 8, 0xE203);
    peer.ScanResults()[0] = scripted::Tuner().blocks[183008000];
    peer.FoundBlockCount() = 1;
    peer.UpdateChList(1);
    EXPECT_EQ(peer.ChannelCount(), 2);
    const std::string bytes = harness::ReadFile(device.Profile() / "DMBChannel.lst");
    ASSERT_EQ(bytes.size(), 64u);
    EXPECT_EQ(bytes.substr(4, 5), std::string("KURZ\0", 5));
    EXPECT_EQ(bytes[28], 1);
    EXPECT_EQ(bytes[60], 0);
}

TEST_F(ViewChannels, RebuiltListStaysInUseWhenItCannotBeWritten) {
    DMBViewPeer peer(Open());
    scripted::Tuner().AddService(183008000, "KURZ", 0, 0xE202);
    peer.ScanResults()[0] = scripted::Tuner().blocks[183008000];
    device.ce.files().SetFaults({.refuseCreate = true});
    peer.UpdateChList(1);
    device.ce.files().SetFaults({});
    EXPECT_EQ(peer.ChannelCount(), 1);
    EXPECT_FALSE(std::filesystem::exists(device.Profile() / "DMBChannel.lst"));
}

TEST_F(ViewChannels, RebuildingWithoutSavingWritesNothing) {
    DMBViewPeer peer(Open());
    peer.UpdateChList(0);
    EXPECT_EQ(peer.ChannelCount(), 0);
    EXPECT_FALSE(std::filesystem::exists(device.Profile() / "DMBChannel.lst"));
}

TEST_F(ViewChannels, NameOfAFrequencyIsTheTables) {
    EXPECT_EQ(Open().GetChannelName(177008000), WTEXT("[CH7]"));
    EXPECT_EQ(view->GetChannelName(0), WTEXT("[0]"));
}
