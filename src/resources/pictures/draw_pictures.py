#!/usr/bin/env -S python3 -B
"""Draws the pictures of the guided homing dialogs as SVG, all from one machine description.

Machine axes, seen by the operator: x to the right, y to the back, z up, in millimetres.
Usage: draw_pictures.py [folder]   (default: the folder of this script)
"""

import math
import pathlib
import sys

from projected_sheet import TO_EYE, Sheet, along, dot, spoke

# Colours of a material: top, front and right face.
PAINT = ("#dfe5ea", "#c3ccd4", "#a3afba")
BODY = ("#8c9aa8", "#75848f", "#5d6b78")
GRANITE = ("#b9bec3", "#989ea5", "#7c838b")
STEEL = ("#f1f3f5", "#d3d8dd", "#b3bac1")
RAIL = ("#ffffff", "#9aa3ac", "#7d8790")
GLASS = "#d5e8f1"
RED = ("#e02020", "#9c1010", "#b51616")
GREY_KNOB = ("#6d7882", "#e9edf0", "#aab3bb")
ACTIVE_KNOB = ("#1d4f7c", "#a9d1f0", "#4f93c8")
ACTIVE = ("#b5d5ee", "#8dbbdf", "#6a9ec7")

TABLE = 84         # half the side of the square table
TABLE_TOP = 104
KNOB_RADIUS = 27
KNOB_LENGTH = 38
X_KNOB = ((1, 0, 0), (172, 0, 80))    # axis and centre of the inner end, carriage in the middle
Y_KNOB = ((0, -1, 0), (114, -144, 66))


def draw_base(sheet):
    sheet.group("base")
    for x, y in ((-125, -100), (125, -100), (125, 140)):
        sheet.cylinder((x, y, -4), (0, 0, 1), 12, 15, ("#3d4751", "#77828c", "#3d4751"))
    sheet.box((-144, 144), (-118, 164), (6, 34), BODY)
    sheet.box((-150, 150), (-124, 170), (34, 58), GRANITE)


def draw_column(sheet):
    sheet.group("column")
    sheet.box((-40, 40), (120, 164), (58, 226), PAINT)
    sheet.path([(-17, 120, 60), (17, 120, 60), (17, 120, 210), (-17, 120, 210)], "#6d7a86", "thin")
    for x in (-10, 10):
        sheet.path([(x - 3, 120, 60), (x + 3, 120, 60), (x + 3, 120, 210), (x - 3, 120, 210)],
                   STEEL[0], "thin")


def draw_stage(sheet, dx, dy, ghost):
    sheet.group("stage")
    sheet.box((-122, 122), (-108, 108), (58, 66), STEEL)
    for x in (-96, 96):
        sheet.box((x - 7, x + 7), (-104, 104), (66, 72), RAIL, "thin")
    sheet.box((-128, 128), (dy - 66, dy + 66), (72, 84), PAINT)
    for y in (dy - 50, dy + 50):
        sheet.box((-124, 124), (y - 6, y + 6), (84, 90), RAIL, "thin")
    sheet.group("table")
    if ghost:
        x, y = ghost
        sheet.plate((x - TABLE, x + TABLE), (y - TABLE, y + TABLE), TABLE_TOP, "none", "ghost")
    sheet.box((dx - TABLE, dx + TABLE), (dy - TABLE, dy + TABLE), (90, TABLE_TOP), STEEL)
    sheet.plate((dx - 62, dx + 62), (dy - 62, dy + 62), TABLE_TOP, "#aebac4", "thin")
    sheet.plate((dx - 58, dx + 58), (dy - 58, dy + 58), TABLE_TOP, GLASS, "thin")
    for x in (-73, 73):
        for y in (-73, -25, 25, 73):
            sheet.disc((dx + x, dy + y, TABLE_TOP), (0, 0, 1), 3, "#8793a0", "thin")


def draw_head(sheet, dz, active):
    sheet.group("head")
    up = (0, 0, 1)
    dark = ("#4a5560", "#aeb8c1", "#66727d")
    sheet.cylinder((0, 42, dz + 143), up, 8, 25, ("#55606b", "#dce2e7", "#8a96a1"))
    sheet.cylinder((0, 42, dz + 151), up, 21, 17, dark)
    sheet.box((-34, 34), (106, 120), (dz + 160, dz + 216), ACTIVE if active else BODY)
    sheet.box((-26, 26), (18, 106), (dz + 172, dz + 206), ACTIVE if active else PAINT)
    sheet.cylinder((0, 42, dz + 206), up, 24, 15, dark)


def draw_knob(sheet, name, knob, shaft, active, ribbon=None):
    sheet.group(f"knob-{name}")
    axis, place = knob
    sheet.cylinder(along(place, axis, -shaft), axis, shaft, 6, ("#8a949d", "#ffffff", "#aab3bb"))
    if ribbon:
        draw_ribbon(sheet, knob, ribbon, False)
    colours = ACTIVE_KNOB if active else GREY_KNOB
    sheet.cylinder(place, axis, KNOB_LENGTH, KNOB_RADIUS, colours, 36)
    sheet.disc(along(place, axis, KNOB_LENGTH), axis, KNOB_RADIUS * .72, colours[1], "thin")
    if ribbon:
        draw_ribbon(sheet, knob, ribbon, True)


def draw_ribbon(sheet, knob, turn, front):
    """The curved arrow around a knob; `turn` is +1 for clockwise, -1 for the other way.

    Around the X knob, seen from the side, it is a sleeve; around the Y knob, seen from its end,
    a flat ring before the end.
    """
    axis, place = knob
    flat = axis == Y_KNOB[0]
    middle = 0 if flat else math.atan2(dot(spoke(axis, math.pi / 2), TO_EYE),
                                         dot(spoke(axis, 0), TO_EYE))

    def at(degrees, offset):
        arm = spoke(axis, middle + turn * math.radians(degrees))
        if flat:
            return along(along(place, axis, KNOB_LENGTH), arm, KNOB_RADIUS + 14 + offset)
        return along(along(place, axis, KNOB_LENGTH / 2 + offset), arm, KNOB_RADIUS + 10)

    hidden, bend, neck, tip = (None, -108, 62, 110) if flat else (-150, -90, 22, 84)
    if front:
        head = [at(neck + (tip - neck) * t / 8, 18 * (1 - t / 8)) for t in range(9)]
        head += [at(neck + (tip - neck) * t / 8, 18 * (t / 8 - 1)) for t in range(8, -1, -1)]
        shaft = [*range(bend, neck, 4), neck]
        outline = [at(d, 7) for d in shaft] + head + [at(d, -7) for d in reversed(shaft)]
        sheet.path(outline, RED[0], "arrow")
    elif hidden:
        shaft = range(hidden, bend + 4, 4)
        outline = [at(d, 7) for d in shaft] + [at(d, -7) for d in reversed(shaft)]
        sheet.path(outline, RED[1], "arrow")


def flat_shape(start, forward, sideways, places):
    return [along(along(start, forward, f), sideways, s) for f, s in places]


def broad_arrow(begin, end, shaft, head):
    """Outline of an arrow as (forward, sideways); `shaft` and `head` are half widths."""
    neck = end - 1.2 * head
    return [(begin, -shaft), (neck, -shaft), (neck, -head), (end, 0), (neck, head), (neck, shaft),
            (begin, shaft)]


def bar(begin, end, half_width):
    return [(begin, -half_width), (end, -half_width), (end, half_width), (begin, half_width)]


LETTERS = {"X": ((0, 0), (8, 11), None, (8, 0), (0, 11)),
           "Y": ((0, 0), (4, 5), (8, 0), None, (4, 5), (4, 11))}


def draw_letter(sheet, letter, x, y):
    strokes, join = [], "M"
    for place in LETTERS[letter]:
        if place:
            strokes.append(f"{join}{x + place[0]},{y + place[1]}")
        join = "L" if place else "M"
    sheet.elements.append(f'    <path class="letter" d="{" ".join(strokes)}"/>')


def draw_machine(sheet, dx=0, dy=0, dz=0, ghost=None, turn_x=None, turn_y=None):
    draw_base(sheet)
    draw_column(sheet)
    x_knob = (X_KNOB[0], along(X_KNOB[1], (0, 1, 0), dy))
    draw_stage(sheet, dx, dy, ghost)
    draw_knob(sheet, "x", x_knob, 44, turn_x, turn_x)
    draw_knob(sheet, "y", Y_KNOB, 38, turn_y, turn_y)
    draw_head(sheet, dz, dz < 0)
    sheet.group("labels")
    x, y = sheet.project(along(x_knob[1], (1, 0, 0), KNOB_LENGTH))
    draw_letter(sheet, "X", round(x) + 22, round(y) - 6)
    x, y = sheet.project(along(Y_KNOB[1], (0, -1, 0), KNOB_LENGTH))
    draw_letter(sheet, "Y", round(x) - 42, round(y) + 17)


def draw_table_arrow(sheet, start, forward, to_limit):
    """An arrow against a bar means as far as it goes, one with a broken tail means slowly."""
    sheet.group("arrow")
    if to_limit:
        parts = [broad_arrow(0, 136, 22, 46), bar(142, 154, 46)]
    else:
        parts = [bar(0, 14, 22), bar(27, 41, 22), broad_arrow(54, 150, 22, 46)]
    sideways = (-forward[1], forward[0], 0)
    shapes = [flat_shape(start, forward, sideways, part) for part in parts]
    for shape in sorted(shapes, key=lambda points: dot(points[0], TO_EYE)):
        sheet.prism(shape, (0, 0, 6), RED, "arrow")


def table_picture(file, place, ghost, forward, tail, to_limit, turn_x=None, turn_y=None):
    sheet = Sheet(450, 320, .8, (205, 230))
    draw_machine(sheet, *place, 0, ghost, turn_x, turn_y)
    draw_table_arrow(sheet, along((*place, TABLE_TOP), forward, -tail), forward, to_limit)
    sheet.save(file)


def column_picture(file):
    sheet = Sheet(450, 350, .88, (205, 251))
    draw_machine(sheet, dz=-24)
    sheet.group("arrow")
    shape = flat_shape((90, 120, 84), (0, 0, 1), (1, 0, 0), broad_arrow(0, 160, 18, 38))
    sheet.prism(shape, (0, -7, 0), RED, "arrow")
    sheet.save(file)


def main():
    folder = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parent)
    # As on machine tools, turning a knob clockwise moves the table away from that knob.
    table_picture(folder / "118_table_left.svg", (-34, 0), (0, 0), (-1, 0, 0), 36, True, turn_x=1)
    table_picture(folder / "119_table_right.svg", (0, 0), (-34, 0), (1, 0, 0), 52, False, turn_x=-1)
    table_picture(folder / "120_table_front.svg", (0, -32), (0, 0), (0, -1, 0), 36, True, turn_y=-1)
    table_picture(folder / "121_table_back.svg", (0, 0), (0, -32), (0, 1, 0), 84, False, turn_y=1)
    column_picture(folder / "122_column_up.svg")


if __name__ == "__main__":
    main()
