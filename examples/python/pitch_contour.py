#!/usr/bin/python3
"""Draws the pitch of a recording over its waveform: pitch_contour.py RECORDING PICTURE"""

import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402
import numpy as np  # noqa: E402
import soundfile  # noqa: E402
import vspsc  # noqa: E402

recording, picture = sys.argv[1:]
samples, rate = soundfile.read(recording, dtype="int16", always_2d=True)
points = vspsc.pitch(samples[:, 0], rate)  # one point every 5 ms
time = np.arange(points.size) * 0.005
f0 = np.where(points["voiced"] == 1, points["f0"], np.nan)

figure, (above, below) = plt.subplots(2, 1, sharex=True, figsize=(10, 5), layout="constrained")
above.plot(np.arange(samples.shape[0]) / rate, samples[:, 0], linewidth=0.4, color="tab:gray")
above.set_ylabel("sample")
below.plot(time, f0, ".", markersize=3)
below.set(xlabel="time / s", ylabel="pitch / Hz", ylim=(50, 450), yscale="log", yticks=[50, 100, 200, 400])
below.get_yaxis().set_major_formatter(matplotlib.ticker.ScalarFormatter())
below.get_yaxis().set_minor_locator(matplotlib.ticker.NullLocator())
figure.savefig(picture, dpi=100)
print(f"{np.isfinite(f0).mean():.0%} voiced, median {np.nanmedian(f0):.0f} Hz")
