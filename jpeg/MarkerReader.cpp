#include "jpeg/MarkerReader.h"

#include "jpeg/HeaderScan.h"

#include <algorithm>

namespace jpeg {

namespace {

constexpr std::size_t kStartWindow = 2048; // bytes in which the start of image is looked for

bool IsRgbOrder(const Frame& frame, int firstId) {
    for (int i = 0; i < kMaxComponents; ++i) {
        if (frame.components[i].id != firstId + i) {
            return false;
        }
    }
    return true;
}

} // namespace

ColourModel ColourModelOf(const Frame& frame, bool sawApp0, bool sawApp14, std::uint8_t transform) {
    const bool three = frame.componentCount == 3;
    if (frame.componentCount == 1) {
        return ColourModel::kGrey; // whatever the application segments say
    }
    if (three && (sawApp0 || (sawApp14 && transform == 1))) {
        return ColourModel::kYcc;
    }
    if (three && (IsRgbOrder(frame, 0) || IsRgbOrder(frame, 1))) {
        return ColourModel::kYcc;
    }
    if (three && sawApp14 && transform == 0) {
        return ColourModel::kRgb;
    }
    return ColourModel::kNone;
}

// Looks for FF D8 in the first 2048 bytes only; without one there, reading starts behind them.
bool MarkerReader::FindStart() {
    const std::size_t window = std::min(data.size(), kStartWindow);
    for (std::size_t i = 0; i + 1 < window; ++i) {
        if (data[i] == kPrefix && data[i + 1] == kSoi) {
            cursor.MoveTo(i + 2);
            return true;
        }
    }
    cursor.MoveTo(kStartWindow);
    return data.size() > kStartWindow;
}

Status MarkerReader::ReadToFirstScan() {
    if (!FindStart()) {
        return Status::kStartOfImageTooLate;
    }
    std::uint8_t marker = 0;
    bool isScan = false;
    while (cursor.NextMarker(marker)) {
        if (const Status status = ReadSegment(marker, isScan); status != Status::kOk) {
            return status;
        }
        if (isScan) {
            return Accept();
        }
    }
    return Status::kEndsBeforeScan;
}

void MarkerReader::ReadToNextScan(std::size_t position, bool& found) {
    found = false;
    cursor.MoveTo(position);
    std::uint8_t marker = 0;
    while (cursor.NextMarker(marker)) {
        if (marker == kEoi) {
            return;
        }
        if (marker == kSof0 || marker == kSof2) {
            if (cursor.SegmentFits()) { // a second frame changes nothing any more
                cursor.Skip(cursor.Word(0));
            }
            continue;
        }
        if (ReadSegment(marker, found) != Status::kOk) {
            found = false;
            return;
        }
        if (found) {
            return;
        }
    }
}

Status MarkerReader::ReadSegment(std::uint8_t marker, bool& isScan) {
    isScan = marker == kSos;
    if (isScan) {
        return ReadScanHeader();
    }
    if (marker == kSof0 || marker == kSof2) {
        return ReadFrameHeader(marker);
    }
    const bool hasLength =
        marker == kDht || marker == kDqt || marker == kDri || marker == kCom || marker == kDnl || IsApplication(marker);
    if (!hasLength) {
        return Status::kOk; // searched byte by byte, as in the header scan
    }
    if (marker == kDqt && !cursor.Holds(69)) {
        return Status::kQuantTableCut;
    }
    if (!cursor.SegmentFits()) {
        return Status::kSegmentLength;
    }
    Status status = Status::kOk;
    if (marker == kDqt) {
        status = ReadQuantTables();
    } else if (marker == kDht) {
        status = ReadHuffmanTables();
    } else if (marker == kDri) {
        status = ReadRestartInterval();
    } else if (marker == kApp0) {
        sawApp0 = true;
    } else if (marker == kApp14) {
        const auto body = cursor.SegmentBody();
        sawApp14 = true;
        app14Transform = body.empty() ? 0 : body.back();
    }
    cursor.Skip(cursor.Word(0));
    return status;
}

// T.81 B.2.2.
Status MarkerReader::ReadFrameHeader(std::uint8_t marker) {
    if (!cursor.Holds(17)) {
        return Status::kFrameHeaderCut;
    }
    if (cursor.Byte(2) != 8) {
        return Status::kPrecisionNotEight;
    }
    Frame read;
    read.kind = marker == kSof0 ? FrameKind::kBaseline : FrameKind::kProgressive;
    read.height = static_cast<int>(cursor.Word(3));
    read.width = static_cast<int>(cursor.Word(5));
    if (read.height < 1 || read.height > kMaxSide || read.width < 1 || read.width > kMaxSide) {
        return Status::kSizeOutOfRange;
    }
    read.componentCount = static_cast<int>(cursor.Byte(7));
    if (read.componentCount > kMaxComponents) {
        return Status::kComponentCount;
    }
    if (static_cast<int>(cursor.Word(0)) != 3 * read.componentCount + 8) {
        return Status::kFrameHeaderLength;
    }
    for (int i = 0; i < read.componentCount; ++i) {
        Component& component = read.components[i];
        const std::size_t at = 8 + 3 * static_cast<std::size_t>(i);
        component.id = static_cast<std::uint8_t>(cursor.Byte(at));
        component.h = static_cast<int>(cursor.Byte(at + 1) >> 4);
        component.v = static_cast<int>(cursor.Byte(at + 1) & 15);
        component.quantId = static_cast<std::uint8_t>(cursor.Byte(at + 2));
        if (component.h < 1 || component.h > 4 || component.v < 1 || component.v > 4) {
            return Status::kSamplingFactor;
        }
        read.hMax = std::max(read.hMax, component.h);
        read.vMax = std::max(read.vMax, component.v);
    }
    frame = read;
    cursor.Skip(cursor.Word(0));
    return Status::kOk;
}

// T.81 B.2.4.1, without its 16-bit form.
Status MarkerReader::ReadQuantTables() {
    auto body = cursor.SegmentBody();
    while (!body.empty()) {
        if (body.size() < 1 + kBlockSize) {
            return body[0] >> 4 != 0 ? Status::kQuantTable16Bit : Status::kQuantTableCut;
        }
        if (body[0] >> 4 != 0) {
            return Status::kQuantTable16Bit;
        }
        if (body[0] >= kTableSlots) {
            return Status::kTableId;
        }
        QuantTable& table = tables.quant[body[0]];
        table.sent = true;
        std::copy_n(body.begin() + 1, kBlockSize, table.values.begin());
        body = body.subspan(1 + kBlockSize);
        sawQuant = true;
    }
    return Status::kOk;
}

// T.81 B.2.4.2. Whether the codes fit is seen when a scan uses the table.
Status MarkerReader::ReadHuffmanTables() {
    auto body = cursor.SegmentBody();
    while (!body.empty()) {
        if (body.size() < 17) {
            return Status::kHuffmanTableCut;
        }
        const unsigned tableClass = body[0] >> 4;
        const unsigned id = body[0] & 15;
        if (tableClass > 1 || id >= kTableSlots) {
            return Status::kTableId;
        }
        std::size_t total = 0;
        for (std::size_t i = 1; i <= 16; ++i) {
            total += body[i];
        }
        if (total > 256) {
            return Status::kHuffmanTableTooLong;
        }
        if (body.size() < 17 + total) {
            return Status::kHuffmanTableCut;
        }
        HuffmanSpec& spec = tableClass == 0 ? tables.dc[id] : tables.ac[id];
        spec = HuffmanSpec{};
        spec.sent = true;
        std::copy_n(body.begin() + 1, 16, spec.counts.begin());
        std::copy_n(body.begin() + 17, total, spec.symbols.begin());
        body = body.subspan(17 + total);
        sawHuffman = true;
    }
    return Status::kOk;
}

// T.81 B.2.4.4.
Status MarkerReader::ReadRestartInterval() {
    if (cursor.Word(0) != 4) {
        return Status::kRestartLength;
    }
    tables.restartInterval = static_cast<int>(cursor.Word(2));
    return Status::kOk;
}

// T.81 B.2.3.
Status MarkerReader::ReadScanHeader() {
    if (!cursor.Holds(12)) {
        return Status::kScanHeaderCut;
    }
    if (frame.kind == FrameKind::kNone) {
        return Status::kScanBeforeFrame;
    }
    const int count = static_cast<int>(cursor.Byte(2));
    if (count < 1 || count > kMaxComponents || static_cast<int>(cursor.Word(0)) != (count + 3) * 2) {
        return Status::kScanHeaderLength;
    }
    ScanHeader read;
    read.componentCount = count;
    std::array<bool, kMaxComponents> taken{};
    for (int i = 0; i < count; ++i) {
        const std::size_t at = 3 + 2 * static_cast<std::size_t>(i);
        const unsigned id = cursor.Byte(at);
        int index = 0;
        while (index < frame.componentCount && frame.components[index].id != id) {
            ++index;
        }
        if (index == frame.componentCount || taken[index]) {
            return Status::kScanComponentUnknown;
        }
        taken[index] = true;
        const unsigned ids = cursor.Byte(at + 1);
        if (ids >> 4 >= kTableSlots || (ids & 15) >= kTableSlots) {
            return Status::kTableId;
        }
        read.components[i] = {index, static_cast<std::uint8_t>(ids >> 4), static_cast<std::uint8_t>(ids & 15)};
    }
    const std::size_t at = 3 + 2 * static_cast<std::size_t>(count);
    read.spectralStart = static_cast<int>(cursor.Byte(at));
    read.spectralEnd = static_cast<int>(cursor.Byte(at + 1));
    read.approxHigh = static_cast<int>(cursor.Byte(at + 2) >> 4);
    read.approxLow = static_cast<int>(cursor.Byte(at + 2) & 15);
    scan = read;
    cursor.Skip(cursor.Word(0));
    return Status::kOk;
}

Status MarkerReader::Accept() {
    if (!sawHuffman) {
        return Status::kNoHuffmanTable;
    }
    if (!sawQuant) {
        return Status::kNoQuantTable;
    }
    colour = ColourModelOf(frame, sawApp0, sawApp14, app14Transform);
    if (colour == ColourModel::kNone) {
        return Status::kColourModel;
    }
    if (frame.componentCount == 1) {
        // T.81 A.2.2: a scan of one component is not interleaved, so its factors mean nothing.
        frame.components[0].h = frame.components[0].v = frame.hMax = frame.vMax = 1;
    }
    return Status::kOk;
}

} // namespace jpeg
