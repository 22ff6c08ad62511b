#!/usr/bin/python3
"""Marks the speech in a folder of recordings, on all processors of a machine or on a Dask cluster.

The report is a CSV file with a line for each recording, by name: its length, seconds of speech, and the parts with speech.
A recording that cannot be read gets a line that tells why. Workers of a cluster have vspsc and see the folder under the
same name.
"""

import argparse
import csv
import pathlib
import sys
import time

SUFFIXES = {".wav", ".flac", ".ogg", ".au", ".aiff"}


def mark(name):
    """The line of a recording."""
    import numpy as np
    import soundfile
    import vspsc

    try:
        samples, rate = soundfile.read(name, dtype="int16", always_2d=True)
        speech = vspsc.vad(samples[:, 0], rate)
    except Exception as error:  # whatever is wrong with a file, the others count
        return [name, "", "", "", " ".join(str(error).split())]
    parts = np.flatnonzero(np.diff(speech, prepend=False, append=False)).reshape(-1, 2) / 50
    return [name, f"{len(samples) / rate:.2f}", f"{speech.sum() / 50:.2f}", " ".join(f"{a:.2f}-{b:.2f}" for a, b in parts), ""]


def mark_all(names):
    return [mark(name) for name in names]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("report", type=pathlib.Path)
    parser.add_argument("--scheduler", metavar="ADDRESS", help="of a Dask cluster, for example tcp://10.0.0.1:8786")
    parser.add_argument("--workers", type=int, metavar="N", help="processes on this machine; usually one for each processor")
    options = parser.parse_args()
    names = sorted(str(path) for path in options.folder.rglob("*") if path.suffix.lower() in SUFFIXES)
    if not names:
        sys.exit(f"{options.folder} has no recordings")

    from distributed import Client

    where = {"address": options.scheduler} if options.scheduler else {
        "n_workers": options.workers, "threads_per_worker": 1, "dashboard_address": None}  # fmt: skip
    with Client(**where) as client:
        start = time.perf_counter()
        batch = max(1, min(50, len(names) // 64))  # enough of them for all workers to end at about the same time
        batches = [names[i : i + batch] for i in range(0, len(names), batch)]
        lines = [line for lines in client.gather(client.map(mark_all, batches, pure=False)) for line in lines]
        seconds = time.perf_counter() - start

    with options.report.open("w", newline="") as file:
        csv.writer(file).writerows([["recording", "seconds", "speech", "parts", "error"], *lines])
    damaged = sum(1 for line in lines if line[-1])
    print(f"{len(lines)} recordings, {sum(float(line[1] or 0) for line in lines):.0f} s, "
          f"{sum(float(line[2] or 0) for line in lines):.0f} s of speech, {damaged} not readable, "
          f"in {seconds:.1f} s")  # fmt: skip


if __name__ == "__main__":
    main()
