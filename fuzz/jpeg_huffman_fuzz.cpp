// A Huffman table of any bytes over coded data of any bytes: the fast decoder against one that reads bit by bit straight from
// the definition, symbol by symbol and position by position. Then the table of skipped runs against the plain table.
//
//   build/fuzz/bin/fuzz_jpeg_huffman fuzz/corpus/jpeg_huffman
#include "jpeg/BitReader.h"
#include "jpeg/HuffmanTable.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <vector>

namespace {

// Bits of coded data: stuffing and fill bytes removed, ended by a marker, then zeros.
std::vector<bool> BitsOf(std::span<const std::uint8_t> data) {
    std::vector<bool> bits;
    for (std::size_t i = 0; i < data.size(); ++i) {
        if (data[i] == 0xFF) {
            std::size_t code = i + 1;
            while (code < data.size() && data[code] == 0xFF) {
                ++code;
            }
            if (code == data.size() || data[code] != 0) {
                break;
            }
            i = code;
            bits.insert(bits.end(), 8, true);
            continue;
        }
        for (int bit = 7; bit >= 0; --bit) {
            bits.push_back((data[i] >> bit & 1) != 0);
        }
    }
    return bits;
}

class SlowDecoder {
public:
    SlowDecoder(const jpeg::HuffmanSpec& theSpec, std::vector<bool> theBits)
        : spec(theSpec), bits(std::move(theBits)) {}

    int Bit() {
        const bool bit = at < bits.size() && bits[at];
        ++at;
        return bit ? 1 : 0;
    }
    int Symbol() {
        int code = 0;
        int first = 0;
        int index = 0;
        for (int length = 1; length <= 16; ++length) {
            code = code * 2 + Bit();
            const int count = spec.counts[static_cast<std::size_t>(length - 1)];
            if (code - first < count) {
                return spec.symbols[static_cast<std::size_t>(index + code - first)];
            }
            index += count;
            first = (first + count) * 2;
        }
        Bit(); // the search stops at the seventeenth
        return 0;
    }
    int Value(int size) {
        int value = 0;
        for (int i = 0; i < size; ++i) {
            value = value * 2 + Bit();
        }
        return size > 0 && value < 1 << (size - 1) ? value - (1 << size) + 1 : value;
    }

    [[nodiscard]] bool AtEnd() const { return at >= bits.size(); }

private:
    const jpeg::HuffmanSpec& spec;
    std::vector<bool> bits;
    std::size_t at = 0;
};

void Require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 18) {
        return 0;
    }
    jpeg::HuffmanSpec spec;
    spec.sent = true;
    // Counts of 0..3, more for the long codes, keep most tables possible.
    for (std::size_t i = 0; i < 16; ++i) {
        spec.counts[i] = static_cast<std::uint8_t>(i < 8 ? data[i] & 3 : data[i] & 31);
    }
    for (std::size_t i = 0; i < spec.symbols.size(); ++i) {
        spec.symbols[i] = data[16 + i % (size - 16)];
    }
    const auto table = std::make_unique<jpeg::HuffmanTable>();
    if (table->Build(spec) != jpeg::Status::kOk) {
        return 0;
    }
    const std::span<const std::uint8_t> coded(data + 16, size - 16);
    const auto reader = std::make_unique<jpeg::BitReader>();
    reader->Open(coded);
    reader->ExpectNoRestart();
    SlowDecoder slow(spec, BitsOf(coded));
    for (int i = 0; i < 4000 && !slow.AtEnd(); ++i) {
        reader->Prepare();
        jpeg::BitCursor bits = reader->Bits();
        bits.Refill();
        const jpeg::HuffmanCode code = table->Find(bits.word);
        const std::uint64_t word = bits.word;
        bits.Consume(code.TotalBits());
        reader->Resume(bits);
        const int symbol = slow.Symbol();
        Require(code.Symbol() == symbol);
        Require(jpeg::ExtendValue(word, code.CodeBits(), code.ValueBits()) == slow.Value(symbol & 15));
    }

    const auto skips = std::make_unique<jpeg::SkipTable>();
    skips->Build(*table);
    reader->Open(coded);
    reader->ExpectNoRestart();
    const auto other = std::make_unique<jpeg::BitReader>();
    other->Open(coded);
    other->ExpectNoRestart();
    for (int block = 0; block < 200 && !reader->Exhausted(); ++block) {
        reader->Prepare();
        other->Prepare();
        jpeg::BitCursor fast = reader->Bits();
        skips->SkipBlock(fast, *table, 1 + block % 63);
        jpeg::BitCursor plain = other->Bits();
        for (int k = 1 + block % 63; k < 64;) {
            plain.Refill();
            const jpeg::HuffmanCode code = table->Find(plain.word);
            plain.Consume(code.TotalBits());
            k += code.Step();
        }
        fast.Refill();
        plain.Refill();
        Require(reader->Exhausted() == other->Exhausted());
        Require(fast.word >> 8 == plain.word >> 8);
        reader->Resume(fast);
        other->Resume(plain);
    }
    return 0;
}
