#include "host/headend/JpegWriter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <vector>

#include "host/headend/JpegTables.h"

namespace headend {

namespace {

// Entropy-coded bits, a zero byte stuffed behind each 0xFF (F.1.2.3).
class Bits {
public:
    explicit Bits(wire::ByteVector& target) : out(target) {}
    void Put(unsigned value, unsigned count) {
        for (unsigned i = count; i-- > 0;) {
            held = held << 1 | (value >> i & 1);
            if (++filled == 8)
                Flush();
        }
    }
    void Put(const Code& code) { Put(code.bits, code.length); }
    void Finish() {
        while (filled != 0)
            Put(1, 1);
    }

private:
    void Flush() {
        out.push_back(static_cast<std::uint8_t>(held));
        if ((held & 0xFF) == 0xFF)
            out.push_back(0);
        held = 0;
        filled = 0;
    }
    wire::ByteVector& out;
    unsigned held = 0;
    int filled = 0;
};

using Block = std::array<std::int16_t, 64>; // in zigzag order

struct Component {
    int sampling = 1; // both ways
    int columns = 0;  // blocks, filled up to whole MCUs
    int rows = 0;
    int usedColumns = 0; // blocks that hold picture: what a scan of this component alone sends (A.2.2)
    int usedRows = 0;
    std::size_t table = 0; // 0 luminance, 1 chrominance
    std::vector<Block> blocks{};
};

unsigned SizeOf(int value) {
    unsigned size = 0;
    for (unsigned v = static_cast<unsigned>(std::abs(value)); v != 0; v >>= 1)
        ++size;
    return size;
}

class Writer {
public:
    Writer(const JpegSettings& jpegSettings, std::span<const std::uint8_t> pixels, std::size_t stride)
        : settings(jpegSettings) {
        MakeTables();
        MakeComponents(pixels, stride);
        for (std::size_t i = 0; i < codes.size(); ++i)
            codes[i] = MakeCodes(Specs()[i]);
    }

    wire::ByteVector Run() {
        Headers();
        if (settings.progressive) {
            // Coarse first: the DC less its last bit, then the low frequencies, colour, the rest, and the last bits.
            Scan({0, 1, 2}, 0, 0, 0, 1);
            Scan({0}, 1, 5, 0, 1);
            Scan({2}, 1, 63, 0, 1);
            Scan({1}, 1, 63, 0, 1);
            Scan({0}, 6, 63, 0, 1);
            Scan({0}, 1, 63, 1, 0);
            Scan({0, 1, 2}, 0, 0, 1, 0);
            Scan({2}, 1, 63, 1, 0);
            Scan({1}, 1, 63, 1, 0);
        } else {
            Scan({0, 1, 2}, 0, 63, 0, 0);
        }
        wire::Append16(out, 0xFFD9);
        return std::move(out);
    }

private:
    void MakeTables() {
        // The usual scaling of the tables: 50 leaves them as they are.
        const int quality = std::clamp(settings.quality, 1, 100);
        const int scale = quality < 50 ? 5000 / quality : 200 - quality * 2;
        for (std::size_t i = 0; i < 64; ++i) {
            quantisers[0][i] = static_cast<std::uint8_t>(std::clamp((kLuminance[i] * scale + 50) / 100, 1, 255));
            quantisers[1][i] = static_cast<std::uint8_t>(std::clamp((kChrominance[i] * scale + 50) / 100, 1, 255));
        }
    }

    void MakeComponents(std::span<const std::uint8_t> pixels, std::size_t stride) {
        const int mcuColumns = (settings.width + 15) / 16;
        const int mcuRows = (settings.height + 15) / 16;
        const int w = mcuColumns * 16;
        const int h = mcuRows * 16;
        std::array<std::vector<float>, 3> planes;
        for (auto& plane : planes)
            plane.resize(static_cast<std::size_t>(w) * static_cast<std::size_t>(h));
        for (int y = 0; y < h; ++y) {
            for (int x = 0; x < w; ++x) {
                // Beyond the edge the last pixel goes on.
                const std::size_t at = static_cast<std::size_t>(std::min(y, settings.height - 1)) * stride +
                                       static_cast<std::size_t>(std::min(x, settings.width - 1)) * 4;
                const float blue = pixels[at];
                const float green = pixels[at + 1];
                const float red = pixels[at + 2];
                const std::size_t to =
                    static_cast<std::size_t>(y) * static_cast<std::size_t>(w) + static_cast<std::size_t>(x);
                planes[0][to] = 0.299f * red + 0.587f * green + 0.114f * blue - 128;
                planes[1][to] = -0.168736f * red - 0.331264f * green + 0.5f * blue;
                planes[2][to] = 0.5f * red - 0.418688f * green - 0.081312f * blue;
            }
        }
        for (std::size_t i = 0; i < components.size(); ++i) {
            Component& component = components[i];
            component.sampling = i == 0 ? 2 : 1;
            component.table = i == 0 ? 0 : 1;
            component.columns = mcuColumns * component.sampling;
            component.rows = mcuRows * component.sampling;
            const int step = i == 0 ? 1 : 2;
            component.usedColumns = ((settings.width + step - 1) / step + 7) / 8;
            component.usedRows = ((settings.height + step - 1) / step + 7) / 8;
            for (int row = 0; row < component.rows; ++row) {
                for (int column = 0; column < component.columns; ++column)
                    component.blocks.push_back(
                        MakeBlock(planes[i], w, column * 8, row * 8, step, quantisers[component.table]));
            }
        }
    }

    static Block MakeBlock(const std::vector<float>& plane, int width, int x0, int y0, int step,
                           const std::array<std::uint8_t, 64>& quantiser) {
        std::array<float, 64> samples{};
        for (int y = 0; y < 8; ++y) {
            for (int x = 0; x < 8; ++x) {
                float sum = 0;
                for (int dy = 0; dy < step; ++dy) {
                    for (int dx = 0; dx < step; ++dx)
                        sum += plane[static_cast<std::size_t>((y0 + y) * step + dy) * static_cast<std::size_t>(width) +
                                     static_cast<std::size_t>((x0 + x) * step + dx)];
                }
                samples[static_cast<std::size_t>(y * 8 + x)] = sum / static_cast<float>(step * step);
            }
        }
        const std::array<float, 64> transformed = Transform(samples);
        Block block{};
        for (std::size_t i = 0; i < 64; ++i)
            block[i] = static_cast<std::int16_t>(std::lround(transformed[kZigzag[i]] / quantiser[kZigzag[i]]));
        return block;
    }

    // A.3.3, rows and then columns.
    static std::array<float, 64> Transform(const std::array<float, 64>& in) {
        static const std::array<std::array<float, 8>, 8> basis = [] {
            std::array<std::array<float, 8>, 8> b{};
            for (std::size_t u = 0; u < 8; ++u) {
                for (std::size_t x = 0; x < 8; ++x)
                    b[u][x] = static_cast<float>(
                        (u == 0 ? std::sqrt(0.125) : 0.5) *
                        std::cos((2.0 * static_cast<double>(x) + 1) * static_cast<double>(u) * std::numbers::pi / 16));
            }
            return b;
        }();
        std::array<float, 64> half{};
        std::array<float, 64> out{};
        for (std::size_t y = 0; y < 8; ++y) {
            for (std::size_t u = 0; u < 8; ++u) {
                for (std::size_t x = 0; x < 8; ++x)
                    half[y * 8 + u] += in[y * 8 + x] * basis[u][x];
            }
        }
        for (std::size_t v = 0; v < 8; ++v) {
            for (std::size_t u = 0; u < 8; ++u) {
                for (std::size_t y = 0; y < 8; ++y)
                    out[v * 8 + u] += half[y * 8 + u] * basis[v][y];
            }
        }
        return out;
    }

    // B.2: everything before the first scan.
    void Headers() {
        wire::Append16(out, 0xFFD8);
        const std::uint8_t jfif[] = {0xFF, 0xE0, 0, 16, 'J', 'F', 'I', 'F', 0, 1, 1, 0, 0, 1, 0, 1, 0, 0};
        wire::AppendBytes(out, jfif);
        for (std::size_t i = 0; i < 2; ++i) {
            wire::Append16(out, 0xFFDB);
            wire::Append16(out, 67);
            out.push_back(static_cast<std::uint8_t>(i));
            for (std::size_t k = 0; k < 64; ++k)
                out.push_back(quantisers[i][kZigzag[k]]);
        }
        wire::Append16(out, settings.progressive ? 0xFFC2 : 0xFFC0);
        wire::Append16(out, 17);
        out.push_back(8);
        wire::Append16(out, static_cast<std::uint32_t>(settings.height));
        wire::Append16(out, static_cast<std::uint32_t>(settings.width));
        out.push_back(3);
        for (std::size_t i = 0; i < components.size(); ++i) {
            out.push_back(static_cast<std::uint8_t>(i + 1));
            out.push_back(static_cast<std::uint8_t>(components[i].sampling << 4 | components[i].sampling));
            out.push_back(static_cast<std::uint8_t>(components[i].table));
        }
        for (std::size_t i = 0; i < Specs().size(); ++i) {
            const HuffmanSpec& spec = Specs()[i];
            wire::Append16(out, 0xFFC4);
            wire::Append16(out, static_cast<std::uint32_t>(19 + spec.symbols.size()));
            out.push_back(static_cast<std::uint8_t>((i % 2) << 4 | i / 2));
            wire::AppendBytes(out, spec.counts);
            wire::AppendBytes(out, spec.symbols);
        }
    }

    void Scan(const std::vector<std::size_t>& members, int first, int last, int high, int low) {
        wire::Append16(out, 0xFFDA);
        wire::Append16(out, static_cast<std::uint32_t>(6 + 2 * members.size()));
        out.push_back(static_cast<std::uint8_t>(members.size()));
        for (const std::size_t member : members) {
            out.push_back(static_cast<std::uint8_t>(member + 1));
            out.push_back(static_cast<std::uint8_t>(components[member].table << 4 | components[member].table));
        }
        out.push_back(static_cast<std::uint8_t>(first));
        out.push_back(static_cast<std::uint8_t>(last));
        out.push_back(static_cast<std::uint8_t>(high << 4 | low));

        Bits bits(out);
        std::array<int, 3> predictions{};
        const auto code = [&](std::size_t member, const Block& block) {
            if (first == 0)
                CodeDc(bits, member, block, predictions[member], high, low);
            if (last > 0 && high == 0)
                CodeAc(bits, member, block, std::max(first, 1), last, low);
            else if (last > 0)
                RefineAc(bits, member, block, first, last, low);
        };
        if (members.size() == 1) {
            const Component& component = components[members[0]];
            for (int row = 0; row < component.usedRows; ++row) {
                for (int column = 0; column < component.usedColumns; ++column)
                    code(members[0], component.blocks[static_cast<std::size_t>(row * component.columns + column)]);
            }
        } else {
            ForEachMcu(members, code);
        }
        bits.Finish();
    }

    template <typename Visit> void ForEachMcu(const std::vector<std::size_t>& members, Visit visit) const {
        for (int row = 0; row < components[1].rows; ++row) {
            for (int column = 0; column < components[1].columns; ++column) {
                for (const std::size_t member : members) {
                    const Component& c = components[member];
                    for (int v = 0; v < c.sampling; ++v) {
                        for (int h = 0; h < c.sampling; ++h)
                            visit(member, c.blocks[static_cast<std::size_t>((row * c.sampling + v) * c.columns +
                                                                            column * c.sampling + h)]);
                    }
                }
            }
        }
    }

    // The bits behind a size (F.1.2.1): negative values one less.
    static void PutMagnitude(Bits& bits, int value, unsigned size) {
        bits.Put(static_cast<unsigned>(value < 0 ? value - 1 : value) & ((1u << size) - 1), size);
    }

    void CodeDc(Bits& bits, std::size_t member, const Block& block, int& prediction, int high, int low) const {
        if (high != 0) { // G.1.2.1: one more bit
            bits.Put(static_cast<unsigned>(block[0] >> low) & 1, 1);
            return;
        }
        const int value = block[0] >> low;
        const int difference = value - prediction;
        prediction = value;
        const unsigned size = SizeOf(difference);
        bits.Put(codes[components[member].table * 2][size]);
        PutMagnitude(bits, difference, size);
    }

    // F.1.2.2 and, without its last bits, G.1.2.2; each block ends by itself.
    void CodeAc(Bits& bits, std::size_t member, const Block& block, int first, int last, int low) const {
        const CodeTable& table = codes[components[member].table * 2 + 1];
        int run = 0;
        for (int k = first; k <= last; ++k) {
            const int full = block[static_cast<std::size_t>(k)];
            const int value = full < 0 ? -(-full >> low) : full >> low;
            if (value == 0) {
                ++run;
                continue;
            }
            for (; run > 15; run -= 16)
                bits.Put(table[0xF0]);
            const unsigned size = SizeOf(value);
            bits.Put(table[static_cast<std::size_t>(run) << 4 | size]);
            PutMagnitude(bits, value, size);
            run = 0;
        }
        if (run > 0)
            bits.Put(table[0x00]);
    }

    // G.1.2.3: coefficients that become 1 now, and one more bit for those that are there already.
    void RefineAc(Bits& bits, std::size_t member, const Block& block, int first, int last, int low) const {
        const CodeTable& table = codes[components[member].table * 2 + 1];
        const auto magnitude = [&](int k) { return std::abs(block[static_cast<std::size_t>(k)]) >> low; };
        int lastNew = 0;
        for (int k = first; k <= last; ++k) {
            if (magnitude(k) == 1)
                lastNew = k;
        }
        std::vector<bool> corrections;
        const auto putCorrections = [&] {
            for (const bool bit : corrections)
                bits.Put(bit ? 1 : 0, 1);
            corrections.clear();
        };
        int run = 0;
        for (int k = first; k <= last; ++k) {
            const int value = magnitude(k);
            if (value == 0) {
                ++run;
                continue;
            }
            for (; run > 15 && k <= lastNew; run -= 16) {
                bits.Put(table[0xF0]);
                putCorrections();
            }
            if (value > 1) {
                corrections.push_back((value & 1) != 0);
                continue;
            }
            bits.Put(table[static_cast<std::size_t>(run) << 4 | 1]);
            bits.Put(block[static_cast<std::size_t>(k)] > 0 ? 1 : 0, 1);
            putCorrections();
            run = 0;
        }
        if (run > 0 || !corrections.empty()) {
            bits.Put(table[0x00]);
            putCorrections();
        }
    }

    JpegSettings settings;
    std::array<std::array<std::uint8_t, 64>, 2> quantisers{};
    std::array<Component, 3> components{};
    std::array<CodeTable, 4> codes{};
    wire::ByteVector out;
};

} // namespace

wire::ByteVector WriteJpeg(const JpegSettings& settings, std::span<const std::uint8_t> pixels, std::size_t stride) {
    return Writer(settings, pixels, stride).Run();
}

} // namespace headend
