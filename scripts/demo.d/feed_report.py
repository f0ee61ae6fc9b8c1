"""What the service counted while the newspaper was read, by the stop at which it came, and whether that was right."""

from report import seconds

# Every event there is to be, in this order. A video starts when an ad is filled with it, seen or not; a picture in its
# place once it is seen.
EXPECTED = [
    ("top", "started", "native-video"),
    ("video", "impression", "native-video"),
    ("video", "finished", "native-video"),
    ("row", "impression", "native-row"),
    ("row", "click", "native-row"),
    ("pictures", "impression", "native-images"),
    ("pictures", "started", "native-images"),
]


def events_by_stop(reader):
    """(time, stop, event) of what was counted for the ads that the newspaper placed."""
    placed = {note["impression"] for note in reader.app.notes(what="ad placed")}
    found = []
    for event in reader.service.events:
        if event["impression"] in placed:
            time = seconds(event["time"])
            found.append((time, max(stop for stop in reader.stops if stop[0] <= time)[1], event))
    return found


def table(reader):
    start = reader.stops[0][0]
    events = events_by_stop(reader)
    lines = [f"{'seconds':>8}  {'stop':<16}  {'counted':<12}  {'placement':<14}  no."]
    for begin, name in reader.stops:
        lines.append(f"{begin - start:8.2f}  {name}")
        lines += [f"{time - start:8.2f}  {'':<16}  {event['kind']:<12}  {event['placement']:<14}  {event['count']}"
                  for time, stop, event in events if stop == name]
    return "\n".join(lines)


def of_the_newspaper(reader, opened):
    newspaper, events = reader.app, events_by_stop(reader)
    impressions = [time for time, _, event in events if event["kind"] == "impression"]
    return [
        ("each event was counted at its stop, in order, and no other",
         [(stop, event["kind"], event["placement"]) for _, stop, event in events] == EXPECTED),
        ("each of them once", all(event["count"] == 1 for _, _, event in events)),
        ("no impression came before its ad", len(impressions) == len(reader.not_yet_seen)
         and all(time > unseen for time, unseen in zip(impressions, reader.not_yet_seen))),
        ("the delegate heard of one click", len(newspaper.notes(who="delegate", what="didReceiveClick")) == 1),
        ("the desktop was asked for the advertiser's page, then for the privacy policy",
         len(opened) == 2 and "/track/" in opened[0] and "/track/" not in opened[1]),
    ]
