#!/usr/bin/env python3
"""Inputs for fuzz_voice that random choices do not lead to: half a second of recorded speech and of boundary values for every codec.

Usage: tools/fuzz_seeds.py FOLDER
"""

import pathlib
import random
import sys
import wave

SOURCE = pathlib.Path(__file__).resolve().parent.parent
CODECS = 24  # or more: the fuzzer divides by its number
RECORDED, FRAMES, SAMPLES = 0xF0, 12, 4000


def octet(sample):
    """The sign, exponent and mantissa that fuzz/voice.cpp makes samples of."""
    magnitude = min(abs(sample) // 4 + 33, 8191)
    exponent = magnitude.bit_length() - 6
    return (128 if sample < 0 else 0) | exponent << 4 | (magnitude >> (exponent + 1)) & 15


with wave.open(str(SOURCE / "tests/support/data/demo-echotest.wav")) as recording:
    octets = recording.readframes(recording.getnframes())
speech = [int.from_bytes(octets[i : i + 2], "little", signed=True) for i in range(0, len(octets), 2)]
begin = max(range(0, len(speech) - SAMPLES, 800), key=lambda i: sum(map(abs, speech[i : i + SAMPLES])))
signals = {
    "speech": speech[begin : begin + SAMPLES],
    "square": [32767 if i // (10 + i // 400) % 2 == 0 else -32768 for i in range(SAMPLES)],
    "bursts": [0 if i // 700 % 2 else (32767, -32768, 1, -1, 0, 8192)[i * i // 7 % 6] for i in range(SAMPLES)],
}
folder = pathlib.Path(sys.argv[1])
folder.mkdir(parents=True, exist_ok=True)
for codec in range(CODECS):
    for name, signal in signals.items():
        chance = random.Random(codec)
        # Mostly good frames: choices that damage nothing, rates, no attenuation, no noise.
        frames = bytes(v for i in range(FRAMES) for v in (0xCF if i % 8 else chance.randrange(256), chance.randrange(256), 0, 0, i))
        settings = RECORDED | codec % 2
        data = bytes([codec, 0, settings, FRAMES]) + frames + bytes(map(octet, signal))
        (folder / f"{name}-{codec}").write_bytes(data)
