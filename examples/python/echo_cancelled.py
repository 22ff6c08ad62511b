#!/usr/bin/python3
"""Makes an echo of a recording and removes it again: echo_cancelled.py FAR_END NEAR_END PICTURE [OUT.wav]"""

import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402
import numpy as np  # noqa: E402
import soundfile  # noqa: E402
import vspsc  # noqa: E402

recordings, picture, out_file = sys.argv[1:3], sys.argv[3], sys.argv[4:]
(far, rate), (talk, _) = (soundfile.read(name, dtype="int16") for name in recordings)
rng = np.random.default_rng(1)
path = rng.normal(size=rate // 50) * np.exp(-np.arange(rate // 50) / (rate / 250))  # 20 ms that die away
echo = np.convolve(far, 0.3 * path / np.sqrt(np.sum(path**2)))
near = np.concatenate([np.zeros(rate // 25), echo])[: far.size] + rng.normal(size=far.size)  # 40 ms later
begin = far.size // 2
near[begin : begin + talk.size] += talk[: far.size - begin]  # the other end begins to speak
near = np.clip(near, -32768, 32767).astype(np.int16)

canceller = vspsc.EchoCanceller(rate, tail_ms=64)
block = rate // 100
out = np.concatenate([canceller.process(far[i : i + block], near[i : i + block]) for i in range(0, far.size, block)])
out = np.append(out[canceller.latency :], np.zeros(canceller.latency, np.int16))


def power(samples):
    blocks = samples[: samples.size // 800 * 800].reshape(-1, 800).astype(float)
    return 10 * np.log10(np.mean(blocks**2, axis=1) + 1e-3) - 20 * np.log10(32768)


figure, (above, below) = plt.subplots(2, 1, sharex=True, figsize=(10, 5), layout="constrained")
time = np.arange(far.size) / rate
above.plot(time, near, linewidth=0.4, color="tab:gray", label="near end with the echo")
above.plot(time, out, linewidth=0.4, color="tab:blue", label="without it")
below.plot(np.arange(power(near).size) * 800 / rate, power(near), color="tab:gray")
below.plot(np.arange(power(out).size) * 800 / rate, power(out), color="tab:blue")
below.set(xlabel="time / s", ylabel="level / dB")
below.axvline(begin / rate, linestyle=":", color="black")
above.legend(loc="upper left")
figure.savefig(picture, dpi=100)
if out_file:
    soundfile.write(out_file[0], out, rate)
alone = slice(begin // 1600, begin // 800)
print(f"before the other end speaks the echo is {np.median(power(near)[alone] - power(out)[alone]):.0f} dB weaker")
