#include "tuner/ChannelRecord.h"

#include <algorithm>
#include <cstring>

#include "platform/wince.h"

namespace {

void PutWord32(ChannelRecordImage& image, std::size_t offset, DWORD value) {
    for (std::size_t i = 0; i < 4; ++i)
        image[offset + i] = static_cast<BYTE>(value >> (8 * i));
}

DWORD GetWord32(const ChannelRecordImage& image, std::size_t offset) {
    DWORD value = 0;
    for (std::size_t i = 0; i < 4; ++i)
        value |= static_cast<DWORD>(image[offset + i]) << (8 * i);
    return value;
}

// Copies a library label without its trailing blanks and zeros and ends it with a zero byte.
void CopyLabel(const char (&from)[DMB_LABEL_BYTES], char (&to)[kChannelLabelBytes]) {
    int length = DMB_LABEL_BYTES;
    while (length > 0 && (from[length - 1] == ' ' || from[length - 1] == '\0'))
        --length;
    std::memcpy(to, from, static_cast<std::size_t>(length));
    to[length] = '\0';
}

} // namespace

ChannelRecordImage EncodeChannelRecord(const ChannelRecord& record) {
    ChannelRecordImage image{};
    PutWord32(image, offsetof(ChannelRecord, frequency), record.frequency);
    std::memcpy(image.data() + offsetof(ChannelRecord, label), record.label, kChannelLabelBytes);
    PutWord32(image, offsetof(ChannelRecord, serviceId), record.serviceId);
    PutWord32(image, offsetof(ChannelRecord, kind), static_cast<DWORD>(record.kind));
    return image;
}

ChannelRecord DecodeChannelRecord(const ChannelRecordImage& image) {
    ChannelRecord record{};
    record.frequency = GetWord32(image, offsetof(ChannelRecord, frequency));
    std::memcpy(record.label, image.data() + offsetof(ChannelRecord, label), kChannelLabelBytes);
    record.serviceId = GetWord32(image, offsetof(ChannelRecord, serviceId));
    record.kind = static_cast<LONG>(GetWord32(image, offsetof(ChannelRecord, kind)));
    return record;
}

WString WidenChannelLabel(const ChannelRecord& record) {
    // One unit fewer than the record's label field and bounded by it, so a label without a terminator ends there.
    WCHAR wide[kChannelLabelBytes] = {};
    int length = 0;
    while (length < kChannelLabelBytes - 1 && record.label[length] != '\0')
        ++length;
    MultiByteToWideChar(kNarrowCodePage, 0, record.label, length, wide, kChannelLabelBytes - 1);
    return wide;
}

int LibraryServiceType(const ChannelRecord& record) {
    return record.kind == kKindDAB ? DMB_SERVICE_TYPE_DAB_AUDIO : DMB_SERVICE_TYPE_DMB_VIDEO;
}

std::vector<ChannelRecord> RecordsOfScan(std::span<const _tag_DMB_CHANNEL_INFO, kScanSlots> scanResults,
                                         int foundBlockCount) {
    std::vector<ChannelRecord> records;
    const int lastSlot = std::min(foundBlockCount, kScanSlots - 1);
    for (int slot = 0; slot <= lastSlot; ++slot) {
        const _tag_DMB_CHANNEL_INFO& block = scanResults[static_cast<std::size_t>(slot)];
        for (const _tag_DMB_SERVICE_INFO& service : block.service) {
            if (service.szLabel[0] == '\0')
                break;
            if (service.nServiceType != DMB_SERVICE_TYPE_DMB_VIDEO &&
                service.nServiceType != DMB_SERVICE_TYPE_DAB_AUDIO)
                continue;
            ChannelRecord record{};
            record.frequency = block.nFrequency;
            CopyLabel(service.szLabel, record.label);
            record.serviceId = service.nServiceID;
            record.kind = service.nServiceType == DMB_SERVICE_TYPE_DMB_VIDEO ? kKindDMB : kKindDAB;
            records.push_back(record);
        }
    }
    return records;
}
