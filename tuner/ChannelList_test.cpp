#include "tuner/ChannelList.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <unistd.h>

#include <gtest/gtest.h>

#include "host/ce/Ce.h"

namespace {

// A profile folder of its own on the device path "\Profile\".
class ChannelListTest : public ::testing::Test {
protected:
    ChannelListTest() : ce_(clock_) {
        folder_ = std::filesystem::temp_directory_path() / ("channellist_" + std::to_string(::getpid()));
        std::filesystem::create_directories(folder_);
        ce_.files().AddMount({WTEXT("\\Profile"), folder_, ce::Mount::Writing::OnClose});
    }
    ~ChannelListTest() override { std::filesystem::remove_all(folder_); }

    void WriteHost(const std::string& bytes) const {
        std::ofstream(folder_ / "DMBChannel.lst", std::ios::binary) << bytes;
    }
    [[nodiscard]] std::string ReadHost() const {
        std::ifstream file(folder_ / "DMBChannel.lst", std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    static ChannelRecord Record(DWORD frequency, const char* label, DWORD id, LONG kind) {
        ChannelRecord record{frequency, {}, id, kind};
        std::strncpy(record.label, label, sizeof record.label - 1);
        return record;
    }

    static constexpr const WCHAR* kPath = WTEXT("\\Profile\\DMBChannel.lst");
    ce::ManualClock clock_;
    ce::Ce ce_;
    std::filesystem::path folder_;
};

} // namespace

TEST_F(ChannelListTest, RecordsKeepTheOrderOfAppending) {
    ChannelList list;
    list.AppendRecord(Record(1, "A", 1, 0));
    list.AppendRecord(Record(2, "B", 2, 1));
    ChannelRecord record{};
    ASSERT_TRUE(list.GetRecordAt(1, record));
    EXPECT_STREQ(record.label, "B");
}

// Edge case: the index after the last one fails and leaves the output alone; -5 is the first record.
TEST_F(ChannelListTest, IndexPastTheEndFailsAndANegativeOneIsTheFirst) {
    ChannelList list;
    list.AppendRecord(Record(1, "A", 1, 0));
    ChannelRecord record = Record(9, "KEEP", 9, 9);
    EXPECT_FALSE(list.GetRecordAt(1, record));
    EXPECT_STREQ(record.label, "KEEP");
    EXPECT_TRUE(list.GetRecordAt(-5, record));
    EXPECT_STREQ(record.label, "A");
}

TEST_F(ChannelListTest, SavedListLoadsAgainByteForByte) {
    ChannelList list;
    list.AppendRecord(Record(205280000, "TV ONE", 0xF1E00401, kKindDMB));
    list.AppendRecord(Record(183008000, "KURZ", 0xE202, kKindDAB));
    EXPECT_TRUE(list.SaveChannelList(kPath));
    const std::string bytes = ReadHost();
    ASSERT_EQ(bytes.size(), 64u);
    EXPECT_EQ(bytes.substr(0, 10), std::string("\x00\x53\x3C\x0CTV ONE", 10));

    ChannelList loaded;
    EXPECT_EQ(loaded.LoadChannelList(kPath), 2);
    ChannelRecord record{};
    ASSERT_TRUE(loaded.GetRecordAt(1, record));
    EXPECT_STREQ(record.label, "KURZ");
    EXPECT_EQ(record.serviceId, 0xE202u);
    EXPECT_EQ(record.kind, kKindDAB);
}

TEST_F(ChannelListTest, MissingFileIsMinusOneAndLeavesTheList) {
    ChannelList list;
    list.AppendRecord(Record(1, "A", 1, 0));
    EXPECT_EQ(list.LoadChannelList(kPath), -1);
    ChannelRecord record{};
    EXPECT_TRUE(list.GetRecordAt(0, record));
}

// Edge case: an empty file is an empty list.
TEST_F(ChannelListTest, EmptyFileIsAnEmptyList) {
    WriteHost("");
    ChannelList list;
    EXPECT_EQ(list.LoadChannelList(kPath), 0);
}

TEST_F(ChannelListTest, EmptyListMakesAnEmptyFile) {
    WriteHost("old");
    EXPECT_TRUE(ChannelList().SaveChannelList(kPath));
    EXPECT_EQ(ReadHost(), "");
}

// Edge case: 33 bytes are two records; the second has byte 0 from the file and the rest from the first record.
TEST_F(ChannelListTest, ShortLastRecordKeepsTheTailOfTheOneBefore) {
    std::string bytes(33, '\0');
    bytes.replace(4, 6, "FIRST!");
    bytes[24] = 7;
    bytes[32] = 0x55;
    WriteHost(bytes);
    ChannelList list;
    EXPECT_EQ(list.LoadChannelList(kPath), 2);
    ChannelRecord first{};
    ChannelRecord second{};
    ASSERT_TRUE(list.GetRecordAt(0, first));
    ASSERT_TRUE(list.GetRecordAt(1, second));
    EXPECT_EQ(second.frequency, 0x55u);
    EXPECT_STREQ(second.label, "FIRST!");
    EXPECT_EQ(second.serviceId, first.serviceId);
}

TEST_F(ChannelListTest, LoadingAppends) {
    ChannelList list;
    list.AppendRecord(Record(1, "A", 1, 0));
    WriteHost(std::string(32, 'x'));
    EXPECT_EQ(list.LoadChannelList(kPath), 1);
    ChannelRecord record{};
    EXPECT_TRUE(list.GetRecordAt(1, record));
}

// A refused file is reported; a failed write leaves the file open, so that the next opening is refused, and the old list stays.
TEST_F(ChannelListTest, FailedWriteLeavesTheFileOpenAndTheOldListInPlace) {
    WriteHost(std::string(32, 'o'));
    ChannelList list;
    list.AppendRecord(Record(1, "A", 1, 0));
    list.AppendRecord(Record(2, "B", 2, 0));
    ce_.files().SetFaults({.diskFullAfter = 40});
    EXPECT_FALSE(list.SaveChannelList(kPath));
    ce_.files().SetFaults({});
    EXPECT_EQ(ce_.files().OpenCount(), 1u);
    EXPECT_FALSE(list.SaveChannelList(kPath)); // sharing violation
    EXPECT_EQ(list.LoadChannelList(kPath), -1);
    EXPECT_EQ(ReadHost(), std::string(32, 'o'));
}

TEST_F(ChannelListTest, RefusedCreationIsReported) {
    ce_.files().SetFaults({.refuseCreate = true});
    EXPECT_FALSE(ChannelList().SaveChannelList(kPath));
    EXPECT_EQ(ce_.files().OpenCount(), 0u);
}
