#!/usr/bin/env python3
"""Prints how much faster the shared library is than each other implementation, from one run of the benchmarks.

    build/dev/bin/vspsc_bench --benchmark_repetitions=5 --benchmark_enable_random_interleaving=true \\
        --benchmark_format=json > bench.json
    bench/ratios.py bench.json
"""
import collections
import json
import sys


def main() -> None:
    with open(sys.argv[1]) as file:
        runs = json.load(file)["benchmarks"]
    times = collections.defaultdict(lambda: collections.defaultdict(list))
    for run in runs:
        if run.get("run_type") == "iteration":
            function, implementation, length = run["run_name"].split("/")
            times[function, int(length)][implementation].append(run["cpu_time"])
    others = sorted({name for case in times.values() for name in case} - {"library"})
    print(f"{'time of each / time of the library':<46}{'library':>9}" + "".join(f"{name:>12}" for name in others))
    for (function, length), case in times.items():
        best = {name: min(values) for name, values in case.items()}
        row = "".join(f"{best[name] / best['library']:12.2f}" if name in best else f"{'':>12}" for name in others)
        print(f"{function:<41}{length:>5}{best['library']:>7.1f}ns{row}")


if __name__ == "__main__":
    main()
