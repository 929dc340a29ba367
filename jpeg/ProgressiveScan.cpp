#include "jpeg/ProgressiveScan.h"

#include "jpeg/Transform.h"

#include <algorithm>
#include <bit>

namespace jpeg {

bool HasValidParameters(const ScanHeader& scan) {
    const bool dc = scan.spectralStart == 0;
    if (dc ? scan.spectralEnd != 0
           : scan.spectralEnd < scan.spectralStart || scan.spectralEnd > 63 || scan.componentCount != 1) {
        return false;
    }
    return scan.approxLow <= 13 && (scan.approxHigh == 0 || scan.approxHigh == scan.approxLow + 1);
}

ProgressiveScan::ProgressiveScan(const Frame& theFrame, CoefficientStore& theStore, int reduction)
    : frame(theFrame), store(theStore) {
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
    } else {
        ReadAc(scan);
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

// T.81 G.1.2.1.
void ProgressiveScan::ReadDcBlock(const ScanHeader& scan, int part, std::int16_t& value) {
    if (scan.approxHigh != 0) {
        value = static_cast<std::int16_t>(value | static_cast<int>(reader.Take(1)) << scan.approxLow);
        return;
    }
    predictions[part] = static_cast<std::int16_t>(predictions[part] + DecodeDifference(reader, tables[part]));
    value = static_cast<std::int16_t>(predictions[part] << scan.approxLow);
}

void ProgressiveScan::ReadDc(const ScanHeader& scan) {
    if (scan.componentCount == 1) {
        const int component = scan.components[0].component;
        const int blocks = store.BlockCount(component);
        for (int block = 0; block < blocks && BeginMcu(); ++block) {
            if (!reader.Exhausted()) {
                ReadDcBlock(scan, 0, *store.Values(component, block));
            }
        }
        return;
    }
    const int mcuCount = frame.McusPerLine() * frame.McuLines();
    const int mcusPerLine = frame.McusPerLine();
    for (int mcu = 0; mcu < mcuCount; ++mcu) {
        if (!BeginMcu()) {
            return;
        }
        for (int part = 0; part < scan.componentCount; ++part) {
            const int index = scan.components[part].component;
            const Component& component = frame.components[index];
            for (int unit = 0; unit < component.h * component.v; ++unit) {
                const int column = mcu % mcusPerLine * component.h + unit % component.h;
                const int line = mcu / mcusPerLine * component.v + unit / component.h;
                std::int16_t padding = 0;
                const bool inside = column < store.BlocksPerLine(index) && line < store.BlockLines(index);
                reader.Prepare();
                if (reader.Exhausted()) {
                    continue;
                }
                ReadDcBlock(scan, part,
                            inside ? *store.Values(index, line * store.BlocksPerLine(index) + column) : padding);
            }
        }
    }
}

void ProgressiveScan::ReadAc(const ScanHeader& scan) {
    const int component = scan.components[0].component;
    const int blocks = store.BlockCount(component);
    std::uint64_t* history = store.History(component);
    const bool first = scan.approxHigh == 0;
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
            continue;
        }
        if (first) {
            ReadAcFirst(scan, store.Values(component, block), history[block]);
        } else if (endOfBandRun == 0) {
            ReadAcRefinement(scan, store.Values(component, block), history[block]);
        } else {
            RefineRange(scan.spectralStart, scan.spectralEnd, scan.approxLow, store.Values(component, block),
                        history[block]);
            --endOfBandRun;
            if (++runVisits > kMaxRunVisits) {
                return;
            }
        }
    }
}

// T.81 G.1.2.2.
void ProgressiveScan::ReadAcFirst(const ScanHeader& scan, std::int16_t* values, std::uint64_t& history) {
    const HuffmanTable& table = tables[0];
    int k = scan.spectralStart;
    while (k <= scan.spectralEnd) {
        reader.Refill();
        const std::uint64_t word = reader.Word();
        const HuffmanCode code = table.Find(word);
        reader.Consume(code.TotalBits());
        if (code.Step() == kEndOfBlockStep) {
            endOfBandRun = (1 << code.Run()) - 1 + static_cast<int>(reader.Take(code.Run()));
            return;
        }
        k += code.Step();
        if (k > kBlockSize) {
            return; // damaged: a run past the block
        }
        if (code.ValueBits() == 0) {
            continue;
        }
        history |= std::uint64_t{1} << (k - 1);
        if (places[k - 1] != kDiscard) {
            values[places[k - 1]] = static_cast<std::int16_t>(ExtendValue(word, code.CodeBits(), code.ValueBits())
                                                              << scan.approxLow);
        }
    }
}

// One correction bit (T.81 G.1.2.3). A coefficient that already has this bit came from damaged data and stays.
void ProgressiveScan::RefineOne(int k, int bit, std::int16_t* values) {
    const bool grows = reader.Take(1) != 0;
    if (!grows || places[k] == kDiscard) {
        return;
    }
    std::int16_t& value = values[places[k]];
    if ((value & 1 << bit) == 0) {
        value = static_cast<std::int16_t>(value + (value < 0 ? -(1 << bit) : 1 << bit));
    }
}

// Correction bits of all coefficients from..to that are not 0.
void ProgressiveScan::RefineRange(int from, int to, int bit, std::int16_t* values, std::uint64_t history) {
    if (from > to) {
        return;
    }
    std::uint64_t left = history & ~std::uint64_t{0} << from & ~std::uint64_t{0} >> (63 - to);
    while (left != 0) {
        RefineOne(std::countr_zero(left), bit, values);
        left &= left - 1;
    }
}

// T.81 G.1.2.3, figures G.7 to G.9.
void ProgressiveScan::ReadAcRefinement(const ScanHeader& scan, std::int16_t* values, std::uint64_t& history) {
    const HuffmanTable& table = tables[0];
    const int bit = scan.approxLow;
    int k = scan.spectralStart;
    while (k <= scan.spectralEnd) {
        reader.Refill();
        const HuffmanCode code = table.Find(reader.Word());
        reader.Consume(code.CodeBits());
        if (code.Step() == kEndOfBlockStep) {
            endOfBandRun = (1 << code.Run()) - 1 + static_cast<int>(reader.Take(code.Run()));
            RefineRange(k, scan.spectralEnd, bit, values, history);
            return;
        }
        const int fresh = code.ValueBits() == 0 ? 0 : reader.Take(1) != 0 ? 1 << bit : -(1 << bit);
        // Pass `Run()` coefficients that are 0, correcting the others on the way, up to the next that is 0.
        int run = code.Run();
        while (k <= scan.spectralEnd) {
            const bool isZero = (history >> k & 1) == 0;
            if (isZero && run-- == 0) {
                break;
            }
            if (!isZero) {
                RefineOne(k, bit, values);
            }
            ++k;
        }
        if (fresh != 0 && k <= scan.spectralEnd) {
            history |= std::uint64_t{1} << k;
            if (places[k] != kDiscard) {
                values[places[k]] = static_cast<std::int16_t>(fresh);
            }
        }
        ++k;
    }
}

} // namespace jpeg
