"""Starts the ad service and the coin game; without a display it also plays the game and checks what came of it."""

import argparse
import os
import pathlib
import signal
import sys

import person
import report
import stage

OUT = pathlib.Path("build/demo")
STEP, ROUND = 30, 180  # seconds that one step and all of them may take when the demo plays by itself


def play_automatically(on_stage, deadline):
    screen = person.Screen(on_stage.open_display(), OUT)
    service = on_stage.start_service()
    game = on_stage.start_game()
    try:
        person.play(screen, on_stage.desktop, game, service, deadline)
    except stage.Failure:
        screen.photograph("failure")
        raise
    service.read_journal()
    return report.conclude(game, service, on_stage.stop_service(), person.REWARD)


def play_by_hand(on_stage):
    service = on_stage.start_service()
    game = on_stage.start_game("--device-menu")
    print("The game is yours. Close its window to end.", flush=True)
    game.wait()
    service.read_journal()
    print(report.table(game, service))
    return game.exit_code == 0


def main():
    parser = argparse.ArgumentParser(prog="scripts/demo", description=__doc__)
    parser.add_argument("--auto", action="store_true", help="play on a virtual display, even if there is a real one")
    parser.add_argument("--build", type=pathlib.Path, default=pathlib.Path("build/dev"), help=argparse.SUPPRESS)
    options = parser.parse_args()
    has_display = bool(os.environ.get("DISPLAY") or os.environ.get("WAYLAND_DISPLAY"))
    signal.signal(signal.SIGTERM, lambda *_: sys.exit("scripts/demo: ended by a signal"))

    with stage.Stage(options.build, OUT) as on_stage:
        try:
            if has_display and not options.auto:
                ok = play_by_hand(on_stage)
            else:
                ok = play_automatically(on_stage, stage.Deadline(STEP, ROUND))
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
