#!/usr/bin/python3
"""Makes what the native ads show: pictures in static/native/, the film media/orbit-courier.mp4, and broken files.

Needs Debian's ffmpeg, python3-cairo and python3-numpy, fonts-cantarell and fonts-dejavu-core. The apps do not exist.
Name some of pictures, film and broken to make only those; the broken files are made of the whole ones.
"""

import argparse
import pathlib
import subprocess

import cairo

from art import baking, broken, hiking, language, podcast, privacy, space, space_film
from art.film import encode

HERE = pathlib.Path(__file__).resolve().parent
PICTURES, FILM = HERE / "static" / "native", HERE / "media" / "orbit-courier.mp4"
ICON, WIDE, MARK = (512, 512), (1200, 627), (64, 64)

DRAWINGS = {
    "butter-bloom-icon.png": (ICON, baking.icon),
    "butter-bloom-counter.jpg": (WIDE, baking.image),
    "cairnway-icon.png": (ICON, hiking.icon),
    "cairnway-sunrise.jpg": (WIDE, hiking.sunrise),
    "cairnway-map.png": (WIDE, hiking.map_sheet),
    "lanternwave-icon.png": (ICON, podcast.icon),
    "lanternwave-town.jpg": (WIDE, podcast.image),
    "wordgrove-icon.png": (ICON, language.icon),
    "wordgrove-trees.jpg": (WIDE, language.image),
    "orbit-courier-icon.png": (ICON, space.icon),
    "orbit-courier-village.jpg": (WIDE, space.image),
    "privacy.png": (MARK, privacy.mark),
}


# Flat drawings are smaller without PNG's filters, which cairo always uses.
CODECS = {
    ".png": "-c:v png -pix_fmt rgb24 -pred none -compression_level 9",
    ".jpg": "-c:v mjpeg -pix_fmt yuvj444p -huffman optimal -q:v 4",
}


def save(surface, path):
    width, height = surface.get_width(), surface.get_height()
    if (width, height) != WIDE:  # may have transparent corners
        surface.write_to_png(str(path))
        return
    command = f"""ffmpeg -y -loglevel error -f rawvideo -pix_fmt bgra -s {width}x{height} -i - -frames:v 1
        {CODECS[path.suffix]} -fflags +bitexact -flags:v +bitexact"""
    subprocess.run([*command.split(), str(path)], input=bytes(surface.get_data()), check=True)


def draw_pictures():
    PICTURES.mkdir(parents=True, exist_ok=True)
    for name, ((width, height), draw) in DRAWINGS.items():
        surface = cairo.ImageSurface(cairo.FORMAT_ARGB32, width, height)
        draw(cairo.Context(surface))
        surface.flush()
        save(surface, PICTURES / name)
        print(f"{name}: {(PICTURES / name).stat().st_size // 1024} KiB")


def make_film():
    film = space_film
    encode(FILM, film.frame, film.music(), film.WIDTH, film.HEIGHT, film.FPS, film.SECONDS, 28)


def main():
    work = {"pictures": draw_pictures, "film": make_film, "broken": lambda: broken.make(HERE)}
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("what", nargs="*", metavar="WHAT", help=", ".join(work))
    wanted = parser.parse_args().what
    unknown = [name for name in wanted if name not in work]
    if unknown:
        parser.error(f"there is no {', '.join(unknown)}: name {', '.join(work)}, or nothing to make all")
    for name, make in work.items():
        if not wanted or name in wanted:
            make()


if __name__ == "__main__":
    main()
