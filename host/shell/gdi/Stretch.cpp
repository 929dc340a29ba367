#include "host/shell/gdi/Stretch.h"

#include "platform/gdi.h"

#include <array>
#include <bit>
#include <cairo.h>
#include <cstdlib>
#include <cstring>

namespace shell {

namespace {

// The source positions that make up one target position: one when enlarging, all that fall on it when shrinking.
struct Span {
    int first, last;
};

std::vector<Span> MakeSpans(int sourceStart, int sourceLength, int targetLength) {
    std::vector<Span> spans(static_cast<std::size_t>(targetLength));
    for (int i = 0; i < targetLength; ++i) {
        const auto scaled = [&](int position) {
            return static_cast<int>(static_cast<std::int64_t>(position) * sourceLength / targetLength);
        };
        const auto scaledUp = [&](int position) {
            return static_cast<int>((static_cast<std::int64_t>(position) * sourceLength + targetLength - 1) /
                                    targetLength);
        };
        if (targetLength >= sourceLength) {
            spans[i] = {sourceStart + scaled(i), sourceStart + scaled(i)};
        } else {
            spans[i] = {sourceStart + scaledUp(i), sourceStart + scaledUp(i + 1) - 1};
        }
    }
    return spans;
}

std::uint32_t AndTogether(const Surface& from, Span column, Span row) {
    std::uint32_t pixel = 0xFFFFFFFFu;
    for (int y = row.first; y <= row.last; ++y) {
        for (int x = column.first; x <= column.last; ++x) {
            pixel &= from.PixelAt(x, y);
        }
    }
    return pixel;
}

std::uint8_t Expand(std::uint32_t value, std::uint32_t mask) {
    if (mask == 0) {
        return 0;
    }
    const int bits = std::popcount(mask);
    std::uint32_t field = (value & mask) >> std::countr_zero(mask);
    if (bits >= 8) {
        return static_cast<std::uint8_t>(field >> (bits - 8));
    }
    std::uint32_t result = 0;
    for (int filled = 0; filled < 8; filled += bits) {
        const int shift = 8 - filled - bits;
        result |= shift >= 0 ? field << shift : field >> -shift;
    }
    return static_cast<std::uint8_t>(result);
}

bool IsContiguous(std::uint32_t mask) {
    return mask != 0 && std::has_single_bit((mask >> std::countr_zero(mask)) + 1);
}

// All in pixels.
void StretchSteps(const Surface& from, const RECT& source, Surface& to, const RECT& target,
                  std::span<const RECT> clip) {
    const auto columns = MakeSpans(source.left, source.right - source.left, target.right - target.left);
    const auto rows = MakeSpans(source.top, source.bottom - source.top, target.bottom - target.top);
    const RECT bounds = to.InPixels(to.Bounds());
    for (const RECT& part : clip) {
        RECT visible;
        if (!IntersectRect(&visible, &target, &bounds) || !IntersectRect(&visible, &visible, &part)) {
            continue;
        }
        for (int y = visible.top; y < visible.bottom; ++y) {
            const Span row = rows[static_cast<std::size_t>(y - target.top)];
            std::uint32_t* out = to.PixelRow(y);
            for (int x = visible.left; x < visible.right; ++x) {
                out[x] = AndTogether(from, columns[static_cast<std::size_t>(x - target.left)], row) | kOpaque;
            }
        }
    }
}

// What a coarse surface would show of `target`, painted on a finer one.
void StretchSmoothly(const Surface& from, const RECT& source, Surface& to, const RECT& target,
                     std::span<const RECT> clip) {
    RECT seen;
    const RECT bounds = to.Bounds();
    if (!IntersectRect(&seen, &target, &bounds)) {
        return;
    }
    Surface coarse(seen.right - seen.left, seen.bottom - seen.top, from.Scale());
    const RECT there = {target.left - seen.left, target.top - seen.top, target.right - seen.left,
                        target.bottom - seen.top};
    StretchPixels(from, source, coarse, there, std::array{coarse.Bounds()});
    cairo_surface_mark_dirty(coarse.Cairo());
    cairo_t* cairo = cairo_create(to.Cairo());
    for (const RECT& part : clip) {
        cairo_rectangle(cairo, part.left, part.top, part.right - part.left, part.bottom - part.top);
    }
    cairo_clip(cairo);
    cairo_rectangle(cairo, seen.left, seen.top, seen.right - seen.left, seen.bottom - seen.top);
    cairo_set_source_surface(cairo, coarse.Cairo(), seen.left, seen.top);
    cairo_pattern_set_extend(cairo_get_source(cairo), CAIRO_EXTEND_PAD);
    cairo_fill(cairo);
    cairo_destroy(cairo);
}

} // namespace

void StretchPixels(const Surface& from, const RECT& source, Surface& to, const RECT& target,
                   std::span<const RECT> clip) {
    if (IsRectEmpty(&source) || IsRectEmpty(&target)) {
        return;
    }
    if (from.Scale() != to.Scale()) {
        StretchSmoothly(from, source, to, target, clip);
        return;
    }
    std::vector<RECT> parts(clip.begin(), clip.end());
    for (RECT& part : parts) {
        part = to.InPixels(part);
    }
    StretchSteps(from, from.InPixels(source), to, to.InPixels(target), parts);
}

std::optional<DibHeader> ReadDibHeader(const void* info) {
    BITMAPINFOHEADER raw;
    std::memcpy(&raw, info, sizeof raw);
    const bool plain = raw.biSize == sizeof raw && raw.biPlanes == 1 && raw.biWidth > 0 && raw.biHeight != 0 &&
                       raw.biWidth <= kMaxSurfaceSide && raw.biHeight <= kMaxSurfaceSide &&
                       raw.biHeight >= -kMaxSurfaceSide;
    const bool masked = raw.biCompression == BI_BITFIELDS && (raw.biBitCount == 16 || raw.biBitCount == 32);
    const bool unmasked =
        raw.biCompression == BI_RGB && (raw.biBitCount == 16 || raw.biBitCount == 24 || raw.biBitCount == 32);
    if (!plain || (!masked && !unmasked)) {
        return std::nullopt;
    }
    DibHeader header{raw.biWidth, std::abs(raw.biHeight), raw.biHeight < 0, raw.biBitCount, {}};
    if (masked) {
        std::memcpy(header.masks, static_cast<const std::byte*>(info) + sizeof raw, sizeof header.masks);
        for (const std::uint32_t mask : header.masks) {
            if (!IsContiguous(mask)) {
                return std::nullopt;
            }
        }
    } else if (raw.biBitCount == 16) {
        header.masks[0] = 0x7C00, header.masks[1] = 0x03E0, header.masks[2] = 0x001F;
    } else {
        header.masks[0] = 0xFF0000, header.masks[1] = 0x00FF00, header.masks[2] = 0x0000FF;
    }
    return header;
}

Surface DibToSurface(const DibHeader& header, const void* bits) {
    Surface surface(header.width, header.height);
    const std::size_t bytesPerPixel = static_cast<std::size_t>(header.bitsPerPixel) / 8;
    const std::size_t stride = (static_cast<std::size_t>(header.width) * header.bitsPerPixel + 31) / 32 * 4;
    for (int y = 0; y < header.height; ++y) {
        const int stored = header.topDown ? y : header.height - 1 - y;
        const auto* in = static_cast<const std::uint8_t*>(bits) + stride * static_cast<std::size_t>(stored);
        std::uint32_t* out = surface.PixelRow(y);
        for (int x = 0; x < header.width; ++x, in += bytesPerPixel) {
            std::uint32_t value = 0;
            for (std::size_t i = 0; i < bytesPerPixel; ++i) {
                value |= static_cast<std::uint32_t>(in[i]) << (8 * i);
            }
            out[x] = kOpaque | static_cast<std::uint32_t>(Expand(value, header.masks[0])) << 16 |
                     static_cast<std::uint32_t>(Expand(value, header.masks[1])) << 8 | Expand(value, header.masks[2]);
        }
    }
    return surface;
}

} // namespace shell
