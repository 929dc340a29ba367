// The Band III blocks that the receiver can tune: channels 7 to 13, blocks A to C.
#pragma once

#include "platform/types.h"

inline constexpr int kChannelTableRows = 21;

// One block. The three blocks of a channel carry the same name, so a name does not tell the block.
struct ChannelTableRow {
    DWORD frequency;   // Hz
    const WCHAR* name; // "CH7" to "CH13"
};

// Rows in ascending frequency: 175.28 MHz + 6 MHz per channel + 1.728 MHz per block.
extern const ChannelTableRow ChannelTable[kChannelTableRows];

// The bracketed display name of a frequency in Hz: "[CH8]", or the number itself ("[123]") when no row has it.
[[nodiscard]] WString FormatChannelName(int frequency);
