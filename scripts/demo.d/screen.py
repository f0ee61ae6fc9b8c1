"""The display that the demo plays on, as somebody in front of it sees and uses it."""

import os
import subprocess

from stage import HEIGHT, SCREEN, WIDTH, Failure

SAMPLING = 2  # every second pixel is enough to look at


class Screen:
    """The display: pictures of the window, which fills its upper left, and the hands in front of it."""

    def __init__(self, display, folder):
        self.framebuffer = display.framebuffer
        self.title, self.width, self.height = "", WIDTH, HEIGHT
        self.env = {**os.environ, "DISPLAY": display.number}
        self.folder = folder

    def run(self, *command):
        try:
            done = subprocess.run([str(part) for part in command], env=self.env, capture_output=True, timeout=20,
                                  check=False)
        except subprocess.TimeoutExpired as hanging:
            raise Failure(f"{' '.join(hanging.cmd)} did not come back within 20 s.") from hanging
        if done.returncode:
            raise Failure(f"{command[0]} failed: {done.stderr.decode(errors='replace').strip()}")
        return done.stdout

    def look(self):
        """The screen as rows of pixels (blue, green, red); every second one in every second row."""
        line = SCREEN * 4
        pixels = self.framebuffer.read_bytes()[-SCREEN * line:]  # they end the dump, four bytes each
        rows = [pixels[row * line:row * line + self.width * 4] for row in range(0, self.height, SAMPLING)]
        step = 4 * SAMPLING
        return [list(zip(row[0::step], row[1::step], row[2::step])) for row in rows]

    def photograph(self, name):
        window = f"{self.width}x{self.height}+0+0"
        self.run("convert", f"xwd:{self.framebuffer}", "-crop", window, "+repage", self.folder / f"{name}.png")
        print(f"  {self.folder}/{name}.png", flush=True)

    def write(self, name, lines):
        text = "\n\n".join("\n".join(line[at:at + 64] for at in range(0, len(line), 64)) for line in lines)
        self.run("convert", "-background", "white", "-fill", "#1c2733", "-font", "DejaVu-Sans-Mono", "-pointsize", "14",
                 f"label:{text}", "-bordercolor", "white", "-border", "24", self.folder / f"{name}.png")
        print(f"  {self.folder}/{name}.png", flush=True)

    def focus(self, title):
        """What a window manager does for a new window."""
        self.title, self.width, self.height = title, WIDTH, HEIGHT
        self.run("xdotool", "search", "--sync", "--onlyvisible", "--name", title, "windowfocus")

    def resize(self, width, height):
        """What a desktop does that turns with its device."""
        self.run("xdotool", "search", "--onlyvisible", "--name", self.title, "windowsize", width, height)
        self.width, self.height = width, height

    def point_at(self, place):
        self.run("xdotool", "mousemove", *place)

    def click(self, place):
        self.run("xdotool", "mousemove", *place, "click", "1")

    def press(self, *keys):
        self.run("xdotool", "key", *keys)

    def turn_wheel(self, downwards):
        """One notch."""
        self.run("xdotool", "click", "5" if downwards else "4")

    def find(self, colour, width):
        """The middle of the thing of this colour that is at least so wide, or None."""
        runs = self.runs(colour, width)
        if not runs:
            return None
        left = min(start for _, start, _ in runs)
        right = max(start + length for _, start, length in runs)
        return (left + right) * SAMPLING // 2, (runs[0][0] + runs[-1][0]) * SAMPLING // 2

    def find_topmost(self, colour, width):
        """A point in the upper edge of the topmost thing of this colour that is at least so wide, or None."""
        for y, start, length in self.runs(colour, width):
            return (start + length // 2) * SAMPLING, (y + 2) * SAMPLING
        return None

    def find_all(self, colour, width):
        """The middle of each thing of this colour that is at least so wide, from top to bottom."""
        things = []
        for y, start, length in self.runs(colour, width):
            if not things or y > things[-1][-1][0] + 1:
                things.append([])
            things[-1].append((y, start, length))
        return [((rows[0][1] * 2 + rows[0][2]) * SAMPLING // 2, (rows[0][0] + rows[-1][0]) * SAMPLING // 2)
                for rows in things]

    def runs(self, colour, width):
        """(row, start, length) of the longest run of this colour in each row that has one at least so wide."""
        found = ((y, *longest_run(row, colour)) for y, row in enumerate(self.look()))
        return [(y, start, length) for y, start, length in found if length >= width // SAMPLING]

    def icon(self, place, reach=20):
        """The shape of a white icon at a place, whatever moves behind it: its pixels."""
        left, top = ((middle - reach) // SAMPLING for middle in place)
        return {(x, y) for y, row in enumerate(self.look()[top:top + reach])
                for x, pixel in enumerate(row[left:left + reach]) if min(pixel) > 235}


def longest_run(row, colour, tolerance=18):
    """Where in the row the longest run of about this colour starts, and how long it is."""
    best, start = (0, 0), 0
    for x, pixel in enumerate([*row, None]):
        if pixel and all(abs(a - b) <= tolerance for a, b in zip(pixel, colour)):
            continue
        best = max(best, (x - start, start))
        start = x + 1
    return best[1], best[0]
