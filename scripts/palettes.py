#!/usr/bin/env python3
"""Generates the three palettes of the overlay: the constant tables in KOVDoaHandle/imaging/palettes.cpp and their
picture docs/palettes.png. Needs nothing but Python's standard library, and always gives the same bytes.

    scripts/palettes.py             writes both files and reports how smooth the palettes are
    scripts/palettes.py --check     writes nothing; fails when a file is not what would be written
    scripts/palettes.py --table -   prints the table

How a palette is made: some entries are agreed with the hosts and are passed through exactly (ANCHORS). Between them a
smooth curve runs through control colours in a perceptual space, so that equal distances along the scale look equal.
It is interpolated with monotone cubics (F. N. Fritsch, R. E. Carlson: "Monotone Piecewise Cubic Interpolation", SIAM
J. Numer. Anal. 17, 1980): once continuously differentiable, hence no edges that the eye would take for bands, and no
overshoot, hence no colours that nobody asked for.

  rainbow  in OKLab (B. Ottosson: "A perceptual color space for image processing", 2020), whose blues keep their hue,
           run through at constant speed, measured as CIE 1976 colour difference
  others   in CIELAB (CIE 15:2004) with lightness as the parameter: a level is read from how light its colour is

A colour becomes the nearest three bytes in CIELAB; where lightness is the scale, the nearest ones whose lightness
belongs to this entry rather than to one of its neighbours, or else rounding would make it tremble along the scale.
"""

import argparse
import bisect
import itertools
import os
import struct
import sys
import zlib

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
TABLE = os.path.join(ROOT, "KOVDoaHandle", "imaging", "palettes.cpp")
PICTURE = os.path.join(ROOT, "docs", "palettes.png")

# Colours in this file are (red, green, blue); the table is written in the pictures' order blue, green, red.
RAINBOW_ANCHORS = {
    0: (2, 3, 123), 1: (2, 3, 123), 2: (2, 3, 123),  # the lowest levels share one colour
    132: (54, 249, 177), 133: (55, 250, 174),
    265: (62, 18, 47),
}
RAINBOW_FLAT = 2  # the last entry that has the first colour
BLACK_RED_YELLOW_ANCHORS = {
    0: (0, 0, 0), 1: (1, 1, 2), 2: (4, 2, 9), 221: (195, 58, 73), 443: (255, 255, 255),
}
GREY_ANCHORS = {
    0: (0, 0, 0), 1: (1, 1, 1), 2: (2, 2, 2), 122: (143, 123, 112), 245: (255, 255, 255),
}

# Control colours between the anchors, in the order of the scale.
RAINBOW_LOWER = [(8, 24, 168), (14, 62, 212), (22, 104, 240), (28, 150, 246), (34, 198, 240), (40, 234, 212)]
RAINBOW_UPPER = [(106, 244, 132), (160, 235, 88), (208, 220, 62), (234, 198, 54), (242, 154, 46), (230, 102, 38),
                 (202, 52, 38), (156, 30, 42), (106, 22, 46)]
BLACK_RED_YELLOW_CONTROLS = [(38, 12, 60), (92, 24, 88), (146, 38, 88), (228, 92, 52), (248, 148, 32),
                             (250, 204, 56), (248, 236, 136)]

# A smaller CIE 1976 difference between two touching patches is not noticed (M. Mahy, L. Van Eycken, A. Oosterlinck:
# "Evaluation of uniform color spaces developed after the adoption of CIELAB and CIELUV", 1994).
NOTICEABLE = 2.3
# How far rounding may turn the lightness L* of the rainbow around between two entries.
TREMBLE = 0.3


# ---- colour spaces ---------------------------------------------------------------------------------------------

def linear_from_byte(value):
    """sRGB transfer curve (IEC 61966-2-1), inverse: 0 ... 255 to 0 ... 1."""
    v = value / 255.0
    return v / 12.92 if v <= 0.04045 else ((v + 0.055) / 1.055) ** 2.4


def byte_from_linear(value):
    """sRGB transfer curve: 0 ... 1 to 0 ... 255, not rounded, not clipped."""
    if value < 0.0031308:
        return 255.0 * 12.92 * value
    return 255.0 * (1.055 * value ** (1.0 / 2.4) - 0.055)


def product(matrix, vector):
    return tuple(sum(m * v for m, v in zip(row, vector)) for row in matrix)


def inverse(m):
    """Inverse of a 3 x 3 matrix by its adjugate, so that both directions of a conversion agree to the last digit."""
    def minor(r, c):
        rows = [row[:c] + row[c + 1:] for i, row in enumerate(m) if i != r]
        return rows[0][0] * rows[1][1] - rows[0][1] * rows[1][0]
    determinant = sum((-1) ** c * m[0][c] * minor(0, c) for c in range(3))
    return [[(-1) ** (r + c) * minor(c, r) / determinant for c in range(3)] for r in range(3)]


# sRGB primaries with white D65 to CIE XYZ (IEC 61966-2-1); its row sums are the white point.
XYZ_FROM_RGB = [[0.4124, 0.3576, 0.1805], [0.2126, 0.7152, 0.0722], [0.0193, 0.1192, 0.9505]]
RGB_FROM_XYZ = inverse(XYZ_FROM_RGB)
WHITE = [sum(row) for row in XYZ_FROM_RGB]


def lab_from_rgb(rgb):
    """CIELAB: L* 0 ... 100, a*, b*."""
    def f(t):
        return t ** (1.0 / 3.0) if t > (6.0 / 29.0) ** 3 else t / (3.0 * (6.0 / 29.0) ** 2) + 4.0 / 29.0
    xyz = product(XYZ_FROM_RGB, [linear_from_byte(v) for v in rgb])
    fx, fy, fz = (f(v / w) for v, w in zip(xyz, WHITE))
    return (116.0 * fy - 16.0, 500.0 * (fx - fy), 200.0 * (fy - fz))


def rgb_from_lab(lab):
    def f(t):
        return t ** 3 if t > 6.0 / 29.0 else 3.0 * (6.0 / 29.0) ** 2 * (t - 4.0 / 29.0)
    fy = (lab[0] + 16.0) / 116.0
    xyz = [f(v) * w for v, w in zip((fy + lab[1] / 500.0, fy, fy - lab[2] / 200.0), WHITE)]
    return tuple(byte_from_linear(v) for v in product(RGB_FROM_XYZ, xyz))


LMS_FROM_RGB = [[0.4122214708, 0.5363325363, 0.0514459929], [0.2119034982, 0.6806995451, 0.1073969566],
                [0.0883024619, 0.2817188376, 0.6299787005]]
OKLAB_FROM_LMS = [[0.2104542553, 0.7936177850, -0.0040720468], [1.9779984951, -2.4285922050, 0.4505937099],
                  [0.0259040371, 0.7827717662, -0.8086757660]]
RGB_FROM_LMS = inverse(LMS_FROM_RGB)
LMS_FROM_OKLAB = inverse(OKLAB_FROM_LMS)


def oklab_from_rgb(rgb):
    lms = product(LMS_FROM_RGB, [linear_from_byte(v) for v in rgb])
    return product(OKLAB_FROM_LMS, [v ** (1.0 / 3.0) for v in lms])


def rgb_from_oklab(lab):
    return tuple(byte_from_linear(v) for v in product(RGB_FROM_LMS, [v ** 3 for v in product(LMS_FROM_OKLAB, lab)]))


def difference(rgb1, rgb2):
    """CIE 1976 colour difference."""
    return sum((p - q) ** 2 for p, q in zip(lab_from_rgb(rgb1), lab_from_rgb(rgb2))) ** 0.5


def lightness(rgb):
    return lab_from_rgb(rgb)[0]


# ---- curves ----------------------------------------------------------------------------------------------------

def monotone_cubic(xs, ys):
    """Returns the monotone cubic through the points (xs ascending). Inner slopes are weighted harmonic means of the
    neighbouring secants, 0 at a local extreme; the end slopes are those of the outermost secants."""
    secants = [(ys[i + 1] - ys[i]) / (xs[i + 1] - xs[i]) for i in range(len(xs) - 1)]
    slopes = [secants[0]]
    for i in range(1, len(secants)):
        before, after = secants[i - 1], secants[i]
        if before * after <= 0.0:
            slopes.append(0.0)
            continue
        left, right = xs[i] - xs[i - 1], xs[i + 1] - xs[i]
        slopes.append(3.0 * (left + right) / ((2.0 * right + left) / before + (right + 2.0 * left) / after))
    slopes.append(secants[-1])

    def value(x):
        i = min(max(bisect.bisect_right(xs, x) - 1, 0), len(xs) - 2)
        h = xs[i + 1] - xs[i]
        t = (x - xs[i]) / h
        return (ys[i] * (1.0 + 2.0 * t) * (1.0 - t) ** 2 + slopes[i] * h * t * (1.0 - t) ** 2
                + ys[i + 1] * t * t * (3.0 - 2.0 * t) - slopes[i + 1] * h * t * t * (1.0 - t))
    return value


def curve(xs, points):
    """A curve in space: one monotone cubic a coordinate."""
    coordinates = [monotone_cubic(xs, [point[k] for point in points]) for k in range(3)]
    return lambda x: tuple(coordinate(x) for coordinate in coordinates)


def running_length(colours):
    """Colour differences summed up along a list of colours."""
    return [0.0] + list(itertools.accumulate(difference(p, q) for p, q in zip(colours, colours[1:])))


def rainbow_colours(anchors, lower, upper, size):
    """Unrounded colours of the rainbow, at constant speed on either side of its middle."""
    colours = [anchors[0], *lower, anchors[132], anchors[133], *upper, anchors[size - 1]]
    path = curve(running_length(colours), [oklab_from_rgb(c) for c in colours])
    end = running_length(colours)[-1]
    steps = 4000
    positions = [end * i / steps for i in range(steps + 1)]
    lengths = running_length([rgb_from_oklab(path(x)) for x in positions])
    position_at = monotone_cubic(lengths, positions)
    length_at = monotone_cubic(positions, lengths)
    marks = running_length(colours)
    middle = len(lower) + 1
    speed = monotone_cubic([RAINBOW_FLAT, 132, 133, size - 1],
                           [0.0, length_at(marks[middle]), length_at(marks[middle + 1]), lengths[-1]])
    return [rgb_from_oklab(path(position_at(speed(max(i, RAINBOW_FLAT))))) for i in range(size)]


def ramp_colours(anchors, controls, size):
    """Unrounded colours of a palette whose lightness is its scale: L* runs smoothly through that of the anchors, and
    the hue depends on L* alone."""
    lightness_at = monotone_cubic(sorted(anchors), [lightness(anchors[i]) for i in sorted(anchors)])
    colours = sorted([lab_from_rgb(c) for c in [*anchors.values(), *controls]])
    hue_at = curve([c[0] for c in colours], colours)
    return [rgb_from_lab(hue_at(lightness_at(i))) for i in range(size)]


# ---- rounding --------------------------------------------------------------------------------------------------

def neighbours(colour):
    """The bytes around an unrounded colour, two on either side of each channel."""
    channels = [range(max(int(v) - 1, 0), min(int(v) + 2, 255) + 1) for v in colour]
    return itertools.product(*channels)


def rounded(colours, anchors, lightness_is_scale):
    """Bytes for the unrounded colours; anchors exactly."""
    levels = [lightness(c) for c in colours]
    result = []
    for i, colour in enumerate(colours):
        if i in anchors:
            result.append(anchors[i])
            continue
        outside = max(max(-v, v - 255.0) for v in colour)
        if outside > 0.5:
            raise SystemExit(f"entry {i} leaves the gamut by {outside:.2f}: {colour}")
        inside = [min(max(v, 0.0), 255.0) for v in colour]
        candidates = neighbours(inside)
        if lightness_is_scale:
            darkest, lightest = (levels[i - 1] + levels[i]) / 2.0, (levels[i] + levels[i + 1]) / 2.0
            candidates = (c for c in candidates if darkest < lightness(c) < lightest)
        result.append(min(candidates, key=lambda c: (difference(c, inside), c)))
    return result


def palettes():
    """(name, comment, anchors, entries) of each palette."""
    made = []
    for name, comment, anchors, size, colours in [
            ("rainbow", "dark blue, cyan-green, yellow, red, dark red", RAINBOW_ANCHORS, 266,
             lambda a, n: rainbow_colours(a, RAINBOW_LOWER, RAINBOW_UPPER, n)),
            ("blackRedYellow", "black, red, yellow, white", BLACK_RED_YELLOW_ANCHORS, 444,
             lambda a, n: ramp_colours(a, BLACK_RED_YELLOW_CONTROLS, n)),
            ("grey", "black to white, warm in the middle", GREY_ANCHORS, 246,
             lambda a, n: ramp_colours(a, [], n))]:
        made.append((name, comment, anchors, rounded(colours(anchors, size), anchors, name != "rainbow")))
    return made


# ---- what must hold --------------------------------------------------------------------------------------------

def report(made):
    """Prints how smooth the palettes are, and stops when one is not."""
    for name, _, anchors, entries in made:
        assert all(entries[i] == colour for i, colour in anchors.items()), name
        steps = [(difference(entries[i], entries[i + 1]), i) for i in range(len(entries) - 1)
                 if not (i in anchors and i + 1 in anchors)]
        forced = [difference(entries[i], entries[i + 1]) for i in anchors if i + 1 in anchors]
        widest, at = max(steps)
        levels = [lightness(c) for c in entries]
        if name == "rainbow":
            top = levels.index(max(levels))
            monotone = (all(q - p > -TREMBLE for p, q in zip(levels[:top], levels[1:top + 1]))
                        and all(p - q > -TREMBLE for p, q in zip(levels[top:], levels[top + 1:])))
            words = f"lightness rises to entry {top} and falls from there"
        else:
            monotone = all(p < q for p, q in zip(levels, levels[1:]))
            words = "lightness rises from every entry to the next"
        print(f"{name}: {len(entries)} entries, {len(set(entries))} different colours, "
              f"mean step {sum(s for s, _ in steps) / len(steps):.2f}, "
              f"widest {widest:.2f} (from entry {at}), agreed steps up to {max(forced):.2f}; {words}")
        assert monotone, name
        assert widest < NOTICEABLE, name


# ---- output ----------------------------------------------------------------------------------------------------

def table_text(made):
    lines = [
        "// The tables of the three palettes. Generated by scripts/palettes.py, which says how; edit that instead.",
        "#include <KOVDoaHandle/imaging/palettes_p.h>",
        "",
        "namespace KOVPrivate {",
        "",
        "namespace {",
        "",
        "// clang-format off",
    ]
    for name, comment, _, entries in made:
        lines.append("")
        lines.append(f"// Blue, green, red: {comment}.")
        lines.append(f"constexpr PaletteEntry {name}Entries[{len(entries)}] = {{")
        for start in range(0, len(entries), 6):
            row = ", ".join(f"{{{b}, {g}, {r}}}" for r, g, b in entries[start:start + 6])
            lines.append(f"    {row},")
        lines.append("};")
    lines += ["", "// clang-format on", "", "}  // namespace", ""]
    for name, _, _, entries in made:
        lines.append(f"const Palette {name}Palette{{{name}Entries, {len(entries)}}};")
    lines += ["", "}  // namespace KOVPrivate", ""]
    return "\n".join(lines)


DIGITS = {  # 3 x 5 points, one hexadecimal digit a row
    "0": "75557", "1": "26227", "2": "71747", "3": "71717", "4": "55711",
    "5": "74717", "6": "74757", "7": "71111", "8": "75757", "9": "75717",
}


class Canvas:
    """A picture of 8-bit RGB pixels."""

    def __init__(self, width, height):
        self.width, self.height = width, height
        self.rows = [bytearray(b"\xff" * (3 * width)) for _ in range(height)]

    def fill(self, x, y, width, height, colour):
        for row in self.rows[y:y + height]:
            row[3 * x:3 * (x + width)] = bytes(colour) * width

    def number(self, centre, y, value, scale=2):
        text = str(value)
        x = min(max(centre - 2 * scale * len(text), 0), self.width - 4 * scale * len(text))
        for k, digit in enumerate(text):
            for row, bits in enumerate(int(c, 16) for c in DIGITS[digit]):
                for column in range(3):
                    if bits >> (2 - column) & 1:
                        self.fill(x + scale * (4 * k + column), y + scale * row, scale, scale, (60, 60, 60))

    def png(self):
        def chunk(kind, data):
            return (struct.pack(">I", len(data)) + kind + data
                    + struct.pack(">I", zlib.crc32(kind + data)))
        raw = b"".join(b"\0" + bytes(row) for row in self.rows)
        return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", self.width, self.height, 8, 2, 0, 0, 0))
                + chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b""))


def picture(made):
    """Under each other: the palette, its index scale, and its lightness (0 at the bottom, 100 at the top)."""
    margin, bar, curve_height, block = 24, 72, 80, 200
    width = 888  # two columns an entry of the longest palette
    canvas = Canvas(width + 2 * margin, block * len(made) + margin)
    for k, (_, _, _, entries) in enumerate(made):
        y = margin + k * block
        last = len(entries) - 1
        for x in range(width):
            colour = entries[x * len(entries) // width]
            canvas.fill(margin + x, y, 1, bar, colour)
            level = round(lightness(colour) / 100.0 * (curve_height - 2))
            canvas.fill(margin + x, y + bar + 28 + curve_height - 2 - level, 1, 2, (60, 60, 60))
        canvas.fill(margin, y + bar + 28 + curve_height, width, 1, (190, 190, 190))
        for index in [*range(0, last - 20, 50), last]:
            x = margin + (2 * index + 1) * width // (2 * len(entries))
            canvas.fill(x, y + bar, 1, 6, (60, 60, 60))
            canvas.number(x, y + bar + 10, index)
    return canvas.png()


def pixels_of(png):
    """The pixels of a picture of ours, however the installed zlib packed them."""
    position, packed = 8, b""
    while position < len(png):
        size, kind = struct.unpack(">I4s", png[position:position + 8])
        if kind == b"IDAT":
            packed += png[position + 8:position + 8 + size]
        position += size + 12
    return zlib.decompress(packed)


def read(path):
    with open(path, "rb") as file:
        return file.read()


def main():
    parser = argparse.ArgumentParser(description="Generates the palettes of the overlay and their picture.")
    parser.add_argument("--check", action="store_true", help="compare the files in the tree, write nothing")
    parser.add_argument("--table", metavar="FILE", help="write only the table, to FILE ('-': standard output)")
    arguments = parser.parse_args()
    made = palettes()
    text = table_text(made)
    if arguments.table == "-":
        sys.stdout.write(text)
        return 0
    report(made)
    if arguments.check:
        same = {TABLE: read(TABLE) == text.encode(), PICTURE: pixels_of(read(PICTURE)) == pixels_of(picture(made))}
        for path, is_same in same.items():
            print(f"{os.path.relpath(path, ROOT)}: {'up to date' if is_same else 'NOT what this script writes'}")
        return 0 if all(same.values()) else 1
    with open(arguments.table or TABLE, "w", encoding="ascii", newline="\n") as file:
        file.write(text)
    if not arguments.table:
        with open(PICTURE, "wb") as file:
            file.write(picture(made))
    return 0


if __name__ == "__main__":
    sys.exit(main())
