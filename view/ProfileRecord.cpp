#include "view/ProfileRecord.h"

namespace {

constexpr LONG kNoChannelWord = 65535;

void PutWord(std::array<BYTE, kProfileBytes>& bytes, std::size_t word, LONG value) {
    bytes[2 * word] = static_cast<BYTE>(value);
    bytes[2 * word + 1] = static_cast<BYTE>(value >> 8);
}

LONG GetWord(std::span<const BYTE> bytes, std::size_t word) {
    return bytes[2 * word] | (bytes[2 * word + 1] << 8);
}

} // namespace

std::array<BYTE, kProfileBytes> EncodeProfile(const ProfileRecord& record, WORD lengthWord) {
    std::array<BYTE, kProfileBytes> bytes{};
    PutWord(bytes, 0, lengthWord);
    PutWord(bytes, 1, record.currentChannel);
    PutWord(bytes, 2, record.recordTime);
    PutWord(bytes, 3, record.pipRect.left);
    PutWord(bytes, 4, record.pipRect.top);
    PutWord(bytes, 5, record.pipRect.right);
    PutWord(bytes, 6, record.pipRect.bottom);
    PutWord(bytes, 7, record.ratioOnOff);
    return bytes;
}

std::optional<ProfileRecord> DecodeProfile(std::span<const BYTE> file) {
    if (file.size() < kProfileBytes || static_cast<std::size_t>(GetWord(file, 0)) != file.size())
        return std::nullopt;
    ProfileRecord record;
    record.currentChannel = GetWord(file, 1);
    if (record.currentChannel == kNoChannelWord)
        record.currentChannel = -1;
    record.recordTime = GetWord(file, 2);
    record.pipRect = {GetWord(file, 3), GetWord(file, 4), GetWord(file, 5), GetWord(file, 6)};
    record.ratioOnOff = GetWord(file, 7);
    return record;
}
