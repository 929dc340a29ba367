// Rules of a recording: how long, how much free space it needs, how its file is called.
#pragma once

#include "platform/types.h"
#include "platform/wince.h"

// Length limits in seconds, by the record-time setting 0..4.
inline constexpr LONG RecordTimeTable[5] = {300, 600, 900, 1800, 3600};

// The limit of a setting; a setting read from a damaged settings file counts as the longest.
[[nodiscard]] constexpr LONG RecordLimit(unsigned setting) {
    return RecordTimeTable[setting > 4 ? 4 : setting];
}

// The card's folder and, below it, the folder of recordings; both end in a separator.
inline constexpr const WCHAR* kCardFolder = WTEXT("\\SDMMC Card\\");
inline constexpr const WCHAR* kRecordFolder = WTEXT("DMB\\");

// Bytes that must be free before a recording of the given limit starts: 65536 a second for its minutes and eight more.
[[nodiscard]] constexpr DWORD RequiredSpace(LONG limitSeconds) {
    return static_cast<DWORD>((limitSeconds / 60 + 8) * 3932160);
}

// True when the free bytes are enough; from 4 GiB on no comparison is made.
[[nodiscard]] constexpr bool HasSpaceFor(LONG limitSeconds, ULONGLONG freeBytes) {
    return (freeBytes >> 32) != 0 || static_cast<DWORD>(freeBytes) >= RequiredSpace(limitSeconds);
}

// "LABEL_yymmddhhmmss.dmb" in local time.
[[nodiscard]] WString FormatRecordName(const WString& label, const LocalTime& start);
