// Sequential pictures (T.81 F.2): decoded line by line, so that no more than a line of samples is ever held.
//
// Components may come in one scan or in several. Several scans are read side by side, each with a reader of its own.
#pragma once

#include "jpeg/BitReader.h"
#include "jpeg/HuffmanTable.h"
#include "jpeg/MarkerReader.h"
#include "jpeg/Quantisation.h"
#include "jpeg/SampleRows.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>

namespace jpeg {

// One scan being read. About 25 KB and as much again when the size is reduced, so it lives on the heap.
class BaselineScan {
public:
    // `coded` begins with the coded data. Refuses missing or oversubscribed Huffman tables.
    [[nodiscard]] Status Open(const Frame& frame, const ScanHeader& header, const Tables& tables,
                              std::span<const std::uint8_t> coded, int reduction);

    void DecodeLine(int mcuLine, const ComponentQuantisers& quantisers, SampleRows& rows);

private:
    // A block read from nothing but zero bits. Once the data is used up every block of the component is this one, but for
    // its first coefficient, which grows by the same difference from block to block.
    struct ZeroBlock {
        bool known = false;
        int last = 0;
        int difference = 0;
        Block block;
    };
    struct Part {
        int component = 0; // index in the frame
        const HuffmanTable* dcTable = nullptr;
        const HuffmanTable* acTable = nullptr;
        const SkipTable* skipTable = nullptr;
        int prediction = 0;
        ZeroBlock zeros;
    };

    template <int kReduction> void DecodeInterleaved(const ComponentQuantisers& quantisers, SampleRows& rows);
    template <int kReduction> void DecodeSingle(int mcuLine, const ComponentQuantisers& quantisers, SampleRows& rows);
    template <int kReduction> int DecodeBlock(Part& part, Block& block);
    template <int kReduction> int DecodeCodedBlock(Part& part, Block& block);
    template <int kReduction> void LearnZeros(Part& part);
    [[nodiscard]] int McusWithoutData(int left);
    void FillEighths(Part& part, const Dequantiser& dequantiser, int count, std::uint8_t* samples,
                     std::ptrdiff_t stride) const;
    void BeginMcu();
    void PassMcus(int count);

    using LineFunction = void (BaselineScan::*)(int, const ComponentQuantisers&, SampleRows&);
    template <int kReduction> void DecodeLineAt(int mcuLine, const ComponentQuantisers& quantisers, SampleRows& rows);

    Frame frame;
    int partCount = 0;
    std::array<Part, kMaxComponents> parts;
    int restartInterval = 0;
    int untilRestart = 0;
    int nextRestart = 0;
    LineFunction decodeLine = nullptr;
    BitReader reader;
    std::array<HuffmanTable, kTableSlots> dcTables;
    std::array<HuffmanTable, kTableSlots> acTables;
    using SkipTables = std::array<SkipTable, kTableSlots>;
    std::unique_ptr<SkipTables> skipTables; // only when the size is reduced
};

class BaselineDecoder : public SampleSource {
public:
    // `reader` stands behind the first scan header; later ones are looked for only while components are missing.
    [[nodiscard]] Status Open(MarkerReader& reader, std::span<const std::uint8_t> data, int reduction);
    void DecodeLine(int mcuLine, SampleRows& rows) override;

private:
    [[nodiscard]] Status AddScan(const MarkerReader& reader, std::span<const std::uint8_t> data, int reduction);

    ComponentQuantisers quantisers;
    std::array<std::unique_ptr<BaselineScan>, kMaxComponents> scans;
    int scanCount = 0;
    std::array<bool, kMaxComponents> covered{};
};

} // namespace jpeg
