#include "jpeg/ProgressiveScan.h"

#include "jpeg/Transform.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace jpeg {

namespace {

// Sets of coefficients as bits.
constexpr std::uint64_t From(int k) {
    return k > 63 ? 0 : ~std::uint64_t{0} << k;
}
constexpr std::uint64_t UpTo(int k) {
    return ~std::uint64_t{0} >> (63 - k);
}

} // namespace

bool HasValidParameters(const ScanHeader& scan) {
    const bool dc = scan.spectralStart == 0;
    if (dc ? scan.spectralEnd != 0
           : scan.spectralEnd < scan.spectralStart || scan.spectralEnd > 63 || scan.componentCount != 1) {
        return false;
    }
    return scan.approxLow <= 13 && (scan.approxHigh == 0 || scan.approxHigh == scan.approxLow + 1);
}

ProgressiveScan::ProgressiveScan(const Frame& theFrame, CoefficientStore& theStore, int reduction)
    : frame(theFrame), store(theStore), keepsAll(reduction == 0) {
    const int side = KeptSide(reduction);
    for (int k = 0; k < kBlockSize; ++k) {
        const int row = kZigzag[k] / kBlockSide;
        const int column = kZigzag[k] % kBlockSide;
        places[k] = static_cast<std::uint8_t>(row < side && column < side ? row * side + column : kDiscard);
    }
}

Status ProgressiveScan::BuildTables(const ScanHeader& scan, const Tables& theTables) {
    if (scan.spectralStart == 0 && scan.approxHigh != 0) {
        return Status::kOk; // refinement of DC coefficients has plain bits only
    }
    for (int i = 0; i < scan.componentCount; ++i) {
        const ScanComponent& ids = scan.components[i];
        const HuffmanSpec& spec = scan.spectralStart == 0 ? theTables.dc[ids.dcTable] : theTables.ac[ids.acTable];
        if (!spec.sent) {
            return Status::kHuffmanTableMissing;
        }
        if (const Status status = tables[i].Build(spec); status != Status::kOk) {
            return status;
        }
    }
    return Status::kOk;
}

Status ProgressiveScan::Read(const ScanHeader& scan, const Tables& theTables, std::span<const std::uint8_t> coded) {
    if (const Status status = BuildTables(scan, theTables); status != Status::kOk) {
        return status;
    }
    restartInterval = theTables.restartInterval;
    untilRestart = restartInterval;
    nextRestart = 0;
    endOfBandRun = 0;
    predictions.fill(0);
    reader.Open(coded);
    if (restartInterval == 0) {
        reader.ExpectNoRestart();
    }
    if (scan.spectralStart == 0) {
        ReadDc(scan);
    } else if (keepsAll) {
        ReadAc<true>(scan);
    } else {
        ReadAc<false>(scan);
    }
    return Status::kOk;
}

// Restarts where one is due. False when no data can follow any more.
bool ProgressiveScan::BeginMcu() {
    if (restartInterval != 0) {
        if (untilRestart == 0) {
            reader.Restart(nextRestart);
            nextRestart = (nextRestart + 1) & 7;
            untilRestart = restartInterval;
            endOfBandRun = 0;
            predictions.fill(0);
        }
        --untilRestart;
    }
    reader.Prepare();
    return !reader.Finished();
}

// What is left of an interval whose data is used up, behind the present MCU; it counts as read.
int ProgressiveScan::McusToRestart() {
    return std::exchange(untilRestart, 0);
}

// T.81 G.1.2.1.
void ProgressiveScan::ReadDcBlock(const ScanHeader& scan, int part, BitCursor& bits, std::int16_t& value) {
    if (scan.approxHigh != 0) {
        bits.Refill();
        value = static_cast<std::int16_t>(value | static_cast<int>(bits.Take(1)) << scan.approxLow);
        return;
    }
    predictions[part] = static_cast<std::int16_t>(predictions[part] + DecodeDifference(bits, tables[part]));
    value = static_cast<std::int16_t>(predictions[part] << scan.approxLow);
}

void ProgressiveScan::ReadDc(const ScanHeader& scan) {
    if (scan.componentCount == 1) {
        const int component = scan.components[0].component;
        const int blocks = store.BlockCount(component);
        for (int block = 0; block < blocks && BeginMcu(); ++block) {
            if (reader.Exhausted()) {
                block += McusToRestart();
                continue;
            }
            BitCursor bits = reader.Bits();
            ReadDcBlock(scan, 0, bits, *store.Values(component, block));
            reader.Resume(bits);
        }
        return;
    }
    const int mcusPerLine = frame.McusPerLine();
    const int mcuCount = mcusPerLine * frame.McuLines();
    for (int mcu = 0; mcu < mcuCount && BeginMcu(); ++mcu) {
        if (reader.Exhausted()) {
            mcu += McusToRestart();
            continue;
        }
        for (int part = 0; part < scan.componentCount; ++part) {
            ReadDcMcu(scan, part, mcu / mcusPerLine, mcu % mcusPerLine);
        }
    }
}

// The blocks of one component in an MCU; those of the padding are read into nothing.
inline void ProgressiveScan::ReadDcMcu(const ScanHeader& scan, int part, int mcuLine, int mcu) {
    const int index = scan.components[part].component;
    const Component& component = frame.components[index];
    const int columns = store.BlocksPerLine(index);
    for (int row = 0; row < component.v; ++row) {
        const int line = mcuLine * component.v + row;
        for (int i = 0; i < component.h; ++i) {
            reader.Prepare();
            if (reader.Exhausted()) {
                return;
            }
            const int column = mcu * component.h + i;
            std::int16_t padding = 0;
            const bool inside = column < columns && line < store.BlockLines(index);
            BitCursor bits = reader.Bits();
            ReadDcBlock(scan, part, bits, inside ? *store.Values(index, line * columns + column) : padding);
            reader.Resume(bits);
        }
    }
}

// One correction bit (T.81 G.1.2.3) for coefficient `k`; `step` has the bit's place set. A coefficient that already has
// this bit came from damaged data and stays. Bits are as good as random, so nothing here branches on them.
template <bool kKeepsAll>
inline void ProgressiveScan::Correct(BitCursor& bits, int k, int step, std::int16_t* values) const {
    std::int16_t discarded = 0;
    const int place = places[k];
    std::int16_t& value = !kKeepsAll && place == kDiscard ? discarded : values[place];
    const int sign = value >> 15;
    const int growth = bits.TakeMask() & step & ~value;
    value = static_cast<std::int16_t>(value + (growth ^ sign) - sign);
}

// The same for each coefficient of `which`.
template <bool kKeepsAll>
inline void ProgressiveScan::CorrectAll(BitCursor& bits, std::uint64_t which, int step, std::int16_t* values) const {
    while (which != 0) {
        bits.Refill();
        for (int left = 56; which != 0 && left > 0; which &= which - 1, --left) {
            Correct<kKeepsAll>(bits, std::countr_zero(which), step, values);
        }
    }
}

template <bool kKeepsAll> void ProgressiveScan::ReadAc(const ScanHeader& scan) {
    const int component = scan.components[0].component;
    const int blocks = store.BlockCount(component);
    std::uint64_t* history = store.History(component);
    const bool first = scan.approxHigh == 0;
    const std::uint64_t band = From(scan.spectralStart) & UpTo(scan.spectralEnd);
    for (int block = 0; block < blocks; ++block) {
        if (first && endOfBandRun > 0) {
            // Nothing to read in a run: go to its end, or to the next restart.
            int skip = std::min(endOfBandRun, blocks - block);
            if (restartInterval != 0) {
                skip = std::min(skip, untilRestart);
                untilRestart -= skip;
            }
            endOfBandRun -= skip;
            block += skip;
            if (block >= blocks) {
                return;
            }
            if (restartInterval != 0 && untilRestart == 0) {
                endOfBandRun = 0;
            }
        }
        if (!BeginMcu()) {
            return;
        }
        if (reader.Exhausted()) {
            block += McusToRestart();
            continue;
        }
        if (first) {
            ReadAcFirst(scan, store.Values(component, block), history[block]);
        } else if (endOfBandRun == 0) {
            ReadAcRefinement<kKeepsAll>(scan, store.Values(component, block), history[block]);
        } else {
            --endOfBandRun;
            if (const std::uint64_t which = history[block] & band; which != 0) {
                BitCursor bits = reader.Bits();
                CorrectAll<kKeepsAll>(bits, which, 1 << scan.approxLow, store.Values(component, block));
                reader.Resume(bits);
            }
            if (++runVisits > kMaxRunVisits) {
                return;
            }
        }
    }
}

// T.81 G.1.2.2.
void ProgressiveScan::ReadAcFirst(const ScanHeader& scan, std::int16_t* values, std::uint64_t& history) {
    const HuffmanTable& table = tables[0];
    BitCursor bits = reader.Bits();
    std::uint64_t found = 0;
    int k = scan.spectralStart;
    while (k <= scan.spectralEnd) {
        bits.Refill();
        const std::uint64_t word = bits.word;
        const HuffmanCode code = table.Find(word);
        bits.Consume(code.TotalBits());
        if (code.Step() == kEndOfBlockStep) {
            endOfBandRun = (1 << code.Run()) - 1 + static_cast<int>(bits.Take(code.Run()));
            break;
        }
        k += code.Step();
        if (k > kBlockSize) {
            break; // damaged: a run past the block
        }
        if (code.ValueBits() == 0) {
            continue;
        }
        found |= std::uint64_t{1} << (k - 1);
        if (places[k - 1] != kDiscard) {
            values[places[k - 1]] =
                static_cast<std::int16_t>(ExtendValue(word, code.CodeBits(), code.ValueBits()) << scan.approxLow);
        }
    }
    history |= found;
    reader.Resume(bits);
}

// T.81 G.1.2.3, figures G.7 to G.9.
template <bool kKeepsAll>
void ProgressiveScan::ReadAcRefinement(const ScanHeader& scan, std::int16_t* values, std::uint64_t& history) {
    const HuffmanTable& table = tables[0];
    const int step = 1 << scan.approxLow;
    const int end = scan.spectralEnd;
    int k = scan.spectralStart;
    // Corrections are for what was there before this scan; a bit goes as its coefficient is passed.
    std::uint64_t known = history & From(k) & UpTo(end);
    std::uint64_t found = 0;
    BitCursor bits = reader.Bits();
    while (k <= end) {
        bits.Refill();
        const std::uint64_t word = bits.word;
        const HuffmanCode code = table.Find(word);
        const int signBits = code.ValueBits() != 0 ? 1 : 0;
        bits.Consume(code.CodeBits() + signBits);
        if (code.Step() == kEndOfBlockStep) {
            endOfBandRun = (1 << code.Run()) - 1 + static_cast<int>(bits.Take(code.Run()));
            CorrectAll<kKeepsAll>(bits, known, step, values);
            break;
        }
        // The place of the new coefficient: behind Run() coefficients that are 0. Those passed on the way are corrected.
        int place = k + code.Run();
        while (known != 0) {
            const int passed = std::countr_zero(known);
            if (passed > place) {
                break;
            }
            ++place;
            known &= known - 1;
            if (bits.count == 0) [[unlikely]] {
                bits.Refill();
            }
            Correct<kKeepsAll>(bits, passed, step, values);
        }
        if (signBits != 0 && place <= end) {
            found |= std::uint64_t{1} << place;
            if (kKeepsAll || places[place] != kDiscard) {
                values[places[place]] = static_cast<std::int16_t>((word << code.CodeBits()) >> 63 != 0 ? step : -step);
            }
        }
        k = place + 1;
    }
    history |= found;
    reader.Resume(bits);
}

} // namespace jpeg
