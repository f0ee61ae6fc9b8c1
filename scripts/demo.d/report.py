"""What happened, as a table, and whether it was right."""

import datetime
from collections import Counter


def entries(app, service):
    """(time, who, what, details) of everything the application noted and the service saw, in order."""
    found = []
    for note in app.timeline():
        details = [f"{key}: {value}" for key, value in note.items()
                   if key not in ("seconds", "time", "who", "what") and value]
        found.append((note["time"], note["who"], note["what"], ", ".join(details)))
    for request in service.requests:
        found.append((seconds(request["time"]), "service", f"{request['method']} {request['target']}",
                      "; ".join([f"answered {request['status']}", *request["violations"]])))
    for event in service.events:
        found.append((seconds(event["time"]), "service", f"counted {event['kind']} no. {event['count']}",
                      f"impression: {event['impression']}, placement: {event['placement']}"))
    return sorted(found, key=lambda entry: entry[0])


def seconds(iso):
    return datetime.datetime.fromisoformat(iso.replace("Z", "+00:00")).timestamp()


def table(app, service):
    rows = entries(app, service)
    start = next((note["time"] - note["seconds"] for note in app.timeline()), rows[0][0] if rows else 0)
    lines = [f"{time - start:8.2f}  {who:<10}  {what:<52}  {details}" for time, who, what, details in rows]
    return "\n".join([f"{'seconds':>8}  {'who':<10}  {'what':<52}  details", *lines])


def print_what_is_known(stage):
    """The table as far as there is one, when the demo could not go on."""
    if stage.app and stage.service:
        print("\n" + table(stage.app, stage.service))


def verdict(checks):
    """Prints each check and whether it held; whether all did."""
    for text, holds in checks:
        print(f"  {'ok    ' if holds else 'FAILED'}  {text}")
    return all(holds for _, holds in checks)


def rules_and_ends(apps, service, service_exit_code):
    """What holds for any application."""
    broken = [text for request in service.requests for text in request["violations"]]
    return [
        (f"no request broke a rule of the service{f': {broken}' if broken else ''}", not broken),
        *((f"the {app.name} ended well (exit code {app.exit_code})", app.exit_code == 0) for app in apps),
        (f"the service ended well (exit code {service_exit_code})", service_exit_code == 0),
    ]


def of_the_game(game, service, reward):
    counts = Counter(event["kind"] for event in service.events)
    shown = {event["impression"] for event in service.events}
    rewards = game.notes(who="delegate", what="didReceiveReward")
    paid = game.notes(what="coins", change=str(reward))
    closed = game.notes(who="completion", what="showCampaign")
    return [
        ("the delegate heard of two rewards", len(rewards) == 2),
        (f"{reward} coins were paid, twice", len(paid) == 2),
        ("both ads completed once, with success", [note["success"] for note in closed] == ["yes", "yes"]),
        ("the delegate heard of three clicks", len(game.notes(who="delegate", what="didReceiveClick")) == 3),
        *((f"{page} completed once, with success", [note["success"] for note in game.notes(what=what)] == ["yes"])
          for page, what in {"the special offer": "showRewardablePopup", "the offer wall": "showOfferWall"}.items()),
        *((f"the service counted {kind}: {number}", counts[kind] == number)
          for kind, number in {"impression": 3, "finished": 2, "click": 2}.items()),
        ("all of them for what was shown", len(shown) == 3),
    ]
