"""What pictures and films of the catalogue are drawn with, on cairo: colours, easing, light and common shapes."""

import math
import random

import cairo


def rgb(text):
    return tuple(int(text[i : i + 2], 16) / 255 for i in (1, 3, 5))


def mix(a, b, t):
    return tuple(x + (y - x) * t for x, y in zip(a, b))


def ease(t):
    t = min(1.0, max(0.0, t))
    return t * t * (3 - 2 * t)


def spring(t):
    """From 0 to 1 with one soft overshoot."""
    if t <= 0:
        return 0.0
    return 1 - math.exp(-6 * t) * math.cos(9 * t)


def vertical(ctx, stops, top, bottom):
    gradient = cairo.LinearGradient(0, top, 0, bottom)
    for at, colour in stops:
        gradient.add_color_stop_rgb(at, *colour)
    ctx.set_source(gradient)


def glow(ctx, x, y, radius, colour, alpha):
    gradient = cairo.RadialGradient(x, y, 0, x, y, radius)
    gradient.add_color_stop_rgba(0, *colour, alpha)
    gradient.add_color_stop_rgba(0.4, *colour, alpha * 0.35)
    gradient.add_color_stop_rgba(1, *colour, 0)
    ctx.set_source(gradient)
    ctx.arc(x, y, radius, 0, 2 * math.pi)
    ctx.fill()


def star(ctx, x, y, radius):
    for index in range(10):
        r = radius if index % 2 == 0 else radius * 0.45
        angle = -math.pi / 2 + index * math.pi / 5
        (ctx.move_to if index == 0 else ctx.line_to)(x + r * math.cos(angle), y + r * math.sin(angle))
    ctx.close_path()


def cloud(ctx, x, y, size, colour, alpha):
    ctx.push_group()
    ctx.set_source_rgb(*colour)
    for dx, dy, r in ((-1.5, 0.1, 0.5), (-0.8, -0.25, 0.75), (0.1, -0.45, 0.95), (1.0, -0.15, 0.7), (1.7, 0.12, 0.45)):
        ctx.arc(x + dx * size, y + dy * size, r * size, 0, 2 * math.pi)
        ctx.fill()
    ctx.rectangle(x - 1.9 * size, y + 0.15 * size, 3.9 * size, 0.45 * size)
    ctx.fill()
    ctx.pop_group_to_source()
    ctx.save()
    ctx.rectangle(x - 3 * size, y - 3 * size, 6 * size, 3.42 * size)
    ctx.clip()
    ctx.paint_with_alpha(alpha)
    ctx.restore()


def ridge(ctx, width, offset, base, height, colours, seed):
    """A far coast or mountain range: sums of sines, seen from `offset` on."""
    rng = random.Random(seed)
    waves = [(rng.uniform(0.004, 0.02), rng.uniform(0, 6.3), rng.uniform(0.3, 1)) for _ in range(5)]
    total = sum(weight for _, _, weight in waves)
    ctx.move_to(0, base)
    for x in range(0, width + 6, 6):
        at = x + offset
        level = sum(weight * math.sin(frequency * at + phase) for frequency, phase, weight in waves) / total
        ctx.line_to(x, base - height * max(0.0, 0.45 + 0.75 * level))
    ctx.line_to(width + 6, base)
    ctx.close_path()
    vertical(ctx, [(0, colours[0]), (1, colours[1])], base - height, base)
    ctx.fill()


def lettering(ctx, text, x, y, size, t, spread=0.05, colours=("#fffaf0", "#ffd489"), edge="#2a1f57"):
    """Letters that drop in one after another."""
    ctx.select_font_face("DejaVu Sans", cairo.FONT_SLANT_NORMAL, cairo.FONT_WEIGHT_BOLD)
    ctx.set_font_size(size)
    advance = [ctx.text_extents(letter).x_advance + 0.02 * size for letter in text]
    at = x - sum(advance) / 2
    for index, letter in enumerate(text):
        local = (t - spread * index) * 1.5
        if local > 0 and letter != " ":
            ctx.save()
            ctx.translate(at + advance[index] / 2, y - 90 * (1 - spring(local)))
            ctx.push_group()
            ctx.move_to(-advance[index] / 2, 0)
            ctx.text_path(letter)
            ctx.set_line_join(cairo.LINE_JOIN_ROUND)
            ctx.set_source_rgb(*rgb(edge))
            ctx.set_line_width(size * 0.17)
            ctx.stroke_preserve()
            vertical(ctx, [(0, rgb(colours[0])), (1, rgb(colours[1]))], -0.75 * size, 0)
            ctx.fill()
            ctx.pop_group_to_source()
            ctx.paint_with_alpha(ease(local * 3))
            ctx.restore()
        at += advance[index]


# ---------------------------------------------------------------- shapes, each left as a path or filled


def disc(ctx, x, y, radius, colour, alpha=1):
    ctx.set_source_rgba(*rgb(colour), alpha)
    ctx.arc(x, y, radius, 0, 2 * math.pi)
    ctx.fill()


def polygon(ctx, points, colour, alpha=1):
    ctx.set_source_rgba(*rgb(colour), alpha)
    for point in points:
        ctx.line_to(*point)
    ctx.close_path()
    ctx.fill()


def rounded(ctx, x, y, width, height, radius):
    ctx.new_sub_path()
    for corner_x, corner_y, turn in ((1, 0, -1), (1, 1, 0), (0, 1, 1), (0, 0, 2)):
        at_x = x + (width - radius if corner_x else radius)
        at_y = y + (height - radius if corner_y else radius)
        ctx.arc(at_x, at_y, radius, turn * math.pi / 2, (turn + 1) * math.pi / 2)
    ctx.close_path()


def slab(ctx, x, y, width, height, radius, colour, alpha=1):
    ctx.set_source_rgba(*rgb(colour), alpha)
    rounded(ctx, x, y, width, height, radius)
    ctx.fill()


def ellipse(ctx, x, y, width, height, colour, alpha=1):
    ctx.save()
    ctx.translate(x, y)
    ctx.scale(width / 2, height / 2)
    ctx.arc(0, 0, 1, 0, 2 * math.pi)
    ctx.restore()
    ctx.set_source_rgba(*rgb(colour), alpha)
    ctx.fill()


def starfield(ctx, width, height, count, seed, t=0.0):
    rng = random.Random(seed)
    for _ in range(count):
        x, y, phase = rng.uniform(0, width), rng.uniform(0, height), rng.uniform(0, 6.3)
        bright = rng.uniform(0.35, 0.95)
        ctx.set_source_rgba(1, 0.97, 0.9, bright * (0.8 + 0.2 * math.sin(2 * t + phase)))
        ctx.arc(x, y, rng.uniform(0.8, 2.0) * height / 627, 0, 2 * math.pi)
        ctx.fill()


def centred(ctx, text, x, y, size, colour, family="Cantarell", alpha=1):
    """Bold text around x; the middle of its capitals is at y."""
    ctx.select_font_face(family, cairo.FONT_SLANT_NORMAL, cairo.FONT_WEIGHT_BOLD)
    ctx.set_font_size(size)
    extents = ctx.text_extents(text)
    ctx.set_source_rgba(*rgb(colour), alpha)
    ctx.move_to(x - extents.x_bearing - extents.width / 2, y + 0.35 * size)
    ctx.show_text(text)
