#!/usr/bin/env python3
"""Draws the pictures of the documentation into docs/images. With --check it compares instead of writing."""

import math
import pathlib
import sys
from xml.sax.saxutils import escape

IMAGES = pathlib.Path(__file__).resolve().parent.parent / "docs" / "images"

INK, FAINT, PAPER = "#24292f", "#8c959f", "#ffffff"
BLUE, GREEN, AMBER, GREY = "#cfe3fb", "#cdebd3", "#fbe6b8", "#eef1f4"
FLOWS = ("#1b5fb4", "#2d7d46", "#a8480f")


class Picture:
    def __init__(self, width, height):
        self.parts = [
            f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" viewBox="0 0 {width} {height}" '
            'font-family="Helvetica, Arial, sans-serif" font-size="13">',
            f'<rect width="{width}" height="{height}" fill="{PAPER}"/>',
            f'<defs><marker id="tip" markerWidth="9" markerHeight="8" refX="8" refY="4" orient="auto">'
            f'<path d="M0,0 L9,4 L0,8 z" fill="{INK}"/></marker></defs>',
        ]

    def box(self, x, y, width, height, fill, stroke=INK, dash=""):
        self.parts.append(f'<rect x="{x:g}" y="{y:g}" width="{width:g}" height="{height:g}" fill="{fill}" '
                          f'stroke="{stroke}" stroke-dasharray="{dash}"/>')

    def text(self, x, y, words, size=13, anchor="start", color=INK, bold=False, halo=False):
        weight = ' font-weight="bold"' if bold else ""
        weight += f' paint-order="stroke" stroke="{PAPER}" stroke-width="5"' if halo else ""
        self.parts.append(f'<text x="{x:g}" y="{y:g}" font-size="{size}" text-anchor="{anchor}" fill="{color}"{weight}>'
                          f'{escape(words)}</text>')

    def line(self, points, color=INK, tip=False, dash="", width=1.3):
        path = " ".join(f"{x:g},{y:g}" for x, y in points)
        end = ' marker-end="url(#tip)"' if tip else ""
        self.parts.append(f'<polyline points="{path}" fill="none" stroke="{color}" stroke-width="{width}" '
                          f'stroke-dasharray="{dash}"{end}/>')

    def circle(self, x, y, radius, fill="none", stroke=INK):
        self.parts.append(f'<circle cx="{x:g}" cy="{y:g}" r="{radius:g}" fill="{fill}" stroke="{stroke}"/>')

    def area(self, points, fill):
        corners = " ".join(f"{x:g},{y:g}" for x, y in points)
        self.parts.append(f'<polygon points="{corners}" fill="{fill}"/>')

    def finish(self):
        return "\n".join(self.parts + ["</svg>", ""])


def rooms():
    """The rooms, highest first, and which of them three calls pass through."""
    names = [("porting", "more Windows names, for who asks for them"),
             ("crtcompat", "runtime names: _wfopen, _wtoi, swprintf"), ("stream", "byte streams over memory and files"),
             ("format", "formatted text, lengths, angles"), ("codepage", "escaped text, UTF-8, code page tables"),
             ("fltcvt", "digits of doubles, exactly"), ("containers", "shared vectors and strings, lists, maps"),
             ("memory", "pools over 8 GiB of addresses"), ("diag", "exceptions, traces, locks"),
             ("base", "UTF-8, character classes, file names"),
             ("platform", "what must be ported: the only #if on a system")]
    flows = [
        ("text", "narrow to wide", {"codepage": "look for escapes", "containers": "room for the result",
                                    "memory": "record of the vector"}),
        ("length", "%q to text", {"format": "unit, feet, fraction", "fltcvt": "digits, exactly"}),
        ("file", "open, write, close", {"stream": "writes collected", "containers": "names held exclusively",
                                        "memory": "the buffer", "diag": "status, exceptions",
                                        "base": "name to bytes", "platform": "open, lock, write"}),
    ]
    height, top, left = 44, 74, 420
    p = Picture(960, top + height * len(names) + 78)
    p.text(20, 30, "The application's libraries", 15, bold=True)
    for i, (name, what) in enumerate(names):
        y = top + i * height
        p.box(20, y, 370, height - 8, GREY if name == "platform" else BLUE)
        p.text(32, y + 23, name, 14, bold=True)
        p.text(130, y + 23, what, 12)
    base = top + len(names) * height
    p.box(20, base + 4, 370, 32, PAPER, dash="4 3")
    p.text(32, base + 25, "C library, operating system", 12)
    p.text(20, base + 60, "A room knows only itself and the rooms below it.", 12, color=FAINT)
    for column, ((title, what, stops), color) in enumerate(zip(flows, FLOWS)):
        x = left + 20 + column * 180
        p.text(x - 6, 30, title, 15, bold=True, color=color)
        p.text(x - 6, 48, what, 12, color=color)
        ys = [top + i * height + 18 for i, (name, _) in enumerate(names) if name in stops]
        p.line([(x, 56), (x, ys[-1])], color, width=2.5)
        for i, (name, _) in enumerate(names):
            if name in stops:
                y = top + i * height + 18
                p.circle(x, y, 6, color, color)
                p.text(x + 12, y + 4, stops[name], 12)
    return p.finish()


def heap():
    """From the reservation to a unit."""
    left, width = 20, 920
    p = Picture(960, 590)
    panel = "#f6f8fa"

    def legend(y, entries):
        x = left + 12
        for fill, label in entries:
            p.box(x, y - 12, 14, 14, fill, dash="3 3" if fill == panel else "")
            p.text(x + 20, y, label, 12)
            x += 52 + 6.4 * len(label)

    def zoom(start, end, y, top, bottom):
        """A panel from `top` to `bottom`, opened by what lies from `start` to `end` above it."""
        p.area([(start, y), (end, y), (left + width, top), (left + width, bottom), (left, bottom), (left, top)], panel)
        p.line([(start, y), (left, top)], FAINT)
        p.line([(end, y), (left + width, top)], FAINT)

    p.text(left, 26, "The reservation: 8 GiB of addresses, 8192 segments of 1 MiB", 14, bold=True)
    legend(50, ((BLUE, "serves blocks"), (GREEN, "serves units of whole pages"),
                (PAPER, "not in use: addresses without memory")))
    segments = [(PAPER, "0"), (PAPER, "1"), (PAPER, "…"), (PAPER, "4092"), (BLUE, "4093"), (PAPER, "4094"),
                (GREEN, "4095"), (BLUE, "4096"), (PAPER, "4097"), (PAPER, "…"), (PAPER, "8190"), (PAPER, "8191")]
    cell = width / len(segments)
    zoom(left + 7 * cell, left + 8 * cell, 94, 124, 256)
    for i, (fill, label) in enumerate(segments):
        p.box(left + i * cell, 62, cell, 32, fill)
        p.text(left + (i + 0.5) * cell, 82, label, 12, "middle")

    p.text(left + 12, 148, "A segment that serves blocks: 256 pages of 4096 bytes", 14, bold=True)
    legend(172, ((GREY, "descriptors of the pages"), (BLUE, "in a pool"), (AMBER, "free, memory kept (at most 16)"),
                 (panel, "not accessible yet")))
    pages = [GREY] * 2 + [BLUE] * 9 + [AMBER, BLUE, AMBER, BLUE, AMBER] + [panel] * 12
    cell = (width - 24) / len(pages)
    x0 = left + 12
    p.line([(x0, 206), (x0, 200), (x0 + 16 * cell, 200), (x0 + 16 * cell, 206)], FAINT)
    p.text(x0 + 8 * cell, 195, "accessible: 16 pages at first, then up to 16 more at a time", 12, "middle")
    zoom(x0 + 6 * cell, x0 + 7 * cell, 246, 286, 444)
    for i, fill in enumerate(pages):
        label = str(i) if i < 26 else "…" if i == 26 else "255"
        p.box(x0 + i * cell, 212, cell, 34, fill, dash="3 3" if fill == panel else "")
        p.text(x0 + (i + 0.5) * cell, 233, label, 11, "middle")

    p.text(x0, 310, "A page of the pool for 128 bytes: 32 units", 14, bold=True)
    legend(334, ((BLUE, "in use"), (PAPER, "free")))
    cell = (width - 24) / 32
    y = 368
    for i in range(32):
        p.box(x0 + i * cell, y, cell, 34, PAPER if i in (3, 7) or i >= 24 else BLUE)
        p.text(x0 + (i + 0.5) * cell, y + 21, str(i), 11, "middle")
    p.text(x0 + 7.5 * cell + 10, y - 12, "next to be handed out: the unit freed last", 12)
    p.line([(x0 + 7.5 * cell, y - 24), (x0 + 7.5 * cell, y - 2)], tip=True)
    for start, end, depth in ((7.5, 3.7, 10), (3.3, 24.5, 20)):
        p.line([(x0 + start * cell, y + 34), (x0 + start * cell, y + 34 + depth), (x0 + end * cell, y + 34 + depth),
                (x0 + end * cell, y + 36)], tip=True)
    p.text(x0, y + 70, "Each free unit holds the address of the next one; from 24 on they follow in order.", 12)

    p.text(left, 478, "The owner of a block from its address alone, without a search", 14, bold=True)
    for i, (formula, meaning) in enumerate((("offset = address − start", "8 GiB or more: a block of the C library"),
                                            ("segment = offset >> 20", "its state tells blocks from units of pages"),
                                            ("page = offset >> 12 & 255", "its descriptor names the pool"),
                                            ("pool", "the size of the unit"))):
        p.text(left + 12, 504 + 22 * i, formula, 13)
        p.text(left + 230, 504 + 22 * i, meaning, 13)
    return p.finish()


def angles():
    """Zero direction and turn on the left, quadrants of bearings on the right."""
    p = Picture(860, 330)

    def point(x, y, radius, degrees):
        return x + radius * math.cos(math.radians(degrees)), y - radius * math.sin(math.radians(degrees))

    def arc(x, y, radius, start, end, color=INK):
        count = max(2, round(abs(end - start) / 3))
        p.line([point(x, y, radius, start + (end - start) * i / count) for i in range(count + 1)], color, tip=True)

    def dial(x, y):
        p.circle(x, y, 100)
        for degrees in range(0, 360, 30):
            p.line([point(x, y, 94, degrees), point(x, y, 100, degrees)], FAINT)

    x, y = 200, 170
    p.text(x, 26, "Absolute angles", 14, "middle", bold=True)
    dial(x, y)
    p.line([(x, y), point(x, y, 100, 0)], FLOWS[0], width=2)
    p.text(x + 108, y + 4, "base 0: east", 12, color=FLOWS[0])
    p.line([(x, y), point(x, y, 100, 90)], FLOWS[2], width=2)
    p.text(x, y - 110, "base π/2: north", 12, "middle", FLOWS[2])
    p.line([(x, y), point(x, y, 100, 30)], INK, tip=True, width=2)
    arc(x, y, 55, 0, 28, FLOWS[0])
    p.text(x + 62, y - 10, "30.0", 12, color=FLOWS[0])
    arc(x, y, 70, 90, 33, FLOWS[2])
    p.text(x + 22, y - 74, "60.0", 12, color=FLOWS[2])
    p.text(x, y + 125, "direction 0: counter-clockwise, blue", 12, "middle", FLOWS[0])
    p.text(x, y + 142, "otherwise clockwise, brown", 12, "middle", FLOWS[2])

    x = 620
    p.text(x, 26, "Bearings", 14, "middle", bold=True)
    dial(x, y)
    for degrees, letter in ((0, "E"), (90, "N"), (180, "W"), (270, "S")):
        p.line([(x, y), point(x, y, 100, degrees)], FAINT, dash="3 3")
        tx, ty = point(x, y, 114, degrees)
        p.text(tx, ty + 5, letter, 14, "middle", bold=True)
    for degrees, bearing, anchor in ((30, "N 60d0'0\" E", "start"), (120, "N 30d0'0\" W", "end"),
                                     (210, "S 60d0'0\" W", "end"), (300, "S 30d0'0\" E", "start")):
        p.line([(x, y), point(x, y, 100, degrees)], INK, tip=True, width=2)
        axis = 90 if degrees < 180 else 270
        arc(x, y, 40 if degrees in (30, 210) else 55, axis, degrees, FLOWS[1])
        tx, ty = point(x, y, 112, degrees)
        p.text(tx, ty + 4, bearing, 12, anchor)
    p.text(x, y + 142, "from north or south, towards east or west", 12, "middle", FLOWS[1])
    return p.finish()


def main():
    is_check = sys.argv[1:] == ["--check"]
    IMAGES.mkdir(exist_ok=True)
    stale = []
    for draw in (rooms, heap, angles):
        path = IMAGES / f"{draw.__name__}.svg"
        if not is_check:
            path.write_text(draw(), encoding="utf-8")
        elif not path.exists() or path.read_text(encoding="utf-8") != draw():
            stale.append(path.name)
    if stale:
        sys.exit(f"draw again with tools/draw_docs.py: {', '.join(stale)}")


if __name__ == "__main__":
    main()
