"""Prints the table of bench/run: times and instructions a call, and their ratio to the floor of the same run."""

import json
import sys

FLOORS = {
    "direct": None,
    "forwarded": "direct",
    "forwarded_among_many": "direct",
    "refused": "direct",
    "open_and_close": "direct",
    "called_back": None,
    "relayed": "called_back",
}
GOALS = {"forwarded": 2.0, "relayed": 1.6}

with open(sys.argv[1]) as file:
    times = {}
    for row in json.load(file)["benchmarks"]:
        if row["run_type"] == "iteration":
            times[row["run_name"]] = min(row["cpu_time"] / 1000, times.get(row["run_name"], float("inf")))
with open(sys.argv[2]) as file:
    instructions = {name: (int(many) - int(none)) / 10000 for name, none, many in map(str.split, file)}

print(f"{'':22}{'ns a call':>10}{'ratio':>8}{'goal':>6}{'instructions':>14}")
for name, floor in FLOORS.items():
    ratio = f"{times[name] / times[floor]:.2f}" if floor else "1.00"
    goal = str(GOALS.get(name, ""))
    print(f"{name:22}{times[name]:10.2f}{ratio:>8}{goal:>6}{instructions[name]:14.0f}")
