# SPDX-License-Identifier: GPL-3.0-or-later
"""What the pixels of the screen tell: when they come to rest, where text is, how well the item stands out."""

import time
from collections import Counter
from typing import NamedTuple

from support.screen import Box, Picture, contrast, luminance
from support.waiting import wait_until

STEADY_SECONDS = 0.8
REST_SECONDS = 20
TRANSLUCENT = 12
REACH = 6  # pixels above and below what follows the charge
GAP = 2  # pixels between the parts of an item
GRADIENT = 64  # the most by which a background may change within a row
LEAST_LETTER = 5  # pixels from the top of a line of text to its bottom; separators are less
OUTLINE_CONTRAST = 4.5
SEEN_CONTRAST = 2
DARK = 0.18  # the luminance of a middle grey


def steady(desktop, box):
    """This part of the screen, once nothing in it has changed for a while."""
    last, since = None, time.monotonic()

    def unchanged():
        nonlocal last, since
        picture = desktop.picture().crop(box)
        if last is None or picture.changed_box(last):
            last, since = picture, time.monotonic()
        return time.monotonic() - since > STEADY_SECONDS

    wait_until(unchanged, REST_SECONDS, f"{box} comes to rest")
    return last


def union(boxes):
    left, top = min(box.x for box in boxes), min(box.y for box in boxes)
    right, bottom = max(box.x + box.width for box in boxes), max(box.y + box.height for box in boxes)
    return Box(left, top, right - left, bottom - top)


def moved(box, area):
    """A box inside an area of the screen, on the screen."""
    return box._replace(x=box.x + area.x, y=box.y + area.y)


def background(picture):
    colours = picture.colours()
    return max(colours, key=colours.get)


def differs(colour, other):
    """Whether two colours differ by more than a translucent panel does from place to place."""
    return max(abs(value - against) for value, against in zip(colour, other)) > TRANSLUCENT


def whole(panel, box):
    """The box around all that is drawn in or beside this one in a picture of the panel."""
    # Some panels are darker below than above, so each row has a background of its own.
    behind = [background(Picture(panel.width, [row])) for row in panel.rows]
    # Not the panel's borders, nor what is above and below it if it floats.
    near = range(max(box.y - REACH, 2), min(box.y + box.height + REACH, panel.height - 2))
    seen = lambda x, y: differs(panel.rows[y][3 * x : 3 * x + 3], behind[y])
    drawn = [x for x in range(panel.width) if any(seen(x, y) for y in near)]
    left, right = box.x, box.x + box.width - 1
    while beside := [x for x in drawn if left - GAP <= x < left]:
        left = min(beside)
    while beside := [x for x in drawn if right < x <= right + GAP]:
        right = max(beside)
    rows = [y for y in near if any(seen(x, y) for x in range(left, right + 1))]
    return Box(left, rows[0], right - left + 1, rows[-1] - rows[0] + 1) if rows else box


def text_lines(picture):
    """The middle of each line of text in a picture of a menu or a tooltip. Borders and shadows at the sides are left
    out."""
    margin = picture.width // 10
    counts = []
    for y in range(picture.height):
        row = picture.crop(Box(margin, y, picture.width - 2 * margin, 1))
        plain, colours = background(row), row.colours()
        far = lambda colour: max(abs(value - other) for value, other in zip(colour, plain)) > GRADIENT
        counts.append(sum(count for colour, count in colours.items() if far(colour)))
    lines, start = [], None
    for y, count in enumerate([*counts, 0]):
        if count and start is None:
            start = y
        elif not count and start is not None:
            lines += split(counts, start, y)
            start = None
    return [(top + bottom) // 2 for top, bottom in lines if bottom - top >= LEAST_LETTER]


def split(counts, top, bottom):
    """The lines in a group of rows with something drawn, as first and last row. Close lines touch each other with the
    longest strokes of some letters: between them is a row with far less in it than in the lines around it."""
    inner = range(top + LEAST_LETTER, bottom - LEAST_LETTER)
    between = min(inner, key=lambda y: counts[y], default=None)
    if between is None or counts[between] > min(max(counts[top:between]), max(counts[between:bottom])) / 3:
        return [(top, bottom)]
    return split(counts, top, between) + split(counts, between + 1, bottom)


class Look(NamedTuple):
    """How the item stands out from the panel."""

    size: Box
    least: float  # over the rows with something drawn, the better tone of the glyph against the panel behind it
    tones: str
    panel_is_dark: bool
    edge: float  # the share of the outermost pixels of its box that are much darker than the panel; all of a dark block


def look(panel, box):
    """Measures the item in a picture of the panel; None if nothing is drawn in that box."""
    # Some panels are darker below than above, so each line has a background of its own.
    lines = [panel.crop(Box(box.x - 3, y, box.width + 6, 1)).rows[0] for y in range(panel.height)]
    behind = [line[:3] for line in lines]
    lines = [[line[i : i + 3] for i in range(3, len(line), 3)] for line in lines]
    drawn = [y for y in range(box.y, box.y + box.height) if any(differs(colour, behind[y]) for colour in lines[y])]
    if not drawn:
        return None
    colours = Counter(colour for y in drawn for colour in lines[y] if differs(colour, behind[y]))
    # If the panel does not recolour the glyph, it has an outline or a tile: the colours far from the glyph's own.
    glyph = max(colours, key=colours.get)
    outlines = {colour: count for colour, count in colours.items() if contrast(colour, glyph) > OUTLINE_CONTRAST}
    tones = [glyph, *sorted(outlines, key=outlines.get)[-1:]]
    least = min(max(contrast(tone, behind[y]) for tone in tones) for y in drawn)
    said = " and ".join(f"#{tone.hex()}" for tone in tones)
    inside = {y: lines[y][2 : 2 + box.width] for y in drawn}
    ends = [(y, colour) for y in drawn for colour in (inside[y][0], inside[y][-1])]
    edge = ends + [(y, colour) for y in (drawn[0], drawn[-1]) for colour in inside[y][1:-1]]
    darker = lambda colour, panel: luminance(colour) < luminance(panel) and contrast(colour, panel) > SEEN_CONTRAST
    seen = sum(darker(colour, behind[y]) for y, colour in edge)
    colour = behind[drawn[0]]
    return Look(box, least, f"{said} on #{colour.hex()}", luminance(colour) < DARK, seen / len(edge))
