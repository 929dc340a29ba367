#include "jpeg/HuffmanTable.h"

#include <algorithm>

namespace jpeg {

namespace {

constexpr int kMaxLength = 16;
constexpr std::int32_t kSentinel = 0xFFFFF; // larger than any code: the search always stops

HuffmanCode Pack(int symbol, int codeBits) {
    const int run = symbol >> 4;
    const int valueBits = symbol & 15;
    int step = run + 1;
    if (valueBits == 0) {
        step = run == 15 ? 16 : kEndOfBlockStep;
    }
    const auto wide = [](int value) { return static_cast<std::uint32_t>(value); };
    return {wide(step) << 24 | wide(symbol) << 16 | wide(codeBits) << 8 | wide(codeBits + valueBits)};
}

} // namespace

Status HuffmanTable::Build(const HuffmanSpec& spec) {
    lookAhead.fill({});
    maxCode.fill(-1);
    offset.fill(0);
    maxCode[kMaxLength + 1] = kSentinel;
    symbols = spec.symbols;

    std::int32_t code = 0;
    std::int32_t index = 0;
    for (int length = 1; length <= kMaxLength; ++length, code <<= 1) {
        const std::int32_t count = spec.counts[length - 1];
        if (index + count > 256 || code + count > 1 << length) {
            return Status::kHuffmanTableOversubscribed;
        }
        if (count == 0) {
            continue;
        }
        offset[length] = index - code;
        maxCode[length] = code + count - 1;
        if (length <= kLookAheadBits) {
            const int spread = kLookAheadBits - length;
            for (std::int32_t i = 0; i < count; ++i) {
                std::fill_n(lookAhead.begin() + ((code + i) << spread), 1 << spread, Pack(symbols[index + i], length));
            }
        }
        code += count;
        index += count;
    }
    return Status::kOk;
}

HuffmanCode HuffmanTable::FindLong(std::uint64_t word) const {
    int length = kLookAheadBits + 1;
    while (static_cast<std::int32_t>(word >> (64 - length)) > maxCode[length]) {
        ++length;
    }
    if (length > kMaxLength) {
        return Pack(0, length);
    }
    const auto code = static_cast<std::int32_t>(word >> (64 - length));
    return Pack(symbols[code + offset[length]], length);
}

void SkipTable::Build(const HuffmanTable& table) {
    for (std::uint32_t pattern = 0; pattern < entries.size(); ++pattern) {
        Entry entry{0, 0, 0};
        int used = 0;
        int step = 0;
        while (used < kBits) {
            const HuffmanCode code = table.Find(static_cast<std::uint64_t>(pattern) << (64 - kBits + used));
            if (code.CodeBits() > kBits - used) {
                break; // the code reaches out of sight
            }
            entry.safeBelow = static_cast<std::uint8_t>(64 - step);
            step += code.Step();
            used += code.TotalBits();
            entry.bits = static_cast<std::uint8_t>(used);
            entry.step = static_cast<std::uint8_t>(std::min(step, 255));
            if (step >= 64 || code.Step() == kEndOfBlockStep) {
                break;
            }
        }
        entries[pattern] = entry;
    }
}

} // namespace jpeg
