"""The mark beside an ad that leads to why it is shown."""

import math

from art.drawing import disc, rgb, slab


def mark(ctx):
    """An "i" in a ring, legible at a quarter of its 64 x 64 on any ground."""
    disc(ctx, 32, 32, 31, "#fffaf0")
    ctx.arc(32, 32, 25, 0, 2 * math.pi)
    ctx.set_line_width(6)
    ctx.set_source_rgb(*rgb("#226a7c"))
    ctx.stroke()
    disc(ctx, 32, 19, 5, "#e8604f")
    slab(ctx, 28, 27, 8, 22, 4, "#226a7c")
