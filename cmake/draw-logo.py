"""Draws the product's logo: draw-logo.py OUTPUT.bmp

A lens that sees a beam of light and gives out a picture, and the name beside it; on 256 colours. Every shape is a
distance: a point closer to it than half a pixel is covered in part, which makes smooth edges.
"""

import math
import struct
import sys

# The size of the picture control on the About page at 96 dots per inch: 326 by 121 dialog units of 6 by 13 pixels.
WIDTH, HEIGHT = 489, 197
BASE, ACCENT = 208, 48  # entries of the palette: from night to white; from night to amber

LENS_X, LENS_Y = 104.0, 98.5
STROKE = 6.5


def mix(a, b, share):
    return tuple(x + (y - x) * share for x, y in zip(a, b))


def ramp(colours, count):
    for i in range(count):
        place = i / (count - 1) * (len(colours) - 1)
        at = min(int(place), len(colours) - 2)
        yield tuple(round(c) for c in mix(colours[at], colours[at + 1], place - at))


PALETTE = list(ramp([(12, 20, 38), (22, 62, 110), (36, 134, 176), (150, 214, 226), (255, 255, 255)], BASE)) + \
    list(ramp([(12, 20, 38), (190, 96, 20), (255, 196, 92)], ACCENT))


def covered(distance):
    return min(1.0, max(0.0, 0.5 - distance))


def segment(x, y, ax, ay, bx, by):
    """Distance from a line between two points."""
    along = ((x - ax) * (bx - ax) + (y - ay) * (by - ay)) / ((bx - ax) ** 2 + (by - ay) ** 2)
    along = min(1.0, max(0.0, along))
    return math.hypot(x - ax - along * (bx - ax), y - ay - along * (by - ay))


# The letters V E X A as strokes: in units of the letter's height, from its lower left corner upwards.
LETTERS = [
    (0.00, [(0, 1, .36, 0), (.36, 0, .72, 1)]),
    (1.02, [(0, 0, 0, 1), (0, 1, .56, 1), (0, .5, .48, .5), (0, 0, .56, 0)]),
    (1.86, [(0, 0, .68, 1), (0, 1, .68, 0)]),
    (2.78, [(0, 0, .36, 1), (.36, 1, .72, 0), (.14, .34, .58, .34)]),
]
LETTER_HEIGHT, LETTERS_X, LETTERS_Y = 64.0, 222.0, 124.0


def letters(x, y):
    best = 1e9
    for left, strokes in LETTERS:
        for ax, ay, bx, by in strokes:
            best = min(best, segment(x, y,
                                     LETTERS_X + (left + ax) * LETTER_HEIGHT, LETTERS_Y - ay * LETTER_HEIGHT,
                                     LETTERS_X + (left + bx) * LETTER_HEIGHT, LETTERS_Y - by * LETTER_HEIGHT))
    return best - STROKE


def lens(x, y):
    """Brightness on the base ramp, and how much of it covers what lies behind."""
    radius = math.hypot(x - LENS_X, y - LENS_Y)
    ring = covered(abs(radius - 76) - 5)
    thin = covered(abs(radius - 60) - 1.2)
    angle = math.atan2(y - LENS_Y, x - LENS_X)
    hexagon = radius * math.cos((angle % (math.pi / 3)) - math.pi / 6)
    blades = covered(abs(hexagon - 34) - 2.2)
    opening = covered(hexagon - 32)
    glass = 0.16 + 0.10 * max(0.0, 1 - math.hypot(x - LENS_X + 24, y - LENS_Y + 26) / 60)
    shade = glass * covered(radius - 76)
    shade += (0.44 + 0.18 * (LENS_Y - y) / 34 - glass) * opening
    shade = shade + (0.72 - shade) * max(ring, thin, blades)
    return shade, covered(radius - 81)


def accent(x, y):
    """The beam that comes in, and the row of pixels under the name."""
    beam = covered(abs(y - LENS_Y + (x - LENS_X) * 0.52) - 3.2) if x < LENS_X else 0.0
    beam *= 1 if math.hypot(x - LENS_X, y - LENS_Y) > 6 else 0
    dot = covered(math.hypot(x - LENS_X, y - LENS_Y) - 9)
    return max(beam, dot)


def pixels_row(x, y):
    """Twelve squares that fade: the picture that goes out."""
    if not 150 <= y < 162 or not LETTERS_X - 6 <= x < LETTERS_X - 6 + 12 * 19.6:
        return 0.0
    number, within = divmod(x - (LETTERS_X - 6), 19.6)
    return (1 - number / 13) * covered(abs(within - 6) - 6)


def colour(column, row):
    x, y = column + 0.5, row + 0.5
    shade = 0.06 + 0.16 * (x / WIDTH) * (1 - y / HEIGHT)  # a light from the upper right
    lens_shade, lens_cover = lens(x, y)
    shade += (lens_shade - shade) * lens_cover
    shade += (0.62 - shade) * pixels_row(x, y)
    shade += (1.0 - shade) * covered(letters(x, y))
    bright = accent(x, y)
    if bright > 0.35:
        return BASE + round(bright * (ACCENT - 1))
    return round(min(1.0, shade) * (BASE - 1))


def write_bitmap(path):
    stride = (WIDTH + 3) & ~3
    rows = b"".join(bytes(colour(column, row) for column in range(WIDTH)) + bytes(stride - WIDTH)
                    for row in reversed(range(HEIGHT)))
    palette = b"".join(struct.pack("<4B", blue, green, red, 0) for red, green, blue in PALETTE)
    offset = 14 + 40 + len(palette)
    with open(path, "wb") as file:
        file.write(struct.pack("<2sIHHI", b"BM", offset + len(rows), 0, 0, offset))
        file.write(struct.pack("<IiiHHIIiiII", 40, WIDTH, HEIGHT, 1, 8, 0, len(rows), 3780, 3780, len(PALETTE), 0))
        file.write(palette + rows)


if __name__ == "__main__":
    write_bitmap(sys.argv[1])
