// The settings file "DMB.dat": eight unsigned 16-bit little-endian words.
#pragma once

#include <array>
#include <optional>
#include <span>

#include "platform/types.h"

inline constexpr int kProfileBytes = 16;
inline constexpr const WCHAR* kProfileFileName = WTEXT("DMB.dat");

struct ProfileRecord {
    LONG currentChannel = -1; // stored as 65535 when -1
    LONG recordTime = 0;
    RECT pipRect = {}; // left, top, right, bottom, in this order
    LONG ratioOnOff = 0;
};

// The words after the length word, in file order; each value is cut to its low 16 bits.
[[nodiscard]] std::array<BYTE, kProfileBytes> EncodeProfile(const ProfileRecord& record, WORD lengthWord);

// A record, or nothing when the file is shorter than 16 bytes or its first word differs from its length. The first word is, on
// purpose, not compared with 16: a longer file whose first word tells its length is good.
[[nodiscard]] std::optional<ProfileRecord> DecodeProfile(std::span<const BYTE> file);
