#!/usr/bin/python3
"""Designs the two built-in prototype windows of the sub-band filter bank and writes them as C++ tables.

    tools/design-subband-windows.py               writes src/ec/subband_windows.cpp
    tools/design-subband-windows.py --check       designs them again and compares with the tables that are there
    tools/design-subband-windows.py --plot FILE   draws them, as in docs/subband-windows.md

Needs python3-numpy, python3-scipy and clang-format; python3-matplotlib for the plot.

First values, peak and symmetry of a window w are given. The others, none above the peak, minimise

    J = 10^(-SNR/10) + weight * 10^(-ERLE/10)

SNR: white noise through analysis and synthesis, against the difference to its input, delayed by L-F and not rescaled.
The bank gives out[n] = sum_k x[n-(L-F)+kN] T_k(n mod F) with T_k(n) = sum_m w[n-mF] w[n-mF+kN]. Thus

    10^(-SNR/10) = mean over n of (T_0(n) - 1)^2 + sum_{k != 0} T_k(n)^2

ERLE: what ideal filters in the sub-bands could cancel of white noise, as aliasing between the bands limits it:

    10^(-ERLE/10) = (F sum_j r(jF)^2 - sum_t r(t)^2) / (N r(0)^2), r the autocorrelation of w
"""
import argparse
import os
import pathlib
import re
import subprocess
import sys
from dataclasses import dataclass

import numpy as np
from scipy.linalg import solve, toeplitz
from scipy.optimize import minimize

TABLES = pathlib.Path(__file__).resolve().parent.parent / "src/ec/subband_windows.cpp"
DECIMALS = 7
UNIT = 10.0**-DECIMALS
STARTS = 8
SEED = 1


@dataclass
class Design:
    order: int
    frame: int  # F
    length: int  # L
    peak: float  # the two entries in the middle
    first: list  # the outermost entries
    weight: float

    @property
    def bands(self):  # N
        return 1 << self.order

    @property
    def name(self):
        return f"VspsSubbandWindow_{self.order}_{self.frame}_{self.length}"

    def whole(self, free):
        half = np.concatenate([self.first, free, [self.peak]])
        return np.concatenate([half, half[::-1]])

    def derivative(self, gradient):
        """By the free values, from that by all."""
        half = self.length // 2
        return (gradient[:half] + gradient[:half - 1:-1])[len(self.first):-1]


# The weight of the shorter one gives an ERLE of 28 dB.
DESIGNS = [
    Design(5, 24, 128, 0.9311249, [0.0131806, 0.0071463, 0.0004235, -0.0069537, -0.0149392, -0.0234745], 1.883),
    Design(6, 44, 256, 0.9447229, [0.0437838, 0.0434184, 0.0428387, 0.0420374, 0.0410077, 0.0397438], 1.0),
]


def transfer(window, design):
    """T_k(n) for k = 0 .. L/N-1, as rows. A negative k has the same values for other n."""
    phase = np.arange(design.length) % design.frame
    rows = []
    for shift in range(0, design.length, design.bands):
        products = window[:design.length - shift] * window[shift:]
        rows.append(np.bincount(phase[:products.size], products, design.frame))
    return np.array(rows)


def reconstruction_error(window, design):
    """10^(-SNR/10) and its gradient."""
    phase = np.arange(design.length) % design.frame
    error, gradient = 0.0, np.zeros(design.length)
    for k, row in enumerate(transfer(window, design)):
        count = 1 if k == 0 else 2  # k and -k
        deviation = row - (k == 0)
        error += count * np.mean(deviation**2)
        shift = k * design.bands
        slope = 2 * count / design.frame * deviation[phase[:design.length - shift]]
        gradient[:design.length - shift] += slope * window[shift:]
        gradient[shift:] += slope * window[:design.length - shift]
    return error, gradient


def aliasing(window, design):
    """10^(-ERLE/10) and its gradient."""
    zero = design.length - 1
    r = np.correlate(window, window, "full")
    kept = np.arange(-zero, zero + 1) % design.frame == 0
    scale = design.bands * r[zero]**2
    ratio = (design.frame * np.sum(r[kept]**2) - np.sum(r**2)) / scale
    slope = (2 * design.frame * r * kept - 2 * r) / scale
    slope[zero] -= 2 * ratio / r[zero]
    return ratio, 2 * toeplitz(slope[zero:]) @ window


def figures(window, design):
    """SNR and ERLE, dB."""
    return tuple(-10 * np.log10(measure(window, design)[0]) for measure in (reconstruction_error, aliasing))


def objective(free, design):
    window = design.whole(free)
    error, error_gradient = reconstruction_error(window, design)
    ratio, ratio_gradient = aliasing(window, design)
    return error + design.weight * ratio, design.derivative(error_gradient + design.weight * ratio_gradient)


def starting_point(design, random):
    """A windowed low-pass of random bandwidth and shape, disturbed."""
    time = np.arange(design.length) - (design.length - 1) / 2
    cutoff = random.uniform(1 / design.bands, 1 / design.frame)
    window = design.peak * np.sinc(cutoff * time) * np.kaiser(design.length, random.uniform(1, 8))
    free = window[len(design.first):design.length // 2 - 1]
    return free + random.normal(0, random.choice([0, 0.02, 0.1]), free.size)


def polish(free, design, limit):
    """Newton's method over the values that the limit does not hold, to the last digits."""
    for _ in range(20):
        gradient = objective(free, design)[1]
        moving = np.flatnonzero((np.abs(free) < limit) | (free * gradient > 0))
        small = 1e-6
        hessian = np.empty((moving.size, moving.size))
        for row, i in zip(hessian, moving):
            step = small * (np.arange(free.size) == i)
            row[:] = (objective(free + step, design)[1] - objective(free - step, design)[1])[moving] / (2 * small)
        change = solve(hessian, gradient[moving], assume_a="sym")
        free[moving] = np.clip(free[moving] - change, -limit, limit)
        if np.max(np.abs(change)) < UNIT / 1000:
            return free
    raise RuntimeError("Newton's method does not converge")


def solve_window(design):
    limit = design.peak - UNIT  # so that the peak is in the middle alone
    random = np.random.default_rng(SEED)
    best = None
    for _ in range(STARTS):
        start = np.clip(starting_point(design, random), -limit, limit)
        found = minimize(objective, start, (design,), "L-BFGS-B", jac=True, bounds=[(-limit, limit)] * start.size,
                         options={"maxiter": 10000, "ftol": 1e-15, "gtol": 1e-10, "maxcor": 50})
        if best is None or found.fun < best.fun:
            best = found
    return design.whole(np.round(polish(best.x, design, limit), DECIMALS))


def fixed_point(window):
    return np.trunc(window.astype(np.float32) * np.float32(8192)).astype(int)


SOURCE_BEGIN = """\
// Written by tools/design-subband-windows.py.
#include "ec/tables.h"

namespace vsp {

// Symmetric, at its peak in the middle only, with the given first values; the Q13 table truncated from the other.
template <int kLength>
static consteval bool isWindow(const Vsp32f (&window)[kLength], const Vsp16s (&q13)[kLength], const Vsp32f (&first)[6],
                               Vsp32f peak) {
    for (int i = 0; i < 6; i++)
        if (window[i] != first[i]) return false;
    for (int i = 0; i < kLength; i++) {
        const bool middle = i == kLength / 2 - 1 || i == kLength / 2;
        if (window[i] != window[kLength - 1 - i] || q13[i] != static_cast<Vsp16s>(window[i] * 8192)) return false;
        if (middle ? window[i] != peak : window[i] >= peak || window[i] <= -peak) return false;
    }
    return true;
}
"""


def source(windows):
    text = SOURCE_BEGIN
    for design, window in windows:
        snr, erle = figures(window, design)
        text += f"\n// Reconstruction {snr:.2f} dB, alias-limited ERLE {erle:.2f} dB.\n"
        text += f"constexpr Vsp32f {design.name}_32f[{design.length}] = {{"
        text += ", ".join(f"{value:.{DECIMALS}f}f" for value in window) + ",};\n"
        text += f"constexpr Vsp16s {design.name}_16s[{design.length}] = {{"
        text += ", ".join(str(value) for value in fixed_point(window)) + ",};\n"
        first = ", ".join(f"{value}f" for value in design.first)
        text += f"static_assert(isWindow({design.name}_32f, {design.name}_16s, {{{first}}}, {design.peak}f));\n"
    text += "\n}  // namespace vsp\n"
    command = [os.environ.get("CLANG_FORMAT", "clang-format"), f"--assume-filename={TABLES}"]
    return subprocess.run(command, input=text, capture_output=True, text=True, check=True).stdout


def check(windows):
    """Compares values, because another build of scipy may round one differently."""
    text = TABLES.read_text()
    for design, window in windows:
        table = re.search(rf"{design.name}_32f\[\d+\] = {{([^}}]*)}}", text)[1]
        written = np.array([float(value.rstrip("f")) for value in re.split(r"[,\s]+", table.strip(" \n,"))])
        difference = np.max(np.abs(written - window))
        print(f"{design.name}: SNR {{:.2f}} dB, ERLE {{:.2f}} dB, largest difference {difference:.1e}".format(
            *figures(written, design)))
        if difference > 1.5 * UNIT:
            sys.exit(f"{TABLES} does not have the designed window")


def plot(windows, file):
    import matplotlib
    matplotlib.use("Agg")
    import matplotlib.pyplot as plt
    figure, axes = plt.subplots(2, 2, figsize=(11, 6), constrained_layout=True)
    for (design, window), (left, right) in zip(windows, axes):
        points = 1 << 14
        response = np.abs(np.fft.rfft(window, points))
        left.plot(np.arange(points // 2 + 1) * design.bands / points, 20 * np.log10(response / response[0] + 1e-9), lw=1)
        left.axvline(0.5, color="grey", lw=0.8, ls="--", label="edge of the band")
        left.axvline(design.bands / design.frame / 2, color="tab:red", lw=0.8, ls="--", label="aliases from here")
        left.set(title=f"{design.name}: response", xlabel="frequency, sub-bands", ylabel="dB", xlim=(0, 6), ylim=(-90, 5))
        left.legend()

        snr, erle = figures(window, design)
        rows = transfer(window, design)
        right.plot(20 * np.log10(np.abs(rows[0] - 1) + 1e-9), "o-", ms=3, lw=1, label="deviation of the gain from 1")
        copies = sum(row**2 + np.roll(row, k * design.bands)**2 for k, row in enumerate(rows) if k > 0)  # k and -k
        right.plot(10 * np.log10(copies), "s-", ms=3, lw=1, label="copies shifted by multiples of N")
        right.axhline(-snr, color="grey", lw=0.8, ls="--", label="sum, rms")
        right.set(title=f"reconstruction {snr:.1f} dB, alias-limited ERLE {erle:.1f} dB", ylabel="dB", ylim=(-80, -10),
                  xlabel="sample of the frame")
        right.legend(loc="lower left")
        for axis in (left, right):
            axis.grid(alpha=0.3)
    figure.savefig(file, dpi=75)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--check", action="store_true", help="compare with the tables that are there")
    parser.add_argument("--plot", metavar="FILE", help="draw the windows")
    options = parser.parse_args()
    windows = [(design, solve_window(design)) for design in DESIGNS]
    if options.plot:
        plot(windows, options.plot)
    if options.check:
        check(windows)
    elif not options.plot:
        TABLES.write_text(source(windows))


if __name__ == "__main__":
    main()
