// What the headers say: the frame, its components, a scan, and the tables in force (T.81 annex B).
#pragma once

#include <array>
#include <cstdint>

namespace jpeg {

inline constexpr int kMaxComponents = 3;
inline constexpr int kTableSlots = 4; // T.81 B.2.4: table ids 0..3
inline constexpr int kBlockSide = 8;  // samples
inline constexpr int kBlockSize = 64; // coefficients

// Rounds up.
[[nodiscard]] constexpr int DivideUp(int value, int by) {
    return (value + by - 1) / by;
}

// One component of the frame (T.81 B.2.2).
struct Component {
    std::uint8_t id = 0;      // Ci
    int h = 1;                // Hi, 1..4
    int v = 1;                // Vi, 1..4
    std::uint8_t quantId = 0; // Tqi as sent; only 0..3 can be used
};

enum class FrameKind { kNone, kBaseline, kProgressive };

struct Frame {
    FrameKind kind = FrameKind::kNone;
    int width = 0;  // X, 1..20000
    int height = 0; // Y, 1..20000
    int componentCount = 0;
    std::array<Component, kMaxComponents> components{};
    int hMax = 1;
    int vMax = 1;

    [[nodiscard]] int McusPerLine() const { return DivideUp(width, kBlockSide * hMax); }
    [[nodiscard]] int McuLines() const { return DivideUp(height, kBlockSide * vMax); }

    // Blocks that hold samples of the picture, without the padding of interleaved scans (T.81 A.2.3).
    [[nodiscard]] int BlocksPerLine(int component) const {
        return DivideUp(DivideUp(width * components[component].h, hMax), kBlockSide);
    }
    [[nodiscard]] int BlockLines(int component) const {
        return DivideUp(DivideUp(height * components[component].v, vMax), kBlockSide);
    }
};

// One component's part in a scan (T.81 B.2.3).
struct ScanComponent {
    int component = 0;        // index into Frame::components
    std::uint8_t dcTable = 0; // Tdj, 0..3
    std::uint8_t acTable = 0; // Taj, 0..3
};

struct ScanHeader {
    int componentCount = 0;
    std::array<ScanComponent, kMaxComponents> components{};
    int spectralStart = 0; // Ss
    int spectralEnd = 0;   // Se
    int approxHigh = 0;    // Ah
    int approxLow = 0;     // Al
};

// A quantisation table in zig-zag order, as it is sent.
struct QuantTable {
    bool sent = false;
    std::array<std::uint8_t, kBlockSize> values{};
};

// A Huffman table as it is sent: how many codes of each length, then their symbols.
struct HuffmanSpec {
    bool sent = false;
    std::array<std::uint8_t, 16> counts{}; // counts[i]: codes of length i + 1
    std::array<std::uint8_t, 256> symbols{};
};

struct Tables {
    std::array<QuantTable, kTableSlots> quant{};
    std::array<HuffmanSpec, kTableSlots> dc{};
    std::array<HuffmanSpec, kTableSlots> ac{};
    int restartInterval = 0; // MCUs, 0 = none
};

enum class ColourModel { kNone, kYcc, kGrey, kRgb };

// T.81 figure A.6: place in the block (row x 8 + column) of each coefficient in the order of sending.
inline constexpr std::array<std::uint8_t, kBlockSize> kZigzag = {
    0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,  12, 19, 26, 33, 40, 48,
    41, 34, 27, 20, 13, 6,  7,  14, 21, 28, 35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23,
    30, 37, 44, 51, 58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};

} // namespace jpeg
