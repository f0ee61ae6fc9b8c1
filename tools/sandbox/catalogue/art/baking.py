"""Butter & Bloom, a baking game: a cupcake, and the counter of a bakery at dusk."""

import math
import random

import cairo

from art.drawing import centred, disc, ellipse, glow, polygon, rgb, rounded, slab, star, starfield, vertical

SPRINKLES = ("#2f7f93", "#ffc94d", "#7d4790", "#e8604f")


def frosting(ctx, colours):
    """Three swirls, for a cup of width 200 that ends at y = 0."""
    ctx.set_line_cap(cairo.LINE_CAP_ROUND)
    for y, width, height, colour in ((-22, 236, 92, colours[0]), (-78, 184, 84, colours[1]), (-130, 122, 72, colours[2])):
        ellipse(ctx, 0, y, width, height, colour)
        ctx.set_source_rgba(1, 1, 1, 0.5)  # light on the left shoulder
        ctx.set_line_width(8)
        ctx.save()
        ctx.translate(0, y)
        ctx.scale(width / 2 - 14, height / 2 - 12)
        ctx.arc(0, 0, 1, 1.02 * math.pi, 1.2 * math.pi)
        ctx.restore()
        ctx.stroke()
    ctx.set_source_rgb(*rgb(colours[2]))
    ctx.move_to(-52, -148)
    ctx.curve_to(-30, -180, -14, -190, 8, -204)
    ctx.curve_to(6, -184, 34, -176, 52, -148)
    ctx.fill()


def sprinkles(ctx, seed):
    rng = random.Random(seed)
    spots = [(-70, -8), (-20, 2), (34, -6), (82, -22), (-40, -62), (8, -56), (52, -72), (-14, -108), (30, -116), (-92, -30)]
    for index, (x, y) in enumerate(spots):
        ctx.save()
        ctx.translate(x, y)
        ctx.rotate(rng.uniform(0, math.pi))
        slab(ctx, -11, -4, 22, 8, 4, SPRINKLES[index % 4])
        ctx.restore()


def cupcake(ctx, x, y, scale, wrapper=("#2f7f93", "#226a7c"), cream=("#ffc9b5", "#ffdccb", "#fff1e4"), seed=3):
    """Stands on y."""
    ctx.save()
    ctx.translate(x, y)
    ctx.scale(scale, scale)
    ellipse(ctx, 0, 0, 210, 26, "#3a1f3f", 0.28)
    ctx.save()
    for point in ((-100, -128), (100, -128), (74, 0), (-74, 0)):
        ctx.line_to(*point)
    ctx.close_path()
    ctx.clip()
    ctx.set_source_rgb(*rgb(wrapper[0]))
    ctx.paint()
    for fold in range(-4, 5):
        top, bottom = 25 * fold, 18.5 * fold
        polygon(ctx, ((top, -130), (top + 12.5, -130), (bottom + 9, 2), (bottom, 2)), wrapper[1])
    ctx.restore()
    ctx.translate(0, -128)
    frosting(ctx, cream)
    sprinkles(ctx, seed)
    disc(ctx, 4, -206, 27, "#c73f3a")
    disc(ctx, -5, -215, 8, "#ffffff", 0.75)
    ctx.set_source_rgb(*rgb("#4b8a5f"))
    ctx.set_line_width(6)
    ctx.move_to(6, -230)
    ctx.curve_to(10, -250, 22, -262, 40, -266)
    ctx.stroke()
    ctx.restore()


def icon(ctx):
    vertical(ctx, [(0, rgb("#ffd08a")), (0.55, rgb("#f08a6b")), (1, rgb("#b94f72"))], 0, 512)
    ctx.paint()
    glow(ctx, 256, 210, 300, rgb("#fff6d5"), 0.85)
    ctx.set_source_rgba(*rgb("#fffaf0"), 0.22)
    for ray in range(12):  # a sunburst behind the cake
        angle = ray * math.pi / 6 + 0.13
        ctx.move_to(256, 256)
        ctx.arc(256, 256, 420, angle, angle + math.pi / 12)
        ctx.close_path()
    ctx.fill()
    cupcake(ctx, 256, 458, 1.03)


def awning(ctx):
    width = 1200 / 12
    for index in range(12):
        colour = "#e8604f" if index % 2 == 0 else "#fff1dc"
        ctx.set_source_rgb(*rgb(colour))
        ctx.rectangle(index * width, 0, width + 0.5, 70)
        ctx.arc(index * width + width / 2, 70, width / 2, 0, math.pi)
        ctx.fill()
    ctx.set_source_rgba(0.2, 0.05, 0.2, 0.16)
    ctx.rectangle(0, 0, 1200, 18)
    ctx.fill()


def window(ctx):
    ctx.save()
    rounded(ctx, 330, 150, 540, 320, 34)
    ctx.clip()
    vertical(ctx, [(0, rgb("#2b2c6b")), (0.5, rgb("#8c4f91")), (0.85, rgb("#f08a6b")), (1, rgb("#ffd08a"))], 150, 470)
    ctx.paint()
    ctx.save()
    ctx.translate(330, 150)
    starfield(ctx, 540, 150, 34, 8)
    ctx.restore()
    disc(ctx, 740, 250, 38, "#ffe9b0")
    for x, y, width, height in ((330, 370, 90, 100), (400, 340, 70, 130), (480, 385, 120, 90), (610, 355, 80, 120), (700, 390, 90, 80), (780, 350, 100, 120)):
        ctx.set_source_rgb(*rgb("#3a2a66"))
        ctx.rectangle(x, y, width, height)
        ctx.fill()
        polygon(ctx, ((x - 6, y), (x + width / 2, y - 34), (x + width + 6, y)), "#2c2058")
        ctx.set_source_rgb(*rgb("#ffcf6b"))
        for row in range(2):
            for column in range(int(width // 34)):
                ctx.rectangle(x + 13 + 32 * column, y + 18 + 36 * row, 12, 16)
        ctx.fill()
    ctx.restore()
    ctx.set_source_rgb(*rgb("#8f4a3f"))
    ctx.set_line_width(16)
    rounded(ctx, 330, 150, 540, 320, 34)
    ctx.stroke()
    ctx.rectangle(594, 150, 12, 320)
    ctx.fill()


def pendant(ctx, x, length):
    ctx.set_source_rgb(*rgb("#6b3a3f"))
    ctx.rectangle(x - 2, 100, 4, length)
    ctx.fill()
    glow(ctx, x, 130 + length, 170, rgb("#fff0b8"), 0.8)
    ctx.set_source_rgb(*rgb("#226a7c"))
    ctx.arc(x, 122 + length, 42, math.pi, 2 * math.pi)
    ctx.close_path()
    ctx.fill()
    ellipse(ctx, x, 122 + length, 84, 16, "#fff6d5")


def layer_cake(ctx, x, y):
    """On a stand; stands on y."""
    ellipse(ctx, x, y - 4, 150, 22, "#3a1f3f", 0.28)
    polygon(ctx, ((x - 16, y - 66), (x + 16, y - 66), (x + 52, y - 4), (x - 52, y - 4)), "#ffe2c0")
    slab(ctx, x - 150, y - 78, 300, 22, 11, "#fff6ea")
    tiers = ((118, 78, "#7d4790", "#ffdccb"), (88, 66, "#a05a9c", "#fff1e4"), (56, 56, "#c77fb0", "#ffdccb"))
    base = y - 78
    for half, height, colour, icing in tiers:
        slab(ctx, x - half, base - height, 2 * half, height, 12, colour)
        slab(ctx, x - half - 5, base - height - 6, 2 * half + 10, 24, 12, icing)
        for drop in range(int(half // 18)):
            at = x - half + 14 + 36 * drop
            slab(ctx, at, base - height, 20, 30 + 14 * (drop % 2), 10, icing)
        base -= height
    ctx.set_source_rgb(*rgb("#ffc94d"))
    star(ctx, x, base - 34, 34)
    ctx.fill()


def doughnuts(ctx, x, y):
    """A pile of three, on a plate that stands on y."""
    ellipse(ctx, x, y - 2, 330, 26, "#3a1f3f", 0.28)
    slab(ctx, x - 168, y - 22, 336, 20, 10, "#fff6ea")
    for dx, dy, glaze in ((-78, -72, "#e8604f"), (78, -72, "#fff1e4"), (0, -160, "#ffb9a0")):
        ellipse(ctx, x + dx, y + dy + 6, 156, 100, "#c98243")
        ellipse(ctx, x + dx, y + dy - 4, 150, 84, glaze)
        ellipse(ctx, x + dx, y + dy - 8, 52, 24, "#9c5a34")
        rng = random.Random(dx)
        for index in range(14):
            angle, distance = 0.449 * index, (0.58, 0.84)[index % 2]
            ctx.save()
            ctx.translate(x + dx + 75 * distance * math.cos(angle), y + dy - 4 + 40 * distance * math.sin(angle))
            ctx.rotate(rng.uniform(0, 3))
            slab(ctx, -7, -2.5, 14, 5, 2.5, SPRINKLES[index % 3])
            ctx.restore()


def image(ctx):
    vertical(ctx, [(0, rgb("#ffe9cf")), (1, rgb("#ffc9a0"))], 0, 500)
    ctx.paint()
    window(ctx)
    for x, length in ((170, 60), (1030, 60)):
        pendant(ctx, x, length)
    awning(ctx)
    vertical(ctx, [(0, rgb("#b5583f")), (1, rgb("#6d2f35"))], 500, 627)
    ctx.rectangle(0, 500, 1200, 127)
    ctx.fill()
    slab(ctx, -20, 492, 1240, 30, 8, "#e39a6b")
    layer_cake(ctx, 250, 502)
    doughnuts(ctx, 950, 502)
    cupcake(ctx, 600, 506, 1.02)
    slab(ctx, 478, 542, 244, 62, 12, "#2a1f57")
    centred(ctx, "OPEN LATE", 600, 573, 34, "#ffd489")
