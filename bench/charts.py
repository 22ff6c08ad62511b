#!/usr/bin/python3
"""Draws the charts of docs/guides/cost.md from runs of the benchmarks, whose commands that page has.

    bench/charts.py voice.json levels.json FOLDER PEERS.json...
"""
import collections
import json
import pathlib
import re
import sys

import matplotlib

matplotlib.use("svg")
matplotlib.rcParams.update({"svg.hashsalt": "vspsc", "svg.fonttype": "none", "font.family": "sans-serif", "font.size": 9})
from matplotlib import pyplot  # noqa: E402

COLOURS = ("#1779c4", "#7fb3d9", "#c9dff0")


def times(file: str) -> dict[tuple[str, str, str], float]:
    """The shortest time of each benchmark, by its function, implementation and argument."""
    found: dict[tuple[str, str, str], float] = {}
    for run in json.loads(pathlib.Path(file).read_text())["benchmarks"]:
        if run.get("run_type") == "iteration":
            function, implementation, *argument = run["run_name"].split("/")
            key = function, implementation, "".join(argument)
            found[key] = min(found.get(key, run["cpu_time"]), run["cpu_time"])
    return found


def bars(file: pathlib.Path, rows: dict[str, dict[str, float]], label: str, log: bool = False, digits: int = 1) -> None:
    """Horizontal bars: a group for each row, a colour for each name in it."""
    names = list(dict.fromkeys(name for row in rows.values() for name in row))
    figure, axes = pyplot.subplots(figsize=(6, 0.6 + 0.19 * sum(map(len, rows.values())) + 0.12 * len(rows)))
    place, ticks = 0.0, []
    for row in rows.values():
        ticks.append(place + (len(row) - 1) / 2)
        for name, value in row.items():
            axes.barh(place, value, 0.9, color=COLOURS[names.index(name)] if len(names) <= len(COLOURS) else COLOURS[0])
            axes.annotate(f" {value:.{digits}f}" + ("" if len(names) <= len(COLOURS) else f"  {name}"), (value, place), va="center", fontsize=8)
            place += 1
        place += 0.6
    axes.set_yticks(ticks, rows)
    axes.invert_yaxis()
    axes.set_xlabel(label)
    if log:
        axes.set_xscale("log")
    axes.margins(x=0.14, y=0.02)
    axes.spines[["top", "right"]].set_visible(False)
    if 1 < len(names) <= len(COLOURS):
        axes.legend([pyplot.Rectangle((0, 0), 1, 1, color=COLOURS[i]) for i in range(len(names))], names, frameon=False)
    figure.savefig(file, bbox_inches="tight", metadata={"Date": None})


def by_first(rows: dict[str, dict[str, float]]) -> dict[str, dict[str, float]]:
    return dict(sorted(rows.items(), key=lambda row: next(iter(row[1].values()))))


def main() -> None:
    voice, levels, folder, peers = sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3]), sys.argv[4:]
    rows: dict[str, dict[str, float]] = collections.defaultdict(dict)
    for (function, codec, implementation), time in times(voice).items():
        if function == "voice_encode" and not codec.startswith("aal2"):
            rows[codec] = {"encoder": time / 1e6, "decoder": times(voice)["voice_decode", codec, implementation] / 1e6}
    bars(folder / "cost-codecs.svg", by_first(rows), "milliseconds of one processor for a second of speech", log=True, digits=2)

    rows = collections.defaultdict(dict)
    found = times(levels)
    for level, name in (("y8", "x86-64-v2"), ("v3", "AVX2"), ("v4", "AVX-512")):
        for (function, implementation, argument), time in found.items():
            if implementation == level and (function, "scalar", argument) in found:
                rows[re.sub(r"^vsps|_\d+[a-z].*", "", function)][name] = found[function, "scalar", argument] / time
    bars(folder / "cost-levels.svg", by_first(rows), "times as fast as written without vectors", digits=1)

    rows = collections.defaultdict(dict)
    for file in peers:
        found = times(file)
        for (function, implementation, argument), time in found.items():
            if implementation != "library":
                what = function.replace("_encode", ", encoder").replace("_decode", ", decoder")
                rate = f" {float(argument) / 1000:.2f}" if "amr" in function else ""
                rows[what.replace(",", rate + ",")][implementation] = time / found[function, "library", argument]
    bars(folder / "cost-peers.svg", dict(sorted(rows.items())), "time of the other one over that of vspsc")


main()
