#include "tests/jpeg/JpegBuilder.h"

#include <algorithm>
#include <cstdlib>

namespace jpeg_builder {

namespace {

int CategoryOf(int value) {
    int category = 0;
    for (int size = std::abs(value); size != 0; size >>= 1) {
        ++category;
    }
    return category;
}

void PutValue(BitWriter& bits, int value, int category) {
    bits.Put(static_cast<unsigned>(value < 0 ? value + (1 << category) - 1 : value), category);
}

} // namespace

void BitWriter::Put(unsigned value, int count) {
    for (int i = count - 1; i >= 0; --i) {
        partial = partial << 1 | (value >> i & 1);
        if (++used == 8) {
            bytes.push_back(static_cast<std::uint8_t>(partial));
            if ((partial & 255) == 255) {
                bytes.push_back(0);
            }
            partial = 0;
            used = 0;
        }
    }
}

Bytes BitWriter::Finish() {
    while (used != 0) {
        Put(1, 1);
    }
    return bytes;
}

Builder& Builder::Raw(std::initializer_list<int> values) {
    for (const int value : values) {
        bytes.push_back(static_cast<std::uint8_t>(value));
    }
    return *this;
}

Builder& Builder::Raw(std::span<const std::uint8_t> values) {
    bytes.insert(bytes.end(), values.begin(), values.end());
    return *this;
}

Builder& Builder::Segment(int marker, const Bytes& body) {
    const int length = static_cast<int>(body.size()) + 2;
    return Raw({0xFF, marker, length >> 8, length & 255}).Raw(body);
}

Builder& Builder::App14(int transform) {
    return Segment(0xEE, {'A', 'd', 'o', 'b', 'e', 0, 100, 0, 0, 0, 0, static_cast<std::uint8_t>(transform)});
}

Builder& Builder::Quant(int id, int quantiser) {
    Bytes body(65, static_cast<std::uint8_t>(quantiser));
    body[0] = static_cast<std::uint8_t>(id);
    return Segment(0xDB, body);
}

Builder& Builder::Frame(int marker, int width, int height, const std::vector<ComponentSpec>& components,
                        int precision) {
    Raw({0xFF, marker, 0, static_cast<int>(8 + 3 * components.size()), precision, height >> 8, height & 255, width >> 8,
         width & 255, static_cast<int>(components.size())});
    for (const ComponentSpec& component : components) {
        Raw({component.id, component.h << 4 | component.v, component.quantId});
    }
    return *this;
}

Builder& Builder::Huffman(int id) {
    Bytes dc{static_cast<std::uint8_t>(id), 0, 0, 0, 12, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    for (int category = 0; category < 12; ++category) {
        dc.push_back(static_cast<std::uint8_t>(category));
    }
    // 0: end of block, 10: one bit of value, 110: two bits.
    const Bytes ac{
        static_cast<std::uint8_t>(0x10 | id), 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x00, 0x01, 0x02};
    return Segment(0xC4, dc).Segment(0xC4, ac);
}

Builder& Builder::Restart(int interval) {
    return Segment(0xDD, {static_cast<std::uint8_t>(interval >> 8), static_cast<std::uint8_t>(interval)});
}

Builder& Builder::Scan(const std::vector<int>& ids, int first, int last, int approximation) {
    Bytes body{static_cast<std::uint8_t>(ids.size())};
    for (const int id : ids) {
        body.push_back(static_cast<std::uint8_t>(id));
        body.push_back(0);
    }
    body.insert(body.end(), {static_cast<std::uint8_t>(first), static_cast<std::uint8_t>(last),
                             static_cast<std::uint8_t>(approximation)});
    return Segment(0xDA, body);
}

void PutDc(BitWriter& bits, int difference) {
    const int category = CategoryOf(difference);
    bits.Put(static_cast<unsigned>(category), 4);
    PutValue(bits, difference, category);
}

void PutAc(BitWriter& bits, int value) {
    const int category = CategoryOf(value);
    bits.Put(category == 1 ? 2 : 6, category == 1 ? 2 : 3);
    PutValue(bits, value, category);
}

void PutEndOfBlock(BitWriter& bits) {
    bits.Put(0, 1);
}

std::vector<ComponentSpec> Ycc(int h, int v) {
    return {{1, h, v, 0}, {2, 1, 1, 0}, {3, 1, 1, 0}};
}

std::vector<ComponentSpec> Grey() {
    return {{1, 1, 1, 0}};
}

Bytes FlatScan(int width, int height, const std::vector<ComponentSpec>& components, const std::vector<int>& levels) {
    int hMax = 1;
    int vMax = 1;
    for (const ComponentSpec& component : components) {
        hMax = std::max(hMax, component.h);
        vMax = std::max(vMax, component.v);
    }
    const bool single = components.size() == 1;
    const int mcuWidth = single ? 8 : 8 * hMax;
    const int mcuHeight = single ? 8 : 8 * vMax;
    const int mcus = (width + mcuWidth - 1) / mcuWidth * ((height + mcuHeight - 1) / mcuHeight);
    BitWriter bits;
    for (int mcu = 0; mcu < mcus; ++mcu) {
        for (std::size_t i = 0; i < components.size(); ++i) {
            const int blocks = single ? 1 : components[i].h * components[i].v;
            for (int block = 0; block < blocks; ++block) {
                PutDc(bits, mcu == 0 && block == 0 ? levels[i] - 128 : 0); // quantiser 8: one step a level
                PutEndOfBlock(bits);
            }
        }
    }
    return bits.Finish();
}

Bytes FlatJpeg(int width, int height, const std::vector<ComponentSpec>& components, const std::vector<int>& levels) {
    std::vector<int> ids;
    for (const ComponentSpec& component : components) {
        ids.push_back(component.id);
    }
    return Builder()
        .Soi()
        .App0()
        .Quant()
        .Frame(0xC0, width, height, components)
        .Huffman()
        .Scan(ids)
        .Raw(FlatScan(width, height, components, levels))
        .Eoi()
        .Done();
}

std::uint32_t ExifTailOffset(std::size_t entries) {
    return static_cast<std::uint32_t>(8 + 2 + 4 + 2 + 12 * entries + 4);
}

Bytes ExifBody(std::string_view order, const std::vector<ExifEntry>& entries, const Bytes& tail) {
    const bool big = order == "MM";
    Bytes body{'E', 'x', 'i', 'f', 0, 0};
    const auto put = [&](std::uint32_t value, int size) {
        for (int i = 0; i < size; ++i) {
            body.push_back(static_cast<std::uint8_t>(value >> 8 * (big ? size - 1 - i : i)));
        }
    };
    for (const char letter : order) {
        body.push_back(static_cast<std::uint8_t>(letter));
    }
    put(42, 2);
    put(8, 4);  // the first directory follows
    put(0, 2);  // and is empty
    put(14, 4); // then the thumbnail's
    put(static_cast<std::uint32_t>(entries.size()), 2);
    for (const ExifEntry& entry : entries) {
        put(static_cast<std::uint32_t>(entry.tag), 2);
        put(static_cast<std::uint32_t>(entry.type), 2);
        put(1, 4);
        const int size = entry.type == 3 ? 2 : entry.type == 1 ? 1 : 4;
        put(entry.value, size);
        put(0, 4 - size);
    }
    put(0, 4);
    body.insert(body.end(), tail.begin(), tail.end());
    return body;
}

Bytes JpegWithThumbnail(std::string_view order, const Bytes& thumbnail, std::vector<ExifEntry> extra) {
    const std::uint32_t at = ExifTailOffset(extra.size() + 2);
    extra.push_back({513, 4, at});
    extra.push_back({514, 4, static_cast<std::uint32_t>(thumbnail.size())});
    const auto components = Ycc(2, 2);
    return Builder()
        .Soi()
        .Segment(0xE1, ExifBody(order, extra, thumbnail))
        .Quant()
        .Frame(0xC0, 800, 600, components)
        .Huffman()
        .Scan({1, 2, 3})
        .Raw(FlatScan(800, 600, components, {40, 128, 128}))
        .Eoi()
        .Done();
}

} // namespace jpeg_builder
