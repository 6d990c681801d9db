#!/usr/bin/env python3
"""Draws the waiting spinner into resources/img/icon/waiting.gif.

Twelve event pixels stand in a ring; a bright head runs round once a second and leaves a tail that shrinks and
fades. The picture is twice the size of its label, for dense screens.

GIF knows only whole transparency, so every pixel has a white rim that its edge runs out into, and the frame, drawn
large and scaled down, is cut in the rim's edge. On the white of an empty view the rim is not seen; on a picture's grey
it keeps the middle of the tail, as dark as the grey itself, apart from it.

Usage: scripts/make_waiting_gif.py     (needs the package python3-pil)
"""

import math
from pathlib import Path

from PIL import Image, ImageDraw

TARGET = Path(__file__).resolve().parent.parent / "resources" / "img" / "icon" / "waiting.gif"

SIZE = 300
OVERSAMPLED = 4
FRAMES = 25
FRAME_MS = 40
PIXELS = 12
RING = 104
SMALL, LARGE = 22, 46
RIM = 5
BEHIND = (255, 255, 255)
HEAD = (0, 75, 106)
TAIL = (190, 208, 216)
TRANSPARENT = 0


def strength(lag):
    """How much of the head a pixel still shows `lag` turns (0..1) after the head passed: a short rise, a long fall."""
    rise = 0.10
    if lag > 1 - rise:
        return 0.5 - 0.5 * math.cos(math.pi * (lag - (1 - rise)) / rise)
    return max(0.0, 1 - lag / 0.72) ** 1.4


def blend(weak, strong, part):
    return tuple(round(a + (b - a) * part) for a, b in zip(weak, strong))


def shape(side, corner, angle):
    """A square with round corners, centred on the origin and turned by `angle`, as points of a polygon."""
    half, points = side / 2 - corner, []
    for quarter, (sx, sy) in enumerate(((1, 1), (-1, 1), (-1, -1), (1, -1))):
        for step in range(9):
            turn = math.radians(quarter * 90 + step * 90 / 8)
            x, y = sx * half + corner * math.cos(turn), sy * half + corner * math.sin(turn)
            points.append((x * math.cos(angle) - y * math.sin(angle), x * math.sin(angle) + y * math.cos(angle)))
    return points


def frame(turn):
    """One picture (RGB) and its cover (L) with the head at `turn` (0..1)."""
    large = SIZE * OVERSAMPLED
    picture = Image.new("RGB", (large, large), BEHIND)
    cover = Image.new("L", (large, large), 0)
    paint, mask = ImageDraw.Draw(picture), ImageDraw.Draw(cover)
    for index in range(PIXELS):
        part = strength((turn - index / PIXELS) % 1.0)
        angle = 2 * math.pi * index / PIXELS - math.pi / 2
        side = SMALL + (LARGE - SMALL) * part
        x, y = SIZE / 2 + RING * math.cos(angle), SIZE / 2 + RING * math.sin(angle)

        def placed(points):
            return [((x + px) * OVERSAMPLED, (y + py) * OVERSAMPLED) for px, py in points]

        corner = side * 0.26
        paint.polygon(placed(shape(side, corner, angle)), fill=blend(TAIL, HEAD, part))
        mask.polygon(placed(shape(side + 2 * RIM, corner + RIM, angle)), fill=255)
    reduced = (SIZE, SIZE)
    return picture.resize(reduced, Image.Resampling.BOX), cover.resize(reduced, Image.Resampling.BOX)


def palette():
    """Index 0 is transparent, under a colour that no frame has; then the rim, the way from the tail to the head, and
    that way's edges towards the rim."""
    steps = 63
    colours = [(255, 0, 0), BEHIND]
    colours += [blend(TAIL, HEAD, step / (steps - 1)) for step in range(steps)]
    for cover in (0.25, 0.5, 0.75):
        colours += [blend(BEHIND, blend(TAIL, HEAD, step / (steps - 1)), cover) for step in range(steps)]
    return colours


def main():
    colours = palette()
    table = Image.new("P", (1, 1))
    flat = [channel for colour in colours for channel in colour]
    table.putpalette(flat + flat[-3:] * (256 - len(colours)))
    frames = []
    for index in range(FRAMES):
        picture, cover = frame(index / FRAMES)
        indexed = picture.quantize(palette=table, dither=Image.Dither.NONE)
        indexed.paste(TRANSPARENT, mask=cover.point(lambda value: 255 if value < 128 else 0))
        frames.append(indexed)
    TARGET.parent.mkdir(parents=True, exist_ok=True)
    frames[0].save(TARGET, save_all=True, append_images=frames[1:], duration=FRAME_MS, loop=0, disposal=2,
                   transparency=TRANSPARENT, background=TRANSPARENT, optimize=False)


if __name__ == "__main__":
    main()
