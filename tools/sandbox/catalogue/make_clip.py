#!/usr/bin/python3
"""Makes media/sky-harbor.mp4: six seconds of trailer for a game that does not exist.

Needs Debian's ffmpeg, python3-cairo and python3-numpy. Every frame and every note is computed here.
"""

import math
import pathlib
import random

import cairo

from art.drawing import cloud, ease, glow, lettering, mix, rgb, ridge, spring, star, vertical
from art.film import encode, mastered, note, pitch, place, silence

WIDTH, HEIGHT, FPS, SECONDS = 540, 960, 30, 6
HORIZON = 560
OUT = pathlib.Path(__file__).resolve().parent / "media" / "sky-harbor.mp4"


# ---------------------------------------------------------------- the world


def sky(ctx, t):
    dusk = ease(t / SECONDS)
    vertical(
        ctx,
        [
            (0.0, mix(rgb("#2b2c6b"), rgb("#1d1f57"), dusk)),
            (0.45, mix(rgb("#8c4f91"), rgb("#6d3f88"), dusk)),
            (0.78, mix(rgb("#f08a6b"), rgb("#e2705f"), dusk)),
            (1.0, mix(rgb("#ffd08a"), rgb("#ffb876"), dusk)),
        ],
        0,
        HORIZON,
    )
    ctx.rectangle(0, 0, WIDTH, HORIZON + 2)
    ctx.fill()


def stars(ctx, t):
    rng = random.Random(4)
    for _ in range(60):
        x, y, phase = rng.uniform(0, WIDTH), rng.uniform(0, 300), rng.uniform(0, 6.3)
        fade = (1 - y / 320) * ease(t / 3)
        ctx.set_source_rgba(1, 0.97, 0.9, fade * (0.45 + 0.35 * math.sin(2.2 * t + phase)))
        ctx.arc(x, y, rng.uniform(0.7, 1.6), 0, 2 * math.pi)
        ctx.fill()


def sun(ctx, t):
    x, y = 345, 462 + 7 * t
    glow(ctx, x, y, 300, rgb("#ffdf9e"), 0.75)
    vertical(ctx, [(0, rgb("#fff6d5")), (1, rgb("#ffc46b"))], y - 66, y + 66)
    ctx.arc(x, y, 66, 0, 2 * math.pi)
    ctx.fill()
    return x


def clouds(ctx, t):
    for x, y, size, speed, alpha in ((60, 350, 26, 9, 0.30), (420, 300, 34, 12, 0.34), (250, 420, 20, 7, 0.26), (560, 395, 24, 8, 0.3)):
        at = (x - speed * t + 120) % (WIDTH + 240) - 120
        cloud(ctx, at, y, size, rgb("#ffe3d2"), alpha)


def floating_island(ctx, x, y, scale, t):
    """The harbour in the sky: a rock with houses and a windmill on it."""
    ctx.save()
    ctx.translate(x, y + 6 * math.sin(1.3 * t + x))
    ctx.scale(scale, scale)
    vertical(ctx, [(0, rgb("#6b4a72")), (1, rgb("#3a2a55"))], 0, 90)
    ctx.move_to(-92, 0)
    ctx.curve_to(-70, 34, -52, 40, -34, 62)
    ctx.curve_to(-22, 78, -8, 96, 2, 104)
    ctx.curve_to(14, 84, 30, 70, 46, 48)
    ctx.curve_to(62, 36, 80, 26, 92, 0)
    ctx.close_path()
    ctx.fill()
    vertical(ctx, [(0, rgb("#7fc08a")), (1, rgb("#4b8a76"))], -14, 14)
    ctx.move_to(-96, 2)
    ctx.curve_to(-70, -16, 70, -16, 96, 2)
    ctx.curve_to(70, 16, -70, 16, -96, 2)
    ctx.fill()
    for hx, width, tall, wall, roof in ((-52, 28, 26, "#fff1dc", "#d9534f"), (-18, 24, 34, "#ffe2c0", "#2f7f93"), (14, 26, 24, "#fff1dc", "#e8924a")):
        ctx.set_source_rgb(*rgb(wall))
        ctx.rectangle(hx, -6 - tall, width, tall)
        ctx.fill()
        ctx.set_source_rgb(*rgb(roof))
        ctx.move_to(hx - 5, -6 - tall)
        ctx.line_to(hx + width / 2, -24 - tall)
        ctx.line_to(hx + width + 5, -6 - tall)
        ctx.fill()
        ctx.set_source_rgb(*rgb("#ffcf6b"))
        ctx.rectangle(hx + width / 2 - 4, -6 - tall + 9, 8, 9)
        ctx.fill()
    ctx.set_source_rgb(*rgb("#fff1dc"))
    ctx.move_to(54, -4)
    ctx.line_to(60, -58)
    ctx.line_to(72, -58)
    ctx.line_to(78, -4)
    ctx.fill()
    ctx.save()
    ctx.translate(66, -56)
    ctx.rotate(1.1 * t)
    ctx.set_source_rgba(*rgb("#fffaf0"), 0.95)
    for _ in range(4):
        ctx.rotate(math.pi / 2)
        ctx.rectangle(-1.5, -40, 3, 40)
        ctx.rectangle(1.5, -38, 10, 28)
        ctx.fill()
    ctx.restore()
    ctx.restore()


def sea(ctx, t, sun_x):
    vertical(
        ctx,
        [(0, rgb("#f7a578")), (0.12, rgb("#c2718a")), (0.45, rgb("#54509a")), (1, rgb("#20245f"))],
        HORIZON,
        HEIGHT,
    )
    ctx.rectangle(0, HORIZON, WIDTH, HEIGHT - HORIZON)
    ctx.fill()
    # The sun's road on the water: short strokes that widen towards us.
    rng = random.Random(9)
    for row in range(34):
        depth = row / 34
        y = HORIZON + 4 + (HEIGHT - HORIZON) * depth**1.5
        spread = 34 + 150 * depth
        for _ in range(3):
            offset = rng.uniform(-1, 1) * spread
            length = rng.uniform(10, 46) * (0.4 + depth)
            shimmer = 0.5 + 0.5 * math.sin(3.1 * t + rng.uniform(0, 6.3))
            ctx.set_source_rgba(1, 0.86, 0.62, (0.5 - 0.36 * depth) * shimmer)
            ctx.set_line_width(1.2 + 2.2 * depth)
            ctx.set_line_cap(cairo.LINE_CAP_ROUND)
            ctx.move_to(sun_x + offset - length / 2, y)
            ctx.line_to(sun_x + offset + length / 2, y)
            ctx.stroke()


def wave_band(ctx, t, y, amplitude, speed, colour, alpha, length):
    ctx.move_to(0, HEIGHT)
    for x in range(0, WIDTH + 8, 8):
        crest = math.sin((x + speed * t) / length) + 0.4 * math.sin((x - 0.6 * speed * t) / (length * 0.47) + 1)
        ctx.line_to(x, y + amplitude * crest)
    ctx.line_to(WIDTH + 8, HEIGHT)
    ctx.close_path()
    ctx.set_source_rgba(*colour, alpha)
    ctx.fill()


def lighthouse(ctx, t):
    """On its rock at the left, sweeping its beam once in a while."""
    x = 92 - 4 * t
    angle = -0.55 + 0.28 * math.sin(1.0 * t - 0.8)
    ctx.save()
    ctx.translate(x, 372)
    for side in (0, math.pi):
        ctx.save()
        ctx.rotate(angle + side)
        beam = cairo.LinearGradient(0, 0, 460, 0)
        beam.add_color_stop_rgba(0, 1, 0.93, 0.68, 0.55)
        beam.add_color_stop_rgba(1, 1, 0.93, 0.68, 0)
        ctx.set_source(beam)
        ctx.move_to(0, -3)
        ctx.line_to(460, -46)
        ctx.line_to(460, 46)
        ctx.line_to(0, 3)
        ctx.fill()
        ctx.restore()
    ctx.restore()
    # rock
    vertical(ctx, [(0, rgb("#5b3f6e")), (0.75, rgb("#332a63")), (1, rgb("#45438c"))], 540, 664)
    ctx.move_to(x - 160, 690)
    ctx.curve_to(x - 110, 590, x - 60, 560, x - 34, 548)
    ctx.curve_to(x, 536, x + 30, 545, x + 52, 572)
    ctx.curve_to(x + 84, 598, x + 104, 628, x + 150, 690)
    ctx.fill()
    # a few facets catch the light
    ctx.set_source_rgba(*rgb("#f08a6b"), 0.22)
    ctx.move_to(x + 18, 546)
    ctx.curve_to(x + 46, 566, x + 76, 600, x + 104, 642)
    ctx.line_to(x + 70, 624)
    ctx.curve_to(x + 56, 596, x + 40, 570, x + 18, 546)
    ctx.fill()
    # tower with three stripes
    top, bottom = 396, 552
    ctx.move_to(x - 15, top)
    ctx.line_to(x + 15, top)
    ctx.line_to(x + 25, bottom)
    ctx.line_to(x - 25, bottom)
    ctx.close_path()
    ctx.save()
    ctx.clip()
    body = cairo.LinearGradient(x - 25, 0, x + 25, 0)
    body.add_color_stop_rgb(0, *rgb("#d9c3cf"))
    body.add_color_stop_rgb(0.65, *rgb("#fff7ec"))
    body.add_color_stop_rgb(1, *rgb("#ffe1b8"))
    ctx.set_source(body)
    ctx.paint()
    stripes = cairo.LinearGradient(x - 25, 0, x + 25, 0)
    stripes.add_color_stop_rgb(0, *rgb("#a83350"))
    stripes.add_color_stop_rgb(1, *rgb("#e8604f"))
    ctx.set_source(stripes)
    for y in (418, 470, 522):
        ctx.rectangle(x - 30, y, 60, 26)
        ctx.fill()
    ctx.restore()
    ctx.set_source_rgb(*rgb("#3a2a55"))
    ctx.rectangle(x - 21, 390, 42, 7)
    ctx.rectangle(x - 13, 360, 26, 3)
    ctx.fill()
    ctx.set_source_rgb(*rgb("#fff0b8"))
    ctx.rectangle(x - 11, 363, 22, 27)
    ctx.fill()
    ctx.set_source_rgb(*rgb("#a83350"))
    ctx.move_to(x - 18, 361)
    ctx.curve_to(x - 12, 344, x + 12, 344, x + 18, 361)
    ctx.fill()
    ctx.rectangle(x - 1.5, 336, 3, 14)
    ctx.fill()
    glow(ctx, x, 375, 64, rgb("#fff0b8"), 0.9)


def foam(ctx, t, x):
    """Where the sea licks the rock."""
    ctx.set_line_cap(cairo.LINE_CAP_ROUND)
    for index in range(9):
        at = x - 150 + 34 * index
        swell = 3 * math.sin(2.4 * t + 1.7 * index)
        ctx.set_source_rgba(1, 0.93, 0.88, 0.30 + 0.14 * math.sin(2.4 * t + index))
        ctx.set_line_width(3.2)
        ctx.move_to(at - 11, 664 + swell)
        ctx.curve_to(at - 4, 659 + swell, at + 5, 659 + swell, at + 12, 664 + swell)
        ctx.stroke()


def gulls(ctx, t):
    ctx.set_line_cap(cairo.LINE_CAP_ROUND)
    for x, y, size, phase in ((150, 250, 15, 0), (205, 226, 11, 1.4), (118, 214, 9, 2.6)):
        at = x + 26 * t
        flap = 0.45 + 0.4 * math.sin(7 * t + phase)
        ctx.set_source_rgba(*rgb("#fff3e6"), 0.9)
        ctx.set_line_width(size / 5.5)
        ctx.move_to(at - size, y - size * flap)
        ctx.curve_to(at - size * 0.5, y - size * flap * 1.1, at - size * 0.2, y - size * 0.1, at, y)
        ctx.curve_to(at + size * 0.2, y - size * 0.1, at + size * 0.5, y - size * flap * 1.1, at + size, y - size * flap)
        ctx.stroke()


def boat(ctx, t):
    """The hero: comes in from the left and rides the swell."""
    x = -150 + 440 * ease(t / 2.6) + 14 * max(0, t - 2.2)
    y = 760 + 7 * math.sin(2.1 * t)
    ctx.save()
    ctx.translate(x, y)
    ctx.rotate(0.045 * math.sin(2.1 * t + 0.9))
    # wake
    for index in range(7):
        ctx.set_source_rgba(1, 0.95, 0.88, 0.5 - 0.065 * index)
        ctx.set_line_width(4 - 0.4 * index)
        ctx.move_to(-96 - 26 * index, 36 + 3 * math.sin(5 * t + index))
        ctx.line_to(-70 - 26 * index, 38 + 3 * math.sin(5 * t + index))
        ctx.stroke()
    # main sail
    sail = cairo.LinearGradient(-90, 0, 20, 0)
    sail.add_color_stop_rgb(0, *rgb("#ffd9a8"))
    sail.add_color_stop_rgb(1, *rgb("#fffaf0"))
    billow = 10 * math.sin(1.7 * t)
    ctx.set_source(sail)
    ctx.move_to(2, -196)
    ctx.curve_to(-50 - billow, -150, -96 - billow, -80, -92, -22)
    ctx.curve_to(-60, -12, -28, -12, 2, -18)
    ctx.close_path()
    ctx.fill()
    # its stripe and star
    ctx.save()
    ctx.move_to(2, -196)
    ctx.curve_to(-50 - billow, -150, -96 - billow, -80, -92, -22)
    ctx.curve_to(-60, -12, -28, -12, 2, -18)
    ctx.close_path()
    ctx.clip()
    ctx.set_source_rgb(*rgb("#e8604f"))
    ctx.move_to(-120, -64)
    ctx.curve_to(-60, -50, -30, -50, 10, -60)
    ctx.line_to(10, -38)
    ctx.curve_to(-30, -28, -60, -28, -120, -42)
    ctx.fill()
    ctx.set_source_rgb(*rgb("#2f7f93"))
    star(ctx, -32, -104, 17)
    ctx.fill()
    ctx.restore()
    # jib
    jib = cairo.LinearGradient(10, 0, 90, 0)
    jib.add_color_stop_rgb(0, *rgb("#fffaf0"))
    jib.add_color_stop_rgb(1, *rgb("#ffe6c7"))
    ctx.set_source(jib)
    ctx.move_to(12, -178)
    ctx.curve_to(40 + billow, -120, 66 + billow, -70, 88, -16)
    ctx.curve_to(60, -12, 36, -14, 12, -20)
    ctx.close_path()
    ctx.fill()
    # mast and pennant
    ctx.set_source_rgb(*rgb("#6b4030"))
    ctx.rectangle(3, -210, 7, 222)
    ctx.fill()
    ctx.set_source_rgb(*rgb("#e8604f"))
    ctx.move_to(6, -212)
    ctx.curve_to(-10, -218 + 3 * math.sin(8 * t), -22, -206 + 4 * math.sin(8 * t + 1), -42, -210 + 5 * math.sin(8 * t + 2))
    ctx.curve_to(-24, -200, -10, -198, 6, -198)
    ctx.fill()
    # hull
    hull = cairo.LinearGradient(0, -8, 0, 46)
    hull.add_color_stop_rgb(0, *rgb("#b5583f"))
    hull.add_color_stop_rgb(1, *rgb("#6d2f35"))
    ctx.set_source(hull)
    ctx.move_to(-104, -6)
    ctx.curve_to(-40, 6, 50, 6, 118, -14)
    ctx.curve_to(104, 22, 78, 44, 50, 46)
    ctx.line_to(-62, 46)
    ctx.curve_to(-88, 40, -100, 20, -104, -6)
    ctx.fill()
    ctx.set_source_rgb(*rgb("#ffe2b0"))
    ctx.set_line_width(5)
    ctx.move_to(-103, -4)
    ctx.curve_to(-40, 9, 50, 9, 116, -11)
    ctx.stroke()
    for port in (-50, -8, 34):
        ctx.set_source_rgb(*rgb("#ffcf6b"))
        ctx.arc(port, 22, 6, 0, 2 * math.pi)
        ctx.fill()
    ctx.restore()
    return x


def coins(ctx, t, boat_x):
    """Coins on an arc that the boat collects."""
    for index in range(5):
        x, y = 190 + 62 * index, 640 - 46 * math.sin(math.pi * (index + 0.5) / 5)
        appear = spring((t - 0.9 - 0.12 * index) * 1.6)
        taken = ease((t - 2.4 - 0.2 * index) / 0.45)
        if appear <= 0 or taken >= 1:
            continue
        ctx.save()
        ctx.translate(x + (boat_x - 20 - x) * taken, y - 90 * math.sin(math.pi * taken) + 60 * taken)
        scale = appear * (1 - 0.7 * taken)
        ctx.scale(scale * (0.25 + 0.75 * abs(math.cos(2.4 * t + 0.7 * index))), scale)
        ctx.set_source_rgb(*rgb("#c9772b"))
        ctx.arc(0, 2, 22, 0, 2 * math.pi)
        ctx.fill()
        ctx.set_source_rgb(*rgb("#ffc94d"))
        ctx.arc(0, 0, 21, 0, 2 * math.pi)
        ctx.fill()
        ctx.set_source_rgb(*rgb("#fff0b8"))
        ctx.set_line_width(2.5)
        ctx.arc(0, 0, 15.5, 0, 2 * math.pi)
        ctx.stroke()
        ctx.set_source_rgb(*rgb("#e39a33"))
        star(ctx, 0, 0.5, 11)
        ctx.fill()
        ctx.restore()


# ---------------------------------------------------------------- lettering


def veil(ctx, top, bottom, alpha):
    gradient = cairo.LinearGradient(0, top, 0, bottom)
    gradient.add_color_stop_rgba(0, 0.09, 0.07, 0.27, alpha)
    gradient.add_color_stop_rgba(1, 0.09, 0.07, 0.27, 0)
    ctx.set_source(gradient)
    ctx.rectangle(0, min(top, bottom), WIDTH, abs(bottom - top))
    ctx.fill()


def frame(ctx, t):
    # A slow push towards the scene.
    zoom = 1.02 + 0.05 * ease(t / SECONDS)
    ctx.save()
    ctx.translate(WIDTH / 2, HORIZON)
    ctx.scale(zoom, zoom)
    ctx.translate(-WIDTH / 2, -HORIZON)
    sky(ctx, t)
    stars(ctx, t)
    sun_x = sun(ctx, t)
    clouds(ctx, t)
    ridge(ctx, WIDTH, 6 * t, HORIZON + 1, 74, (rgb("#b0658f"), rgb("#e08f86")), 11)
    ridge(ctx, WIDTH, 12 * t, HORIZON + 1, 44, (rgb("#7d4a86"), rgb("#b96a86")), 23)
    sea(ctx, t, sun_x)
    floating_island(ctx, 446 - 8 * t, 396, 0.84, t)
    gulls(ctx, t)
    lighthouse(ctx, t)
    foam(ctx, t, 92 - 4 * t)
    wave_band(ctx, t, 672, 5, 34, rgb("#4a4792"), 0.8, 46)
    wave_band(ctx, t, 716, 7, 52, rgb("#3d3d87"), 0.6, 58)
    boat_x = boat(ctx, t)
    coins(ctx, t, boat_x)
    wave_band(ctx, t, 800, 9, 80, rgb("#33367c"), 0.82, 70)
    wave_band(ctx, t, 862, 11, 120, rgb("#272b6a"), 0.9, 88)
    ctx.restore()
    veil(ctx, 0, 300, 0.5)
    lettering(ctx, "SKY", WIDTH / 2, 158, 96, t - 0.35)
    lettering(ctx, "HARBOR", WIDTH / 2, 250, 76, t - 0.6)
    lettering(ctx, "Set sail today", WIDTH / 2, 896, 46, t - 3.7, 0.03)
    fade = 1 - ease(t / 0.4)
    ctx.set_source_rgba(0.09, 0.07, 0.27, fade)
    ctx.paint()


# ---------------------------------------------------------------- music


def music():
    track = silence(SECONDS)
    chords = [(0, 4, 7), (-3, 0, 4), (-7, -3, 0), (-5, -1, 2)]  # C, Am, F, G
    beat = SECONDS / 16
    for bar, chord in enumerate(chords):
        at = bar * 4 * beat
        for tone in chord:
            place(track, at, note(pitch(tone - 12), 4.4 * beat, 0.12, 0.25), 0.10)
        place(track, at, note(pitch(chord[0] - 24), 3 * beat, 0.02, 0.3), 0.22)
        for step in range(8):
            tone = chord[(0, 1, 2, 1, 0, 2, 1, 2)[step]] + (12 if step % 4 == 2 else 0)
            place(track, at + step * beat / 2, note(pitch(tone + 12), 0.7, 0.004, 0.35), 0.11)
    for at, tone in ((0, 19), (1.5, 16), (2, 19), (4, 24), (5.5, 23), (6, 19), (8, 21), (9.5, 19), (10, 16), (12, 19), (14, 24)):
        place(track, at * beat, note(pitch(tone), 1.3, 0.01, 0.2), 0.12)
    return mastered(track, SECONDS, 0.5)


if __name__ == "__main__":
    encode(OUT, frame, music(), WIDTH, HEIGHT, FPS, SECONDS)
