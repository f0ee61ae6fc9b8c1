"""What happened, as a table, and whether it was right."""

import datetime
from collections import Counter


def entries(game, service):
    """(time, who, what, details) of everything the game noted and the service saw, in order."""
    found = []
    for note in game.timeline():
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


def table(game, service):
    rows = entries(game, service)
    start = next((note["time"] - note["seconds"] for note in game.timeline()), rows[0][0] if rows else 0)
    lines = [f"{time - start:8.2f}  {who:<10}  {what:<52}  {details}" for time, who, what, details in rows]
    return "\n".join([f"{'seconds':>8}  {'who':<10}  {'what':<52}  details", *lines])


def print_what_is_known(stage):
    """The table as far as there is one, when the demo could not go on."""
    if stage.game and stage.service:
        print("\n" + table(stage.game, stage.service))


def conclude(game, service, service_exit_code, reward):
    """Prints table and verdict; whether everything was as it should be."""
    print("\n" + table(game, service) + "\n")
    ok = True
    for text, holds in checks(game, service, service_exit_code, reward):
        print(f"  {'ok    ' if holds else 'FAILED'}  {text}")
        ok = ok and holds
    print("\nThe demo " + ("went well." if ok else "FAILED."))
    return ok


def checks(game, service, service_exit_code, reward):
    counts = Counter(event["kind"] for event in service.events)
    shown = {event["impression"] for event in service.events}
    rewards = game.notes(who="delegate", what="didReceiveReward")
    paid = game.notes(what="coins", change=str(reward))
    closed = game.notes(who="completion", what="showCampaign")
    broken = [text for request in service.requests for text in request["violations"]]
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
        (f"no request broke a rule of the service{f': {broken}' if broken else ''}", not broken),
        (f"the game ended well (exit code {game.exit_code})", game.exit_code == 0),
        (f"the service ended well (exit code {service_exit_code})", service_exit_code == 0),
    ]
