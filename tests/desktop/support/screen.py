# SPDX-License-Identifier: GPL-3.0-or-later
"""The screen of a private X server, read from the file in which the server keeps its framebuffer."""

import struct
import zlib
from typing import NamedTuple


def luminance(colour):
    """How bright a colour is to the eye, 0 to 1."""
    linear = [c / 12.92 if c <= 0.04045 else ((c + 0.055) / 1.055) ** 2.4 for c in (value / 255 for value in colour)]
    return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2]


def contrast(one, other):
    """How well two colours can be told apart, 1 to 21."""
    dark, light = sorted((luminance(one), luminance(other)))
    return (light + 0.05) / (dark + 0.05)


class Box(NamedTuple):
    """A rectangle on the screen, in pixels."""

    x: int
    y: int
    width: int
    height: int

    @property
    def centre(self):
        return self.x + self.width // 2, self.y + self.height // 2

    def contains(self, other):
        return (
            self.x <= other.x
            and self.y <= other.y
            and other.x + other.width <= self.x + self.width
            and other.y + other.height <= self.y + self.height
        )


class Picture:
    """Rows of pixels, three bytes each: red, green, blue."""

    def __init__(self, width, rows):
        self.width = width
        self.rows = rows

    @property
    def height(self):
        return len(self.rows)

    @classmethod
    def of_dump(cls, data):
        """Reads an X window dump, as Xvfb keeps and xwd makes it: a header of big-endian numbers, colours, and pixels
        of blue, green, red and an unused byte."""
        header = struct.unpack(">25I", data[:100])
        header_size, width, height, bits, bytes_per_line, colours = (header[i] for i in (0, 4, 5, 11, 12, 19))
        if bits not in (24, 32):
            raise ValueError(f"{bits} bits per pixel")
        step = bits // 8
        start = header_size + 12 * colours
        rows = []
        for y in range(height):
            line = data[start + y * bytes_per_line : start + y * bytes_per_line + step * width]
            row = bytearray(3 * width)
            row[0::3], row[1::3], row[2::3] = line[2::step], line[1::step], line[0::step]
            rows.append(bytes(row))
        return cls(width, rows)

    def crop(self, box):
        """The part inside the box, clipped to the picture."""
        left, right = max(box.x, 0), min(box.x + box.width, self.width)
        rows = self.rows[max(box.y, 0) : max(box.y + box.height, 0)]
        return Picture(right - left, [row[3 * left : 3 * right] for row in rows])

    def enlarge(self, factor):
        """Each pixel becomes a square with sides of `factor` pixels."""
        rows = []
        for row in self.rows:
            wide = b"".join(row[i : i + 3] * factor for i in range(0, len(row), 3))
            rows += [wide] * factor
        return Picture(self.width * factor, rows)

    def blank(self):
        """A picture of the same size, all in the colour of the upper left corner."""
        return Picture(self.width, [self.rows[0][:3] * self.width] * self.height)

    def colours(self):
        """How often each colour occurs."""
        count = {}
        for row in self.rows:
            for i in range(0, len(row), 3):
                colour = row[i : i + 3]
                count[colour] = count.get(colour, 0) + 1
        return count

    def changed_box(self, other, least=1):
        """The smallest box that holds all differences of two pictures of one size, of `least` or more in the red, green
        or blue, which go to 255; None when there are none."""
        top = bottom = left = right = None
        for y, (mine, theirs) in enumerate(zip(self.rows, other.rows)):
            if mine == theirs:
                continue
            changed = [i // 3 for i, (one, two) in enumerate(zip(mine, theirs)) if abs(one - two) >= least]
            if not changed:
                continue
            top = y if top is None else top
            bottom = y
            left = changed[0] if left is None else min(left, changed[0])
            right = changed[-1] if right is None else max(right, changed[-1])
        return None if top is None else Box(left, top, right - left + 1, bottom - top + 1)

    def save(self, file):
        """Writes a PNG."""

        def chunk(kind, body):
            return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))

        header = struct.pack(">IIBBBBB", self.width, self.height, 8, 2, 0, 0, 0)
        pixels = zlib.compress(b"".join(b"\0" + row for row in self.rows))
        body = chunk(b"IHDR", header) + chunk(b"IDAT", pixels) + chunk(b"IEND", b"")
        file.write_bytes(b"\x89PNG\r\n\x1a\n" + body)
