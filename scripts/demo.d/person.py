"""Somebody who plays the coin game: looks at the screen and uses mouse and keyboard, and knows nothing else of it."""

import os
import subprocess
import time

from stage import HEIGHT, SCREEN, WIDTH, Failure

REWARD = 50

# What the buttons look like (blue, green, red); that is how they are found.
WATCH_GOLD = (0x4D, 0xC9, 0xFF)
PAGE_AQUA = (0xF4, 0xF1, 0xDF)
PLAY_LAVENDER = (0xFF, 0xB6, 0xC9)
GET_IT_RED = (0x3D, 0x43, 0xC8)
STORE_BLUE = (0xD6, 0x57, 0x12)
BUY_GREEN = (0x5C, 0x7A, 0x1F)
MUTE = (34, 34)
CLOSE_RIGHT_OF_GET_IT = 280  # in the playable's last panel
NO_ICON = set()
SAMPLING = 2  # every second pixel is enough to look at


class Screen:
    """The display: pictures of the game's window, which fills its upper left, and the hands in front of it."""

    def __init__(self, display, folder):
        self.framebuffer = display.framebuffer
        self.width, self.height = WIDTH, HEIGHT
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
        self.run("xdotool", "search", "--sync", "--onlyvisible", "--name", title, "windowfocus")

    def resize(self, width, height):
        """What a desktop does that turns with its device."""
        self.run("xdotool", "search", "--onlyvisible", "--name", "Little Bay", "windowsize", width, height)
        self.width, self.height = width, height

    def point_at(self, place):
        self.run("xdotool", "mousemove", *place)

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

    def find_topmost(self, colour, width):
        """A point in the upper edge of the topmost thing of this colour that is at least so wide, or None."""
        for y, row in enumerate(self.look()):
            start, length = longest_run(row, colour)
            if length >= width // SAMPLING:
                return (start + length // 2) * SAMPLING, (y + 2) * SAMPLING
        return None

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


class Person:
    """Plays one round: watches a video for coins and clicks its end card, plays the playable, spends the coins."""

    def __init__(self, screen, desktop, game, service, deadline):
        self.screen, self.desktop, self.deadline = screen, desktop, deadline
        self.game, self.service = game, service

    def until(self, what, condition):
        return self.deadline.wait(what, condition, alive=self.game)

    def button(self, what, colour, width=100):
        return self.until(f"the button \"{what}\" to be seen", lambda: self.screen.find(colour, width))

    def counted(self, kind, number):
        def has_counted():
            self.service.read_journal()
            return sum(event["kind"] == kind for event in self.service.events) >= number
        self.until(f"the service to count the {kind}", has_counted)

    def enabled(self, what, after=0):
        return self.until(f"the {what} to be enabled", lambda: [
            note for note in self.game.notes(what=what, enabled="yes") if note["seconds"] > after])

    def covered_and_moving(self):
        self.until("the game to be covered", lambda: not self.screen.find(WATCH_GOLD, 100))
        first = self.screen.look()
        self.until("the ad to move", lambda: self.screen.look() != first)

    def paid(self, number):
        closed = self.until("the ad to close", lambda: self.game.notes(what="showCampaign")[number - 1:])[0]
        self.until("the coins to be paid", lambda: self.game.notes(what="coins", change=str(REWARD))[number - 1:])
        return closed["seconds"] - 0.001

    def spend(self, number):
        self.screen.click(self.button("50 coins", BUY_GREEN, 60))
        self.until("the purchase", lambda: self.game.notes(what="coins", change=str(-REWARD))[number - 1:])
        self.until("the purchase to be seen", lambda: not self.screen.find(BUY_GREEN, 60))

    def watch_the_video(self):
        screen = self.screen
        screen.focus("Little Bay")
        self.enabled("video button")
        self.enabled("play button")
        watch = self.button("Watch a video", WATCH_GOLD)
        screen.photograph("01-game")
        screen.click(watch)
        self.counted("impression", 1)
        self.covered_and_moving()
        time.sleep(1)  # watching it: the ring in the picture is to have run down a little
        screen.photograph("02-video")
        sound_on = screen.icon(MUTE)
        screen.click(MUTE)
        self.until("the mute control to look muted", lambda: screen.icon(MUTE) not in (sound_on, NO_ICON))
        screen.photograph("03-muted")

    def click_its_end_card(self):
        screen = self.screen
        self.counted("finished", 1)
        get_it = self.button("Get it", GET_IT_RED, 120)
        screen.photograph("04-end-card")
        screen.click(get_it)
        self.counted("click", 1)
        open_store = self.button("Open store page", STORE_BLUE)
        screen.photograph("05-store-sheet")
        self.until("the advertiser to hear of it", lambda: self.service.was_asked_for("/track/"))
        screen.click((open_store[0], open_store[1] + 62))  # "Not now", right below it
        self.enabled("video button", after=self.paid(1))
        self.button("Watch a video", WATCH_GOLD)
        screen.photograph("06-coins-paid")
        self.spend(1)
        screen.photograph("07-new-sail")

    def play_the_playable(self):
        """It is made for landscape, so the upright window shows it turned; the desktop may turn as well."""
        screen = self.screen
        screen.click(self.button("Play for coins", PLAY_LAVENDER))
        self.counted("impression", 2)
        self.covered_and_moving()
        time.sleep(1)  # the countdown is to have run down a little
        screen.photograph("08-playable-turned")
        screen.press("ctrl+Left")
        time.sleep(0.5)  # nothing but a picture tells that it was drawn
        screen.photograph("09-playable-turned-over")
        screen.press("ctrl+Right")
        screen.press("ctrl+Right")
        screen.resize(HEIGHT, WIDTH)
        for step in range(8):  # steers a little, by mouse
            screen.point_at((WIDTH + 40 * (step % 4), WIDTH // 2))
            time.sleep(0.3)
        screen.photograph("10-playable-upright")

    def close_it(self):
        screen = self.screen
        self.counted("finished", 2)
        x, y = self.button("Get it", GET_IT_RED)
        time.sleep(1)  # a hand that was still steering presses nothing in the panel's first moment
        screen.photograph("11-playable-closable")
        screen.resize(WIDTH, HEIGHT)
        time.sleep(0.5)
        screen.photograph("12-playable-closable-turned")
        screen.click((y, HEIGHT - (x + CLOSE_RIGHT_OF_GET_IT)))  # where "Close" is to be seen now
        self.enabled("play button", after=self.paid(2))
        self.button("Play for coins", PLAY_LAVENDER)
        screen.photograph("13-coins-paid-again")
        self.spend(2)
        screen.photograph("14-lighthouse")

    def take_the_special_offer(self):
        screen = self.screen
        screen.press("ctrl+Left")  # the device is held upright again
        wall, special = self.page_buttons()
        screen.click(special)
        self.counted("impression", 3)
        offer = self.button("Get the offer", GET_IT_RED)
        screen.photograph("15-special-offer")
        screen.click(offer)
        self.until("the popup to close", lambda: self.game.notes(what="showRewardablePopup"))
        self.until("the desktop to be asked", lambda: len(self.desktop.opened()) == 1)
        return wall

    def look_at_the_wall(self, wall):
        screen = self.screen
        self.until("the game to be back", lambda: screen.find(PAGE_AQUA, 130))
        screen.click(wall)
        self.until("the wall to be asked for", lambda: self.service.was_asked_for("/ioswidget/"))
        self.until("the wall to be seen", lambda: screen.find_topmost(GET_IT_RED, 40))
        screen.photograph("16-offer-wall")
        screen.click(screen.find_topmost(GET_IT_RED, 40))
        self.until("the wall to close", lambda: self.game.notes(what="showOfferWall"))
        self.until("the desktop to be asked", lambda: len(self.desktop.opened()) == 2)
        screen.write("17-what-the-desktop-was-asked-to-open", self.desktop.opened())

    def page_buttons(self):
        """The two buttons side by side."""
        x, y = self.until("the button \"Offers\" to be seen", lambda: self.screen.find_topmost(PAGE_AQUA, 130))
        left = x if x < WIDTH // 2 else WIDTH - x
        return (left, y), (WIDTH - left, y)

    def leave(self):
        self.screen.press("ctrl+q")
        self.deadline.wait("the game to end", lambda: self.game.exit_code is not None)


def play(screen, desktop, game, service, deadline):
    person = Person(screen, desktop, game, service, deadline)
    print("Playing:", flush=True)
    person.watch_the_video()
    person.click_its_end_card()
    person.play_the_playable()
    person.close_it()
    person.look_at_the_wall(person.take_the_special_offer())
    person.leave()
