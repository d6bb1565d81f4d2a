#!/usr/bin/env python3
"""Draws the program's pictures: tree.bmp, toolbar.bmp, band.bmp, quillbox.ico and their SVG twins.

A cell is a list of shapes in the cell's own pixel units, painted in order. The same shapes become the SVG
and, sampled 4 by 4 a pixel with the most frequent colour winning, the 16-colour bitmap. Outlines are mid-grey,
so that a picture reads on a light and on a dark ground. Standard library only; the same bytes each time.

draw.py [FOLDER]   writes into FOLDER, by default the script's own; a check draws elsewhere and compares.
"""

import math
import pathlib
import struct
import sys
from collections import Counter
from dataclasses import dataclass, field

SAMPLES = 4  # a side

MASK = (0, 255, 0)  # transparent in tree.bmp: no shape may have it
BAR = (192, 192, 192)  # the ground of the other bitmaps

WHITE = (255, 255, 255)
OUTLINE = (116, 122, 130)
PALE = (218, 222, 227)
GREY = (160, 166, 174)
BLUE = (41, 112, 214)
DEEP_BLUE = (24, 72, 150)
SKY = (176, 210, 248)
PURPLE = (143, 68, 190)
RED = (208, 32, 32)
YELLOW = (250, 208, 100)
GOLD = (214, 160, 48)
TEAL = (38, 150, 140)
CREAM = (252, 240, 214)
BROWN = (150, 102, 58)
SAND = (206, 156, 100)

INKS = [WHITE, OUTLINE, PALE, GREY, BLUE, DEEP_BLUE, SKY, PURPLE, RED, YELLOW, GOLD, TEAL, CREAM, BROWN, SAND]
NOTHING = len(INKS)  # index of the ground in every palette


@dataclass
class Shape:
    points: list
    fill: tuple = None
    stroke: tuple = None
    width: float = 1.0
    closed: bool = True
    _bounds: tuple = field(default=None, repr=False)

    def moved(self, x, y):
        return Shape([(px + x, py + y) for px, py in self.points], self.fill, self.stroke, self.width, self.closed)

    def colour_at(self, x, y):
        """The colour that the shape has at a point, or None."""
        left, top, right, bottom = self.bounds()
        if not (left <= x <= right and top <= y <= bottom):
            return None
        if self.stroke and self.distance(x, y) <= self.width / 2:
            return self.stroke
        if self.fill and self.holds(x, y):
            return self.fill
        return None

    def bounds(self):
        if self._bounds is None:
            reach = self.width / 2 if self.stroke else 0
            xs, ys = zip(*self.points)
            self._bounds = (min(xs) - reach, min(ys) - reach, max(xs) + reach, max(ys) + reach)
        return self._bounds

    def edges(self):
        ends = self.points[1:] + self.points[:1] if self.closed else self.points[1:]
        return zip(self.points, ends)

    def distance(self, x, y):
        least = math.inf
        for (ax, ay), (bx, by) in self.edges():
            dx, dy = bx - ax, by - ay
            length = dx * dx + dy * dy
            along = 0 if length == 0 else max(0, min(1, ((x - ax) * dx + (y - ay) * dy) / length))
            least = min(least, math.hypot(x - ax - along * dx, y - ay - along * dy))
        return least

    def holds(self, x, y):
        inside = False
        for (ax, ay), (bx, by) in self.edges():
            if (ay > y) != (by > y) and x < (bx - ax) * (y - ay) / (by - ay) + ax:
                inside = not inside
        return inside

    def svg(self):
        def colour(rgb):
            return "none" if rgb is None else "#%02x%02x%02x" % rgb

        points = " ".join(f"{x:g},{y:g}" for x, y in ((round(x, 3), round(y, 3)) for x, y in self.points))
        stroke = ""
        if self.stroke:
            stroke = (
                f' stroke="{colour(self.stroke)}" stroke-width="{self.width:g}"'
                ' stroke-linejoin="round" stroke-linecap="round"'
            )
        tag = "polygon" if self.closed else "polyline"
        return f'<{tag} points="{points}" fill="{colour(self.fill)}"{stroke}/>'


def rectangle(left, top, right, bottom, **paint):
    return Shape([(left, top), (right, top), (right, bottom), (left, bottom)], **paint)


def line(*points, stroke, width=1.0):
    return Shape(list(points), stroke=stroke, width=width, closed=False)


def disc(x, y, radius, **paint):
    corners = 32
    turn = 2 * math.pi / corners
    return Shape([(x + radius * math.cos(i * turn), y + radius * math.sin(i * turn)) for i in range(corners)], **paint)


def arrow(tip, tail, y, fill):
    """A level arrow, seven high; the head four long."""
    neck = tip - math.copysign(4, tip - tail)
    return Shape(
        [(tail, y - 1.5), (neck, y - 1.5), (neck, y - 3.5), (tip, y), (neck, y + 3.5), (neck, y + 1.5),
         (tail, y + 1.5)], fill=fill)


# --- the signs of the left half, 16 by 15


def two_arrows(upper, lower):
    return [arrow(15, 2, 4.5, upper), arrow(1, 14, 10.5, lower)]


def box(fill):
    return [rectangle(2.5, 2.5, 12.5, 12.5, fill=fill, stroke=OUTLINE)]


def tick(colour, size=15):
    k = size / 15
    return [line((4.8 * k, 7.6 * k), (6.8 * k, 9.8 * k), (10.6 * k, 4.6 * k), stroke=colour, width=2 * k)]


def no_entry():
    return [
        disc(7.5, 7.5, 6.3, fill=RED),
        line((5, 5), (10, 10), stroke=WHITE, width=1.9),
        line((10, 5), (5, 10), stroke=WHITE, width=1.9),
    ]


# --- the pictures of the right half, 16 by 15


def sheets():
    stack = []
    for left, top, fill in ((5.5, 0.5, PALE), (3.5, 2.5, PALE), (1.5, 4.5, WHITE)):
        stack.append(rectangle(left, top, left + 8, top + 9, fill=fill, stroke=OUTLINE))
    stack.append(rectangle(2, 5, 9, 7, fill=BLUE))
    stack += [line((3, y), (8, y), stroke=GREY) for y in (8.5, 10.5, 12.5)]
    return stack


def folder():
    return [
        Shape([(1.5, 2.5), (6.5, 2.5), (8, 4.5), (14.5, 4.5), (14.5, 12.5), (1.5, 12.5)], fill=YELLOW, stroke=OUTLINE),
        line((2, 6.5), (14, 6.5), stroke=GOLD),
    ]


def open_folder():
    return [
        Shape([(1.5, 2.5), (5.5, 2.5), (7, 4.5), (12.5, 4.5), (12.5, 12.5), (1.5, 12.5)], fill=GOLD, stroke=OUTLINE),
        Shape([(4.2, 6.5), (15.4, 6.5), (12.5, 12.5), (1.5, 12.5)], fill=YELLOW, stroke=OUTLINE),
    ]


def page():
    return [
        Shape([(3.5, 0.5), (9.5, 0.5), (12.5, 3.5), (12.5, 13.5), (3.5, 13.5)], fill=WHITE, stroke=OUTLINE),
        Shape([(9.5, 0.5), (9.5, 3.5), (12.5, 3.5)], fill=PALE, stroke=OUTLINE),
        line((5.5, 4.5), (7.5, 4.5), stroke=BLUE),
        line((5.5, 6.5), (10.5, 6.5), stroke=GREY),
        line((5.5, 8.5), (10.5, 8.5), stroke=GREY),
        line((5.5, 10.5), (10.5, 10.5), stroke=GREY),
    ]


def cube():
    """Two blocks a side, seen from a corner: three faces of four blocks each."""
    across, down, high = (3.25, 1.65), (-3.25, 1.65), (0, 3.6)
    top, left, right = (8, 0.6), (8 - 6.5, 0.6 + 3.3), (8, 0.6 + 6.6)

    def face(corner, u, v, colours):
        cells = []
        for i in range(2):
            for j in range(2):
                x = corner[0] + i * u[0] + j * v[0]
                y = corner[1] + i * u[1] + j * v[1]
                cells.append(Shape([(x, y), (x + u[0], y + u[1]), (x + u[0] + v[0], y + u[1] + v[1]),
                                    (x + v[0], y + v[1])], fill=colours[(i + j) % 2], stroke=OUTLINE, width=0.5))
        return cells

    return (face(top, across, down, (CREAM, YELLOW)) + face(left, across, high, (TEAL, SKY))
            + face(right, (across[0], -across[1]), high, (DEEP_BLUE, BLUE)))


def chip():
    pins = []
    for place in (4.5, 7.5, 10.5):
        pins.append(line((place, 1.5), (place, 13.5), stroke=OUTLINE, width=1.2))
        pins.append(line((1.5, place), (13.5, place), stroke=OUTLINE, width=1.2))
    return pins + [rectangle(3.5, 3.5, 11.5, 11.5, fill=GREY, stroke=OUTLINE), disc(5.6, 5.6, 0.8, fill=WHITE)]


def computer():
    return [
        rectangle(3.5, 0.5, 12.5, 14.2, fill=PALE, stroke=OUTLINE),
        rectangle(5, 2, 11, 9, fill=BLUE),
        line((6.2, 3.6), (8.6, 3.6), stroke=SKY),
        line((6.2, 5.6), (9.8, 5.6), stroke=SKY),
        rectangle(5, 11, 6.6, 12.6, fill=OUTLINE),
        rectangle(7.2, 11, 8.8, 12.6, fill=OUTLINE),
        rectangle(9.4, 11, 11, 12.6, fill=RED),
    ]


# --- toolbar and band, 16 by 16


def funnel():
    return [
        Shape([(1.5, 2.5), (14.5, 2.5), (14.5, 4), (9.5, 9), (9.5, 14), (6.5, 11.8), (6.5, 9), (1.5, 4)],
              fill=SKY, stroke=DEEP_BLUE),
        Shape([(2.2, 3), (13.8, 3), (13.8, 4), (2.2, 4)], fill=BLUE),
    ]


def form():
    rows = [rectangle(1.5, 1.5, 14.5, 14.5, fill=WHITE, stroke=OUTLINE), rectangle(2, 2, 14, 4, fill=BLUE)]
    for y, fill in ((5, RED), (8, OUTLINE), (11, RED)):
        rows.append(rectangle(4, y, 6, y + 2, fill=fill))
        rows.append(line((8, y + 1.5), (12, y + 1.5), stroke=GREY))
    return rows


def tool_box(mark):
    return [rectangle(2.5, 2.5, 13.5, 13.5, fill=WHITE, stroke=OUTLINE)] + tick(mark, 16)


def double_arrow():
    return [Shape([(0.8, 8), (5, 3.8), (5, 6.5), (11, 6.5), (11, 3.8), (15.2, 8), (11, 12.2), (11, 9.5), (5, 9.5),
                   (5, 12.2)],
                  fill=BLUE)]


# --- the program's icon: a quill in a box, 32 by 32


def quillbox():
    feather = [(14, 20), (13.4, 15), (15.6, 9.6), (19.6, 5), (24.4, 2), (30, 1), (29.4, 6.4), (26.6, 11.4), (22.4, 15.2),
               (18, 17.4)]
    return [
        Shape([(3, 17), (7.5, 12), (24.5, 12), (29, 17)], fill=BROWN, stroke=OUTLINE),
        Shape(feather, fill=BLUE),
        Shape([(14, 20), (13.4, 15), (15.6, 9.6), (19.6, 5), (24.4, 2), (30, 1), (22, 9)], fill=SKY),
        Shape(feather, stroke=DEEP_BLUE, width=0.8),
        line((12.4, 22), (16.4, 15.6), (21.4, 9.6), (29, 2), stroke=DEEP_BLUE, width=1.2),
        rectangle(3, 17, 29, 30, fill=SAND, stroke=OUTLINE, width=1.2),
        rectangle(12, 17.6, 20, 29.4, fill=CREAM),
        rectangle(14, 20, 18, 24, fill=GOLD),
    ]


def status_and_picture(sign, picture):
    return sign + [shape.moved(16, 0) for shape in picture]


GREY_ARROWS = two_arrows(GREY, OUTLINE)
COLOUR_ARROWS = two_arrows(BLUE, PURPLE)
EMPTY, TICKED = box(WHITE), box(WHITE) + tick(RED)
GREY_EMPTY, GREY_TICKED = box(PALE), box(PALE) + tick(RED)

TREE = [
    status_and_picture(GREY_ARROWS, sheets()),
    status_and_picture(COLOUR_ARROWS, sheets()),
    status_and_picture(GREY_ARROWS, folder()),
    status_and_picture(COLOUR_ARROWS, folder()),
    status_and_picture(GREY_ARROWS, cube()),
    status_and_picture(COLOUR_ARROWS, cube()),
    status_and_picture(EMPTY, page()),
    status_and_picture(TICKED, page()),
    status_and_picture(no_entry(), chip()),
    status_and_picture(GREY_EMPTY, open_folder()),
    status_and_picture(GREY_TICKED, open_folder()),
    status_and_picture(EMPTY, sheets()),
    status_and_picture(TICKED, sheets()),
    status_and_picture(EMPTY, folder()),
    status_and_picture(TICKED, folder()),
    status_and_picture(EMPTY, cube()),
    status_and_picture(TICKED, cube()),
    status_and_picture(COLOUR_ARROWS, computer()),
]
TOOLS = [tool_box(RED), tool_box(GREY), [s.moved(0, 1) for s in COLOUR_ARROWS], funnel(), form()]


def sample(shapes, width, height, scale=1.0):
    """Rows of palette indices; a pixel stands for `scale` units."""
    index = {ink: i for i, ink in enumerate(INKS)}
    rows = []
    for y in range(height):
        row = []
        for x in range(width):
            votes = Counter()
            for sy in range(SAMPLES):
                for sx in range(SAMPLES):
                    px = (x + (sx + 0.5) / SAMPLES) * scale
                    py = (y + (sy + 0.5) / SAMPLES) * scale
                    seen = NOTHING
                    for shape in reversed(shapes):
                        colour = shape.colour_at(px, py)
                        if colour is not None:
                            seen = index[colour]
                            break
                    votes[seen] += 1
            row.append(max(votes, key=lambda i: (votes[i], -i)))
        rows.append(row)
    return rows


def palette(ground):
    return b"".join(struct.pack("<BBBB", b, g, r, 0) for r, g, b in INKS + [ground])


def packed(rows, bits):
    """Rows from bottom to top, each padded to four bytes."""
    out = b""
    for row in reversed(rows):
        digits = "".join(format(value, f"0{bits}b") for value in row)
        digits += "0" * (-len(digits) % 32)
        out += int(digits, 2).to_bytes(len(digits) // 8, "big")
    return out


def bitmap_header(width, height, image_bytes):
    return struct.pack("<IiiHHIIiiII", 40, width, height, 1, 4, 0, image_bytes, 0, 0, 16, 0)


def bmp(cells, width, height, ground, columns=None, full_height=None):
    """A strip of cells; columns and rows that no cell fills are ground."""
    columns = columns or len(cells)
    full_height = full_height or height
    rows = [[] for _ in range(height)]
    for cell in cells:
        for row, more in zip(rows, sample(cell, width, height)):
            row += more
    rows = [row + [NOTHING] * (columns * width - len(row)) for row in rows]
    rows += [[NOTHING] * (columns * width) for _ in range(full_height - height)]
    image = packed(rows, 4)
    colours = palette(ground)
    start = 14 + 40 + len(colours)
    return (struct.pack("<2sIHHI", b"BM", start + len(image), 0, 0, start)
            + bitmap_header(columns * width, full_height, len(image)) + colours + image)


def ico(shapes, units, sizes):
    images = []
    for size in sizes:
        rows = sample(shapes, size, size, units / size)
        # Where the mask has a 1 the colour must be black; the ground's palette entry is.
        colour = packed(rows, 4)
        mask = packed([[int(value == NOTHING) for value in row] for row in rows], 1)
        images.append(bitmap_header(size, 2 * size, len(colour) + len(mask)) + palette((0, 0, 0)) + colour + mask)
    out = struct.pack("<HHH", 0, 1, len(sizes))
    offset = 6 + 16 * len(sizes)
    for size, image in zip(sizes, images):
        out += struct.pack("<BBBBHHII", size, size, 16, 0, 1, 4, len(image), offset)
        offset += len(image)
    return out + b"".join(images)


def svg(shapes, width, height):
    body = "\n".join("  " + shape.svg() for shape in shapes)
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}"'
            f' viewBox="0 0 {width} {height}">\n{body}\n</svg>\n').encode()


def pictures():
    """Every file's name and bytes."""
    files = {
        "tree.bmp": bmp(TREE, 32, 15, MASK, columns=27, full_height=45),
        "toolbar.bmp": bmp(TOOLS, 16, 16, BAR),
        "band.bmp": bmp([double_arrow()], 16, 16, BAR),
        "quillbox.ico": ico(quillbox(), 32, (16, 32, 48)),
        "svg/107-0.svg": svg(double_arrow(), 16, 16),
        "svg/109-0.svg": svg(quillbox(), 32, 32),
    }
    for number, cell in enumerate(TREE):
        files[f"svg/101-{number}.svg"] = svg(cell, 32, 15)
    for number, cell in enumerate(TOOLS):
        files[f"svg/106-{number}.svg"] = svg(cell, 16, 16)
    return files


def main():
    folder = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parent
    (folder / "svg").mkdir(parents=True, exist_ok=True)
    for name, content in pictures().items():
        (folder / name).write_bytes(content)


if __name__ == "__main__":
    main()
