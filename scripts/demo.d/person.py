"""Somebody who plays the coin game: looks at the screen and uses mouse and keyboard, and knows nothing else of it."""

import os
import subprocess
import time

from stage import HEIGHT, WIDTH, Failure

REWARD = 50

# What the buttons look like (blue, green, red); that is how they are found.
WATCH_GOLD = (0x4D, 0xC9, 0xFF)
GET_IT_RED = (0x3D, 0x43, 0xC8)
STORE_BLUE = (0xD6, 0x57, 0x12)
BUY_GREEN = (0x5C, 0x7A, 0x1F)
MUTE = (34, 34)
NO_ICON = set()
SAMPLING = 2  # every second pixel is enough to look at


class Screen:
    """The display: pictures of it, and the hands in front of it."""

    def __init__(self, display, folder):
        self.framebuffer = display.framebuffer
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
        pixels = self.framebuffer.read_bytes()[-WIDTH * HEIGHT * 4:]  # they end the dump, four bytes each
        rows = [pixels[row * WIDTH * 4:(row + 1) * WIDTH * 4] for row in range(0, HEIGHT, SAMPLING)]
        step = 4 * SAMPLING
        return [list(zip(row[0::step], row[1::step], row[2::step])) for row in rows]

    def photograph(self, name):
        self.run("convert", f"xwd:{self.framebuffer}", self.folder / f"{name}.png")
        print(f"  {self.folder}/{name}.png", flush=True)

    def focus(self, title):
        """What a window manager does for a new window."""
        self.run("xdotool", "search", "--sync", "--onlyvisible", "--name", title, "windowfocus")

    def click(self, place):
        self.run("xdotool", "mousemove", *place, "click", "1")

    def press(self, keys):
        self.run("xdotool", "key", keys)

    def find(self, colour, width):
        """The middle of the thing of this colour that is at least so wide, or None."""
        runs = [(y, *longest_run(row, colour)) for y, row in enumerate(self.look())]
        runs = [(y, start, length) for y, start, length in runs if length >= width // SAMPLING]
        if not runs:
            return None
        left = min(start for _, start, _ in runs)
        right = max(start + length for _, start, length in runs)
        return (left + right) * SAMPLING // 2, (runs[0][0] + runs[-1][0]) * SAMPLING // 2

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


def play(screen, game, service, deadline):
    """One round: watch a video for coins, click its end card, close the store sheet, spend the coins, leave."""

    def until(what, condition):
        return deadline.wait(what, condition, alive=game)

    def button(what, colour, width=100):
        return until(f"the button \"{what}\" to be seen", lambda: screen.find(colour, width))

    def counted(kind):
        def has_counted():
            service.read_journal()
            return any(event["kind"] == kind for event in service.events)
        until(f"the service to count the {kind}", has_counted)

    def watch_button_enabled(after=0):
        return until("a video to be ready", lambda: [
            note for note in game.notes(what="video button", enabled="yes") if note["seconds"] > after])

    print("Playing:", flush=True)
    screen.focus("Little Bay")
    watch_button_enabled()
    watch = button("Watch a video", WATCH_GOLD)
    screen.photograph("01-game")

    screen.click(watch)
    counted("impression")
    until("the game to be covered", lambda: not screen.find(WATCH_GOLD, 100))
    first = screen.look()
    until("the video to move", lambda: screen.look() != first)
    time.sleep(1)  # watching it: the ring in the picture is to have run down a little
    screen.photograph("02-video")
    sound_on = screen.icon(MUTE)
    screen.click(MUTE)
    until("the mute control to look muted", lambda: screen.icon(MUTE) not in (sound_on, NO_ICON))
    screen.photograph("03-muted")

    counted("finished")
    get_it = button("Get it", GET_IT_RED, 120)
    screen.photograph("04-end-card")
    screen.click(get_it)
    counted("click")
    open_store = button("Open store page", STORE_BLUE)
    screen.photograph("05-store-sheet")
    until("the advertiser to hear of it", lambda: service.was_asked_for("/track/"))
    screen.click((open_store[0], open_store[1] + 62))  # "Not now", right below it

    closed = until("the ad to close", lambda: game.notes(what="showCampaign"))[0]
    until("the coins to be paid", lambda: game.notes(what="coins", change=str(REWARD)))
    watch_button_enabled(after=closed["seconds"] - 0.001)
    button("Watch a video", WATCH_GOLD)
    screen.photograph("06-coins-paid")

    screen.click(button("50 coins", BUY_GREEN, 60))
    until("the purchase", lambda: game.notes(what="coins", change=str(-REWARD)))
    until("the new sail", lambda: not screen.find(BUY_GREEN, 60))
    screen.photograph("07-new-sail")
    screen.press("ctrl+q")
    deadline.wait("the game to end", lambda: game.exit_code is not None)
