#include "jpeg/ProgressiveDecoder.h"

#include "jpeg/ProgressiveScan.h"

#include <algorithm>
#include <bit>
#include <memory>
#include <new>

namespace jpeg {

// Looks at all scan headers ahead of the first read.
void ProgressiveDecoder::PlanScans(MarkerReader reader) {
    bool found = true;
    while (found) {
        const ScanHeader& scan = reader.Scan();
        const bool refinesKept =
            scan.spectralStart > 0 && scan.approxHigh != 0 && scan.spectralStart <= LastKept(reduction);
        if (HasValidParameters(scan) && refinesKept) {
            int& last = refinedTo[scan.components[0].component];
            last = std::max(last, scan.spectralEnd);
        }
        reader.ReadToNextScan(reader.Position(), found);
    }
}

bool ProgressiveDecoder::IsNeeded(const ScanHeader& scan) const {
    if (!HasValidParameters(scan)) {
        return false;
    }
    const int last = std::max(LastKept(reduction), refinedTo[scan.components[0].component]);
    return scan.spectralStart == 0 || (reduction < 3 && scan.spectralStart <= last);
}

Status ProgressiveDecoder::Open(MarkerReader& reader, std::span<const std::uint8_t> data, int theReduction) {
    frame = reader.GetFrame();
    reduction = theReduction;
    PlanScans(reader);
    if (const Status status = store.Open(frame, reduction); status != Status::kOk) {
        return status;
    }
    const std::unique_ptr<ProgressiveScan> scan(new (std::nothrow) ProgressiveScan(frame, store, reduction));
    if (!scan) {
        return Status::kOutOfMemory;
    }
    bool found = true;
    while (found && !scan->IsTired()) {
        std::size_t position = reader.Position();
        if (const Status status = quantisers.Latch(frame, reader.GetTables(), reader.Scan(), reduction);
            status != Status::kOk) {
            return status;
        }
        if (IsNeeded(reader.Scan())) {
            if (const Status status = scan->Read(reader.Scan(), reader.GetTables(), data.subspan(position));
                status != Status::kOk) {
                return status;
            }
            position += scan->SourcePosition();
        }
        reader.ReadToNextScan(position, found);
    }
    return quantisers.LatchRest(frame, reader.GetTables(), reduction);
}

void ProgressiveDecoder::DecodeLine(int mcuLine, SampleRows& rows) {
    const TransformFunction transform = TransformFor(reduction);
    const int side = KeptSide(reduction);
    const int kept = KeptCount(reduction);
    for (int i = 0; i < frame.componentCount; ++i) {
        const int perMcu = frame.components[i].v;
        const int lines = std::min(perMcu, store.BlockLines(i) - mcuLine * perMcu);
        const int columns = store.BlocksPerLine(i);
        for (int line = 0; line < lines; ++line) {
            const int firstBlock = (mcuLine * perMcu + line) * columns;
            const std::int16_t* values = store.Values(i, firstBlock);
            const std::uint64_t* history = store.History(i);
            std::uint8_t* samples = rows.Row(i, line * side);
            for (int column = 0; column < columns; ++column, values += kept, samples += side) {
                const int last = history == nullptr ? 0 : 63 - std::countl_zero(history[firstBlock + column] | 1);
                transform(values, quantisers.Of(i), last, samples, rows.Stride(i));
            }
        }
    }
}

} // namespace jpeg
