#include "jpeg/BaselineDecoder.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace jpeg {

namespace {

// Where coefficient k goes in the block of a reduction. Long runs and the end of a block point far behind 63.
constexpr int kPlaces = 64 + kEndOfBlockStep;
template <int kReduction>
constexpr auto kPlaceOf = [] {
    std::array<std::uint8_t, kPlaces> places{};
    places.fill(kDiscard);
    constexpr int side = KeptSide(kReduction);
    for (int k = 0; k < kBlockSize; ++k) {
        const int row = kZigzag[k] / kBlockSide;
        const int column = kZigzag[k] % kBlockSide;
        if (row < side && column < side) {
            places[k] = static_cast<std::uint8_t>(row * side + column);
        }
    }
    return places;
}();

constexpr int kMaxCoefficientBits = 31; // a code of 16 bits and a value of 15

} // namespace

Status BaselineScan::Open(const Frame& theFrame, const ScanHeader& header, const Tables& tables,
                          std::span<const std::uint8_t> coded, int reduction) {
    frame = theFrame;
    partCount = header.componentCount;
    if (reduction > 0) {
        skipTables.reset(new (std::nothrow) SkipTables);
        if (!skipTables) {
            return Status::kOutOfMemory;
        }
    }
    std::array<bool, kTableSlots> haveDc{};
    std::array<bool, kTableSlots> haveAc{};
    for (int i = 0; i < partCount; ++i) {
        const ScanComponent& ids = header.components[i];
        parts[i].component = ids.component;
        parts[i].dcTable = &dcTables[ids.dcTable];
        parts[i].acTable = &acTables[ids.acTable];
        parts[i].skipTable = skipTables ? &(*skipTables)[ids.acTable] : nullptr;
        if (!tables.dc[ids.dcTable].sent || !tables.ac[ids.acTable].sent) {
            return Status::kHuffmanTableMissing;
        }
        if (!std::exchange(haveDc[ids.dcTable], true)) {
            if (const Status status = dcTables[ids.dcTable].Build(tables.dc[ids.dcTable]); status != Status::kOk) {
                return status;
            }
        }
        if (!std::exchange(haveAc[ids.acTable], true)) {
            if (const Status status = acTables[ids.acTable].Build(tables.ac[ids.acTable]); status != Status::kOk) {
                return status;
            }
            if (skipTables) {
                (*skipTables)[ids.acTable].Build(acTables[ids.acTable]);
            }
        }
    }
    restartInterval = tables.restartInterval;
    untilRestart = restartInterval;
    constexpr std::array<LineFunction, 4> kLineFunctions = {
        &BaselineScan::DecodeLineAt<0>, &BaselineScan::DecodeLineAt<1>, &BaselineScan::DecodeLineAt<2>,
        &BaselineScan::DecodeLineAt<3>};
    decodeLine = kLineFunctions[reduction];
    reader.Open(coded);
    if (restartInterval == 0) {
        reader.ExpectNoRestart();
    }
    return Status::kOk;
}

void BaselineScan::DecodeLine(int mcuLine, const ComponentQuantisers& quantisers, SampleRows& rows) {
    (this->*decodeLine)(mcuLine, quantisers, rows);
}

template <int kReduction>
void BaselineScan::DecodeLineAt(int mcuLine, const ComponentQuantisers& quantisers, SampleRows& rows) {
    if (partCount == 1) {
        DecodeSingle<kReduction>(mcuLine, quantisers, rows);
    } else {
        DecodeInterleaved<kReduction>(quantisers, rows);
    }
}

// T.81 A.2.3: MCUs of all components, padded to whole MCUs.
template <int kReduction>
void BaselineScan::DecodeInterleaved(const ComponentQuantisers& quantisers, SampleRows& rows) {
    constexpr int side = KeptSide(kReduction);
    const TransformFunction transform = TransformFor(kReduction);
    Block block;
    const int mcus = frame.McusPerLine();
    for (int mcu = 0; mcu < mcus; ++mcu) {
        BeginMcu();
        if constexpr (kReduction == 3) {
            if (const int count = McusWithoutData(mcus - mcu); count > 0) {
                for (int i = 0; i < partCount; ++i) {
                    const int index = parts[i].component;
                    FillEighths(parts[i], quantisers.Of(index), count,
                                rows.Row(index, 0) + mcu * frame.components[index].h, rows.Stride(index));
                }
                PassMcus(count - 1);
                mcu += count - 1;
                continue;
            }
        }
        for (int i = 0; i < partCount; ++i) {
            Part& part = parts[i];
            const int index = part.component;
            const Component& component = frame.components[index];
            for (int row = 0; row < component.v; ++row) {
                std::uint8_t* samples = rows.Row(index, row * side) + mcu * component.h * side;
                for (int column = 0; column < component.h; ++column, samples += side) {
                    const int last = DecodeBlock<kReduction>(part, block);
                    transform(block.values.data(), quantisers.Of(index), last, samples, rows.Stride(index));
                }
            }
        }
    }
}

// T.81 A.2.2: a scan of one component is made of its blocks alone, without padding.
template <int kReduction>
void BaselineScan::DecodeSingle(int mcuLine, const ComponentQuantisers& quantisers, SampleRows& rows) {
    constexpr int side = KeptSide(kReduction);
    const TransformFunction transform = TransformFor(kReduction);
    Block block;
    Part& part = parts[0];
    const int index = part.component;
    const int perMcu = frame.components[index].v;
    const int lines = std::min(perMcu, frame.BlockLines(index) - mcuLine * perMcu);
    const int columns = frame.BlocksPerLine(index);
    for (int line = 0; line < lines; ++line) {
        std::uint8_t* samples = rows.Row(index, line * side);
        for (int column = 0; column < columns; ++column, samples += side) {
            BeginMcu();
            if constexpr (kReduction == 3) {
                if (const int count = McusWithoutData(columns - column); count > 0) {
                    FillEighths(part, quantisers.Of(index), count, samples, rows.Stride(index));
                    PassMcus(count - 1);
                    column += count - 1;
                    samples += count - 1;
                    continue;
                }
            }
            const int last = DecodeBlock<kReduction>(part, block);
            transform(block.values.data(), quantisers.Of(index), last, samples, rows.Stride(index));
        }
    }
}

// T.81 E.2.4.
void BaselineScan::BeginMcu() {
    if (restartInterval == 0) {
        return;
    }
    if (untilRestart == 0) {
        reader.Restart(nextRestart);
        nextRestart = (nextRestart + 1) & 7;
        untilRestart = restartInterval;
        for (Part& part : parts) {
            part.prediction = 0;
        }
    }
    --untilRestart;
}

// Counts MCUs of which BeginMcu() need not be told: no restart among them can bring data.
void BaselineScan::PassMcus(int count) {
    if (restartInterval != 0) {
        // Restarts fall on multiples of the interval; untilRestart is what is left of the present one.
        const int passed = restartInterval - untilRestart + count;
        untilRestart = restartInterval - (passed - 1) % restartInterval - 1;
    }
}

// Returns the place of the last coefficient that may differ from 0, in zig-zag order.
template <int kReduction> int BaselineScan::DecodeBlock(Part& part, Block& block) {
    reader.Prepare();
    if (!reader.Exhausted()) [[likely]] {
        return DecodeCodedBlock<kReduction>(part, block);
    }
    LearnZeros<kReduction>(part);
    const ZeroBlock& zeros = part.zeros;
    std::memcpy(block.values.data(), zeros.block.values.data(), KeptCount(kReduction) * sizeof(std::int16_t));
    part.prediction = static_cast<std::int16_t>(part.prediction + zeros.difference);
    block.values[0] = static_cast<std::int16_t>(part.prediction);
    return zeros.last;
}

// Once the reader has nothing but zeros.
template <int kReduction> void BaselineScan::LearnZeros(Part& part) {
    ZeroBlock& zeros = part.zeros;
    if (!zeros.known) {
        const int prediction = std::exchange(part.prediction, 0);
        zeros.last = DecodeCodedBlock<kReduction>(part, zeros.block);
        zeros.difference = std::exchange(part.prediction, prediction);
        zeros.known = true;
    }
}

// How many of the `left` MCUs of a line, the one just begun among them, have nothing but zeros to read: up to the next
// restart or, where none can follow, all.
int BaselineScan::McusWithoutData(int left) {
    reader.Prepare();
    if (!reader.Exhausted()) {
        return 0;
    }
    for (int i = 0; i < partCount; ++i) {
        LearnZeros<3>(parts[i]);
    }
    return reader.Finished() ? left : std::min(left, untilRestart + 1);
}

// What decoding `count` MCUs from zeros comes to at an eighth of the size, where a block is one sample. A picture of six
// million MCUs may end after the first.
void BaselineScan::FillEighths(Part& part, const Dequantiser& dequantiser, int count, std::uint8_t* samples,
                               std::ptrdiff_t stride) const {
    const bool isAlone = partCount == 1;
    const int columns = isAlone ? 1 : frame.components[part.component].h;
    const int lines = isAlone ? 1 : frame.components[part.component].v;
    int prediction = part.prediction;
    int left = untilRestart + 1;
    for (int mcu = 0; mcu < count; ++mcu, samples += columns) {
        if (left == 0 && restartInterval != 0) {
            prediction = 0;
            left = restartInterval;
        }
        --left;
        for (int line = 0; line < lines; ++line) {
            for (int column = 0; column < columns; ++column) {
                prediction = static_cast<std::int16_t>(prediction + part.zeros.difference);
                samples[line * stride + column] = EighthSample(static_cast<std::int16_t>(prediction), dequantiser);
            }
        }
    }
    part.prediction = prediction;
}

// T.81 F.2.2.
template <int kReduction> int BaselineScan::DecodeCodedBlock(Part& part, Block& block) {
    constexpr const auto& places = kPlaceOf<kReduction>;
    std::int16_t* values = block.values.data();
    std::memset(values, 0, KeptCount(kReduction) * sizeof(std::int16_t));
    BitCursor bits = reader.Bits();
    part.prediction = static_cast<std::int16_t>(part.prediction + DecodeDifference(bits, *part.dcTable));
    values[0] = static_cast<std::int16_t>(part.prediction);

    const HuffmanTable& table = *part.acTable;
    int k = 1;
    const auto decodeCoefficient = [&] {
        const std::uint64_t word = bits.word;
        const HuffmanCode code = table.Find(word);
        bits.Consume(code.TotalBits());
        k += code.Step();
        values[places[k - 1]] = static_cast<std::int16_t>(ExtendValue(word, code.CodeBits(), code.ValueBits()));
    };
    while (k <= LastKept(kReduction)) {
        bits.Refill();
        decodeCoefficient();
        if (k > LastKept(kReduction)) {
            break;
        }
        if (bits.count < kMaxCoefficientBits) [[unlikely]] {
            bits.Refill();
        }
        decodeCoefficient();
    }
    if constexpr (kReduction > 0) {
        part.skipTable->SkipBlock(bits, table, k);
    }
    reader.Resume(bits);
    return k > kEndOfBlockStep ? k - kEndOfBlockStep - 1 : kBlockSize - 1;
}

Status BaselineDecoder::AddScan(const MarkerReader& reader, std::span<const std::uint8_t> data, int reduction) {
    const ScanHeader& header = reader.Scan();
    bool bringsNew = false;
    for (int i = 0; i < header.componentCount; ++i) {
        bringsNew = bringsNew || !covered[header.components[i].component];
    }
    if (!bringsNew) {
        return Status::kOk;
    }
    if (const Status status = quantisers.Latch(reader.GetFrame(), reader.GetTables(), header, reduction);
        status != Status::kOk) {
        return status;
    }
    auto& scan = scans[scanCount];
    scan.reset(new (std::nothrow) BaselineScan);
    if (!scan) {
        return Status::kOutOfMemory;
    }
    if (const Status status =
            scan->Open(reader.GetFrame(), header, reader.GetTables(), data.subspan(reader.Position()), reduction);
        status != Status::kOk) {
        return status;
    }
    ++scanCount;
    for (int i = 0; i < header.componentCount; ++i) {
        covered[header.components[i].component] = true;
    }
    return Status::kOk;
}

Status BaselineDecoder::Open(MarkerReader& reader, std::span<const std::uint8_t> data, int reduction) {
    const int components = reader.GetFrame().componentCount;
    bool found = true;
    while (found) {
        if (const Status status = AddScan(reader, data, reduction); status != Status::kOk) {
            return status;
        }
        if (std::count(covered.begin(), covered.begin() + components, true) == components) {
            break;
        }
        reader.ReadToNextScan(reader.Position(), found);
    }
    return quantisers.LatchRest(reader.GetFrame(), reader.GetTables(), reduction);
}

void BaselineDecoder::DecodeLine(int mcuLine, SampleRows& rows) {
    for (int i = 0; i < scanCount; ++i) {
        scans[i]->DecodeLine(mcuLine, quantisers, rows);
    }
}

} // namespace jpeg
