"""Lanternwave, a podcast player: a lantern that sends waves, and a town that is an equaliser."""

import math
import random

import cairo

from art.drawing import disc, ellipse, glow, polygon, rgb, rounded, slab, starfield, vertical


def lantern(ctx, x, y, size):
    """Around x, y; half as high as `size` to each side."""
    ctx.save()
    ctx.translate(x, y)
    ctx.scale(size / 200, size / 200)
    ctx.set_source_rgb(*rgb("#fff1dc"))
    ctx.set_line_width(11)
    ctx.arc(0, -78, 34, math.pi, 2 * math.pi)
    ctx.stroke()
    polygon(ctx, ((-36, -82), (36, -82), (58, -52), (-58, -52)), "#e8604f")
    ctx.save()
    rounded(ctx, -50, -52, 100, 112, 18)
    ctx.clip()
    vertical(ctx, [(0, rgb("#ffe9b0")), (1, rgb("#ffb347"))], -52, 60)
    ctx.paint()
    glow(ctx, 0, 8, 70, rgb("#ffffff"), 0.95)
    ctx.restore()
    ctx.move_to(-17, -27)  # the flame says "play"
    ctx.line_to(31, 4)
    ctx.line_to(-17, 35)
    ctx.close_path()
    ctx.set_line_join(cairo.LINE_JOIN_ROUND)
    ctx.set_line_width(12)
    ctx.set_source_rgb(*rgb("#c73f3a"))
    ctx.stroke_preserve()
    ctx.fill()
    slab(ctx, -60, 56, 120, 22, 10, "#e8604f")
    slab(ctx, -44, 76, 88, 16, 8, "#b13a4c")
    ctx.restore()


def waves(ctx, x, y, first, step, count, width, colours, opening=0.72):
    """Arcs to both sides, fainter as they leave."""
    ctx.set_line_cap(cairo.LINE_CAP_ROUND)
    for index in range(count):
        ctx.set_source_rgba(*rgb(colours[index]), 1 - 0.22 * index)
        ctx.set_line_width(width)
        for middle in (0, math.pi):
            ctx.new_sub_path()
            ctx.arc(x, y, first + step * index, middle - opening, middle + opening)
        ctx.stroke()


def icon(ctx):
    vertical(ctx, [(0, rgb("#3a2f78")), (0.6, rgb("#6d3f88")), (1, rgb("#b5507c"))], 0, 512)
    ctx.paint()
    glow(ctx, 256, 262, 280, rgb("#ffcf6b"), 0.6)
    waves(ctx, 256, 256, 154, 50, 2, 22, ("#ffd489", "#ffb0a0"), 0.66)
    lantern(ctx, 256, 258, 330)


def tower(ctx, x, width, top, base, colours, rng):
    ctx.save()
    rounded(ctx, x, top, width, base - top + 30, 16)
    ctx.clip()
    vertical(ctx, [(0, rgb(colours[0])), (1, rgb(colours[1]))], top, base)
    ctx.paint()
    columns = int((width - 16) // 20)
    left = x + (width - 20 * columns + 8) / 2
    for row in range(int((base - top - 24) // 28)):
        for column in range(columns):
            lit = rng.random() < 0.55
            ctx.set_source_rgba(*rgb("#ffdf9e" if lit else "#1d1950"), 0.95 if lit else 0.35)
            ctx.rectangle(left + 20 * column, top + 22 + 28 * row, 12, 15)
            ctx.fill()
    ctx.restore()


def skyline(ctx, base):
    """Towers as high as a tune is loud."""
    rng = random.Random(21)
    palette = (("#ffb876", "#a3467c"), ("#f08a6b", "#7d3f86"), ("#e8708a", "#5b3a86"), ("#b96ab0", "#45357f"))
    count = 21
    for index in range(count):
        at = (index - (count - 1) / 2) / (count / 2)
        swell = 0.25 + 0.75 * math.exp(-((1.6 * at) ** 2))
        level = swell * (0.62 + 0.38 * abs(math.sin(1.9 * index + 0.5)))
        x = 12 + index * 56.2
        tower(ctx, x, 52, base - 330 * level, base, palette[(index * 3) % 4], rng)


def image(ctx):
    vertical(ctx, [(0, rgb("#14123f")), (0.5, rgb("#3a2f78")), (0.78, rgb("#8c4f91")), (1, rgb("#e2705f"))], 0, 500)
    ctx.paint()
    starfield(ctx, 1200, 300, 110, 6)
    glow(ctx, 976, 120, 220, rgb("#ffe9b0"), 0.5)
    disc(ctx, 976, 120, 58, "#fff0c4")
    ellipse(ctx, 958, 108, 24, 22, "#efd9a4")
    ellipse(ctx, 992, 136, 17, 15, "#efd9a4")
    glow(ctx, 212, 142, 260, rgb("#ffcf6b"), 0.42)
    waves(ctx, 212, 140, 104, 36, 3, 13, ("#ffd489", "#ffb0a0", "#e59ac0"), 0.6)
    lantern(ctx, 212, 142, 196)
    skyline(ctx, 500)
    # The quay, and the town in the water.
    vertical(ctx, [(0, rgb("#3d3577")), (1, rgb("#14123f"))], 500, 627)
    ctx.rectangle(0, 500, 1200, 127)
    ctx.fill()
    slab(ctx, 0, 496, 1200, 9, 0, "#1d1950")
    rng = random.Random(3)
    ctx.set_line_cap(cairo.LINE_CAP_ROUND)
    for _ in range(150):
        depth = rng.random()
        x, y = rng.gauss(600, 300), 516 + 104 * depth
        length = rng.uniform(8, 34) * (0.5 + depth)
        ctx.set_source_rgba(*rgb(rng.choice(("#ffb876", "#f08a6b", "#e8708a", "#ffdf9e"))), 0.6 - 0.42 * depth)
        ctx.set_line_width(3 + 2 * depth)
        ctx.move_to(x - length, y)
        ctx.line_to(x + length, y)
        ctx.stroke()
