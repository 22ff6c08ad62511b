"""examples/echo_canceller and examples/subband_filter: remove an echo, and make no line louder."""
import array
import itertools
import math
import os
import pathlib
import random
import subprocess

import pytest
from signals import pcm, speech, tone, voice

EXAMPLE = pathlib.Path(os.environ["EXAMPLE"])
COMPLETE = EXAMPLE.stem == "echo_canceller"
LATENCY = 0 if COMPLETE else 104
SECONDS = 8
COUNT = SECONDS * 8000


def cancel(directory, far, near):
    files = [directory / name for name in ("far.raw", "near.raw", "out.raw")]
    for file, samples in zip(files, (far, near)):
        file.write_bytes(pcm(samples + [0] * LATENCY))
    subprocess.run([EXAMPLE, *files], check=True, timeout=60)
    out = array.array("h", files[2].read_bytes()).tolist()
    assert out[:LATENCY] == [0] * LATENCY
    return out[LATENCY:]


def decibels(after, before):
    return 10 * math.log10(after / before)


def louder(near, out):
    """By how many dB the output exceeds the near end over the worst 100 ms; both with the noise of rounding."""
    n, o = (list(itertools.accumulate((x * x + 1 / 12 for x in signal), initial=0)) for signal in (near, out))
    return max(decibels(o[i + 800] - o[i], n[i + 800] - n[i]) for i in range(len(near) - 799))


def energy(samples):
    return sum(x * x for x in samples)


def noise(amplitude):
    source = random.Random(3)
    return [source.randint(-amplitude, amplitude) for _ in range(COUNT)]


def pauses(samples):
    return [0 if i // 4000 % 3 == 0 else x for i, x in enumerate(samples)]


TALKER = speech(SECONDS, 9000, seed=5)
FAR = {"speech": speech(SECONDS, 12000), "voice": voice(SECONDS, lambda t: 110 + 20 * math.sin(5 * t)), "noise": noise(3000)}
NEAR = {
    "silence": [0] * COUNT,
    "dither": noise(1),
    "noise": noise(300),
    "hum": tone(SECONDS, 400, frequency=50),
    "clicks": [20000 if i % 16000 == 8000 else x for i, x in enumerate(noise(3))],
    "talker": TALKER,
    "talker with pauses": pauses(TALKER),
    "voice with pauses": pauses(voice(SECONDS, lambda t: 120 + 25 * math.sin(4 * t))),
}


@pytest.mark.parametrize("far", FAR)
@pytest.mark.parametrize("near", NEAR)
def test_no_line_without_echo_gets_louder(tmp_path, near, far):
    out = cancel(tmp_path, FAR[far], NEAR[near])
    assert louder(NEAR[near], out) <= 1
    # What has no steady tone that could be predicted from the far end is left as it is by the simple one.
    if not COMPLETE and near != "hum" and "voice" not in near:
        assert out == NEAR[near]


@pytest.mark.parametrize("far", ["speech", "voice"])
def test_echo_is_removed(tmp_path, far):
    """Within two seconds, and what a talker says over it from then on is kept."""
    path = {240: 0.2, 241: 0.4, 242: -0.3, 243: 0.15, 244: -0.1, 246: 0.05, 260: -0.02}
    sent = [0] * 400 + FAR[far]
    echo = [round(sum(g * sent[i + 400 - t] for t, g in path.items())) + x for i, x in enumerate(noise(3))]
    out = cancel(tmp_path, FAR[far], echo)
    removed = [decibels(energy(echo[i : i + 8000]), energy(out[i : i + 8000])) for i in range(0, COUNT, 8000)]
    assert removed[1] > 10 and min(removed[2:]) > 15

    half = COUNT // 2
    talker = [0] * half + [x // 3 for x in TALKER[half:]]
    out = cancel(tmp_path, FAR[far], [e + t for e, t in zip(echo, talker)])
    left = [o - t for o, t in zip(out, talker)]
    assert decibels(energy(echo[half:]), energy(left[half:])) > (15 if COMPLETE else 5)
