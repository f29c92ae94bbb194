"""Turns a drawing with transparency into one of the two planes that a picture is made of.

  flatten.py mask   IN.png OUT.png    8-bit grey: the drawing laid on white
  flatten.py colour IN.png OUT.png    8-bit RGB without transparency: the drawing's own colours, which run
                                      on under its soft edges so that no white shines through a mask
"""

import struct
import sys
import zlib

SIGNATURE = b"\x89PNG\r\n\x1a\n"
BLEED = 3  # pixels by which the colours reach past the outermost shown pixel


def paeth(left, up, corner):
    guess = left + up - corner
    return min((left, up, corner), key=lambda near: abs(guess - near))


def read_rgba(path):
    """Reads an 8-bit PNG as rsvg-convert writes it: RGBA, or RGB where nothing is transparent."""
    with open(path, "rb") as file:
        data = file.read()
    if data[:8] != SIGNATURE:
        sys.exit(f"{path}: not a PNG")
    at, packed = 8, b""
    while at < len(data):
        length, kind = struct.unpack(">I4s", data[at : at + 8])
        body = data[at + 8 : at + 8 + length]
        if kind == b"IHDR":
            width, height, *form = struct.unpack(">IIBBBBB", body)
            if form not in ([8, 6, 0, 0, 0], [8, 2, 0, 0, 0]):
                sys.exit(f"{path}: not plain 8-bit RGBA or RGB")
            step = 4 if form[1] == 6 else 3
        elif kind == b"IDAT":
            packed += body
        at += length + 12
    raw, stride = zlib.decompress(packed), width * step
    rows, above = [], bytearray(stride)
    for y in range(height):
        start = y * (stride + 1)
        how, line = raw[start], bytearray(raw[start + 1 : start + 1 + stride])
        for i in range(stride):
            left = line[i - step] if i >= step else 0
            corner = above[i - step] if i >= step else 0
            add = (0, left, above[i], (left + above[i]) // 2, paeth(left, above[i], corner))[how]
            line[i] = (line[i] + add) & 255
        rows.append([(*line[i : i + 3], line[i + 3] if step == 4 else 255) for i in range(0, stride, step)])
        above = line
    return rows


def write(path, rows, colour_type):
    def chunk(kind, body):
        return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))

    header = struct.pack(">IIBBBBB", len(rows[0]), len(rows), 8, colour_type, 0, 0, 0)
    lines = b"".join(b"\0" + bytes(value for pixel in row for value in pixel) for row in rows)
    with open(path, "wb") as file:
        file.write(SIGNATURE + chunk(b"IHDR", header))
        file.write(chunk(b"IDAT", zlib.compress(lines, 9)) + chunk(b"IEND", b""))


def mask(rows):
    """Grey by luminance on white; a drawing in black, white and grey keeps its values."""

    def grey(red, green, blue, alpha):
        luminance = (red * 299 + green * 587 + blue * 114 + 500) // 1000
        return ((luminance * alpha + 255 * (255 - alpha) + 127) // 255,)

    return [[grey(*pixel) for pixel in row] for row in rows]


def mean(pixels):
    return tuple((2 * sum(channel) + len(pixels)) // (2 * len(pixels)) for channel in zip(*pixels))


def colour(rows):
    """Drops the alpha and lets the colours grow outwards ring by ring; what lies beyond is their mean."""
    plane = {(x, y): p[:3] for y, row in enumerate(rows) for x, p in enumerate(row) if p[3] > 0}
    far = mean(list(plane.values()))
    cells = [(x, y) for y in range(len(rows)) for x in range(len(rows[0]))]
    for _ in range(BLEED):
        ring = {}
        for x, y in cells:
            near = [plane[x + i, y + j] for i in (-1, 0, 1) for j in (-1, 0, 1) if (x + i, y + j) in plane]
            if (x, y) not in plane and near:
                ring[x, y] = mean(near)
        plane.update(ring)
    return [[plane.get((x, y), far) for x in range(len(row))] for y, row in enumerate(rows)]


def main():
    what, source, target = sys.argv[1:]
    rows = read_rgba(source)
    if what == "mask":
        write(target, mask(rows), 0)
    else:
        write(target, colour(rows), 2)


if __name__ == "__main__":
    main()
