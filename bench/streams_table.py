"""Prints the streams' table of bench/run: the best of all rounds, and each row's CPU time against the bare reader's."""

import json
import os
import sys

RATE = 25  # pictures a second, of each stream
# Of the library's row, by streams.
CPU_RATIO = {200: 1.9, 1000: 2.0}
CORE = {1000: 65}
MEMORY = {200: 40, 1000: 40}
THREADS = os.cpu_count() + 4
MEDIAN = {200: 1}
LATE = {200: 5}

best = {}
with open(sys.argv[1]) as file:
    for row in map(json.loads, file):
        key = row["streams"], row["through"]
        row["expected"] = round(RATE * row["streams"] * row["seconds"])
        if key not in best:
            best[key] = row
            continue
        for name in ("cpu", "memory", "median", "late"):
            best[key][name] = min(best[key][name], row[name])
        best[key]["threads"] = max(best[key]["threads"], row["threads"])
        best[key]["live"] = min(best[key]["live"], row["live"])
        for name in ("frames", "expected", "lost"):
            best[key][name] += row[name]

COLUMNS = (("CPU ms/s", 9), ("ratio", 7), ("goal", 5), ("core %", 8), ("goal", 5), ("KiB", 6), ("goal", 5), ("threads", 9),
           ("goal", 5), ("median ms", 11), ("goal", 5), ("99 % ms", 9), ("goal", 5), ("live", 6), ("frames", 9),
           ("expected", 10), ("lost", 8), ("goal", 5))
print(f"{'streams':>7}  {'':7}" + "".join(f"{name:>{width}}" for name, width in COLUMNS))
for (streams, way), row in best.items():
    goals = way == "library"

    def goal(of):
        return of.get(streams, "") if goals else ""

    cells = (f"{row['cpu']:.3f}", f"{row['cpu'] / best[streams, 'bare']['cpu']:.2f}", goal(CPU_RATIO),
             f"{row['cpu'] * streams / 10:.1f}", goal(CORE), f"{row['memory']:.0f}", goal(MEMORY),
             row["threads"], THREADS if goals else "", f"{row['median']:.3f}", goal(MEDIAN), f"{row['late']:.3f}",
             goal(LATE), row["live"], row["frames"], row["expected"], row["lost"], 0 if goals else "")
    line = f"{streams if way == 'bare' else '':>7}  {way:7}"
    print((line + "".join(f"{cell:>{width}}" for cell, (_, width) in zip(cells, COLUMNS))).rstrip())
