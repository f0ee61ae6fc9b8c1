"""Somebody who reads the newspaper to its end and back: looks at the screen and uses mouse wheel and keyboard."""

import time

from person import Person
from stage import Failure

TITLE = "Morning Tide"
WIDE = (1000, 700)
SCROLL_BAR = 20  # at the right edge
MARGIN = (10, 400)  # nothing lights up under the pointer there

# What things look like (blue, green, red); that is how they are found.
AD_YELLOW = (0x2D, 0xD3, 0xF6)
CALL_BLUE = (0xE4, 0x84, 0x35)
STAR_GOLD = (0x1E, 0xB6, 0xFF)
STARS = (80, 190)  # where in a row they begin and end
BELOW_MARK = (50, 72)  # and how far below the mark of the ad

RATINGS = [0, 3, 3.5, 4.5, 5]  # as seen, of 0, 3.0, 3.0001, 4.99 and 5


class Reader(Person):
    """Scrolls through the feed and notes when it went to which stop, and when each ad came into sight."""

    def __init__(self, *people_and_things):
        super().__init__(*people_and_things)
        self.stops = []  # (time of leaving for it, name)
        self.not_yet_seen = []  # for each ad, a time at which nothing of it had been on screen

    def go_to(self, stop):
        self.stops.append((time.time(), stop))

    def marks(self):
        """Where "Ad" is to be read, from top to bottom; letters divide each mark into an upper and a lower part."""
        heights = []
        for _, y in self.screen.find_all(AD_YELLOW, 18):
            if not heights or y > heights[-1] + 20:
                heights.append(y)
        return heights

    def wide_button(self, what):
        return self.until(f"the button \"{what}\" to be seen", lambda: self.screen.find(CALL_BLUE, 300))

    def wide_button_below(self, height):
        """Whether the button under a video is to be seen, so far down that there is something of the video too."""
        button = self.screen.find(CALL_BLUE, 300)
        return button and button[1] > height

    def notch(self, downwards):
        before = self.screen.look()
        self.screen.turn_wheel(downwards)
        self.until("the feed to scroll", lambda: self.screen.look() != before)

    def still(self):
        """Until nothing has moved for a moment."""
        looks = [None] * 4
        def nothing_moves():
            looks.append(self.screen.look())
            return all(look == looks[-1] for look in looks[-4:])
        self.until("the screen to be still", nothing_moves)

    def moving(self):
        first = self.screen.look()
        self.until("the video to move", lambda: self.screen.look() != first)

    def scroll_to_next_ad(self, height):
        """Down, until one more ad has come in from below and up to this height."""
        turned, comes = [time.time()] * 3, False
        while not (comes and self.marks()[-1] <= height):
            before = self.marks()
            turned.append(time.time())
            self.notch(downwards=True)
            after = self.marks()
            if not comes and after and after[-1] > (before[-1] if before else 0):
                comes = True
                self.not_yet_seen.append(turned[-3])  # its edge comes before its mark, and a look may be early

    def scroll_until(self, what, downwards, condition):
        def has_come():
            if condition(self.marks()):
                return True
            self.notch(downwards)
            return False
        self.until(what, has_come)

    def look_at_the_top(self):
        self.go_to("top")
        self.screen.focus(TITLE)
        self.until("the ads to be placed", lambda: len(self.app.notes(what="ad placed")) == 3)
        self.counted("started", 1)
        self.still()
        self.screen.photograph("18-feed-top")
        self.screen.point_at(MARGIN)

    def watch_the_video(self):
        self.go_to("video")
        self.scroll_to_next_ad(400)
        self.counted("impression", 1)
        self.moving()
        self.wide_button("Play")
        self.screen.photograph("19-feed-video")
        self.counted("finished", 1)
        self.go_to("past the video")
        self.scroll_until("the video to be out of sight", True, lambda marks: not marks and not self.wide_button_below(170))
        self.screen.photograph("20-feed-past-the-video")

    def follow_the_row(self):
        screen = self.screen
        self.go_to("row")
        self.scroll_to_next_ad(400)
        self.counted("impression", 2)
        self.still()
        screen.photograph("21-feed-row")
        screen.click(self.until("the button \"Listen\" to be seen", lambda: screen.find(CALL_BLUE, 40)))
        self.counted("click", 1)
        self.until("the desktop to be asked", lambda: len(self.desktop.opened()) == 1)
        screen.press("shift+Tab", "Return")  # the privacy policy is before the button
        self.until("the desktop to be asked again", lambda: len(self.desktop.opened()) == 2)
        self.still()
        screen.photograph("22-feed-row-by-keyboard")
        screen.point_at(MARGIN)

    def read_to_the_end(self):
        self.go_to("pictures")
        self.scroll_to_next_ad(400)
        self.counted("impression", 3)
        self.counted("started", 2)
        self.wide_button("Install")
        self.still()
        self.screen.photograph("23-feed-pictures")
        self.go_to("end")
        self.screen.press("End")
        self.still()
        self.screen.photograph("24-feed-end")

    def go_back(self):
        self.go_to("back")
        self.scroll_until("row and pictures to be back", False, lambda marks: len(marks) == 2)
        self.scroll_until("both to leave", False, lambda marks: not marks)
        self.scroll_until("the video to be back", False, lambda marks: marks and marks[0] > 60)
        self.go_to("video again")
        self.moving()
        self.screen.photograph("25-feed-video-again")
        self.go_to("top again")
        self.screen.press("Home")
        self.still()
        self.screen.photograph("26-feed-top-again")

    def widen(self):
        self.go_to("wide")
        self.screen.resize(*WIDE)
        self.still()
        self.scroll_until("the video to be seen", True, lambda marks: marks and marks[0] < 150)
        self.moving()
        self.screen.photograph("27-feed-wide")

    def meet_late_ads(self, seconds):
        """Scrolls before the ads, so many seconds late, are there; whether they move nothing that is seen."""
        self.screen.focus(TITLE)
        self.screen.point_at(MARGIN)
        for _ in range(4):
            self.notch(downwards=True)
        self.still()
        before = self.without_scroll_bar()
        if self.app.notes(what="ad placed"):
            raise Failure(f"Ads that were to be {seconds} s late were not.")
        self.until("the late ads", lambda: len(self.app.notes(what="ad placed")) >= 2)
        self.still()
        self.screen.photograph("28-feed-late-ads")
        return self.without_scroll_bar() == before

    def without_scroll_bar(self):
        return [row[:-SCROLL_BAR // 2] for row in self.screen.look()]

    def look_at_five(self, name):
        """A gallery of five ads in rows."""
        self.screen.focus(TITLE)
        self.until("five ads to be seen", lambda: len(self.marks()) == 5)
        self.still()
        self.screen.photograph(name)

    def ratings(self):
        """What is gold, in stars, of each ad in the gallery of ratings; the last one has five."""
        rows = self.screen.look()
        gold = []
        for mark in self.marks():
            lines = rows[(mark + BELOW_MARK[0]) // 2:(mark + BELOW_MARK[1]) // 2]
            stars = [pixel for row in lines for pixel in row[STARS[0] // 2:STARS[1] // 2]]
            gold.append(sum(all(abs(a - b) <= 18 for a, b in zip(pixel, STAR_GOLD)) for pixel in stars))
        return [round(10 * count / max(gold[-1], 1)) / 2 for count in gold]


def read(screen, desktop, newspaper, service, deadline):
    reader = Reader(screen, desktop, newspaper, service, deadline)
    print("Reading:", flush=True)
    reader.look_at_the_top()
    reader.watch_the_video()
    reader.follow_the_row()
    reader.read_to_the_end()
    reader.go_back()
    reader.widen()
    reader.leave()
    return reader
