"""Prints the first table of bench/run: times and instructions a call, and their ratio to the floor in the same process."""

import json
import statistics
import sys

# Contestant, the floor it is set against, the goal of the ratio.
ROWS = [
    ("direct", None, None),
    ("forwarded", "direct", 2.0),
    ("forwarded_among_many", "direct", 2.0),
    ("forwarded_beside_opening", "direct", 2.0),
    ("refused", "direct", None),
    ("direct_2", None, None),
    ("forwarded_2", "direct_2", 2.0),
    ("called_back", None, None),
    ("relayed", "called_back", 1.6),
    ("called_back_2", None, None),
    ("relayed_2", "called_back_2", 1.6),
    ("opened_directly", None, None),
    ("open_and_close_at_0", "opened_directly", None),
    ("open_and_close_at_992", "opened_directly", None),
    ("loaded_bare", None, None),
    ("started", "loaded_bare", 1.1),
]

processes = {}  # by contestant: for each process that it ran in, the best nanoseconds of everybody there
instructions = {}
for path in sys.argv[1:]:
    with open(path) as file:
        if path.endswith(".json"):
            best = {}
            for row in json.load(file)["benchmarks"]:
                if row["run_type"] == "iteration":
                    name = row["run_name"].split("/")[0]
                    best[name] = min(row["cpu_time"] / row["calls"], best.get(name, float("inf")))
            for name in best:
                processes.setdefault(name, []).append(best)
        else:
            for name, calls, none, many in map(str.split, file):
                instructions[name] = (int(many) - int(none)) / int(calls)

print(f"{'':26}{'ns a call':>12}{'ratio':>8}{'median':>8}{'goal':>6}{'instructions':>14}")
for name, floor, goal in ROWS:
    best = {who: min(process[who] for process in processes[who]) for who in (name, floor or name)}
    median = statistics.median(process[name] / process[floor or name] for process in processes[name])
    count = f"{instructions[name]:.0f}" if name in instructions else ""
    print(f"{name:26}{best[name]:12.2f}{best[name] / best[floor or name]:8.2f}{median:8.2f}{goal or '':>6}{count:>14}")
