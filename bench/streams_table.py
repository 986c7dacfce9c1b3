"""Prints the streams' table of bench/run: the best of all rounds, and the library's ratio to the bare stack."""

import json
import sys

RATE = 25  # pictures a second, of each stream
GOALS = {"cpu": 1.15, "memory": 2.0}

best = {}
with open(sys.argv[1]) as file:
    for row in map(json.loads, file):
        key = row["streams"], row["through"]
        row["expected"] = round(RATE * row["streams"] * row["seconds"])
        if key not in best:
            best[key] = row
            continue
        for name in ("cpu", "memory"):
            best[key][name] = min(best[key][name], row[name])
        best[key]["threads"] = max(best[key]["threads"], row["threads"])
        for name in ("frames", "expected", "lost"):
            best[key][name] += row[name]

print(f"{'streams':>7}  {'':7}", end="")
print("".join(f"{name:>{width}}" for name, width in (
    ("CPU ms/s", 10), ("ratio", 7), ("goal", 6), ("KiB", 8), ("ratio", 7), ("goal", 6),
    ("threads", 9), ("goal", 6), ("frames", 9), ("expected", 10), ("lost", 6), ("goal", 6))))
for (streams, way), row in best.items():
    floor = best[streams, "bare"]
    library = way == "library"
    line = f"{'' if library else streams:>7}  {way:7}"
    for name, width, digits in ("cpu", 10, 2), ("memory", 8, 0):
        ratio = f"{row[name] / floor[name]:.2f}"
        line += f"{row[name]:{width}.{digits}f}{ratio:>7}{GOALS[name] if library else '':>6}"
    line += f"{row['threads']:9}{streams + 1 if library else '':>6}"
    line += f"{row['frames']:9}{row['expected']:10}{row['lost']:6}{0 if library else '':>6}"
    print(line.rstrip())
