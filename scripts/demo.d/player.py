"""Somebody who plays the coin game: looks at the screen and uses mouse and keyboard, and knows nothing else of it."""

import time

from person import Person
from stage import HEIGHT, WIDTH

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


class Player(Person):
    """Plays one round: watches a video for coins and clicks its end card, plays the playable, spends the coins."""

    def button(self, what, colour, width=100):
        return self.until(f"the button \"{what}\" to be seen", lambda: self.screen.find(colour, width))

    def enabled(self, what, after=0):
        return self.until(f"the {what} to be enabled", lambda: [
            note for note in self.app.notes(what=what, enabled="yes") if note["seconds"] > after])

    def covered_and_moving(self):
        self.until("the game to be covered", lambda: not self.screen.find(WATCH_GOLD, 100))
        first = self.screen.look()
        self.until("the ad to move", lambda: self.screen.look() != first)

    def paid(self, number):
        closed = self.until("the ad to close", lambda: self.app.notes(what="showCampaign")[number - 1:])[0]
        self.until("the coins to be paid", lambda: self.app.notes(what="coins", change=str(REWARD))[number - 1:])
        return closed["seconds"] - 0.001

    def spend(self, number):
        self.screen.click(self.button("50 coins", BUY_GREEN, 60))
        self.until("the purchase", lambda: self.app.notes(what="coins", change=str(-REWARD))[number - 1:])
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
        self.until("the popup to close", lambda: self.app.notes(what="showRewardablePopup"))
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
        self.until("the wall to close", lambda: self.app.notes(what="showOfferWall"))
        self.until("the desktop to be asked", lambda: len(self.desktop.opened()) == 2)
        screen.write("17-what-the-desktop-was-asked-to-open", self.desktop.opened())

    def page_buttons(self):
        """The two buttons side by side."""
        x, y = self.until("the button \"Offers\" to be seen", lambda: self.screen.find_topmost(PAGE_AQUA, 130))
        left = x if x < WIDTH // 2 else WIDTH - x
        return (left, y), (WIDTH - left, y)


def play(screen, desktop, game, service, deadline):
    player = Player(screen, desktop, game, service, deadline)
    print("Playing:", flush=True)
    player.watch_the_video()
    player.click_its_end_card()
    player.play_the_playable()
    player.close_it()
    player.look_at_the_wall(player.take_the_special_offer())
    player.leave()
