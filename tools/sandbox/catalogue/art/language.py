"""Wordgrove, a language course: trees whose crowns are speech bubbles."""

import math
import random

from art.drawing import centred, cloud, disc, ellipse, glow, rgb, ridge, rounded, vertical


def bubble(ctx, x, y, width, height, colour):
    """A speech bubble around x, y, its tail at the lower left."""
    ctx.set_source_rgb(*rgb(colour))
    rounded(ctx, x - width / 2, y - height / 2, width, height, 0.42 * height)
    ctx.fill()
    ctx.move_to(x - 0.24 * width, y + 0.3 * height)
    ctx.curve_to(x - 0.22 * width, y + 0.56 * height, x - 0.32 * width, y + 0.7 * height, x - 0.4 * width, y + 0.74 * height)
    ctx.curve_to(x - 0.16 * width, y + 0.72 * height, x + 0.02 * width, y + 0.62 * height, x + 0.04 * width, y + 0.42 * height)
    ctx.fill()


def trunk(ctx, x, base, height, width, colours=("#8f5a45", "#6b4030")):
    for side, colour in ((-1, colours[0]), (1, colours[1])):
        ctx.set_source_rgb(*rgb(colour))
        ctx.move_to(x, base - height)
        ctx.line_to(x + side * 0.34 * width, base - height)
        ctx.curve_to(x + side * 0.34 * width, base - 0.4 * height, x + side * 0.44 * width, base - 0.14 * height, x + side * width, base)
        ctx.line_to(x, base)
        ctx.fill()


def tree(ctx, x, base, size, colours, word, ink):
    """A crown of two bubbles, the one in front with a word on it."""
    ellipse(ctx, x, base, 0.8 * size, 0.1 * size, "#123a34", 0.3)
    trunk(ctx, x, base, 0.86 * size, 0.13 * size)
    width = 1.06 * size
    bubble(ctx, x + 0.12 * size, base - 1.18 * size, 0.8 * width, 0.54 * size, colours[1])
    bubble(ctx, x, base - 0.94 * size, width, 0.58 * size, colours[0])
    centred(ctx, word, x, base - 0.95 * size, 0.3 * size, ink)


def rounded_square(ctx):
    rounded(ctx, 0, 0, 512, 512, 112)
    ctx.clip()


def icon(ctx):
    rounded_square(ctx)
    vertical(ctx, [(0, rgb("#ffe2a0")), (0.6, rgb("#a8d8a0")), (1, rgb("#58a885"))], 0, 512)
    ctx.paint()
    glow(ctx, 256, 190, 280, rgb("#fffbe6"), 0.8)
    ctx.set_source_rgb(*rgb("#2e7d5c"))
    ctx.move_to(0, 424)
    ctx.curve_to(150, 374, 360, 374, 512, 424)
    ctx.line_to(512, 512)
    ctx.line_to(0, 512)
    ctx.fill()
    ellipse(ctx, 256, 430, 250, 26, "#123a34", 0.35)
    trunk(ctx, 256, 434, 200, 60)
    bubble(ctx, 300, 148, 270, 160, "#2f7f93")
    bubble(ctx, 246, 232, 318, 190, "#2e7d4f")
    for dx, colour in ((-76, "#ffd489"), (0, "#fffaf0"), (76, "#ffb0a0")):
        disc(ctx, 246 + dx, 232, 27, colour)


def image(ctx):
    vertical(ctx, [(0, rgb("#8fd0c8")), (0.5, rgb("#d8ecc4")), (0.75, rgb("#ffe9b8"))], 0, 500)
    ctx.paint()
    glow(ctx, 600, 380, 460, rgb("#fff6d5"), 0.9)
    for x, y, size, alpha in ((150, 96, 38, 0.75), (770, 76, 28, 0.65), (1070, 110, 40, 0.7)):
        cloud(ctx, x, y, size, rgb("#fffaf0"), alpha)
    ridge(ctx, 1200, 0, 500, 140, (rgb("#8cc5a8"), rgb("#b5d8ae")), 31)
    ridge(ctx, 1200, 500, 500, 90, (rgb("#58a885"), rgb("#8cc49a")), 14)
    vertical(ctx, [(0, rgb("#3f9a70")), (1, rgb("#226a5c"))], 440, 627)
    ctx.move_to(0, 486)
    ctx.curve_to(240, 440, 420, 452, 640, 476)
    ctx.curve_to(860, 496, 1020, 462, 1200, 440)
    ctx.line_to(1200, 627)
    ctx.line_to(0, 627)
    ctx.fill()
    # A path leads from tree to tree.
    ctx.set_source_rgb(*rgb("#ffe9c4"))
    ctx.move_to(470, 640)
    ctx.curve_to(560, 590, 800, 580, 720, 530)
    ctx.curve_to(680, 506, 600, 500, 640, 478)
    ctx.curve_to(640, 494, 760, 498, 800, 528)
    ctx.curve_to(850, 580, 720, 600, 690, 640)
    ctx.fill()
    tree(ctx, 432, 490, 150, ("#e8924a", "#f2b56b"), "ciao", "#fffaf0")
    tree(ctx, 826, 496, 150, ("#54509a", "#7d74bd"), "hej", "#fffaf0")
    tree(ctx, 186, 562, 256, ("#2e7d4f", "#58a85c"), "hola", "#fffaf0")
    tree(ctx, 1038, 566, 244, ("#c7584b", "#e8836b"), "salut", "#fffaf0")
    tree(ctx, 622, 556, 196, ("#fffaf0", "#ffe2a0"), "hello", "#226a5c")
    rng = random.Random(5)
    for _ in range(46):
        x, y = rng.uniform(0, 1200), rng.uniform(578, 622)
        if 440 < x < 800:
            continue
        colour = rng.choice(("#ffd489", "#fffaf0", "#ffb0a0", "#e59ac0"))
        for petal in range(5):
            angle = petal * 2 * math.pi / 5
            disc(ctx, x + 5 * math.cos(angle), y + 5 * math.sin(angle), 3.6, colour)
        disc(ctx, x, y, 3, "#e8924a")
