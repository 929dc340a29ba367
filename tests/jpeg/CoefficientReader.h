// The entropy decoder of the float model: every coefficient of a valid baseline or progressive file, bit by bit.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <utility>
#include <vector>

namespace float_model {

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
inline const std::array<int, 64>& Natural() {
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

class CoefficientReader {
public:
    explicit CoefficientReader(std::span<const std::uint8_t> bytes) : data(bytes) {}

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

    // What was read.
    int width = 0;
    int height = 0;
    std::vector<Plane> planes;

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
    int hMax = 1;
    int vMax = 1;
    int mcusWide = 0;
    int mcusHigh = 0;
    int interval = 0;
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

} // namespace float_model
