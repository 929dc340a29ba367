#include "tuner/ChannelRecord.h"

#include <cstring>

#include <gtest/gtest.h>

namespace {

struct Scan {
    std::array<_tag_DMB_CHANNEL_INFO, kScanSlots> slots{};

    void Add(int slot, DWORD frequency, int service, const char* label, int type, DWORD id) {
        auto& block = slots[static_cast<std::size_t>(slot)];
        block.nFrequency = frequency;
        auto& entry = block.service[service];
        std::memset(entry.szLabel, ' ', sizeof entry.szLabel);
        std::memcpy(entry.szLabel, label, std::strlen(label));
        entry.nServiceType = type;
        entry.nServiceID = id;
    }

    [[nodiscard]] std::vector<ChannelRecord> Records(int found) const {
        return RecordsOfScan(std::span<const _tag_DMB_CHANNEL_INFO, kScanSlots>(slots), found);
    }
};

} // namespace

TEST(ChannelRecord, BytesAreLittleEndianAtTheirOffsets) {
    ChannelRecord record{205280000, {}, 0xF1E00401, kKindDAB};
    std::memcpy(record.label, "NEWS", 5);
    const ChannelRecordImage image = EncodeChannelRecord(record);
    const BYTE expected[kChannelRecordBytes] = {0x00, 0x53, 0x3C, 0x0C, 'N',  'E',  'W', 'S', 0, 0, 0,
                                                0,    0,    0,    0,    0,    0,    0,   0,   0, 0, 0,
                                                0,    0,    0x01, 0x04, 0xE0, 0xF1, 1,   0,   0, 0};
    EXPECT_EQ(std::memcmp(image.data(), expected, sizeof expected), 0);
    const ChannelRecord back = DecodeChannelRecord(image);
    EXPECT_EQ(back.frequency, 205280000u);
    EXPECT_STREQ(back.label, "NEWS");
    EXPECT_EQ(back.serviceId, 0xF1E00401u);
    EXPECT_EQ(back.kind, kKindDAB);
}

// Edge case: a label of 16 letters keeps all 16, its zero byte is byte 20 of the record.
TEST(ChannelRecord, LabelOfSixteenLettersKeepsAllSixteen) {
    Scan scan;
    scan.Add(0, 205280000, 0, "TV TWO SIXTEEN16", 8, 2);
    const auto records = scan.Records(1);
    ASSERT_EQ(records.size(), 1u);
    EXPECT_STREQ(records[0].label, "TV TWO SIXTEEN16");
    EXPECT_EQ(EncodeChannelRecord(records[0])[20], 0);
}

// Edge case: six letters and ten blanks keep the six letters.
TEST(ChannelRecord, TrailingBlanksOfALabelAreCut) {
    Scan scan;
    scan.Add(0, 205280000, 0, "TV ONE", 8, 1);
    const auto records = scan.Records(1);
    ASSERT_EQ(records.size(), 1u);
    EXPECT_STREQ(records[0].label, "TV ONE");
}

// Edge case: 16 blanks become an empty label that is still listed.
TEST(ChannelRecord, LabelOfSixteenBlanksIsEmptyAndStillListed) {
    Scan scan;
    scan.Add(0, 205280000, 0, "", 0, 1);
    const auto records = scan.Records(1);
    ASSERT_EQ(records.size(), 1u);
    EXPECT_STREQ(records[0].label, "");
    EXPECT_EQ(records[0].kind, kKindDAB);
}

// Edge case: a block whose services are all of other types adds no record.
TEST(ChannelRecord, BlockWithoutTelevisionOrRadioAddsNoRecord) {
    Scan scan;
    scan.Add(0, 205280000, 0, "DATA", 5, 1);
    scan.Add(0, 205280000, 1, "DAB PLUS", 63, 2);
    EXPECT_TRUE(scan.Records(1).empty());
}

TEST(ChannelRecord, OtherTypesAreSkippedAndTheWalkGoesOn) {
    Scan scan;
    scan.Add(0, 205280000, 0, "DATA", 5, 1);
    scan.Add(0, 205280000, 1, "TV", 8, 2);
    scan.Add(0, 205280000, 2, "RADIO", 0, 3);
    const auto records = scan.Records(1);
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].kind, kKindDMB);
    EXPECT_EQ(records[1].kind, kKindDAB);
    EXPECT_EQ(records[1].serviceId, 3u);
}

// The slot after the last block found is visited too.
TEST(ChannelRecord, WalkOverTheSlotsIsInclusive) {
    Scan scan;
    scan.Add(0, 205280000, 0, "A", 8, 1);
    scan.Add(1, 207008000, 0, "B", 8, 2);
    scan.Add(2, 208736000, 0, "C", 8, 3);
    EXPECT_EQ(scan.Records(0).size(), 1u);
    EXPECT_EQ(scan.Records(1).size(), 2u);
}

TEST(ChannelRecord, WalkStopsAtTheLastSlotWhenAllRowsAnswered) {
    Scan scan;
    for (int slot = 0; slot < kScanSlots; ++slot)
        scan.Add(slot, 175280000, 0, "X", 8, 1);
    EXPECT_EQ(scan.Records(kScanSlots).size(), 21u);
}

TEST(ChannelRecord, WalkOverTheServicesStopsAtEighteen) {
    Scan scan;
    for (int service = 0; service < DMB_MAX_SERVICES; ++service)
        scan.Add(0, 175280000, service, "X", 8, 1);
    // What follows the record in memory is the next slot, whose first bytes are no label.
    EXPECT_EQ(scan.Records(0).size(), 18u);
}

TEST(ChannelRecord, KindTurnsIntoTheLibrarysTypeAndBack) {
    EXPECT_EQ(LibraryServiceType({0, {}, 0, kKindDAB}), 0);
    EXPECT_EQ(LibraryServiceType({0, {}, 0, kKindDMB}), 8);
    EXPECT_EQ(LibraryServiceType({0, {}, 0, 3}), 8);
}

TEST(ChannelRecord, LabelWidensFromCodePage949AndEndsAtItsField) {
    ChannelRecord record{};
    std::memcpy(record.label, "\xC7\xD1\xB1\xB9", 5); // 한국
    EXPECT_EQ(WidenChannelLabel(record), WTEXT("한국"));
    std::memset(record.label, 'A', sizeof record.label); // no terminator: 19 characters at most
    EXPECT_EQ(WidenChannelLabel(record), WString(19, 'A'));
}
