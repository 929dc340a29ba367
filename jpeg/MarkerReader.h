// The full marker reader: from the start of the data to the first scan, then from scan to scan.
#pragma once

#include "jpeg/Frame.h"
#include "jpeg/Markers.h"
#include "jpeg/Status.h"

#include <cstdint>
#include <span>

namespace jpeg {

class MarkerReader {
public:
    explicit MarkerReader(std::span<const std::uint8_t> bytes) : data(bytes), cursor(bytes) {}

    // Reads to the first scan and judges whether the picture is one we decode.
    [[nodiscard]] Status ReadToFirstScan();

    // Continues at `position`, somewhere behind the start of the last scan's coded data. `found` tells whether there is
    // one more scan. What would refuse a picture before its first scan is damage here and ends it, as the end of the image
    // and the end of the data do.
    void ReadToNextScan(std::size_t position, bool& found);

    [[nodiscard]] const Frame& GetFrame() const { return frame; }
    [[nodiscard]] const ScanHeader& Scan() const { return scan; }
    [[nodiscard]] const Tables& GetTables() const { return tables; }
    [[nodiscard]] ColourModel Colour() const { return colour; }

    // First byte of the coded data of the scan just read.
    [[nodiscard]] std::size_t Position() const { return cursor.Position(); }

private:
    [[nodiscard]] bool FindStart();
    [[nodiscard]] Status ReadSegment(std::uint8_t marker, bool& isScan);
    [[nodiscard]] Status ReadFrameHeader(std::uint8_t marker);
    [[nodiscard]] Status ReadQuantTables();
    [[nodiscard]] Status ReadHuffmanTables();
    [[nodiscard]] Status ReadRestartInterval();
    [[nodiscard]] Status ReadScanHeader();
    [[nodiscard]] Status Accept();

    std::span<const std::uint8_t> data;
    MarkerCursor cursor;
    Frame frame;
    ScanHeader scan;
    Tables tables;
    ColourModel colour = ColourModel::kNone;
    bool sawQuant = false;
    bool sawHuffman = false;
    bool sawApp0 = false;
    bool sawApp14 = false;
    std::uint8_t app14Transform = 0;
};

// The colour model: the first rule that fits, in this order. `transform` is the last byte of an APP14 segment.
[[nodiscard]] ColourModel ColourModelOf(const Frame& frame, bool sawApp0, bool sawApp14, std::uint8_t transform);

} // namespace jpeg
