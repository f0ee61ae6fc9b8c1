#!/usr/bin/env python3
"""Adds up the reports of test shards and prints the counts per suite.

usage: summary.py TITLE REPORT.json...   Exits 1 when a test failed, a report is missing or no test ran.
"""
import collections
import json
import sys

title, reports = sys.argv[1], sys.argv[2:]
suites = collections.defaultdict(lambda: {"run": 0, "failed": 0, "skipped": 0, "seconds": 0.0})
failed, broken = [], []

for report in reports:
    try:
        with open(report, encoding="utf-8") as file:
            shard = json.load(file)
    except (OSError, ValueError):
        broken.append(report)
        continue
    for suite in shard["testsuites"]:
        for test in suite["testsuite"]:
            if test["status"] != "RUN":
                continue
            # Parameterised suites are named Prefix/Suite/3; one line for them all.
            counts = suites[next(part for part in reversed(suite["name"].split("/")) if not part.isdigit())]
            counts["seconds"] += float(test["time"].rstrip("s"))
            if test.get("result") == "SKIPPED":
                counts["skipped"] += 1
                continue
            counts["run"] += 1
            if "failures" in test:
                counts["failed"] += 1
                failed.append(f'{suite["name"]}.{test["name"]}')

width = max([len(name) for name in suites] + [len("suite")])
print(f'{"suite":<{width}}  {"run":>5} {"passed":>6} {"failed":>6} {"skipped":>7} {"time":>8}')
for name, counts in sorted(suites.items()):
    print(f'{name:<{width}}  {counts["run"]:>5} {counts["run"] - counts["failed"]:>6} {counts["failed"]:>6} '
          f'{counts["skipped"]:>7} {counts["seconds"]:>7.2f}s')

run = sum(counts["run"] for counts in suites.values())
skipped = sum(counts["skipped"] for counts in suites.values())
print(f"{title}: {run} tests run, {run - len(failed)} passed, {len(failed)} failed, {skipped} skipped")
for name in failed:
    print(f"  FAILED {name}")
for report in broken:
    print(f"  BROKEN no report: the test program ended early, see {report.removesuffix('.json')}.log")
sys.exit(1 if failed or broken or run == 0 else 0)
