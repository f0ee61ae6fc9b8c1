"""The film of Orbit Courier: eight seconds in landscape. Three parcels fall on a small planet, and its people like it."""

import math

import cairo

from art.drawing import ease, glow, lettering, mix, rgb, spring, star
from art.film import mastered, note, pitch, place, silence
from art.space import houses, parachute, planet, rocket, space

WIDTH, HEIGHT, FPS, SECONDS = 960, 540, 30, 8
VILLAGE = (700, 640, 270)  # middle and radius of its planet
DROPS = ((2.2, 590, 386), (2.75, 700, 365), (3.3, 812, 387))  # when, and where the parcel lands
LEAVING = 4.2


def course(t):
    """Where the rocket is at t: it comes in an arc, waits above the village while it drops, and leaves."""
    arrive, leave = ease((t + 0.5) / 2.7), max(0.0, t - LEAVING)
    x = -190 + 720 * arrive + 90 * max(0.0, min(t, LEAVING) - 2.0) + 460 * leave**2
    y = 430 - 300 * math.sin(arrive * math.pi / 2) + 6 * math.sin(3 * t) - 130 * leave**2
    return x, y


def ship(ctx, t):
    x, y = course(t)
    ahead_x, ahead_y = course(t + 0.06)
    thrust = 70 + 60 * (1 - ease((t - 1.4) / 1.0)) + 130 * ease((t - LEAVING) / 0.5)
    if x < WIDTH + 300:
        rocket(ctx, x, y, 0.86, math.atan2(ahead_y - y, ahead_x - x + 8), t, thrust)


def drop(ctx, t, start, x, y):
    """One parcel: thrown out, slowed by its parachute, landed, cheered."""
    age = t - start
    if age <= 0:
        return
    from_x, from_y = course(start)
    fall = min(1.0, age / 2.1)
    at_x, at_y = from_x + (x - from_x) * ease(fall), from_y + 24 + (y - from_y - 24) * (0.35 * fall + 0.65 * fall * fall)
    opened = spring(1.4 * (age - 0.12))
    folded = 1 - ease((age - 2.1) / 0.3)
    ctx.save()
    ctx.translate(at_x, at_y)
    ctx.scale(min(1, 4 * age), min(1, 4 * age))
    parachute(ctx, 0, 0, 27, 0.16 * math.sin(2.6 * age + x) * folded, max(0.0, opened * folded))
    ctx.restore()
    cheer = (age - 2.1) / 1.5
    if 0 < cheer < 1:
        for index in range(5):
            angle = -math.pi / 2 + 0.42 * (index - 2)
            far = 34 + 74 * ease(cheer)
            ctx.set_source_rgba(*mix(rgb("#ffc94d"), rgb("#fff6d5"), index % 2), (1 - cheer) * ease(4 * cheer))
            star(ctx, x + far * math.cos(angle), y + far * math.sin(angle), 11)
            ctx.fill()


def trail(ctx, t):
    """Puffs where the rocket was."""
    for index in range(1, 26):
        then = t - 0.09 * index
        if then < 0 or then > 2.3:
            continue
        x, y = course(then)
        ctx.set_source_rgba(*rgb("#ffd489"), 0.5 * (1 - index / 26))
        ctx.arc(x - 80, y + 10, 3 + 0.32 * index, 0, 2 * math.pi)
        ctx.fill()


def title(ctx, t):
    veil = 0.5 * ease((t - 4.5) / 0.6)
    shade = cairo.LinearGradient(0, 0, 470, 0)
    shade.add_color_stop_rgba(0, 0.06, 0.05, 0.2, veil)
    shade.add_color_stop_rgba(1, 0.06, 0.05, 0.2, 0)
    ctx.set_source(shade)
    ctx.paint()
    lettering(ctx, "ORBIT", 262, 300, 96, t - 4.6)
    lettering(ctx, "COURIER", 262, 390, 78, t - 4.85)
    lettering(ctx, "Special delivery!", 262, 456, 40, t - 5.6, 0.025)


def frame(ctx, t):
    drift = ease(t / SECONDS)
    space(ctx, WIDTH, HEIGHT, t)
    glow(ctx, 780, 470, 420, rgb("#f08a6b"), 0.4)
    planet(ctx, 206 - 26 * drift, 118, 62, ("#ffd08a", "#ffe9b8", "#8a3f6b"), True, 4)
    planet(ctx, 850 - 14 * drift, 84, 26, ("#8fd0c0", "#b9e6d6", "#2a3f7a"), False, 8)
    planet(ctx, 70 - 40 * drift, 610, 120, ("#54509a", "#6d6ab8", "#14123f"), False, 6)
    trail(ctx, t)
    x, y, radius = VILLAGE
    planet(ctx, x, y, radius, ("#e8708a", "#f29a9a", "#4a1f66"), False, 2)
    houses(ctx, x, y, radius, 0.46)
    for start, at_x, at_y in DROPS:
        drop(ctx, t, start, at_x, at_y)
    ship(ctx, t)
    title(ctx, t)
    ctx.set_source_rgba(0.06, 0.05, 0.2, 1 - ease(t / 0.4))
    ctx.paint()


def music():
    track = silence(SECONDS)
    beat = SECONDS / 16
    for bar, chord in enumerate(((-5, -1, 2), (0, 4, 7), (-8, -5, -1), (-5, -1, 2))):  # G, C, Em, G
        at = bar * 4 * beat
        for tone in chord:
            place(track, at, note(pitch(tone), 4.4 * beat, 0.2, 0.2), 0.09)
        for step in range(4):
            place(track, at + step * beat, note(pitch(chord[0] - 12), 0.5, 0.01, 0.4), 0.13)
            place(track, at + (step + 0.5) * beat, note(pitch(chord[(1, 2)[step % 2]] + 12), 0.5, 0.005, 0.3), 0.1)
    for start, _, _ in DROPS:  # a falling whistle's worth of notes, then a bell
        for index, tone in enumerate((31, 28, 26, 23)):
            place(track, start + 0.09 * index, note(pitch(tone), 0.3, 0.004, 0.15), 0.07)
        place(track, start + 2.1, note(pitch(26), 1.2, 0.003, 0.4), 0.12)
    for index, tone in enumerate((14, 19, 23, 26)):
        place(track, 4.6 + 0.125 * index, note(pitch(tone), 1.4, 0.005, 0.3), 0.12)
    return mastered(track, SECONDS, 0.22)
