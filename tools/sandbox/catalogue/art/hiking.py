"""Cairnway, hiking maps: a trail between mountains, a cairn at sunrise, and a sheet of map."""

import math
import random

import cairo

from art.drawing import cloud, disc, ellipse, glow, polygon, rgb, ridge, rounded, slab, vertical


def pin(ctx, x, y, size, colour="#e8604f"):
    """A map pin whose tip is at x, y."""
    ellipse(ctx, x, y, 0.7 * size, 0.2 * size, "#14122e", 0.3)
    ctx.save()
    ctx.translate(x, y)
    ctx.scale(size, size)
    ctx.move_to(0, 0)
    ctx.curve_to(-0.12, -0.42, -0.52, -0.62, -0.52, -1.02)
    ctx.arc(0, -1.02, 0.52, math.pi, 2 * math.pi)
    ctx.curve_to(0.52, -0.62, 0.12, -0.42, 0, 0)
    ctx.restore()
    ctx.set_source_rgb(*rgb(colour))
    ctx.fill()
    disc(ctx, x, y - 1.02 * size, 0.23 * size, "#fffaf0")


def dashes(ctx, curve, width, colour):
    """A trail: move_to's and curve_to's arguments, as dashes with round ends."""
    ctx.save()
    ctx.set_line_cap(cairo.LINE_CAP_ROUND)
    ctx.set_dash([0.9 * width, 2.1 * width])
    ctx.set_line_width(width)
    ctx.set_source_rgb(*rgb(colour))
    ctx.move_to(*curve[0])
    for part in curve[1:]:
        ctx.curve_to(*part)
    ctx.stroke()
    ctx.restore()


def peak(ctx, x, base, width, height, light, dark, snow="#fff6ea"):
    """A mountain lit from the left, with snow."""

    def face(colour, *corners):
        polygon(ctx, [(x + across * width, base - up * height) for across, up in corners], colour)

    face(light, (0, 1), (0.5, 0), (-0.5, 0))
    face(dark, (0, 1), (0.5, 0), (0.06, 0), (-0.03, 0.45), (0.04, 0.7))
    face(snow, (0, 1), (0.135, 0.73), (0.075, 0.78), (0.03, 0.68), (-0.035, 0.76), (-0.075, 0.69), (-0.135, 0.73))


def icon(ctx):
    vertical(ctx, [(0, rgb("#2f7f93")), (0.5, rgb("#7fc8b4")), (0.72, rgb("#ffe2b0"))], 0, 512)
    ctx.paint()
    glow(ctx, 372, 170, 210, rgb("#fff6d5"), 0.9)
    disc(ctx, 372, 170, 52, "#fff6d5")
    peak(ctx, 356, 400, 380, 210, "#5f8fa3", "#4a7690")
    peak(ctx, 178, 420, 440, 300, "#3f6d8c", "#2d5273")
    ctx.set_source_rgb(*rgb("#2e7d5c"))
    ctx.move_to(0, 372)
    ctx.curve_to(120, 332, 260, 352, 512, 398)
    ctx.line_to(512, 512)
    ctx.line_to(0, 512)
    ctx.fill()
    ctx.set_source_rgb(*rgb("#1f5f4e"))
    ctx.move_to(0, 462)
    ctx.curve_to(140, 402, 330, 420, 512, 470)
    ctx.line_to(512, 512)
    ctx.line_to(0, 512)
    ctx.fill()
    dashes(ctx, ((64, 494), (150, 436, 270, 486, 300, 430), (318, 396, 246, 388, 268, 352)), 13, "#fff1dc")
    pin(ctx, 268, 346, 128)


def pines(ctx, count, base, size, colour, seed, left=0, right=1200):
    rng = random.Random(seed)
    for index in range(count):
        x = left + (right - left) * (index + rng.uniform(0.1, 0.9)) / count
        tall = size * rng.uniform(0.7, 1.25)
        y = base + rng.uniform(-6, 14)
        for tier in range(3):
            half, top = tall * (0.16 + 0.07 * tier), y - tall * (1 - 0.26 * tier)
            polygon(ctx, ((x, top), (x + half, top + 0.46 * tall), (x - half, top + 0.46 * tall)), colour)


def cairn(ctx, x, y):
    """Stones on stones; stands on y."""
    ellipse(ctx, x, y, 330, 34, "#14122e", 0.35)
    for dx, up, width, height, colour, shine in (
        (0, 42, 280, 88, "#4d4276", "#8a6c93"),
        (-10, 108, 220, 72, "#5b4c80", "#a47a98"),
        (12, 164, 168, 62, "#463c6c", "#8a6c93"),
        (-4, 212, 122, 52, "#63528a", "#b8879c"),
        (6, 252, 76, 40, "#4d4276", "#a47a98"),
    ):
        ctx.save()
        ctx.rectangle(x - 200, y - up - height, 400, 2 * height)
        ctx.clip()
        ellipse(ctx, x + dx, y - up, width, height, colour)
        ctx.save()
        ctx.translate(x + dx, y - up)
        ctx.scale(width / 2 - 12, height / 2 - 9)
        ctx.arc(0, 0, 1, 1.62 * math.pi, 1.95 * math.pi)
        ctx.restore()
        ctx.set_line_cap(cairo.LINE_CAP_ROUND)
        ctx.set_line_width(7)
        ctx.set_source_rgb(*rgb(shine))
        ctx.stroke()
        ctx.restore()


def sunrise(ctx):
    vertical(ctx, [(0, rgb("#3d3d87")), (0.35, rgb("#a3628f")), (0.6, rgb("#f08a6b")), (0.8, rgb("#ffd08a"))], 0, 520)
    ctx.paint()
    glow(ctx, 800, 330, 420, rgb("#fff0c4"), 0.85)
    disc(ctx, 800, 330, 62, "#fff6d5")
    for x, y, size, alpha in ((380, 110, 34, 0.32), (640, 150, 24, 0.26), (1110, 110, 38, 0.34)):
        cloud(ctx, x, y, size, rgb("#ffe3d2"), alpha)
    peak(ctx, 560, 470, 520, 250, "#c9788f", "#a8628c", "#ffe9d6")
    peak(ctx, 1010, 480, 600, 300, "#b96a8c", "#945688", "#ffe9d6")
    peak(ctx, 170, 480, 560, 320, "#b0658f", "#8a5088", "#ffe9d6")
    ridge(ctx, 1200, 0, 470, 90, (rgb("#7d4a86"), rgb("#9c5c8a")), 5)
    ctx.set_source_rgb(*rgb("#6a427f"))
    ctx.rectangle(0, 469, 1200, 160)
    ctx.fill()
    pines(ctx, 46, 490, 74, "#523a78", 2)
    vertical(ctx, [(0, rgb("#45357a")), (1, rgb("#2a2260"))], 470, 627)
    ctx.move_to(0, 500)
    ctx.curve_to(260, 460, 520, 540, 760, 512)
    ctx.curve_to(930, 490, 1060, 470, 1200, 492)
    ctx.line_to(1200, 627)
    ctx.line_to(0, 627)
    ctx.fill()
    dashes(ctx, ((420, 640), (520, 560, 700, 600, 770, 540), (820, 500, 700, 490, 760, 460), (800, 440, 860, 440, 880, 418)), 11, "#ffe2b0")
    pin(ctx, 882, 412, 74)
    pines(ctx, 9, 590, 120, "#231c55", 7, 860, 1200)
    cairn(ctx, 236, 590)


def height(x, y):
    """The lie of the land on the map: two hills, a spur and a little unrest."""
    hills = ((760, 190, 250, 190, 1.0), (240, 400, 190, 150, 0.72), (1080, 330, 210, 130, 0.34), (420, 90, 170, 110, 0.3))
    land = sum(top * math.exp(-(((x - at_x) / w) ** 2) - ((y - at_y) / h) ** 2) for at_x, at_y, w, h, top in hills)
    return land + 0.035 * math.sin(x / 71 + y / 90) + 0.03 * math.sin(y / 47 - x / 120)


def crossings(corners, level):
    """Where a line of equal height cuts the sides of a cell: pairs of points."""
    points = []
    for (x0, y0, h0), (x1, y1, h1) in zip(corners, corners[1:] + corners[:1]):
        if (h0 < level) != (h1 < level):
            at = (level - h0) / (h1 - h0)
            points.append((x0 + at * (x1 - x0), y0 + at * (y1 - y0)))
    return zip(points[::2], points[1::2])


def contours(ctx, colour, step=8, interval=0.07):
    land = {(x, y): height(x, y) for x in range(-step, 1200 + 2 * step, step) for y in range(-step, 627 + 2 * step, step)}
    ctx.set_line_cap(cairo.LINE_CAP_ROUND)
    for index in range(1, 15):
        for x, y in land:
            around = [(x, y), (x + step, y), (x + step, y + step), (x, y + step)]
            if all(corner in land for corner in around):
                for start, end in crossings([(*corner, land[corner]) for corner in around], index * interval):
                    ctx.move_to(*start)
                    ctx.line_to(*end)
        ctx.set_source_rgb(*rgb(colour[index % 4 == 0]))
        ctx.set_line_width(3.4 if index % 4 == 0 else 1.8)
        ctx.stroke()


def lake(ctx, x, y):
    ctx.move_to(x - 120, y)
    ctx.curve_to(x - 140, y - 70, x - 20, y - 84, x + 30, y - 60)
    ctx.curve_to(x + 90, y - 40, x + 150, y - 30, x + 130, y + 20)
    ctx.curve_to(x + 100, y + 74, x - 90, y + 72, x - 120, y)
    ctx.set_source_rgb(*rgb("#8fcbd3"))
    ctx.fill_preserve()
    ctx.set_source_rgb(*rgb("#2f7f93"))
    ctx.set_line_width(4)
    ctx.stroke()


def compass(ctx, x, y, size):
    disc(ctx, x, y + 5, size, "#3a2a55", 0.25)
    disc(ctx, x, y, size, "#fffaf0")
    ctx.set_source_rgb(*rgb("#2a1f57"))
    for tick in range(12):
        angle = tick * math.pi / 6
        inner = 0.8 if tick % 3 else 0.7
        ctx.set_line_width(0.05 * size)
        ctx.move_to(x + inner * size * math.cos(angle), y + inner * size * math.sin(angle))
        ctx.line_to(x + 0.9 * size * math.cos(angle), y + 0.9 * size * math.sin(angle))
    ctx.stroke()
    ctx.save()
    ctx.translate(x, y)
    ctx.rotate(0.45)
    polygon(ctx, ((0, -0.66 * size), (0.17 * size, 0), (-0.17 * size, 0)), "#e8604f")
    polygon(ctx, ((0, 0.66 * size), (0.17 * size, 0), (-0.17 * size, 0)), "#2a1f57")
    disc(ctx, 0, 0, 0.08 * size, "#ffd489")
    ctx.restore()


def map_sheet(ctx):
    vertical(ctx, [(0, rgb("#f3ead0")), (1, rgb("#e2e6bd"))], 0, 627)
    ctx.paint()
    for x, y, width, height in ((200, 520, 560, 300), (1010, 560, 520, 260), (90, 80, 380, 240)):
        ellipse(ctx, x, y, width, height, "#b9d6a0", 0.75)  # woods
    contours(ctx, ("#d8b78e", "#bf8656"))
    lake(ctx, 560, 540)
    ctx.set_line_cap(cairo.LINE_CAP_ROUND)
    ctx.set_source_rgb(*rgb("#2f7f93"))
    ctx.set_line_width(5)
    ctx.move_to(690, 545)
    ctx.curve_to(800, 560, 900, 470, 1010, 480)
    ctx.curve_to(1100, 488, 1150, 440, 1210, 430)
    ctx.stroke()
    route = ((130, 590), (200, 470, 330, 520, 380, 420), (420, 340, 560, 430, 610, 340), (650, 270, 690, 300, 760, 196))
    ctx.set_line_width(20)
    ctx.set_source_rgba(1, 0.99, 0.95, 0.9)
    ctx.move_to(*route[0])
    for part in route[1:]:
        ctx.curve_to(*part)
    ctx.stroke()
    dashes(ctx, route, 9, "#c73f3a")
    for x, y in ((130, 590), (380, 420), (610, 340)):
        disc(ctx, x, y, 15, "#fffaf0")
        disc(ctx, x, y, 9, "#2a1f57")
    pin(ctx, 760, 194, 96)
    compass(ctx, 1080, 120, 84)
    slab(ctx, 1000, 548, 176, 42, 21, "#2a1f57")  # a scale
    for index in range(4):
        slab(ctx, 1020 + 34 * index, 564, 34, 10, 0, "#ffd489" if index % 2 else "#fffaf0")
    rounded(ctx, 6, 6, 1188, 615, 0.1)
    ctx.set_source_rgba(*rgb("#b5764a"), 0.5)
    ctx.set_line_width(4)
    ctx.stroke()
