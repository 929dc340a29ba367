// The ordered list of services, and its file.
//
// A channel is a zero-based position in this list, everywhere. The file is the records one after another, 32 bytes each,
// without header, count or checksum.
#pragma once

#include "platform/types.h"
#include "tuner/ChannelRecord.h"

inline constexpr const WCHAR* kChannelListFileName = WTEXT("DMBChannel.lst");

class ChannelList {
public:
    ChannelList() = default;
    ~ChannelList();
    ChannelList(const ChannelList&) = delete;
    ChannelList& operator=(const ChannelList&) = delete;

    // Links a copy of the record after the last one.
    void AppendRecord(const ChannelRecord& record);

    // Copies out the record at a position; false, with the output untouched, when the list ends first. A negative index is
    // treated as 0.
    [[nodiscard]] bool GetRecordAt(int index, ChannelRecord& record) const;

    void RemoveAllRecords();

    // Appends the file's records to the list and returns their number, or -1 when the file cannot be opened. A last record that
    // is too short keeps, on purpose, the tail of the record read before it.
    [[nodiscard]] int LoadChannelList(const WCHAR* path);

    // Writes the list over the file. After a failed write the file stays open, on purpose, and may hold a prefix of the list.
    bool SaveChannelList(const WCHAR* path) const;

private:
    struct Node {
        ChannelRecord record;
        Node* next;
    };
    Node* m_pFirst = nullptr;
};
