#include "jpeg/BitReader.h"

#include "jpeg/Markers.h"

#include <algorithm>

namespace jpeg {

void BitReader::Open(std::span<const std::uint8_t> bytes) {
    data = bytes;
    source = 0;
    lastInterval = false;
    Reset();
}

void BitReader::Reset() {
    exhausted = false;
    sourceEnded = false;
    end = slideAt = window.data();
    bits = {0, 0, window.data()};
    Slide();
}

// Moves what is left to the front of the window and fills it up.
void BitReader::Slide() {
    if (!sourceEnded) {
        const auto left = static_cast<std::size_t>(end - bits.next);
        std::memmove(window.data(), bits.next, left);
        const std::size_t size = left + CopyClean(window.data() + left, kWindow - left);
        std::memset(window.data() + size, 0, kMargin);
        bits.next = window.data();
        end = window.data() + size;
        // Eight bytes behind the end the word holds nothing but zeros.
        slideAt = sourceEnded ? end + 8 : end - kMargin;
        return;
    }
    Drain();
}

void BitReader::Drain() {
    exhausted = true;
    sourceEnded = true;
    slideAt = end + 8;
    bits = {0, 0, slideAt};
}

// Copies at most `room` data bytes: FF 00 becomes FF, fill bytes go, a marker or the end of the data stops for good.
std::size_t BitReader::CopyClean(std::uint8_t* to, std::size_t room) {
    std::size_t copied = 0;
    if (data.empty()) {
        sourceEnded = true;
    }
    while (copied < room && !sourceEnded) {
        const std::uint8_t* from = data.data() + source;
        const std::size_t most = std::min(room - copied, data.size() - source);
        const auto* prefix = most == 0 ? nullptr : static_cast<const std::uint8_t*>(std::memchr(from, kPrefix, most));
        const std::size_t plain = prefix == nullptr ? most : static_cast<std::size_t>(prefix - from);
        std::memcpy(to + copied, from, plain);
        copied += plain;
        source += plain;
        if (prefix == nullptr) {
            sourceEnded = source == data.size();
            continue;
        }
        std::size_t code = source + 1;
        while (code < data.size() && data[code] == kPrefix) {
            ++code;
        }
        if (code == data.size() || data[code] != 0) {
            source = code - 1;
            sourceEnded = true;
            continue;
        }
        to[copied++] = kPrefix;
        source = code + 1;
    }
    return copied;
}

void BitReader::Restart(int number) {
    if (lastInterval) {
        Drain();
        return;
    }
    std::size_t at = source;
    while (at + 1 < data.size()) {
        if (data[at] != kPrefix || data[at + 1] == kPrefix || data[at + 1] == 0) {
            const std::size_t step = data[at] == kPrefix && data[at + 1] == 0 ? 2 : 1;
            at += step;
            continue;
        }
        const std::uint8_t marker = data[at + 1];
        const int ahead = IsRestart(marker) ? (marker - kRst0 - number) & 7 : -1;
        const bool isJunk = marker < kSof0;              // T.81 table B.1: reserved
        const bool isEarlier = ahead == 6 || ahead == 7; // one of the two before: its interval is over
        if (isJunk || isEarlier) {
            at += 2;
            continue;
        }
        if (!IsRestart(marker)) {
            source = at;
            break;
        }
        const bool belongsLater = ahead == 1 || ahead == 2;
        source = belongsLater ? at : at + 2;
        Reset();
        return;
    }
    lastInterval = true;
    Drain();
}

} // namespace jpeg
