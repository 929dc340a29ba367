// One usable service of the channel list: 32 bytes, little-endian, the same in memory and in the file.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <vector>

#include "platform/medmblib.h"
#include "platform/types.h"

inline constexpr int kChannelRecordBytes = 32;
inline constexpr int kChannelLabelBytes = 20;
// Slots of a scan: one per row of the channel table.
inline constexpr int kScanSlots = 21;

// The viewer's own coding of a service; the tuner library's type is its inverse (8 television, 0 radio).
enum ChannelKind : LONG { kKindDMB = 0, kKindDAB = 1 };

struct ChannelRecord {
    DWORD frequency;                // Hz
    char label[kChannelLabelBytes]; // narrow text, ends at its zero byte; bytes after that have no meaning
    DWORD serviceId;                // handed back to the tuner
    LONG kind;                      // ChannelKind; anything else is tuned without a graph
};
static_assert(sizeof(ChannelRecord) == kChannelRecordBytes);
static_assert(offsetof(ChannelRecord, frequency) == 0 && offsetof(ChannelRecord, label) == 4);
static_assert(offsetof(ChannelRecord, serviceId) == 24 && offsetof(ChannelRecord, kind) == 28);

using ChannelRecordImage = std::array<BYTE, kChannelRecordBytes>;

[[nodiscard]] ChannelRecordImage EncodeChannelRecord(const ChannelRecord& record);
[[nodiscard]] ChannelRecord DecodeChannelRecord(const ChannelRecordImage& image);

// The label widened from the device's code page: at most 19 characters.
[[nodiscard]] WString WidenChannelLabel(const ChannelRecord& record);

// The tuner library's service type for a record: 0 for radio, 8 for everything else.
[[nodiscard]] int LibraryServiceType(const ChannelRecord& record);

// The records of a scan: slots 0 to `foundBlockCount` inclusive (on purpose: the slot after the last block found is looked at
// too), never past the last slot; within a slot its services up to the first empty label, at most 18.
[[nodiscard]] std::vector<ChannelRecord> RecordsOfScan(std::span<const _tag_DMB_CHANNEL_INFO, kScanSlots> scanResults,
                                                       int foundBlockCount);
