#!/usr/bin/env python3
"""Draws every icon and logo of KorvaneInsight into resources/img/ and the application's icon into packaging/.

All icons come from one grid (24 x 24), one stroke weight and one palette; a state (hover, pressed, selected,
disabled) is a Look that is laid over the same glyph, so the whole family changes together. States differ in
lightness and in shape (tile or no tile, filled or outlined), never in hue alone.

Most buttons show their icon at 40 pixels, so 0.6 of a unit is a pixel there. A stroke is three of them; strokes run
at 12 +- (0.3 + 0.6 n) and edges without a stroke at 12 +- 0.6 n wherever they can: they then fall between pixels at
40 and at 80, and hardly blur at 60. The title bar's icons (30 pixels) keep to multiples of 0.8 instead.

Only shapes of SVG Tiny 1.2 are written, since Qt draws no more: paths of lines and Bezier curves, rectangles,
circles. No texts (fonts differ), filters, masks or classes.

Usage: scripts/make_icons.py     (needs rsvg-convert from the package librsvg2-bin for the PNG files)
"""

import math
import shutil
import subprocess
import sys
from dataclasses import dataclass, replace
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
IMAGES = ROOT / "resources" / "img"
ASSETS = IMAGES / "assets"
SOURCE = IMAGES / "source"
PACKAGING = ROOT / "packaging"
PACKAGE_ICON_SIZES = (16, 24, 32, 48, 64, 128, 256)

ACCENT = "#004B6A"
ACCENT_PRESSED = "#2C6580"
ACCENT_DARK = "#002D40"
GREY = "#575757"
SOFT_GREY = "#808080"
DISABLED = "#C7C7C7"
TILE = "#D7E7EE"
PALE = "#EDF1F3"
RED = "#FF6058"
RED_TILE = "#FFDAD8"
GREEN = "#58DB6D"
AMBER = "#F9BF37"
WHITE = "#FFFFFF"

WEIGHT = 1.8


@dataclass(frozen=True)
class Look:
    """How a glyph is drawn: `ink` strokes and solid shapes, `soft` the fill of large closed shapes, `mark` the one
    coloured spot that some glyphs have; `hollow` leaves solid shapes unfilled. `inset` is the tile's margin."""

    ink: str = GREY
    soft: str = "none"
    mark: str = ""
    hollow: bool = False
    tile: str = ""
    inset: float = 1.2
    chosen: bool = False

    @property
    def solid(self):
        return "none" if self.hollow else self.ink

    @property
    def spot(self):
        return self.mark or self.ink


NORMAL = Look()
HOVER = Look(ink=ACCENT, soft=WHITE, tile=TILE)
PRESSED = Look(ink=WHITE, tile=ACCENT_PRESSED)
SELECTED = Look(ink=WHITE, tile=ACCENT, chosen=True)
DISABLE = Look(ink=DISABLED, hollow=True)


def number(value):
    text = f"{value:.3f}".rstrip("0").rstrip(".")
    return "0" if text == "-0" else text


def element(tag, **attributes):
    written = []
    for name, value in attributes.items():
        text = number(value) if isinstance(value, (int, float)) else value
        written.append(f'{name.replace("_", "-")}="{text}"')
    return f"<{tag} {' '.join(written)}/>"


def path(d, **more):
    return element("path", d=d, **more)


def rect(x, y, width, height, rx=0.0, **more):
    return element("rect", x=x, y=y, width=width, height=height, rx=rx, ry=rx, **more)


def circle(cx, cy, r, **more):
    return element("circle", cx=cx, cy=cy, r=r, **more)


def block(x, y, size, fill):
    """One event: a square with softened corners, never stroked."""
    return rect(x, y, size, size, size * 0.2, fill=fill, stroke="none")


def polygon(*points):
    return "M" + "L".join(f"{number(x)} {number(y)}" for x, y in points) + "Z"


def drawing(look, shapes, width=24, height=24):
    """A whole SVG document: the look's tile, then the shapes inside the look's stroke."""
    lines = [f'<svg xmlns="http://www.w3.org/2000/svg" version="1.2" baseProfile="tiny" '
             f'width="{number(width)}" height="{number(height)}" viewBox="0 0 {number(width)} {number(height)}">']
    if look.tile:
        side = 24 - 2 * look.inset
        lines.append("  " + rect(look.inset, look.inset, side, side, 4.8, fill=look.tile))
    lines.append(f'  <g fill="none" stroke="{look.ink}" stroke-width="{number(WEIGHT)}" '
                 'stroke-linecap="round" stroke-linejoin="round">')
    lines += ["    " + shape for shape in shapes]
    lines += ["  </g>", "</svg>", ""]
    return "\n".join(lines)


# Glyphs: each takes a Look and gives shapes on the 24 x 24 grid, inside 3.6..20.4 so that the tile keeps a margin.

def play(look):
    return [path(polygon((8.7, 5.7), (18.3, 12), (8.7, 18.3)), fill=look.solid)]


def pause(look):
    return [rect(7.5, 6.3, 1.8, 11.4, 0.3, fill=look.solid), rect(14.7, 6.3, 1.8, 11.4, 0.3, fill=look.solid)]


def stop(look):
    return [rect(6.9, 6.9, 10.2, 10.2, 0.6, fill=look.solid)]


def forward(look):
    return [path(polygon((6.3, 6.3), (13.5, 12), (6.3, 17.7)), fill=look.solid), path("M17.7 6.3V17.7")]


def backward(look):
    return [path(polygon((17.7, 6.3), (10.5, 12), (17.7, 17.7)), fill=look.solid), path("M6.3 6.3V17.7")]


def loop(look):
    shapes = [
        path("M5.1 11.7V10.5C5.1 8.85 6.45 7.5 8.1 7.5H15.3"),
        path(polygon((15.6, 5.1), (18.9, 7.5), (15.6, 9.9)), fill=look.solid),
        path("M18.9 12.3V13.5C18.9 15.15 17.55 16.5 15.9 16.5H8.7"),
        path(polygon((8.4, 14.1), (5.1, 16.5), (8.4, 18.9)), fill=look.solid),
    ]
    if look.chosen:
        shapes.append(circle(12, 12, 2.1, fill=look.ink, stroke="none"))
    return shapes


def record(look):
    return [circle(12, 12, 7.5), circle(12, 12, 3.9, fill=look.spot, stroke="none")]


def recordOver(look):
    return [circle(12, 12, 7.5, fill=look.soft), circle(12, 12, 5.1, fill=look.spot, stroke="none")]


def recordRunning(look):
    return [circle(12, 12, 7.5), rect(9, 9, 6, 6, 1.2, fill=look.spot, stroke="none")]


def recordOff(look):
    return [circle(12, 12, 7.5), circle(12, 12, 3)]


def sliders(look):
    return [
        path("M4.5 8.1H11.4M17.4 8.1H19.5M4.5 15.9H6.6M12.6 15.9H19.5"),
        circle(14.4, 8.1, 2.7, fill=look.soft), circle(9.6, 15.9, 2.7, fill=look.soft),
    ]


def gear(look):
    teeth, outer, inner = 8, 8.4, 6.3
    points = []
    for tooth in range(teeth):
        for offset, radius in ((-0.29, inner), (-0.16, outer), (0.16, outer), (0.29, inner)):
            angle = 2 * math.pi * (tooth + offset) / teeth - math.pi / 2
            points.append((12 + radius * math.cos(angle), 12 + radius * math.sin(angle)))
    return [path(polygon(*points), fill=look.soft), circle(12, 12, 2.7)]


def cameraFront(look):
    return [
        path("M6.6 8.1H8.1L9.3 6.3C9.55 5.9 9.95 5.7 10.4 5.7H13.6C14.05 5.7 14.45 5.9 14.7 6.3L15.9 8.1H17.4"
             "C18.55 8.1 19.5 9.05 19.5 10.2V16.2C19.5 17.35 18.55 18.3 17.4 18.3H6.6C5.45 18.3 4.5 17.35 4.5 16.2"
             "V10.2C4.5 9.05 5.45 8.1 6.6 8.1Z", fill=look.soft),
        circle(12, 13.1, 2.9),
    ]


def cameraSide(look):
    """Shown at 24 pixels, so it keeps to whole units."""
    return [
        rect(3, 6, 12, 10, 2, fill=look.soft), path("M15 10L20 8V14L15 12Z", fill=look.ink),
        path("M9 16V20M6 20H12"),
        block(5, 11.5, 2.5, look.ink), block(8, 9, 2.5, look.ink), block(5.5, 9, 1.5, look.ink),
    ]


def chip(look):
    return [
        path("M9.3 3.3V5.7M14.7 3.3V5.7M9.3 18.3V20.7M14.7 18.3V20.7"
             "M3.3 9.3H5.7M3.3 14.7H5.7M18.3 9.3H20.7M18.3 14.7H20.7"),
        rect(5.7, 5.7, 12.6, 12.6, 2.1, fill=look.soft),
    ]


def edge(look, x, y, pitch, rows, sizes):
    """Events on a rising diagonal of `rows` from (x, y), the centre of the lowest one; each further size is what the
    moving edge left behind, one event shorter."""
    return [block(x + row * pitch - size / 2, y - (behind + row) * pitch - size / 2, size, look.ink)
            for behind, size in enumerate(sizes) for row in range(rows - behind)]


def chipEvents(look):
    return chip(look) + edge(look, 9, 15, 3, 3, (2.4, 1.2))


def landscape(look, left, right, top, bottom):
    """Two hills on a common ground; unfilled, only their ridge from side to side."""
    width, height = right - left, bottom - top
    ridge = [(left, bottom), (left + 0.36 * width, top), (left + 0.62 * width, top + 0.6 * height),
             (left + 0.74 * width, top + 0.36 * height), (right, bottom)]
    if look.hollow:
        return path(polygon(*ridge)[:-1])
    return path(polygon(*ridge), fill=look.ink, stroke="none")


def chipPicture(look):
    return chip(look) + [landscape(look, 7.8, 16.2, 10.8, 16.2),
                         circle(14.4, 9.3, 1.2, fill=look.ink, stroke="none")]


def events(look):
    return edge(look, 6, 18, 4.2, 4, (3.6, 2.4, 1.2))


def picture(look):
    return [
        rect(4.5, 5.7, 15, 12.6, 2.1, fill=look.soft), landscape(look, 6.6, 17.4, 10.2, 16.2),
        circle(15, 9.3, 1.5, fill=look.ink, stroke="none"),
    ]


def fusion(look):
    """The picture, its corner broken up into events."""
    squares = ((14.1, 5.7, 3), (18.9, 5.1, 3), (19.5, 10.5, 3), (15.3, 9.3, 1.8))
    return [
        path("M9.9 5.7H6.6C5.45 5.7 4.5 6.65 4.5 7.8V16.2C4.5 17.35 5.45 18.3 6.6 18.3H17.4C18.55 18.3 19.5 17.35 "
             "19.5 16.2V14.7"),
        landscape(look, 6.6, 17.4, 10.2, 16.2),
    ] + [block(x - size / 2, y - size / 2, size, look.ink) for x, y, size in squares]


def cross(look, reach):
    low, high = 12 - reach, 12 + reach
    return [path(f"M{number(low)} {number(low)}L{number(high)} {number(high)}"
                 f"M{number(high)} {number(low)}L{number(low)} {number(high)}")]


def closeWindow(look):
    return cross(look, 5.2)


def closeToast(look):
    return cross(look, 7)


def minimise(look):
    return [path("M6.4 16H17.6")]


def maximise(look):
    return [rect(6.4, 6.4, 11.2, 11.2, 1.6)]


def minus(look):
    return [path("M5.6 12H18.4")]


def plus(look):
    return [path("M5.6 12H18.4M12 5.6V18.4")]


def chevronUp(look):
    return [path("M7.2 14.4L12 9.6L16.8 14.4")]


def chevronDown(look):
    return [path("M7.2 9.6L12 14.4L16.8 9.6")]


def comboArrow(look):
    """Shown at half its size or less: a solid triangle, since a stroke would be less than a pixel there."""
    return [path(polygon((5.1, 8.7), (18.9, 8.7), (12, 16.5)), fill=look.ink)]


def search(look):
    return [circle(10.8, 10.8, 5.7, fill=look.soft), path("M15 15L19.5 19.5")]


def folder(look):
    return [path("M4.5 16.2V7.8C4.5 6.65 5.45 5.7 6.6 5.7H9.3C9.85 5.7 10.4 5.95 10.8 6.35L12.3 8.1H17.4"
                 "C18.55 8.1 19.5 9.05 19.5 10.2V16.2C19.5 17.35 18.55 18.3 17.4 18.3H6.6C5.45 18.3 4.5 17.35 4.5 "
                 "16.2Z", fill=look.soft), path("M4.5 11.7H19.5")]


# The toasts' icons are shown at 15 pixels: their marks are thin outlines filled, so that they come out at half as
# much again as a stroke.

def tick(look):
    return [circle(12, 12, 11.2, fill=look.mark, stroke="none"),
            path("M6.8 12.2L10.5 15.9L17.2 8.6L16.6 8L10.5 14.7L7.4 11.6Z", fill=look.ink)]


def warning(look):
    return [path(polygon((12, 2.9), (22.2, 20.7), (1.8, 20.7)), fill=look.mark, stroke=look.mark),
            path("M11.6 9.2H12.4L12.2 13.6H11.8Z", fill=look.ink), circle(12, 17.4, 1.5, fill=look.ink, stroke="none")]


def error(look):
    corner, side = 4.4, 10.4
    octagon = [(12 + x, 12 + y) for x, y in ((-corner, -side), (corner, -side), (side, -corner), (side, corner),
                                             (corner, side), (-corner, side), (-side, corner), (-side, -corner))]
    arm, half = 4, 0.4
    saltire = [(12 + x, 12 + y) for x, y in (
        (-arm - half, -arm + half), (-2 * half, 0), (-arm - half, arm - half), (-arm + half, arm + half),
        (0, 2 * half), (arm - half, arm + half), (arm + half, arm - half), (2 * half, 0),
        (arm + half, -arm + half), (arm - half, -arm - half), (0, -2 * half), (-arm + half, -arm - half))]
    return [path(polygon(*octagon), fill=look.mark, stroke=look.mark), path(polygon(*saltire), fill=look.ink)]


def switch(on):
    """36 x 20 pixels as shown: a rim of one pixel, a knob with a pixel's margin, a mark in the free half."""
    if on:
        shapes = [rect(0, 0, 36, 20, 10, fill=ACCENT, stroke="none"),
                  circle(26, 10, 7, fill=WHITE, stroke="none"), path("M8.5 10.2L11 12.7L15.5 7.6", stroke=WHITE)]
    else:
        shapes = [rect(0, 0, 36, 20, 10, fill=SOFT_GREY, stroke="none"),
                  rect(1, 1, 34, 18, 9, fill=PALE, stroke="none"),
                  circle(10, 10, 7, fill=SOFT_GREY, stroke="none"), circle(10, 10, 6, fill=WHITE, stroke="none"),
                  path("M23 10H28", stroke=SOFT_GREY)]
    return drawing(Look(), shapes, 36, 20)


def thumb():
    return drawing(Look(), [circle(4.5, 4.5, 4.5, fill=ACCENT, stroke="none"),
                            circle(4.5, 4.5, 1.5, fill=WHITE, stroke="none")], 9, 9)


def mark(ink, far, pupil, scale=1.0, x=0.0, y=0.0):
    """The mark on a 64 x 64 grid: a lens that sees movement. Its ring is whole on one side and breaks up into
    events on the other; the pupil is an event itself."""
    def at(radius, degrees):
        angle = math.radians(degrees)
        return x + (32 + radius * math.cos(angle)) * scale, y + (32 + radius * math.sin(angle)) * scale

    def arc(radius, start, end):
        """Bezier curves, at most 45 degrees each, as a path's continuation from the arc's start."""
        steps = max(1, math.ceil(abs(end - start) / 45))
        step = (end - start) / steps
        reach = 4 / 3 * math.tan(math.radians(step) / 4) * radius
        curves = ""
        for index in range(steps):
            a, b = start + index * step, start + (index + 1) * step
            (ax, ay), (bx, by) = at(radius, a), at(radius, b)
            ra, rb = math.radians(a), math.radians(b)
            points = (ax - math.sin(ra) * reach * scale, ay + math.cos(ra) * reach * scale,
                      bx + math.sin(rb) * reach * scale, by - math.cos(rb) * reach * scale, bx, by)
            curves += "C" + " ".join(number(point) for point in points)
        return curves

    def square(radius, degrees, size, fill):
        cx, cy = at(radius, degrees)
        return rect(cx - size * scale / 2, cy - size * scale / 2, size * scale, size * scale, size * scale * 0.2,
                    fill=fill)

    outer, inner, start, end = 30, 20, -112, 112
    ring = (f"M{number(at(outer, start)[0])} {number(at(outer, start)[1])}" + arc(outer, start, end)
            + f"L{number(at(inner, end)[0])} {number(at(inner, end)[1])}" + arc(inner, end, start) + "Z")
    middle = (outer + inner) / 2
    return [
        path(ring, fill=ink),
        square(middle, 137, 9, ink), square(middle, -137, 9, ink),
        square(middle, 164, 7.5, far), square(middle, -164, 7.5, far),
        square(0, 0, 17, pupil),
    ]


def document(width, height, shapes):
    body = "\n".join("  " + shape for shape in shapes)
    return (f'<svg xmlns="http://www.w3.org/2000/svg" version="1.2" baseProfile="tiny" width="{number(width)}" '
            f'height="{number(height)}" viewBox="0 0 {number(width)} {number(height)}">\n{body}\n</svg>\n')


def on15(look):
    """For the buttons of 15 pixels, where the tile fills the button."""
    return replace(look, inset=0)


def on30(look):
    """For the buttons of 30 pixels."""
    return replace(look, inset=0.8)


CLOSE_HOVER = on30(Look(ink=RED, tile=RED_TILE))
CLOSE_PRESSED = on30(Look(ink=WHITE, tile=RED))
TITLE = Look(ink=SOFT_GREY)
ON_ACCENT = Look(ink=WHITE)
ON_ACCENT_HOVER = on30(Look(ink=WHITE, tile=ACCENT_PRESSED))
ON_ACCENT_PRESSED = on30(Look(ink=ACCENT, tile=WHITE))


def icons():
    """File name to document, for every SVG under assets."""
    files = {}

    def add(name, glyph, look):
        assert name not in files, name
        files[name] = drawing(look, glyph(look))

    def family(stem, glyph, **looks):
        add(f"{stem}.svg", glyph, looks.pop("normal", NORMAL))
        for suffix, look in looks.items():
            add(f"{stem}_{suffix}.svg", glyph, look)

    family("btn_playbar_play", play, Hover=HOVER, Pressed=PRESSED, Disable=DISABLE)
    family("btn_playbar_pause", pause, Hover=HOVER, Pressed=PRESSED)
    family("btn_playbar_stop", stop, Hover=HOVER, Pressed=PRESSED, Disable=DISABLE)
    family("btn_playbar_backward", backward, Hover=HOVER, Disable=DISABLE)
    family("btn_playbar_forward", forward, Hover=HOVER, Disable=DISABLE)
    family("btn_playbar_loop", loop, Hover=HOVER, Pressed=PRESSED, Selected=SELECTED, Disable=DISABLE)
    family("btn_playbar_setting", sliders, pressed=SELECTED)
    for stem, glyph in (("DVS", events), ("APS", picture), ("Fusion", fusion)):
        family(f"btn_playbar_{stem}", glyph, hover=HOVER, disable=DISABLE)
    add("btn_playbar_record.svg", record, replace(NORMAL, mark=RED))
    add("btn_playbar_record_Hover.svg", recordOver, replace(HOVER, mark=RED))
    add("btn_playbar_record_Pressed.svg", recordRunning, Look(ink=WHITE, tile=RED))
    add("btn_playbar_record_Disable.svg", recordOff, DISABLE)

    family("btn_sidebar_camera", cameraFront, hover=HOVER)
    family("btn_sidebar_DVS", chipEvents, hover=HOVER)
    family("btn_sidebar_APS", chipPicture, hover=HOVER)
    family("btn_sidebar_setting", gear, hover=HOVER)
    add("btn_camera.svg", cameraSide, Look(ink=ACCENT, soft=TILE))
    add("btn_camera_Selected.svg", cameraSide, Look(ink=WHITE))  # on a row filled with the accent
    family("btn_search", search, Hover=on30(HOVER))
    family("btn_select_dir", folder, Hover=on30(HOVER), Pressed=on30(PRESSED))

    family("btn_Nav_MinimizeWindow", minimise, normal=TITLE, Hover=on30(HOVER), Pressed=on30(PRESSED))
    family("btn_Nav_MaximizeWindow", maximise, normal=TITLE, Hover=on30(HOVER), Pressed=on30(PRESSED))
    family("btn_Nav_CloseWindow", closeWindow, normal=TITLE, Hover=CLOSE_HOVER, Pressed=CLOSE_PRESSED)
    family("btn_Nav_CloseWindow_White", closeWindow, normal=ON_ACCENT, Hover=ON_ACCENT_HOVER,
           Pressed=ON_ACCENT_PRESSED)

    family("btn_setting_minus", minus, normal=TITLE, pressed=on15(SELECTED))
    family("btn_setting_plus", plus, normal=TITLE, pressed=on15(SELECTED))
    files["btn_setting_thumbs.svg"] = thumb()
    files["btn_switch_enable.svg"] = switch(True)
    files["btn_switch_disable.svg"] = switch(False)
    add("bnt_arrow_up_Pressed.svg", chevronUp, Look(ink=ACCENT))
    add("bnt_arrow_down.svg", chevronDown, NORMAL)
    family("btn_combobox_arrow", comboArrow, Hover=Look(ink=ACCENT), Disable=DISABLE)

    # Dark where white would not stand out from the colour.
    add("icon_toasts_success.svg", tick, Look(ink=ACCENT_DARK, mark=GREEN))
    add("icon_toasts_warning.svg", warning, Look(ink=ACCENT_DARK, mark=AMBER))
    add("icon_toasts_error.svg", error, Look(ink=WHITE, mark=RED))
    add("icon_toasts_close.svg", closeToast, TITLE)
    files["img_logo_Korvane.svg"] = document(64, 64, mark(ACCENT, ACCENT_PRESSED, AMBER))
    return files


WORDMARK = (  # letter strokes on a height of 16, and the width of each letter
    ("M0 0V16M10.5 0L1 8.6M3.9 6L11 16", 11),
    ("M4 0H9L13 4V12L9 16H4L0 12V4Z", 13),
    ("M0 16V0H7.5L10.5 3V5.5L7.5 8.5H0M6 8.5L11 16", 11),
    ("M0 0L6.5 16L13 0", 13),
    ("M0 16L6.5 0L13 16M2.6 10.5H10.4", 13),
    ("M0 16V0L12 16V0", 12),
    ("M10 0H0V16H10M0 8H8.5", 10),
)


def wordmark(middle, top, gap):
    shapes = []
    x = middle - (sum(width for _, width in WORDMARK) + gap * (len(WORDMARK) - 1)) / 2
    for d, width in WORDMARK:
        shapes.append(path(d, fill="none", stroke=ACCENT, stroke_width=2.8, stroke_linecap="round",
                           stroke_linejoin="round", transform=f"translate({number(x)} {number(top)})"))
        x += width + gap
    return shapes


def logos():
    """Stem of the PNG under assets to (document, width, height)."""
    window = document(256, 256, [rect(8, 8, 240, 240, 54, fill=ACCENT)]
                      + mark(WHITE, TILE, AMBER, 2.75, 128 - 32 * 2.75, 128 - 32 * 2.75))
    splash = document(136, 150, mark(ACCENT, ACCENT_PRESSED, AMBER, 1.7, 68 - 32 * 1.7, 56 - 32 * 1.7)
                      + wordmark(68, 126, 5))
    return {"Korvane logo_navigate": (window, 256, 256), "Korvane logo_ system-version": (splash, 136, 150)}


def main():
    if not shutil.which("rsvg-convert"):
        sys.exit("rsvg-convert is missing: install the package librsvg2-bin")
    ASSETS.mkdir(parents=True, exist_ok=True)
    SOURCE.mkdir(parents=True, exist_ok=True)
    for name, text in icons().items():
        (ASSETS / name).write_text(text, encoding="utf-8")
    for stem, (text, width, height) in logos().items():
        source = SOURCE / f"{stem}.svg"
        source.write_text(text, encoding="utf-8")
        for suffix, factor in (("", 1), ("@2x", 2)):
            subprocess.run(["rsvg-convert", "-w", str(width * factor), "-h", str(height * factor), "-o",
                            str(ASSETS / f"{stem}{suffix}.png"), str(source)], check=True)
    icons_of_package = PACKAGING / "icons"
    icons_of_package.mkdir(parents=True, exist_ok=True)
    scalable = PACKAGING / "korvaneinsight.svg"
    shutil.copyfile(SOURCE / "Korvane logo_navigate.svg", scalable)
    for size in PACKAGE_ICON_SIZES:
        subprocess.run(["rsvg-convert", "-w", str(size), "-h", str(size), "-o",
                        str(icons_of_package / f"korvaneinsight-{size}.png"), str(scalable)], check=True)


if __name__ == "__main__":
    main()
