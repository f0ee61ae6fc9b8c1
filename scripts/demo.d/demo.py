"""Starts the ad service and an application with ads: the coin game, or the newspaper. Without a display it also plays
the game, reads the newspaper and checks what came of both."""

import argparse
import os
import pathlib
import signal
import sys

import feed_report
import player
import reader
import report
import screen
import stage

OUT = pathlib.Path("build/demo")
STEP, ROUND = 30, 180  # seconds that one step and all of them may take when the demo runs by itself
LATE = 8  # seconds, longer than somebody needs to begin to scroll


def play_automatically(on_stage, display):
    service = on_stage.start_service("game")
    game = on_stage.start_game()
    player.play(display, on_stage.desktop, game, service, stage.Deadline(STEP, ROUND))
    service.read_journal()
    print("\n" + report.table(game, service) + "\n")
    return report.verdict([*report.of_the_game(game, service, player.REWARD),
                           *report.rules_and_ends([game], service, on_stage.stop_service())])


def read_automatically(on_stage, display):
    deadline = stage.Deadline(STEP, ROUND)
    service = on_stage.start_service("feed")
    newspaper = on_stage.start_newspaper("feed")
    done = reader.read(display, on_stage.desktop, newspaper, service, deadline)
    opened = on_stage.desktop.opened()

    service.order({"path": "/api/sdk/native", "fault": "delay", "seconds": LATE, "times": 3})
    late = on_stage.start_newspaper("feed-late")
    patient = reader.Reader(display, on_stage.desktop, late, service, deadline)
    is_calm = patient.meet_late_ads(LATE)
    patient.leave()
    gallery = on_stage.start_newspaper("feed-ratings", "--gallery", "native-ratings")
    seer = reader.Reader(display, on_stage.desktop, gallery, service, deadline)
    seer.look_at_five("29-feed-ratings")
    ratings = seer.ratings()
    seer.leave()
    dark = on_stage.start_newspaper("feed-dark", "--gallery", "native-ratings", GTK_THEME="Adwaita:dark")
    night = reader.Reader(display, on_stage.desktop, dark, service, deadline)
    night.look_at_five("30-feed-dark")
    night.leave()

    service.read_journal()
    print("\n" + feed_report.table(done) + "\n")
    return report.verdict([*feed_report.of_the_newspaper(done, opened),
                           ("ads that came late moved nothing under the eye", is_calm),
                           (f"ratings were seen as {ratings} stars", ratings == reader.RATINGS),
                           *report.rules_and_ends([newspaper, late, gallery, dark], service,
                                                  on_stage.stop_service())])


def run_automatically(on_stage, what):
    display = screen.Screen(on_stage.open_display(), OUT)
    runs = {"game": play_automatically, "feed": read_automatically}
    try:
        ok = all([run(on_stage, display) for name, run in runs.items() if what in (name, None)])
    except stage.Failure:
        display.photograph("failure")
        raise
    print("\nThe demo " + ("went well." if ok else "FAILED."))
    return ok


def run_by_hand(on_stage, what):
    service = on_stage.start_service(what)
    if what == "feed":
        app = on_stage.start_newspaper("feed")
    else:
        app = on_stage.start_game("--device-menu")
    print(f"The {app.name} is yours. Close its window to end.", flush=True)
    app.wait()
    service.read_journal()
    print(report.table(app, service))
    return app.exit_code == 0


def main():
    parser = argparse.ArgumentParser(prog="scripts/demo", description=__doc__)
    parser.add_argument("what", nargs="?", choices=["game", "feed"],
                        help="the game or the newspaper; by hand the game, by itself both, unless said")
    parser.add_argument("--auto", action="store_true", help="run on a virtual display, even if there is a real one")
    parser.add_argument("--build", type=pathlib.Path, default=pathlib.Path("build/dev"), help=argparse.SUPPRESS)
    options = parser.parse_args()
    has_display = bool(os.environ.get("DISPLAY") or os.environ.get("WAYLAND_DISPLAY"))
    signal.signal(signal.SIGTERM, lambda *_: sys.exit("scripts/demo: ended by a signal"))

    with stage.Stage(options.build, OUT) as on_stage:
        try:
            if has_display and not options.auto:
                ok = run_by_hand(on_stage, options.what or "game")
            else:
                ok = run_automatically(on_stage, options.what)
        except stage.Failure as failure:
            report.print_what_is_known(on_stage)
            print(f"\nscripts/demo: {failure}")
            on_stage.print_logs()
            ok = False
        except KeyboardInterrupt:
            sys.exit("scripts/demo: interrupted")
    return 0 if ok else 1


if __name__ == "__main__":
    sys.exit(main())
