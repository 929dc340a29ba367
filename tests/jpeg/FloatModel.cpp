#include "tests/jpeg/FloatModel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <numbers>
#include <stdexcept>

namespace float_model {

namespace {

struct Plane {
    int id = 0;
    int h = 1;
    int v = 1;
    int quantId = 0;
    int blocksWide = 0; // padded to whole MCUs
    int blocksHigh = 0;
    int ownWide = 0; // blocks of a scan of this component alone
    int ownHigh = 0;
    bool quantKnown = false;
    std::array<int, 64> quant{};
    std::vector<std::array<int, 64>> blocks; // in natural order, not dequantised
    int prediction = 0;
};

// (length, code) to symbol.
using Huffman = std::map<std::pair<int, int>, int>;

// Zig-zag order by walking the diagonals.
const std::array<int, 64>& Natural() {
    static const std::array<int, 64> order = [] {
        std::array<int, 64> made{};
        std::size_t next = 0;
        for (int diagonal = 0; diagonal < 15; ++diagonal) {
            for (int i = 0; i <= diagonal; ++i) {
                const int row = diagonal % 2 == 0 ? diagonal - i : i;
                const int column = diagonal - row;
                if (row < 8 && column < 8) {
                    made[next++] = row * 8 + column;
                }
            }
        }
        return made;
    }();
    return order;
}

class Model {
public:
    explicit Model(std::span<const std::uint8_t> bytes) : data(bytes) {}

    void Read() {
        at = 0;
        while (at + 1 < data.size() && !(data[at] == 0xFF && data[at + 1] == 0xD8)) {
            ++at;
        }
        at += 2;
        while (at + 3 < data.size()) {
            if (data[at] != 0xFF) {
                ++at;
                continue;
            }
            const int marker = data[at + 1];
            if (marker == 0xFF) {
                ++at;
                continue;
            }
            at += 2;
            if (marker == 0xD9 && !parts.empty()) {
                return;
            }
            if (marker == 0x00 || marker == 0xD9 || (marker >= 0xD0 && marker <= 0xD8)) {
                continue;
            }
            const std::size_t length = static_cast<std::size_t>(Word(at));
            const std::size_t next = at + length;
            if (next > data.size()) {
                return; // cut
            }
            ReadSegment(marker, next);
            at = std::max(at, next);
        }
    }

    [[nodiscard]] Picture Render(const Shape& shape, char colour) const;

private:
    [[nodiscard]] int Byte(std::size_t i) const { return data[i]; }
    [[nodiscard]] int Word(std::size_t i) const { return data[i] * 256 + data[i + 1]; }

    void ReadSegment(int marker, std::size_t next) {
        const std::size_t body = at + 2;
        if ((marker == 0xC0 || marker == 0xC2) && planes.empty()) {
            ReadFrame(marker, body);
        } else if (marker == 0xDB) {
            for (std::size_t i = body; i + 65 <= next; i += 65) {
                for (int k = 0; k < 64; ++k) {
                    quants[Byte(i)][static_cast<std::size_t>(Natural()[k])] = Byte(i + 1 + k);
                }
            }
        } else if (marker == 0xC4) {
            ReadHuffman(body, next);
        } else if (marker == 0xDD) {
            interval = Word(body);
        } else if (marker == 0xDA) {
            ReadScan(body);
            at = next;
            DecodeScan();
        }
    }

    void ReadFrame(int marker, std::size_t body) {
        progressive = marker == 0xC2;
        height = Word(body + 1);
        width = Word(body + 3);
        const int count = Byte(body + 5);
        for (int i = 0; i < count; ++i) {
            Plane plane;
            plane.id = Byte(body + 6 + 3 * i);
            plane.h = count == 1 ? 1 : Byte(body + 7 + 3 * i) / 16;
            plane.v = count == 1 ? 1 : Byte(body + 7 + 3 * i) % 16;
            plane.quantId = Byte(body + 8 + 3 * i);
            hMax = std::max(hMax, plane.h);
            vMax = std::max(vMax, plane.v);
            planes.push_back(plane);
        }
        const auto up = [](int a, int b) { return (a + b - 1) / b; };
        mcusWide = up(width, 8 * hMax);
        mcusHigh = up(height, 8 * vMax);
        for (Plane& plane : planes) {
            plane.blocksWide = mcusWide * plane.h;
            plane.blocksHigh = mcusHigh * plane.v;
            plane.ownWide = up(up(width * plane.h, hMax), 8);
            plane.ownHigh = up(up(height * plane.v, vMax), 8);
            plane.blocks.resize(static_cast<std::size_t>(plane.blocksWide * plane.blocksHigh));
        }
    }

    void ReadHuffman(std::size_t body, std::size_t next) {
        while (body + 17 <= next) {
            Huffman& table = huffman[Byte(body)];
            table.clear();
            std::size_t symbol = body + 17;
            int code = 0;
            for (int length = 1; length <= 16; ++length) {
                for (int i = 0; i < Byte(body + static_cast<std::size_t>(length)); ++i) {
                    table[{length, code++}] = Byte(symbol++);
                }
                code *= 2;
            }
            body = symbol;
        }
    }

    struct Part {
        int plane = 0;
        int dc = 0;
        int ac = 0;
    };

    void ReadScan(std::size_t body) {
        parts.clear();
        const int count = Byte(body);
        for (int i = 0; i < count; ++i) {
            for (std::size_t p = 0; p < planes.size(); ++p) {
                if (planes[p].id == Byte(body + 1 + 2 * i)) {
                    const int ids = Byte(body + 2 + 2 * i);
                    parts.push_back({static_cast<int>(p), ids / 16, 16 + ids % 16});
                    if (!planes[p].quantKnown) {
                        planes[p].quant = quants[planes[p].quantId];
                        planes[p].quantKnown = true;
                    }
                    break;
                }
            }
        }
        const std::size_t tail = body + 1 + 2 * static_cast<std::size_t>(count);
        first = Byte(tail);
        last = progressive ? Byte(tail + 1) : 63;
        high = progressive ? Byte(tail + 2) / 16 : 0;
        low = progressive ? Byte(tail + 2) % 16 : 0;
        if (!progressive) {
            first = 0;
        }
    }

    // Bits.
    int Bit() {
        if (bitsLeft == 0) {
            if (stopped || at >= data.size()) {
                stopped = true;
                return 0;
            }
            if (data[at] == 0xFF) {
                std::size_t code = at + 1;
                while (code < data.size() && data[code] == 0xFF) {
                    ++code;
                }
                if (code >= data.size() || data[code] != 0) {
                    stopped = true;
                    return 0;
                }
                current = 0xFF;
                at = code + 1;
            } else {
                current = data[at++];
            }
            bitsLeft = 8;
        }
        --bitsLeft;
        return current >> bitsLeft & 1;
    }
    int Bits(int count) {
        int value = 0;
        while (count-- > 0) {
            value = value * 2 + Bit();
        }
        return value;
    }
    int Symbol(const Huffman& table) {
        int code = 0;
        for (int length = 1; length <= 16; ++length) {
            code = code * 2 + Bit();
            const auto found = table.find({length, code});
            if (found != table.end()) {
                return found->second;
            }
        }
        return 0;
    }
    int Value(int size) {
        if (size == 0) {
            return 0;
        }
        const int value = Bits(size);
        return value < 1 << (size - 1) ? value - (1 << size) + 1 : value;
    }

    void DecodeScan() {
        bitsLeft = 0;
        stopped = false;
        run = 0;
        for (Plane& plane : planes) {
            plane.prediction = 0;
        }
        const bool single = parts.size() == 1;
        const Plane& only = planes[static_cast<std::size_t>(parts.at(0).plane)];
        const int units = single ? only.ownWide * only.ownHigh : mcusWide * mcusHigh;
        for (int unit = 0; unit < units; ++unit) {
            if (interval > 0 && unit > 0 && unit % interval == 0) {
                Resume();
            }
            if (single) {
                DecodeBlock(parts[0], unit % only.ownWide, unit / only.ownWide);
                continue;
            }
            for (const Part& part : parts) {
                const Plane& plane = planes[static_cast<std::size_t>(part.plane)];
                for (int i = 0; i < plane.h * plane.v; ++i) {
                    DecodeBlock(part, unit % mcusWide * plane.h + i % plane.h, unit / mcusWide * plane.v + i / plane.h);
                }
            }
        }
    }

    void Resume() {
        bitsLeft = 0;
        stopped = false;
        run = 0;
        for (Plane& plane : planes) {
            plane.prediction = 0;
        }
        while (at + 1 < data.size() && !(data[at] == 0xFF && data[at + 1] >= 0xC0 && data[at + 1] != 0xFF)) {
            ++at;
        }
        if (at + 1 < data.size() && data[at + 1] >= 0xD0 && data[at + 1] <= 0xD7) {
            at += 2;
        }
    }

    void DecodeBlock(const Part& part, int column, int row) {
        Plane& plane = planes[static_cast<std::size_t>(part.plane)];
        auto& block = plane.blocks[static_cast<std::size_t>(row * plane.blocksWide + column)];
        if (!progressive) {
            plane.prediction += Value(Symbol(huffman[part.dc]));
            block[0] = plane.prediction;
            for (int k = 1; k < 64; ++k) {
                const int symbol = Symbol(huffman[part.ac]);
                if (symbol == 0) {
                    break;
                }
                k += symbol / 16;
                const int value = Value(symbol % 16);
                if (k < 64) {
                    block[static_cast<std::size_t>(Natural()[k])] = value;
                }
            }
        } else if (first == 0) {
            if (high == 0) {
                plane.prediction += Value(Symbol(huffman[part.dc]));
                block[0] = plane.prediction * (1 << low);
            } else if (Bit() == 1) {
                block[0] |= 1 << low;
            }
        } else if (high == 0) {
            FirstPass(huffman[part.ac], block);
        } else {
            Refine(huffman[part.ac], block);
        }
    }

    void FirstPass(const Huffman& table, std::array<int, 64>& block) {
        if (run > 0) {
            --run;
            return;
        }
        for (int k = first; k <= last; ++k) {
            const int symbol = Symbol(table);
            const int zeros = symbol / 16;
            if (symbol % 16 == 0 && zeros < 15) {
                run = (1 << zeros) - 1 + Bits(zeros);
                return;
            }
            k += zeros;
            const int value = Value(symbol % 16);
            if (k < 64) {
                block[static_cast<std::size_t>(Natural()[k])] = value * (1 << low);
            }
        }
    }

    void Refine(const Huffman& table, std::array<int, 64>& block) {
        const auto correct = [&](int& value) {
            if (Bit() == 1) {
                value += value < 0 ? -(1 << low) : 1 << low;
            }
        };
        int k = first;
        while (run == 0 && k <= last) {
            const int symbol = Symbol(table);
            int zeros = symbol / 16;
            int fresh = 0;
            if (symbol % 16 == 0) {
                if (zeros < 15) {
                    run = (1 << zeros) + Bits(zeros);
                    break;
                }
            } else {
                fresh = Bit() == 1 ? 1 << low : -(1 << low);
            }
            for (; k <= last; ++k) {
                int& value = block[static_cast<std::size_t>(Natural()[k])];
                if (value != 0) {
                    correct(value);
                } else if (zeros-- == 0) {
                    value = fresh;
                    ++k;
                    break;
                }
            }
        }
        if (run > 0) {
            for (; k <= last; ++k) {
                int& value = block[static_cast<std::size_t>(Natural()[k])];
                if (value != 0) {
                    correct(value);
                }
            }
            --run;
        }
    }

    std::span<const std::uint8_t> data;
    std::size_t at = 0;
    bool progressive = false;
    int width = 0;
    int height = 0;
    int hMax = 1;
    int vMax = 1;
    int mcusWide = 0;
    int mcusHigh = 0;
    int interval = 0;
    std::vector<Plane> planes;
    std::map<int, std::array<int, 64>> quants;
    std::map<int, Huffman> huffman; // AC tables at 16 + id
    std::vector<Part> parts;
    int first = 0;
    int last = 63;
    int high = 0;
    int low = 0;
    int bitsLeft = 0;
    int current = 0;
    bool stopped = false;
    int run = 0;
};

double Limit(double value) {
    return std::clamp(value, 0.0, 255.0);
}

// Weight of frequency u in output x of the reduced transform, one direction. Reduction 1 averages outputs (0,1) (2,3)
// (4,5) (6,7) of frequencies 0..3, reduction 2 outputs (1,2) (5,6) of frequencies 0 and 1, reduction 3 is the mean.
double Basis(int x, int u, int reduction) {
    const auto full = [u](int sample) {
        const double scale = u == 0 ? std::sqrt(0.125) : 0.5;
        return scale * std::cos((2 * sample + 1) * u * std::numbers::pi / 16);
    };
    if (u >= 8 >> reduction) {
        return 0.0;
    }
    switch (reduction) {
    case 0:
        return full(x);
    case 1:
        return (full(2 * x) + full(2 * x + 1)) / 2;
    case 2:
        return (full(4 * x + 1) + full(4 * x + 2)) / 2;
    default:
        return std::sqrt(0.125);
    }
}

// A quantiser as the decoder's multipliers carry it: with two bits of fraction after the scale factors of the transform.
double CarriedQuantiser(int quantiser, int u, int v) {
    const auto factor = [](int k) { return k == 0 ? 1.0 : std::sqrt(2.0) * std::cos(k * std::numbers::pi / 16); };
    const double scale = factor(u) * factor(v);
    return std::floor((quantiser * std::round(scale * 16384) + 2048) / 4096) / (4 * scale);
}

Picture Model::Render(const Shape& shape, char colour) const {
    if (planes.empty()) {
        throw std::runtime_error("no frame");
    }
    const int side = 8 >> shape.reduction;
    double basis[8][8];
    for (int x = 0; x < side; ++x) {
        for (int u = 0; u < 8; ++u) {
            basis[x][u] = Basis(x, u, shape.reduction);
        }
    }
    const int sourceWidth = std::max(1, width >> shape.reduction);
    const int sourceHeight = std::max(1, height >> shape.reduction);
    std::vector<std::vector<double>> samples;
    for (const Plane& plane : planes) {
        std::array<double, 64> quant{};
        for (int i = 0; i < 64; ++i) {
            quant[static_cast<std::size_t>(i)] =
                CarriedQuantiser(plane.quant[static_cast<std::size_t>(i)], i % 8, i / 8);
        }
        std::vector<double> out(static_cast<std::size_t>(plane.blocksWide * side) *
                                static_cast<std::size_t>(plane.blocksHigh * side));
        for (int b = 0; b < plane.blocksWide * plane.blocksHigh; ++b) {
            const auto& block = plane.blocks[static_cast<std::size_t>(b)];
            double half[8][8]; // columns transformed
            for (int y = 0; y < side; ++y) {
                for (int u = 0; u < side; ++u) {
                    double sum = 0;
                    for (int v = 0; v < side; ++v) {
                        sum += basis[y][v] * block[static_cast<std::size_t>(v * 8 + u)] *
                               quant[static_cast<std::size_t>(v * 8 + u)];
                    }
                    half[y][u] = sum;
                }
            }
            for (int y = 0; y < side; ++y) {
                for (int x = 0; x < side; ++x) {
                    double sum = 128;
                    for (int u = 0; u < side; ++u) {
                        sum += basis[x][u] * half[y][u];
                    }
                    const int column = b % plane.blocksWide * side + x;
                    const int row = b / plane.blocksWide * side + y;
                    out[static_cast<std::size_t>(row) * static_cast<std::size_t>(plane.blocksWide * side) +
                        static_cast<std::size_t>(column)] = Limit(sum);
                }
            }
        }
        samples.push_back(std::move(out));
    }

    const auto sampleAt = [&](std::size_t p, int x, int y) {
        const Plane& plane = planes[p];
        const int column = x * plane.h / planes[0].h;
        const int row = y * plane.v / planes[0].v;
        return samples[p][static_cast<std::size_t>(row) * static_cast<std::size_t>(plane.blocksWide * side) +
                          static_cast<std::size_t>(column)];
    };
    Picture picture;
    picture.width = shape.width;
    picture.height = shape.height;
    picture.rgb.assign(static_cast<std::size_t>(shape.width) * static_cast<std::size_t>(shape.height) * 3, 0.0);
    std::vector<int> counts(static_cast<std::size_t>(shape.width) * static_cast<std::size_t>(shape.height));
    // A stretched direction repeats source positions: walk over the larger of both grids.
    const int stepsX = std::max(sourceWidth, shape.width);
    const int stepsY = std::max(sourceHeight, shape.height);
    for (int j = 0; j < stepsY; ++j) {
        for (int i = 0; i < stepsX; ++i) {
            const int x = static_cast<int>(static_cast<long long>(i) * sourceWidth / stepsX);
            const int y = static_cast<int>(static_cast<long long>(j) * sourceHeight / stepsY);
            const int outX = static_cast<int>(static_cast<long long>(i) * shape.width / stepsX);
            const int outY = static_cast<int>(static_cast<long long>(j) * shape.height / stepsY);
            std::array<double, 3> rgb{};
            if (colour == 'g') {
                rgb.fill(sampleAt(0, x, y));
            } else if (colour == 'r') {
                rgb = {sampleAt(0, x, y), sampleAt(1, x, y), sampleAt(2, x, y)};
            } else {
                const double luma = sampleAt(0, x, y);
                const double cb = sampleAt(1, x, y) - 127;
                const double cr = sampleAt(2, x, y) - 127;
                rgb = {Limit(luma + 1.402 * cr), Limit(luma - 0.34414 * cb - 0.71414 * cr), Limit(luma + 1.772 * cb)};
            }
            const std::size_t to =
                static_cast<std::size_t>(outY) * static_cast<std::size_t>(shape.width) + static_cast<std::size_t>(outX);
            ++counts[to];
            for (std::size_t c = 0; c < 3; ++c) {
                picture.rgb[3 * to + c] += rgb[c];
            }
        }
    }
    for (std::size_t i = 0; i < counts.size(); ++i) {
        for (std::size_t c = 0; c < 3; ++c) {
            picture.rgb[3 * i + c] /= std::max(counts[i], 1);
        }
    }
    return picture;
}

} // namespace

Picture Decode(std::span<const std::uint8_t> data, const Shape& shape, char colour) {
    Model model(data);
    model.Read();
    return model.Render(shape, colour);
}

} // namespace float_model
