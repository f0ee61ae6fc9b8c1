"""Orbit Courier, a game: a rocket that carries parcels from planet to planet."""

import math
import random

import cairo

from art.drawing import disc, ellipse, glow, polygon, rgb, rounded, slab, star, starfield, vertical


def space(ctx, width, height, t=0.0):
    vertical(ctx, [(0, rgb("#14123f")), (0.55, rgb("#2b2c6b")), (1, rgb("#6d3f88"))], 0, height)
    ctx.paint()
    starfield(ctx, width, height, 130, 12, t)


def ring(ctx, radius, front):
    """One half of a planet's ring, behind or in front of it."""
    ctx.save()
    ctx.rotate(-0.32)
    ctx.scale(1, 0.26)
    ctx.new_sub_path()
    ctx.arc(0, 0, 1.62 * radius, 0 if front else math.pi, math.pi if front else 2 * math.pi)
    ctx.restore()
    ctx.set_line_width(0.17 * radius)
    ctx.set_source_rgb(*rgb("#ffd489"))
    ctx.stroke_preserve()
    ctx.set_line_width(0.05 * radius)
    ctx.set_source_rgb(*rgb("#e8924a"))
    ctx.stroke()


def planet(ctx, x, y, radius, colours, ringed=False, seed=1):
    """Lit from the upper left; bands of its second colour, shade of its third."""
    ctx.save()
    ctx.translate(x, y)
    if ringed:
        ring(ctx, radius, False)
    glow(ctx, 0, 0, 1.5 * radius, rgb(colours[0]), 0.3)
    ctx.save()
    ctx.arc(0, 0, radius, 0, 2 * math.pi)
    ctx.clip()
    ctx.set_source_rgb(*rgb(colours[0]))
    ctx.paint()
    rng = random.Random(seed)
    ctx.rotate(-0.32)
    for _ in range(5):
        at, wide = rng.uniform(-0.8, 0.8) * radius, rng.uniform(0.5, 1.5) * radius
        slab(ctx, rng.uniform(-1, 0.3) * radius, at, wide, 0.13 * radius, 0.065 * radius, colours[1])
    ctx.rotate(0.32)
    ctx.set_source_rgba(*rgb(colours[2]), 0.55)  # night
    ctx.set_fill_rule(cairo.FILL_RULE_EVEN_ODD)
    ctx.arc(0, 0, 1.1 * radius, 0, 2 * math.pi)
    ctx.new_sub_path()
    ctx.arc(-0.34 * radius, -0.3 * radius, 1.12 * radius, 0, 2 * math.pi)
    ctx.fill()
    ctx.restore()
    if ringed:
        ring(ctx, radius, True)
    ctx.restore()


def parcel(ctx, size):
    """Around the origin, with a ribbon."""
    slab(ctx, -size / 2, -size / 2, size, size, 0.1 * size, "#d99a5b")
    polygon(ctx, ((size / 2, -0.4 * size), (size / 2, 0.4 * size), (0.3 * size, size / 2), (0.3 * size, -size / 2)), "#b5743f")
    slab(ctx, -0.09 * size, -size / 2, 0.18 * size, size, 0, "#e8604f")
    slab(ctx, -size / 2, -0.09 * size, size, 0.18 * size, 0, "#e8604f")
    for side in (-1, 1):
        ctx.save()
        ctx.translate(side * 0.15 * size, -0.6 * size)
        ctx.rotate(side * 0.5)
        ellipse(ctx, 0, 0, 0.32 * size, 0.2 * size, "#c73f3a")
        ctx.restore()


def flame(ctx, t, length):
    for colour, part in (("#e8604f", 1), ("#ffb347", 0.72), ("#fff6d5", 0.42)):
        reach = -96 - length * part * (1 + 0.12 * math.sin(31 * t + 4 * part))
        ctx.set_source_rgb(*rgb(colour))
        ctx.move_to(-84, -26 * part - 4)
        ctx.curve_to(-110, -34 * part, reach * 0.8, -16 * part, reach, 0)
        ctx.curve_to(reach * 0.8, 16 * part, -110, 34 * part, -84, 26 * part + 4)
        ctx.fill()


def rocket(ctx, x, y, scale, angle, t=0.0, thrust=90):
    """Flies to the right when the angle is 0; 210 long without its flame."""
    ctx.save()
    ctx.translate(x, y)
    ctx.rotate(angle)
    ctx.scale(scale, scale)
    flame(ctx, t, thrust)
    for side in (-1, 1):  # fins
        ctx.set_source_rgb(*rgb("#c73f3a" if side < 0 else "#99304a"))
        ctx.move_to(-28, side * 40)
        ctx.curve_to(-56, side * 62, -84, side * 84, -116, side * 88)
        ctx.curve_to(-108, side * 62, -98, side * 44, -82, side * 26)
        ctx.fill()
    slab(ctx, -98, -26, 22, 52, 6, "#4a4792")
    ctx.move_to(116, 0)
    ctx.curve_to(84, -44, 30, -58, -24, -52)
    ctx.curve_to(-56, -48, -76, -40, -86, -30)
    ctx.line_to(-86, 30)
    ctx.curve_to(-76, 40, -56, 48, -24, 52)
    ctx.curve_to(30, 58, 84, 44, 116, 0)
    ctx.close_path()
    ctx.save()
    ctx.clip()
    vertical(ctx, [(0, rgb("#fffaf0")), (0.55, rgb("#ffe9d2")), (1, rgb("#d9a9a6"))], -56, 56)
    ctx.paint()
    ctx.set_source_rgb(*rgb("#e8604f"))
    ctx.move_to(72, -60)
    ctx.curve_to(60, -30, 60, 30, 72, 60)
    ctx.line_to(130, 60)
    ctx.line_to(130, -60)
    ctx.fill()
    slab(ctx, -66, -60, 14, 120, 0, "#2f7f93")
    ctx.restore()
    disc(ctx, 24, -4, 29, "#2f7f93")
    disc(ctx, 24, -4, 21, "#1d1950")
    disc(ctx, 24, -4, 21, "#8fd0e0", 0.55)
    disc(ctx, 17, -12, 6, "#ffffff", 0.9)
    ctx.restore()


def icon(ctx):
    rounded(ctx, 0, 0, 512, 512, 112)
    ctx.clip()
    space(ctx, 512, 512)
    glow(ctx, 170, 380, 330, rgb("#ffb876"), 0.4)
    planet(ctx, 150, 392, 128, ("#f08a6b", "#ffb876", "#5b1f57"), True)
    rocket(ctx, 318, 186, 1.2, -0.72)


def canopy(ctx, size):
    ctx.set_source_rgba(*rgb("#fff1dc"), 0.9)
    ctx.set_line_width(0.045 * size)
    for at in (-0.94, -0.34, 0.34, 0.94):
        ctx.move_to(at * size, -1.8 * size)
        ctx.line_to(0, -0.55 * size)
    ctx.stroke()
    ctx.save()
    ctx.translate(0, -1.8 * size)
    ctx.move_to(-0.98 * size, 0)
    ctx.arc(0, 0, 0.98 * size, math.pi, 2 * math.pi)
    for index in range(3):  # scallops, from right to left
        ctx.arc_negative((0.653 - 0.653 * index) * size, 0, 0.327 * size, 0, math.pi)
    ctx.close_path()
    ctx.clip()
    ctx.set_source_rgb(*rgb("#fff1dc"))
    ctx.paint()
    for left, right in ((-1, -0.327), (0.327, 1)):
        ctx.move_to(0, -size)
        ctx.curve_to(left * 0.6 * size, -0.9 * size, left * size, -0.5 * size, left * size, 0.1 * size)
        ctx.line_to(right * size, 0.1 * size)
        ctx.curve_to(right * size, -0.5 * size, right * 0.6 * size, -0.9 * size, 0, -size)
        ctx.set_source_rgb(*rgb("#e8604f"))
        ctx.fill()
    ctx.restore()


def parachute(ctx, x, y, size, sway=0.0, opened=1.0):
    """A parcel under a striped canopy that is more or less open; the parcel's middle is at x, y."""
    ctx.save()
    ctx.translate(x, y)
    ctx.rotate(sway)
    if opened > 0.05:
        ctx.save()
        ctx.translate(0, -0.5 * size)
        ctx.scale(opened, opened)
        ctx.translate(0, 0.5 * size)
        canopy(ctx, size)
        ctx.restore()
    parcel(ctx, size)
    ctx.restore()


def houses(ctx, x, y, radius, spread=0.5):
    """A village on top of a planet."""
    for index, (wall, roof) in enumerate((("#fff1dc", "#e8604f"), ("#ffe2c0", "#2f7f93"), ("#fff1dc", "#7d4790"), ("#ffe2c0", "#e8924a"))):
        ctx.save()
        ctx.translate(x, y)
        ctx.rotate(spread * (index - 1.5) * 0.62)
        ctx.translate(0, -radius + 3)
        size = 0.2 * radius * (1, 1.25, 1.1, 0.95)[index]
        slab(ctx, -size / 2, -0.9 * size, size, size, 0, wall)
        polygon(ctx, ((-0.66 * size, -0.88 * size), (0, -1.5 * size), (0.66 * size, -0.88 * size)), roof)
        slab(ctx, -0.14 * size, -0.6 * size, 0.28 * size, 0.32 * size, 0, "#ffc94d")
        ctx.restore()


def image(ctx):
    space(ctx, 1200, 627)
    glow(ctx, 950, 560, 520, rgb("#f08a6b"), 0.4)
    planet(ctx, 206, 146, 84, ("#ffd08a", "#ffe9b8", "#8a3f6b"), True, 4)
    planet(ctx, 985, 110, 40, ("#8fd0c0", "#b9e6d6", "#2a3f7a"), False, 8)
    planet(ctx, 900, 690, 300, ("#e8708a", "#f29a9a", "#4a1f66"), False, 2)
    houses(ctx, 900, 690, 300, 0.42)
    planet(ctx, 120, 620, 150, ("#54509a", "#6d6ab8", "#14123f"), False, 6)
    ctx.set_line_cap(cairo.LINE_CAP_ROUND)
    ctx.set_dash([3, 22])
    ctx.set_line_width(7)
    ctx.set_source_rgba(*rgb("#ffd489"), 0.8)
    ctx.move_to(150, 470)
    ctx.curve_to(220, 420, 300, 380, 392, 350)
    ctx.stroke()
    ctx.set_dash([])
    rocket(ctx, 560, 280, 1.5, -0.3, thrust=100)
    parachute(ctx, 1010, 300, 50, 0.12)
    parachute(ctx, 812, 214, 34, -0.14)
    ctx.set_source_rgb(*rgb("#ffc94d"))
    for x, y, size in ((700, 90, 20), (420, 120, 13), (330, 500, 15)):
        star(ctx, x, y, size)
    ctx.fill()
