#!/usr/bin/python3
"""Adds noise to a recording and marks the speech that is found in it: speech_in_noise.py RECORDING PICTURE"""

import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402
import numpy as np  # noqa: E402
import soundfile  # noqa: E402
import vspsc  # noqa: E402

recording, picture = sys.argv[1:]
samples, rate = soundfile.read(recording, dtype="int16", always_2d=True)
pause = np.zeros(2 * rate, np.int16)
call = np.concatenate([pause, samples[:, 0], pause, samples[:, 0], pause])
noise = np.random.default_rng(1).normal(size=call.size) * 150
call = np.clip(call + noise, -32768, 32767).astype(np.int16)

figure, axes = plt.subplots(2, 1, sharex=True, figsize=(10, 5), layout="constrained")
for axis, option in zip(axes, (1, 2)):
    speech = vspsc.vad(call, rate, option)  # one bool every 20 ms
    axis.plot(np.arange(call.size) / rate, call, linewidth=0.4, color="tab:gray")
    edges = np.flatnonzero(np.diff(speech, prepend=False, append=False)).reshape(-1, 2)
    for begin, end in edges * 0.02:
        axis.axvspan(begin, end, color="tab:green", alpha=0.25)
    axis.set_ylabel(f"detector {option}")
    print(f"detector {option}: {speech.mean():.0%} speech in {len(edges)} parts")
axes[-1].set_xlabel("time / s")
figure.savefig(picture, dpi=100)
