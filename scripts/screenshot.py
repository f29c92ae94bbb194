#!/usr/bin/python3
"""Pictures of an X display, taken with xwd: saved as PNG files, or read pixel by pixel in tests."""

import argparse
import os
import re
import struct
import subprocess
import zlib

XWD_VERSION = 7
XWD_Z_PIXMAP = 2
XWD_HEADER = struct.Struct(">25I")
XWD_COLOUR_BYTES = 12


class Screenshot:
    """Pixels as 0xRRGGBB, the origin at the top left."""

    def __init__(self, width, height, rgb):
        self.width, self.height, self.rgb = width, height, rgb

    @classmethod
    def take(cls, window=None, env=None):
        """The whole screen, or one window by its id."""
        target = ["-root"] if window is None else ["-id", str(window)]
        dump = subprocess.run(["xwd", "-silent", *target], env=env, check=True, timeout=20,
                              capture_output=True).stdout
        return cls.from_xwd(dump)

    @classmethod
    def from_xwd(cls, dump):
        header = XWD_HEADER.unpack_from(dump)
        header_size, version, pixmap_format = header[0], header[1], header[2]
        width, height, byte_order = header[4], header[5], header[7]
        bits, line_bytes, colours = header[11], header[12], header[19]
        if version != XWD_VERSION or pixmap_format != XWD_Z_PIXMAP or bits not in (16, 32):
            raise ValueError("only window dumps of version 7 with 16 or 32 bits are read")
        if bits == 16:
            dump, line_bytes = cls._widened(dump, header), 4 * width
            byte_order, header_size, colours = 1, 0, 0
        red, green, blue = (1, 2, 3) if byte_order else (2, 1, 0)
        rgb = bytearray(3 * width * height)
        start = header_size + colours * XWD_COLOUR_BYTES
        for y in range(height):
            line = dump[start + y * line_bytes:start + y * line_bytes + 4 * width]
            out = slice(3 * width * y, 3 * width * (y + 1))
            pixels = bytearray(3 * width)
            pixels[0::3], pixels[1::3], pixels[2::3] = line[red::4], line[green::4], line[blue::4]
            rgb[out] = pixels
        return cls(width, height, bytes(rgb))

    @staticmethod
    def _widened(dump, header):
        """The lines of a dump of 5, 6 and 5 bits as 32-bit pixels, most significant byte first."""
        start = header[0] + header[19] * XWD_COLOUR_BYTES
        order = ">" if header[7] else "<"
        wide = bytearray()
        for y in range(header[5]):
            line = struct.unpack_from(f"{order}{header[4]}H", dump, start + y * header[12])
            wide += b"".join(bytes((0, pixel >> 8 & 0xF8, pixel >> 3 & 0xFC, pixel << 3 & 0xF8))
                             for pixel in line)
        return bytes(wide)

    def pixel(self, x, y):
        if not (0 <= x < self.width and 0 <= y < self.height):
            raise IndexError(f"({x}, {y}) is outside of {self.width} x {self.height}")
        at = 3 * (y * self.width + x)
        return int.from_bytes(self.rgb[at:at + 3], "big")

    def crop(self, x, y, width, height):
        if x < 0 or y < 0 or x + width > self.width or y + height > self.height:
            raise IndexError(f"{width} x {height} at ({x}, {y}) is outside of "
                             f"{self.width} x {self.height}")
        lines = (self.rgb[3 * (row * self.width + x):3 * (row * self.width + x + width)]
                 for row in range(y, y + height))
        return Screenshot(width, height, b"".join(lines))

    def save(self, path):
        def chunk(kind, data):
            body = kind + data
            return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body))

        stride = 3 * self.width
        lines = b"".join(b"\0" + self.rgb[y * stride:(y + 1) * stride] for y in range(self.height))
        header = struct.pack(">IIBBBBB", self.width, self.height, 8, 2, 0, 0, 0)
        os.makedirs(os.path.dirname(os.path.abspath(path)), exist_ok=True)
        with open(path, "wb") as file:
            file.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) +
                       chunk(b"IDAT", zlib.compress(lines, 9)) + chunk(b"IEND", b""))


def frame_of(window):
    """The window manager's frame around a window, or the window itself."""
    tree = subprocess.run(["xwininfo", "-id", window, "-tree"], check=True, timeout=20,
                          capture_output=True, text=True).stdout
    root, parent = (re.search(f"{name} window id: (0x[0-9a-f]+)", tree)[1]
                    for name in ("Root", "Parent"))
    return window if parent == root else frame_of(parent)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("file", help="the PNG file to write")
    parser.add_argument("--window", help="the id of the one window to show, with its frame")
    options = parser.parse_args()
    Screenshot.take(options.window and frame_of(options.window)).save(options.file)


if __name__ == "__main__":
    main()
