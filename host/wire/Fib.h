// The fast information block and the groups inside it (EN 300 401 5.2.1, 5.2.2).
#pragma once

#include "host/wire/Bytes.h"
#include "host/wire/Crc.h"

namespace wire {

inline constexpr std::size_t kFibBytes = 32;
inline constexpr std::size_t kFibDataBytes = 30;

// One fast information group: type 0 to 7 and its data field, without the header byte.
struct Fig {
    int type = 0;
    ByteSpan data;
};

[[nodiscard]] inline bool FibCrcOk(ByteSpan fib) {
    return fib.size() == kFibBytes && Crc16Matches(fib);
}

// Calls visit(Fig) for each group. An end marker, an empty group or one that runs over the data field ends the block.
template <typename Visit> void ForEachFig(ByteSpan fib, Visit visit) {
    const ByteSpan dataField = fib.first(fib.size() < kFibDataBytes ? fib.size() : kFibDataBytes);
    std::size_t at = 0;
    while (at < dataField.size() && dataField[at] != 0xFF) {
        const std::size_t length = dataField[at] & 0x1F;
        if (length == 0 || at + 1 + length > dataField.size())
            return;
        visit(Fig{dataField[at] >> 5, dataField.subspan(at + 1, length)});
        at += 1 + length;
    }
}

// Collects groups until the block is full.
class FibWriter {
public:
    [[nodiscard]] std::size_t Free() const { return kFibDataBytes - field.size(); }
    // False (and nothing added) when header and data do not fit, or the data field is empty or above 29 bytes.
    [[nodiscard]] bool Add(int type, ByteSpan data) {
        if (data.empty() || data.size() > 29 || 1 + data.size() > Free())
            return false;
        field.push_back(static_cast<std::uint8_t>((type << 5) | static_cast<int>(data.size())));
        AppendBytes(field, data);
        return true;
    }
    // The 32 bytes with end marker, padding and check sum; the writer is empty afterwards.
    [[nodiscard]] ByteVector Finish() {
        ByteVector out;
        out.swap(field);
        if (out.size() < kFibDataBytes)
            out.push_back(0xFF);
        out.resize(kFibDataBytes, 0x00);
        Append16(out, Crc16(out));
        return out;
    }

private:
    ByteVector field;
};

} // namespace wire
