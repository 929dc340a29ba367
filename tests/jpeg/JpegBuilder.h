// Small JPEG files made in memory, segment by segment, for tests that need a file with one certain trait.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>
#include <vector>

namespace jpeg_builder {

using Bytes = std::vector<std::uint8_t>;

struct ComponentSpec {
    int id = 1;
    int h = 1;
    int v = 1;
    int quantId = 0;
};

// Bits, most significant first, with stuffed zeros.
class BitWriter {
public:
    void Put(unsigned value, int count);
    // Pads the last byte with ones.
    [[nodiscard]] Bytes Finish();

private:
    Bytes bytes;
    unsigned partial = 0;
    int used = 0;
};

class Builder {
public:
    Builder& Raw(std::initializer_list<int> values);
    Builder& Raw(std::span<const std::uint8_t> values);
    // FF, the marker, the length and the body.
    Builder& Segment(int marker, const Bytes& body);

    Builder& Soi() { return Raw({0xFF, 0xD8}); }
    Builder& Eoi() { return Raw({0xFF, 0xD9}); }
    Builder& App0() { return Segment(0xE0, {'J', 'F', 'I', 'F', 0, 1, 1, 0, 0, 1, 0, 1, 0, 0}); }
    Builder& App14(int transform);
    // A table with the same quantiser throughout.
    Builder& Quant(int id = 0, int quantiser = 8);
    Builder& Frame(int marker, int width, int height, const std::vector<ComponentSpec>& components, int precision = 8);
    // Table DC and AC 0: the codes of PutDc() and PutEndOfBlock().
    Builder& Huffman(int id = 0);
    Builder& Restart(int interval);
    Builder& Scan(const std::vector<int>& ids, int first = 0, int last = 63, int approximation = 0);

    [[nodiscard]] Bytes Done() const { return bytes; }

private:
    Bytes bytes;
};

// DC difference by the table of Builder::Huffman(): code = category in 4 bits.
void PutDc(BitWriter& bits, int difference);
// AC coefficient without zeros before it, of category 1 or 2.
void PutAc(BitWriter& bits, int value);
void PutEndOfBlock(BitWriter& bits);

// The components of a YCbCr frame; luma as given, chroma 1x1.
[[nodiscard]] std::vector<ComponentSpec> Ycc(int h, int v);
[[nodiscard]] std::vector<ComponentSpec> Grey();

// Coded data of a baseline scan of all components where every block is flat; levels[i] is the sample of component i.
[[nodiscard]] Bytes FlatScan(int width, int height, const std::vector<ComponentSpec>& components,
                             const std::vector<int>& levels);

// A whole baseline file of one colour.
[[nodiscard]] Bytes FlatJpeg(int width, int height, const std::vector<ComponentSpec>& components,
                             const std::vector<int>& levels);

// An Exif APP1 body with a thumbnail directory. `order` is "II" or "MM"; entries are tag, type, value. The value of tag 513
// or 273 counts from the TIFF header, which lies 6 bytes into the body.
struct ExifEntry {
    int tag = 0;
    int type = 4;
    std::uint32_t value = 0;
};
[[nodiscard]] Bytes ExifBody(std::string_view order, const std::vector<ExifEntry>& entries, const Bytes& tail = {});

// Bytes from the TIFF header to the tail of ExifBody().
[[nodiscard]] std::uint32_t ExifTailOffset(std::size_t entries);

// A file of 800x600 whose Exif segment holds `thumbnail`.
[[nodiscard]] Bytes JpegWithThumbnail(std::string_view order, const Bytes& thumbnail,
                                      std::vector<ExifEntry> extra = {});

} // namespace jpeg_builder
