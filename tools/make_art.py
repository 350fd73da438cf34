#!/usr/bin/env python3
"""Draws the program's icons and logo.

    make_art.py [output directory] [--preview FILE.png]

The mark is a window that ends in a shield, crossed by the arrow of a weather vane. The tray animation shows the arrow
going through a pop-up window: it meets the window, has cut it, and the halves fall away.
"""

import argparse
import pathlib

from art_formats import bmp, flatten, gif, ico, png
from art_raster import Canvas, Path, disc, grown, polygon, rectangle, round_rectangle

TITLE = "#0F5F86"
BODY_LIGHT = "#1CA7A6"
BODY_DARK = "#148A8F"
ARROW = "#FFB020"
ARROW_DARK = "#F08A00"
POLE = "#FFFFFF"
LENS = "#D5F1F0"
WIZARD_TOP, WIZARD_BOTTOM = (255, 255, 255), (197, 231, 233)
POPUP_FRAME = "#D0344C"
POPUP_BODY = "#FFE9E4"
POPUP_BUTTON = "#FFFFFF"

APP_SIZES = (16, 20, 24, 32, 40, 48, 64, 128, 256)
TRAY_SIZES = (16, 20, 24, 32)  # of the lists' pictures too
LOGO_SIZES = (96, 120, 144, 192)
TRAY_FRAMES = 3
MASTER = 96
WIZARD_SIZE = (164, 314)  # of the picture that the installer's first and last page show
WIZARD_MARK = (128, 18, 93)  # size, left, top

PREVIEW_GROUNDS = ((255, 255, 255), (240, 240, 240), (96, 96, 96), (28, 28, 28))
PREVIEW_SCALES = (1, 4)
PREVIEW_WIDTH, PREVIEW_SPACE = 1400, 8

# The mark in pixels. Small sizes are set by hand so that every straight edge lies on a pixel edge; the master row is
# scaled for the rest.
#   shield: left, top, right, bottom, corner radius, bottom of the title bar, where the sides begin to curve
#   arrow:  left, right, middle, half of the shaft, head length, half of the head, fin length, half of the fin, notch
#   pole:   half of its width, top, bottom; radius of the ball on top (0: none)
#   gap:    the clear line between arrow and shield
#   dots:   radius, first centre, distance (radius 0: none)
MARK = {
    16: dict(shield=(2, 0, 14, 16, 1.5, 4, 8), arrow=(0, 16, 8, 1, 5, 4, 3, 3, 1.5), pole=(1, 8, 14, 0), gap=(0,),
             dots=(0, 0, 0)),
    20: dict(shield=(2, 0, 18, 20, 2, 5, 10), arrow=(0, 20, 10, 1, 6, 5, 4, 3, 1.5), pole=(1, 10, 17, 0), gap=(0,),
             dots=(0, 0, 0)),
    24: dict(shield=(3, 0, 21, 24, 2.5, 6, 12), arrow=(0, 24, 13, 1, 7, 5, 5, 4, 2), pole=(1, 13, 21, 0), gap=(1,),
             dots=(1, 6, 4)),
    32: dict(shield=(4, 0, 28, 32, 3, 8, 16), arrow=(0, 32, 17, 2, 9, 7, 6, 5, 3), pole=(1, 11, 28, 0), gap=(1,),
             dots=(1, 8, 4)),
    MASTER: dict(shield=(14, 2, 82, 95, 9, 24, 48), arrow=(1, 95, 51, 4, 25, 18, 18, 14, 8), pole=(3, 36, 84, 5),
                 gap=(3,), dots=(3.5, 25, 11)),
}
DOTS = 3

# The tray animation in pixels.
#   window: left, top, right, bottom, bottom of its title bar, thickness of its frame
#   button: left, top, right, bottom of the close button
#   start:  how far the arrow stands to the left in the first frame
#   fall:   how far the halves have moved apart in the last frame, to the side and up or down
POPUP = {
    16: dict(window=(2, 2, 15, 14, 5, 1), button=(12, 3, 14, 4), start=10, fall=(1, 2), gap=1),
    20: dict(window=(3, 3, 18, 17, 7, 1), button=(14, 4, 16, 6), start=13, fall=(2, 3), gap=1),
    24: dict(window=(3, 3, 22, 21, 8, 1), button=(17, 4, 20, 7), start=16, fall=(2, 3), gap=1),
    32: dict(window=(4, 5, 29, 27, 11, 2), button=(24, 7, 26, 9), start=22, fall=(3, 4), gap=1),
}
FALLING = 0.55  # opacity of the halves in the last frame


def measures(size):
    if size in MARK:
        return MARK[size]
    factor = size / MASTER
    return {name: tuple(int(value * factor + 0.5) if name in ("shield", "arrow") else value * factor
                        for value in values) for name, values in MARK[MASTER].items()}


def shield_path(left, top, right, bottom, radius, shoulder):
    k = radius * 0.45
    middle = (left + right) / 2
    rise = bottom - shoulder
    path = Path().move(left, top + radius).curve(left, top + k, left + k, top, left + radius, top)
    path.line(right - radius, top).curve(right - k, top, right, top + k, right, top + radius)
    path.line(right, shoulder)
    path.curve(right, shoulder + rise * 0.48, middle + (right - middle) * 0.55, bottom - rise * 0.2, middle, bottom)
    path.curve(middle - (right - middle) * 0.55, bottom - rise * 0.2, left, shoulder + rise * 0.48, left, shoulder)
    return path


def arrow_path(left, right, middle, shaft, head, head_half, fin, fin_half, notch):
    upper = [(left, middle - fin_half), (left + fin - shaft, middle - fin_half), (left + fin + shaft, middle - shaft),
             (right - head, middle - shaft), (right - head, middle - head_half), (right, middle)]
    lower = [(x, 2 * middle - y) for x, y in reversed(upper[:-1])]
    return polygon(*upper, *lower, (left + notch, middle))


def paint_arrow(canvas, arrow, gap):
    path = arrow_path(*arrow)
    if gap:
        canvas.erase(grown(path, gap))
    canvas.fill(path, ARROW)
    middle = arrow[2]
    shade = Canvas(canvas.width, canvas.height).fill(path, ARROW_DARK)
    shade.erase(rectangle(-1, -1, canvas.width + 1, middle))
    canvas.draw(shade)


def mark(size):
    m = measures(size)
    left, top, right, bottom, radius, title, shoulder = m["shield"]
    middle = (left + right) / 2
    canvas = Canvas(size, size)
    canvas.fill(shield_path(left, top, right, bottom, radius, shoulder), BODY_LIGHT)
    canvas.fill(rectangle(middle, title, size, size), BODY_DARK, inside=True)
    canvas.fill(rectangle(0, 0, size, title), TITLE, inside=True)
    dot, first, distance = m["dots"]
    for number in range(DOTS):
        canvas.fill(disc(first + number * distance, (top + title) / 2, dot), POLE, inside=True)
    half, pole_top, pole_bottom, ball = m["pole"]
    canvas.fill(round_rectangle(middle - half, pole_top, middle + half, pole_bottom, half), POLE)
    if ball:
        canvas.fill(disc(middle, pole_top, ball), POLE)
    paint_arrow(canvas, m["arrow"], m["gap"][0])
    return canvas.rgba()


def popup(size):
    left, top, right, bottom, title, frame = POPUP[size]["window"]
    canvas = Canvas(size, size)
    canvas.fill(rectangle(left, top, right, bottom), POPUP_FRAME)
    canvas.fill(rectangle(left + frame, title, right - frame, bottom - frame), POPUP_BODY)
    canvas.fill(rectangle(*POPUP[size]["button"]), POPUP_BUTTON)
    return canvas


def tray_frame(size, number):
    p = POPUP[size]
    canvas = popup(size)
    left, right, _, *shape = MARK[size]["arrow"]
    shift = p["start"] if number == 0 else 0
    if number == 2:
        whole, canvas = canvas, Canvas(size, size)
        side, rise = p["fall"]
        canvas.draw(whole.part(0, size // 2, side, -rise), FALLING)
        canvas.draw(whole.part(size // 2, size, -side, rise), FALLING)
    paint_arrow(canvas, (left - shift, right - shift, size / 2, *shape), p["gap"])
    return canvas.rgba()


# The pictures of the lists, in sixteenths of their size.

def list_banner(size):
    unit = size / 16
    at = lambda *edges: rectangle(*(int(edge * unit + 0.5) for edge in edges))
    canvas = Canvas(size, size)
    canvas.fill(at(0, 3, 16, 13), TITLE)
    canvas.fill(at(1, 4, 15, 12), POLE)
    canvas.fill(at(2, 5, 6, 11), ARROW)
    canvas.fill(at(7, 6, 14, 7), BODY_LIGHT)
    canvas.fill(at(7, 9, 12, 10), BODY_LIGHT)
    return canvas.rgba()


def list_search(size):
    unit = size / 16
    middle = 6.5 * unit
    canvas = Canvas(size, size)
    canvas.fill(polygon(*((x * unit, y * unit) for x, y in ((9, 11), (11, 9), (16, 14), (14, 16)))), ARROW_DARK)
    canvas.fill(disc(middle, middle, 6.5 * unit), TITLE)
    canvas.erase(disc(middle, middle, 4.5 * unit))
    canvas.fill(disc(middle, middle, 4.5 * unit), LENS)
    return canvas.rgba()


def wizard():
    """The mark on a ground that grows darker downwards."""
    width, height = WIZARD_SIZE
    size, left, top = WIZARD_MARK
    rows = []
    for y in range(height):
        ground = tuple(a + (b - a) * y // (height - 1) for a, b in zip(WIZARD_TOP, WIZARD_BOTTOM))
        rows.append([ground] * width)
    for y, line in enumerate(mark(size)):
        for x, (*colour, a) in enumerate(line):
            ground = rows[top + y][left + x]
            rows[top + y][left + x] = tuple((c * a + g * (255 - a) + 127) // 255 for c, g in zip(colour, ground))
    return rows


def opaque_edges(rows):
    """What is left of the picture in a GIF."""
    return [[(0, 0, 0, 0) if colour is None else colour + (255,) for colour in row] for row in flatten(rows)]


def over(rows, ground, scale):
    """The picture on an opaque ground, each pixel `scale` wide and high."""
    result = []
    for row in rows:
        line = []
        for *colour, a in row:
            line.extend([tuple((c * a + g * (255 - a) + 127) // 255 for c, g in zip(colour, ground)) + (255,)] * scale)
        result.extend([line] * scale)
    return result


def shelves(pictures, ground):
    """The pictures side by side, as many to a shelf as fit the preview's width."""
    blank = ground + (255,)
    shelf, result = [], []
    for picture in pictures + [None]:
        used = sum(len(rows[0]) + PREVIEW_SPACE for rows in shelf)
        if picture is None or used + len(picture[0]) + PREVIEW_SPACE > PREVIEW_WIDTH:
            for y in range(max(len(rows) for rows in shelf) + PREVIEW_SPACE):
                line = []
                for rows in shelf:
                    line.extend((rows[y] if y < len(rows) else [blank] * len(rows[0])) + [blank] * PREVIEW_SPACE)
                result.append(line + [blank] * (PREVIEW_WIDTH - len(line)))
            shelf = []
        if picture is not None:
            shelf.append(picture)
    return result


def preview(pictures):
    lines = []
    for ground in PREVIEW_GROUNDS:
        for scale in PREVIEW_SCALES:
            fitting = [rows for rows in pictures if len(rows) * scale <= 256]
            lines.extend(shelves([over(rows, ground, scale) for rows in fitting], ground))
    return lines


def main():
    parser = argparse.ArgumentParser(description="Draws the program's icons and logo.")
    parser.add_argument("directory", nargs="?", type=pathlib.Path,
                        default=pathlib.Path(__file__).resolve().parent.parent / "app" / "res")
    parser.add_argument("--preview", type=pathlib.Path, metavar="FILE.png")
    arguments = parser.parse_args()

    icons = {"calvane.ico": [mark(size) for size in APP_SIZES], "tray_rest.ico": [mark(size) for size in TRAY_SIZES]}
    for name, draw in (("list_banner.ico", list_banner), ("list_search.ico", list_search)):
        icons[name] = [draw(size) for size in TRAY_SIZES]
    for number in range(TRAY_FRAMES):
        icons[f"tray_{number}.ico"] = [tray_frame(size, number) for size in TRAY_SIZES]
    logos = {f"logo_{size}.gif": mark(size) for size in LOGO_SIZES}

    arguments.directory.mkdir(parents=True, exist_ok=True)
    for name, pictures in icons.items():
        (arguments.directory / name).write_bytes(ico(pictures))
    for name, picture in logos.items():
        (arguments.directory / name).write_bytes(gif(picture))
    (arguments.directory / "wizard.bmp").write_bytes(bmp(wizard()))
    if arguments.preview:
        shown = icons["calvane.ico"] + [rows for size in range(len(TRAY_SIZES)) for name, pictures in icons.items()
                                        if name != "calvane.ico" for rows in [pictures[size]]]
        arguments.preview.write_bytes(png(preview(shown + [opaque_edges(logo) for logo in logos.values()])))


if __name__ == "__main__":
    main()
