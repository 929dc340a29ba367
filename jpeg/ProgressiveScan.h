// The scans of a progressive picture, one at a time, into the coefficient store.
#pragma once

#include "jpeg/BitReader.h"
#include "jpeg/CoefficientStore.h"
#include "jpeg/Frame.h"
#include "jpeg/HuffmanTable.h"
#include "jpeg/Status.h"

#include <array>
#include <cstdint>
#include <span>

namespace jpeg {

// Blocks that end-of-band runs may pass over in one picture: far more than any real one needs, little enough that a file
// made of nothing but such scans comes to an end.
inline constexpr std::int64_t kMaxRunVisits = std::int64_t{1} << 27;

// T.81 table B.3, the progressive rows.
[[nodiscard]] bool HasValidParameters(const ScanHeader& scan);

// About 40 KB, so it lives on the heap; serves all scans of a picture.
class ProgressiveScan {
public:
    ProgressiveScan(const Frame& theFrame, CoefficientStore& theStore, int reduction);

    // Reads the scan whose coded data `coded` begins with. The parameters must be valid.
    [[nodiscard]] Status Read(const ScanHeader& scan, const Tables& tables, std::span<const std::uint8_t> coded);

    // No more scans: the visits are used up.
    [[nodiscard]] bool IsTired() const { return runVisits > kMaxRunVisits; }
    // How far the coded data of the last scan was seen.
    [[nodiscard]] std::size_t SourcePosition() const { return reader.SourcePosition(); }

private:
    [[nodiscard]] Status BuildTables(const ScanHeader& scan, const Tables& tables);
    void ReadDc(const ScanHeader& scan);
    void ReadDcBlock(const ScanHeader& scan, int part, BitCursor& bits, std::int16_t& value);
    void ReadDcMcu(const ScanHeader& scan, int part, int mcuLine, int mcu);
    template <bool kKeepsAll> void ReadAc(const ScanHeader& scan);
    void ReadAcFirst(const ScanHeader& scan, std::int16_t* values, std::uint64_t& history);
    template <bool kKeepsAll>
    void ReadAcRefinement(const ScanHeader& scan, std::int16_t* values, std::uint64_t& history);
    template <bool kKeepsAll> void Correct(BitCursor& bits, int k, int step, std::int16_t* values) const;
    template <bool kKeepsAll>
    void CorrectAll(BitCursor& bits, std::uint64_t which, int step, std::int16_t* values) const;
    [[nodiscard]] bool BeginMcu();
    [[nodiscard]] int McusToRestart();

    Frame frame;
    CoefficientStore& store;
    bool keepsAll;                                 // the size is not reduced: every coefficient has a place
    std::array<std::uint8_t, kBlockSize> places{}; // of coefficient k in a stored block, kDiscard when not kept
    std::int64_t runVisits = 0;

    int restartInterval = 0;
    int untilRestart = 0;
    int nextRestart = 0;
    int endOfBandRun = 0; // blocks after the present one that have nothing (more) in this band
    std::array<int, kMaxComponents> predictions{};
    BitReader reader;
    std::array<HuffmanTable, kMaxComponents> tables; // by position in the scan
};

} // namespace jpeg
