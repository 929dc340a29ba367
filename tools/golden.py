#!/usr/bin/env python3
"""Makes the stored pictures of the screen: PNG with 256 colours, where every pixel stays near to what it was.

golden.py FROM TO   every PPM of folder FROM (as the tests write them) becomes a PNG in folder TO
"""
import collections
import pathlib
import struct
import sys
import zlib

WORST = 12  # of 255: what a pixel may lose in one channel


def read(data):
    """Width, height and the pixels of a binary PPM picture, each (red, green, blue)."""
    kind, size, most, body = data.split(b"\n", 3)
    width, height = size.split()
    if kind != b"P6" or most != b"255" or len(body) != int(width) * int(height) * 3:
        raise ValueError("no PPM picture as the tests write it")
    return int(width), int(height), list(zip(body[0::3], body[1::3], body[2::3]))


def split(counts):
    """Median cut: up to 256 groups of like colours. The mean of each, and the group of every colour."""
    def span(group):
        return max(max(c[k] for c in group) - min(c[k] for c in group) for k in range(3))
    groups = [(span(list(counts)), list(counts))]
    while len(groups) < 256:
        widest = max(groups, key=lambda g: g[0] * min(len(g[1]), 64))
        if widest[0] == 0:
            break
        groups.remove(widest)
        colours = widest[1]
        axis = max(range(3), key=lambda k: max(c[k] for c in colours) - min(c[k] for c in colours))
        colours.sort(key=lambda c: c[axis])
        half = len(colours) // 2
        groups += [(span(part), part) for part in (colours[:half], colours[half:])]
    palette, index = [], {}
    for number, (_, group) in enumerate(groups):
        total = sum(counts[c] for c in group)
        palette.append(tuple(round(sum(c[k] * counts[c] for c in group) / total) for k in range(3)))
        index.update((c, number) for c in group)
    return palette, index


def chunk(kind, body):
    return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))


def png(width, height, colour_type, palette, body):
    stride = len(body) // height
    lines = b"".join(b"\0" + body[y * stride:(y + 1) * stride] for y in range(height))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, colour_type, 0, 0, 0)) +
            palette + chunk(b"IDAT", zlib.compress(lines, 9)) + chunk(b"IEND", b""))


def shrink(data):
    width, height, pixels = read(data)
    palette, index = split(collections.Counter(pixels))
    if max(abs(colour[k] - palette[index[colour]][k]) for colour in index for k in range(3)) > WORST:
        return png(width, height, 2, b"", b"".join(map(bytes, pixels)))  # too colourful
    return png(width, height, 3, chunk(b"PLTE", b"".join(map(bytes, palette))), bytes(map(index.__getitem__, pixels)))


def main():
    source, target = map(pathlib.Path, sys.argv[1:3])
    for file in sorted(source.glob("*.ppm")):
        (target / file.with_suffix(".png").name).write_bytes(shrink(file.read_bytes()))


if __name__ == "__main__":
    main()
