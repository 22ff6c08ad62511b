"""Signals and audio files for the tests; samples are lists of 16-bit numbers, channels are lists of them."""
import array
import math
import random
import struct
import sys

PCM, FLOAT, ALAW, ULAW = 1, 3, 6, 7


def tone(seconds, amplitude, rate=8000, frequency=400):
    return [round(amplitude * math.sin(2 * math.pi * frequency * i / rate)) for i in range(int(seconds * rate))]


def speech(seconds, amplitude, seed=1):
    """Syllables of noise: bursts of 0.2 to 0.5 s with pauses, over a faint background."""
    source = random.Random(seed)
    samples = [source.randint(-3, 3) for _ in range(1600)]
    while len(samples) < seconds * 8000:
        length = source.randint(1600, 4000)
        samples += [int(amplitude * math.sin(math.pi * i / length) * source.uniform(-1, 1)) for i in range(length)]
        samples += [source.randint(-3, 3) for _ in range(source.randint(400, 1600))]
    return samples[: int(seconds * 8000)]


def voice(seconds, f0, rate=8000, amplitude=6000):
    """Band-limited pulses, falling by 6 dB an octave; f0 in Hz or as a function of the time in seconds."""
    samples, phase = [], 0.0
    for i in range(int(seconds * rate)):
        now = f0(i / rate) if callable(f0) else f0
        phase += now / rate
        samples.append(sum(math.cos(2 * math.pi * k * phase) / k for k in range(1, int(3500 / now) + 1)))
    peak = max(map(abs, samples))
    return [round(amplitude * x / peak) for x in samples]


def pcm(samples):
    data = array.array("h", samples)
    if sys.byteorder == "big":
        data.byteswap()
    return data.tobytes()


def interleave(channels):
    return [x for frame in zip(*channels) for x in frame]


def wav(data, channels=1, rate=8000, kind=PCM, bits=16, announced=None):
    """A WAV file; "announced" replaces the size that its header gives for the data."""
    size = len(data) if announced is None else announced
    width = channels * bits // 8
    header = struct.pack("<4sIHHIIHH4sI", b"fmt ", 16, kind, channels, rate, rate * width, width, bits, b"data", size)
    return struct.pack("<4sI4s", b"RIFF", (4 + len(header) + size) & 0xFFFFFFFF, b"WAVE") + header + data


def wav16(samples, rate=8000):
    return wav(pcm(samples), rate=rate)


def read_wav(path, expected_rate=8000):
    return parse_wav(path.read_bytes(), expected_rate)


def parse_wav(content, expected_rate=8000):
    """The channels of a 16-bit WAV file, read without any library."""
    kind, channels, rate, _, _, bits = struct.unpack("<HHIIHH", content[20:36])
    assert content[:4] == b"RIFF" and content[36:40] == b"data"
    assert (kind, rate, bits) == (PCM, expected_rate, 16)
    samples = array.array("h", content[44 : 44 + struct.unpack("<I", content[40:44])[0]])
    return [list(samples[c::channels]) for c in range(channels)]


def alaw(code):
    """ITU-T G.711 A-law."""
    code ^= 0x55
    exponent, mantissa = code >> 4 & 7, code & 15
    magnitude = (mantissa * 2 + 33) << exponent - 1 if exponent else mantissa * 2 + 1
    return magnitude * 8 if code & 0x80 else -magnitude * 8


def ulaw(code):
    """ITU-T G.711 mu-law."""
    code ^= 0xFF
    magnitude = ((code & 15) * 2 + 33 << (code >> 4 & 7)) - 33
    return -magnitude * 4 if code & 0x80 else magnitude * 4
