#!/usr/bin/env python3
"""Makes the stored pictures of the screen small: 256 colours each, where every pixel stays near to what it was.

golden.py FROM TO   every PNG of folder FROM (8 bits, RGB, as the tests write them) into folder TO
"""
import pathlib
import struct
import sys
import zlib


WORST = 12  # of 255: what a pixel may lose in one channel


def read_rows(data):
    """Width, height and the RGB rows of a PNG picture."""
    if data[:8] != b"\x89PNG\r\n\x1a\n":
        raise ValueError("no PNG")
    at, packed = 8, b""
    while at < len(data):
        length, kind = struct.unpack(">I4s", data[at:at + 8])
        body = data[at + 8:at + 8 + length]
        if kind == b"IHDR":
            width, height, depth, colour, _, _, interlaced = struct.unpack(">IIBBBBB", body)
            if (depth, colour, interlaced) != (8, 2, 0):
                raise ValueError("not 8 bits RGB")
        elif kind == b"IDAT":
            packed += body
        at += 12 + length
    raw, stride = zlib.decompress(packed), width * 3
    rows, before = [], bytes(stride)
    for y in range(height):
        start = y * (stride + 1)
        row = unfilter(raw[start], bytearray(raw[start + 1:start + 1 + stride]), before)
        rows.append(row)
        before = row
    return width, height, rows


def unfilter(kind, row, before):
    for i in range(len(row)) if kind else ():
        left = row[i - 3] if i >= 3 else 0
        up, corner = before[i], before[i - 3] if i >= 3 else 0
        if kind == 1:
            guess = left
        elif kind == 2:
            guess = up
        elif kind == 3:
            guess = (left + up) // 2
        else:
            base = left + up - corner
            guess = min((left, up, corner), key=lambda near: abs(base - near))
        row[i] = (row[i] + guess) & 255
    return bytes(row)


def split(counts):
    """Median cut: 256 groups of like colours, each with its mean."""
    groups = [list(counts)]
    while len(groups) < 256:
        def span(group):
            return max(max(c[k] for c in group) - min(c[k] for c in group) for k in range(3))
        widest = max(groups, key=lambda group: span(group) * min(len(group), 64))
        if span(widest) == 0:
            break
        groups.remove(widest)
        axis = max(range(3), key=lambda k: max(c[k] for c in widest) - min(c[k] for c in widest))
        widest.sort(key=lambda c: c[axis])
        half = len(widest) // 2
        groups += [widest[:half], widest[half:]]
    palette, index = [], {}
    for number, group in enumerate(groups):
        total = sum(counts[c] for c in group)
        palette.append(tuple(round(sum(c[k] * counts[c] for c in group) / total) for k in range(3)))
        index.update((c, number) for c in group)
    return palette, index


def chunk(kind, body):
    return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))


def shrink(data):
    width, height, rows = read_rows(data)
    counts = {}
    coloured = [[tuple(row[i:i + 3]) for i in range(0, len(row), 3)] for row in rows]
    for row in coloured:
        for colour in row:
            counts[colour] = counts.get(colour, 0) + 1
    palette, index = split(counts)
    if max(abs(colour[k] - palette[index[colour]][k]) for colour in index for k in range(3)) > WORST:
        return data  # too colourful
    lines = b"".join(b"\0" + bytes(index[c] for c in row) for row in coloured)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 3, 0, 0, 0)) +
            chunk(b"PLTE", b"".join(bytes(c) for c in palette)) + chunk(b"IDAT", zlib.compress(lines, 9)) +
            chunk(b"IEND", b""))


def main():
    source, target = map(pathlib.Path, sys.argv[1:3])
    target.mkdir(parents=True, exist_ok=True)
    for file in sorted(source.glob("*.png")):
        (target / file.name).write_bytes(shrink(file.read_bytes()))


if __name__ == "__main__":
    main()
