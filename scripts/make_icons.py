#!/usr/bin/env python3
"""Draws every icon and logo of KorvaneInsight into resources/img/.

All icons come from one grid (24 x 24), one stroke weight and one palette; a state (hover, pressed, selected,
disabled) is a Look that is laid over the same glyph, so the whole family changes together. States differ in
lightness and in shape (tile or no tile, filled or outlined), never in hue alone.

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

IMAGES = Path(__file__).resolve().parent.parent / "resources" / "img"
ASSETS = IMAGES / "assets"
SOURCE = IMAGES / "source"

ACCENT = "#004B6A"
ACCENT_PRESSED = "#2C6580"
GREY = "#575757"
SOFT_GREY = "#808080"
DISABLED = "#C7C7C7"
TILE = "#D7E7EE"
RED = "#FF6058"
DEEP_RED = "#D93A32"
RED_TILE = "#FFDEDB"
GREEN = "#58DB6D"
AMBER = "#F9BF37"
DARK_GREEN = "#0B3D16"
DARK_AMBER = "#4A3300"
WHITE = "#FFFFFF"

WEIGHT = 1.75
THIN = 1.25


@dataclass(frozen=True)
class Look:
    """How a glyph is drawn: `ink` strokes and solid shapes, `body` the fill of solid shapes, `soft` the fill of
    large closed shapes, `mark` the one coloured spot that some glyphs have."""

    ink: str = GREY
    body: str = ""
    soft: str = "none"
    mark: str = ""
    weight: float = WEIGHT
    tile: str = ""
    tile_opacity: float = 1.0
    chosen: bool = False

    @property
    def solid(self):
        return self.body or self.ink

    @property
    def spot(self):
        return self.mark or self.ink


NORMAL = Look()
HOVER = Look(ink=ACCENT, soft=WHITE, tile=TILE)
PRESSED = Look(ink=WHITE, tile=ACCENT_PRESSED)
SELECTED = Look(ink=WHITE, tile=ACCENT, chosen=True)
DISABLE = Look(ink=DISABLED, body="none", weight=THIN)


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


def pixel(cx, cy, size, look, **more):
    """One event: a square with softened corners, never stroked."""
    return rect(cx - size / 2, cy - size / 2, size, size, size * 0.22, fill=more.get("fill", look.ink), stroke="none")


def polygon(*points):
    return "M" + "L".join(f"{number(x)} {number(y)}" for x, y in points) + "Z"


def drawing(look, shapes, width=24, height=24):
    """A whole SVG document: the look's tile, then the shapes inside the look's stroke."""
    lines = [f'<svg xmlns="http://www.w3.org/2000/svg" version="1.2" baseProfile="tiny" '
             f'width="{number(width)}" height="{number(height)}" viewBox="0 0 {number(width)} {number(height)}">']
    if look.tile:
        opacity = {} if look.tile_opacity == 1.0 else {"fill_opacity": look.tile_opacity}
        lines.append("  " + rect(1, 1, 22, 22, 4.5, fill=look.tile, **opacity))
    lines.append(f'  <g fill="none" stroke="{look.ink}" stroke-width="{number(look.weight)}" '
                 'stroke-linecap="round" stroke-linejoin="round">')
    lines += ["    " + shape for shape in shapes]
    lines += ["  </g>", "</svg>", ""]
    return "\n".join(lines)


# Glyphs: each takes a Look and gives shapes on the 24 x 24 grid, inside 5..19 so that the tile keeps a margin.

def play(look):
    return [path(polygon((8.5, 6), (18, 12), (8.5, 18)), fill=look.solid)]


def pause(look):
    return [rect(7, 6, 3, 12, 0.5, fill=look.solid), rect(14, 6, 3, 12, 0.5, fill=look.solid)]


def stop(look):
    return [rect(6.75, 6.75, 10.5, 10.5, 1, fill=look.solid)]


def forward(look):
    return [path(polygon((6.5, 6.5), (14, 12), (6.5, 17.5)), fill=look.solid), path("M17.75 6.25V17.75")]


def backward(look):
    return [path(polygon((17.5, 6.5), (10, 12), (17.5, 17.5)), fill=look.solid), path("M6.25 6.25V17.75")]


def loop(look):
    shapes = [
        path("M5 11.25V10.5C5 8.57 6.57 7 8.5 7H18.25"), path("M15.75 4.25L18.5 7L15.75 9.75"),
        path("M19 12.75V13.5C19 15.43 17.43 17 15.5 17H5.75"), path("M8.25 14.25L5.5 17L8.25 19.75"),
    ]
    if look.chosen:
        shapes.append(circle(12, 12, 2, fill=look.ink, stroke="none"))
    return shapes


def record(look):
    return [circle(12, 12, 7.25), circle(12, 12, 3.75, fill=look.spot, stroke="none")]


def recordOver(look):
    return [circle(12, 12, 7.25, fill=look.soft), circle(12, 12, 4.75, fill=look.spot, stroke="none")]


def recordRunning(look):
    return [circle(12, 12, 7.25), rect(8.9, 8.9, 6.2, 6.2, 1.2, fill=look.spot, stroke="none")]


def recordOff(look):
    return [circle(12, 12, 7.25), circle(12, 12, 3.25)]


def sliders(look):
    return [
        path("M5 7H12.25M17.75 7H19M5 12H6.25M11.75 12H19M5 17H11.25M16.75 17H19"),
        circle(15, 7, 2.25, fill=look.soft), circle(9, 12, 2.25, fill=look.soft),
        circle(14, 17, 2.25, fill=look.soft),
    ]


def gear(look):
    teeth, outer, inner = 8, 8.1, 6.2
    points = []
    for tooth in range(teeth):
        for offset, radius in ((-0.30, inner), (-0.17, outer), (0.17, outer), (0.30, inner)):
            angle = 2 * math.pi * (tooth + offset) / teeth - math.pi / 2
            points.append((12 + radius * math.cos(angle), 12 + radius * math.sin(angle)))
    return [path(polygon(*points), fill=look.soft), circle(12, 12, 2.5)]


def cameraFront(look):
    return [
        path("M6 8H8.4L9.4 6.2C9.6 5.8 10 5.5 10.5 5.5H13.5C14 5.5 14.4 5.8 14.6 6.2L15.6 8H18C19.1 8 20 8.9 20 10"
             "V16.5C20 17.6 19.1 18.5 18 18.5H6C4.9 18.5 4 17.6 4 16.5V10C4 8.9 4.9 8 6 8Z", fill=look.soft),
        circle(12, 13, 3),
    ]


def cameraSide(look):
    return [
        rect(3, 6.5, 12, 9.5, 2, fill=look.soft),
        path("M15 9.5L20.5 7.25V15.25L15 13Z", fill=look.soft),
        path("M9 16V19.5M5.75 19.5H12.25"),
        pixel(6.6, 13, 2.2, look), pixel(9.2, 11.2, 2.2, look), pixel(11.8, 9.4, 2.2, look),
    ]


def chip(look):
    return [
        path("M9.5 3.5V6M14.5 3.5V6M9.5 18V20.5M14.5 18V20.5M3.5 9.5H6M3.5 14.5H6M18 9.5H20.5M18 14.5H20.5"),
        rect(6, 6, 12, 12, 2, fill=look.soft),
    ]


def chipEvents(look):
    return chip(look) + [
        pixel(14.8, 9.2, 2.6, look), pixel(12, 12, 2.6, look), pixel(9.2, 14.8, 2.6, look),
        pixel(11.6, 8.9, 1.5, look), pixel(8.9, 11.6, 1.5, look),
    ]


def chipPicture(look):
    return chip(look) + [
        path("M7.6 15.6L10.6 12.2L12.4 14L13.8 12.6L16.4 15.6"), circle(14.3, 9.5, 1.15, fill=look.ink, stroke="none"),
    ]


def edge(look, rows, first, pitch, sizes):
    """A diagonal edge of `rows` large events, with the smaller and smaller ones that it left behind."""
    return [pixel(first + (rows - 1 - behind - row) * pitch, first + row * pitch, size, look)
            for behind, size in enumerate(sizes) for row in range(rows - behind)]


def events(look):
    return edge(look, 4, 6.6, 4, (3.5, 2.5, 1.6))


def picture(look):
    return [
        rect(4, 5.25, 16, 13.5, 2, fill=look.soft),
        path("M4.6 16.8L9.25 12L12.5 15.25L15 12.75L19.4 17"),
        circle(15, 9, 1.35, fill=look.ink, stroke="none"),
    ]


def fusion(look):
    return [
        path("M13.5 7.5H18.5C19.6 7.5 20.5 8.4 20.5 9.5V18C20.5 19.1 19.6 20 18.5 20H9.5C8.4 20 7.5 19.1 7.5 18V13.5"),
        path("M8 18.6L12 14.5L14.75 17.25L16.5 15.5L20 19"),
        circle(17, 11, 1.2, fill=look.ink, stroke="none"),
    ] + edge(look, 3, 4.4, 3.5, (3, 2.1, 1.4))


def cross(look, reach):
    low, high = 12 - reach, 12 + reach
    return [path(f"M{number(low)} {number(low)}L{number(high)} {number(high)}"
                 f"M{number(high)} {number(low)}L{number(low)} {number(high)}")]


def closeWindow(look):
    return cross(look, 5.5)


def closeToast(look):
    return cross(look, 4)


def minimise(look):
    return [path("M6.5 15.5H17.5")]


def maximise(look):
    return [rect(6.5, 6.5, 11, 11, 2)]


def minus(look):
    return [path("M6 12H18")]


def plus(look):
    return [path("M6 12H18M12 6V18")]


def chevronUp(look):
    return [path("M7 14.5L12 9.5L17 14.5")]


def chevronDown(look):
    return [path("M7 9.5L12 14.5L17 9.5")]


def search(look):
    return [circle(10.5, 10.5, 6), path("M15 15L20 20")]


def tick(look):
    return [circle(12, 12, 9.5, fill=look.mark, stroke="none"), path("M7.5 12.4L10.75 15.6L16.5 9")]


def warning(look):
    return [path("M12 4L21 19.5H3Z", fill=look.mark, stroke=look.mark, stroke_width=2.5),
            path("M12 9.25V13.5"), circle(12, 17, 1.25, fill=look.ink, stroke="none")]


def error(look):
    return [circle(12, 12, 9.5, fill=look.mark, stroke="none")] + cross(look, 3.6)


def switch(on):
    knob = 26 if on else 10
    shapes = [rect(0.75, 0.75, 34.5, 18.5, 9.25, fill=ACCENT if on else "#DFDFDF",
                   stroke=ACCENT if on else "#9A9A9A", stroke_width=1.5),
              circle(knob, 10, 6.25, fill=WHITE, stroke="none" if on else "#9A9A9A", stroke_width=1.5)]
    shapes.append(path("M9 10L11.5 12.5L16 7.5", stroke=WHITE) if on else path("M22.5 10H27.5", stroke="#7A7A7A"))
    return drawing(Look(), shapes, 36, 20)


def thumb():
    return drawing(Look(), [circle(4.5, 4.5, 4.5, fill=ACCENT, stroke="none"),
                            circle(4.5, 4.5, 1.4, fill=WHITE, stroke="none")], 9, 9)


def mark(ink, near, far, eye, scale=1.0, x=0.0, y=0.0):
    """The mark on a 64 x 64 grid: an angular K whose upper arm is a raven's head and whose back dissolves into
    events."""
    def shape(*points):
        return path(polygon(*((x + px * scale, y + py * scale) for px, py in points)), fill=ink)

    def square(px, py, size, fill):
        return rect(x + px * scale, y + py * scale, size * scale, size * scale, size * scale * 0.1, fill=fill)

    return [
        shape((19, 5), (29, 5), (29, 59), (19, 59)),
        shape((32, 31), (44, 5), (55, 5), (63, 16), (51.5, 16), (40, 35.5)),
        shape((32, 37), (38.5, 38), (61, 59), (47, 59), (32, 45)),
        square(48, 8.5, 4, eye),
        square(9.5, 5, 7, near), square(9.5, 21, 7, near), square(9.5, 37, 7, near),
        square(9.5, 52, 7, near),
        square(2, 14, 5, far), square(2, 30, 5, far), square(2, 46, 5, far),
    ]


def document(width, height, shapes):
    body = "\n".join("  " + shape for shape in shapes)
    return (f'<svg xmlns="http://www.w3.org/2000/svg" version="1.2" baseProfile="tiny" width="{number(width)}" '
            f'height="{number(height)}" viewBox="0 0 {number(width)} {number(height)}">\n{body}\n</svg>\n')


CLOSE_HOVER = Look(ink=DEEP_RED, tile=RED_TILE)
CLOSE_PRESSED = Look(ink=WHITE, tile=DEEP_RED)
TITLE = Look(ink=SOFT_GREY)
ON_ACCENT = Look(ink=WHITE)
ON_ACCENT_HOVER = Look(ink=WHITE, tile=WHITE, tile_opacity=0.25)
ON_ACCENT_PRESSED = Look(ink=ACCENT, tile=WHITE)


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
    add("btn_search.svg", search, NORMAL)

    family("btn_Nav_MinimizeWindow", minimise, normal=TITLE, Hover=HOVER, Pressed=PRESSED)
    family("btn_Nav_MaximizeWindow", maximise, normal=TITLE, Hover=HOVER, Pressed=PRESSED)
    family("btn_Nav_CloseWindow", closeWindow, normal=TITLE, Hover=CLOSE_HOVER, Pressed=CLOSE_PRESSED)
    family("btn_Nav_CloseWindow_White", closeWindow, normal=ON_ACCENT, Hover=ON_ACCENT_HOVER,
           Pressed=ON_ACCENT_PRESSED)

    family("btn_setting_minus", minus, normal=TITLE, pressed=SELECTED)
    family("btn_setting_plus", plus, normal=TITLE, pressed=SELECTED)
    files["btn_setting_thumbs.svg"] = thumb()
    files["btn_switch_enable.svg"] = switch(True)
    files["btn_switch_disable.svg"] = switch(False)
    add("bnt_arrow_up_Pressed.svg", chevronUp, Look(ink=ACCENT))
    add("bnt_arrow_down.svg", chevronDown, NORMAL)

    # Shown at 15 pixels: a heavier stroke, and dark where white would not stand out from the colour.
    add("icon_toasts_success.svg", tick, Look(ink=DARK_GREEN, mark=GREEN, weight=2.5))
    add("icon_toasts_warning.svg", warning, Look(ink=DARK_AMBER, mark=AMBER, weight=2.5))
    add("icon_toasts_error.svg", error, Look(ink=WHITE, mark=RED, weight=2.5))
    add("icon_toasts_close.svg", closeToast, TITLE)
    files["img_logo_Korvane.svg"] = document(64, 64, mark(ACCENT, ACCENT, "#6A9CB0", AMBER))
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
                      + mark(WHITE, WHITE, "#8FB9CA", AMBER, 3.1, 128 - 32.5 * 3.1, 128 - 32 * 3.1))
    splash = document(136, 150, mark(ACCENT, ACCENT, "#6A9CB0", AMBER, 1.62, 68 - 32.5 * 1.62, 58 - 32 * 1.62)
                      + wordmark(68, 124, 5))
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


if __name__ == "__main__":
    main()
