"""The answer tones that vsps tone finds."""
import math
import pathlib
import random

import pytest
from signals import interleave, pcm, read_wav, speech, tone, voice, wav, wav16

RECORDING = pathlib.Path(__file__).parents[1] / "support/data/demo-echotest.wav"
VARIANTS = ([], ["--fixed"])
PERIOD = 0.45


def answer(seconds, amplitude=5000, rate=8000, period=PERIOD, frequency=2100):
    """Its phase is reversed after every period."""
    return [
        round(amplitude * math.sin(2 * math.pi * frequency * i / rate) * (-1) ** int(i / rate / period))
        for i in range(int(seconds * rate))
    ]


def noise(seconds, amplitude, seed=1):
    source = random.Random(seed)
    return [round(source.gauss(0, amplitude)) for _ in range(int(seconds * 8000))]


def found(vsps, samples, variant, rate=8000):
    vsps.put("in.wav", wav16(samples, rate=rate))
    return vsps.json("tone", "in.wav", *variant)["files"][0]["channels"][0]["tones"]


def check(tones, expected):
    """Against start and end of each tone."""
    assert len(tones) == len(expected)
    for t, (start, end) in zip(tones, expected):
        assert abs(t["start_s"] - start) < 0.011 and abs(t["end_s"] - end) < 0.011
        assert t["detected_s"] == t["reversals_s"][0]
        reversals = [start + i * PERIOD for i in range(2, int((end - start - 0.01) / PERIOD) + 1)]
        assert len(t["reversals_s"]) == len(reversals)
        assert all(0 < a - b < 0.01 for a, b in zip(t["reversals_s"], reversals))


@pytest.mark.parametrize("variant", VARIANTS)
@pytest.mark.parametrize("rate", [8000, 16000, 44100])
def test_tones_at_every_rate(vsps, variant, rate):
    silence = [0] * rate
    samples = silence + answer(3.3, rate=rate) + silence + answer(2.2, 1000, rate) + silence[: rate // 3]
    tones = found(vsps, samples, variant, rate)
    check(tones, [(1, 4.3), (5.3, 7.5)])
    assert abs(tones[0]["level_dbov"] - 10 * math.log10(5000**2 / 2 / 32768**2)) < 0.2
    result = vsps.ok("tone", "in.wav", *variant)
    note = "vsps: in.wav: resampled from 44100 Hz to 8000 Hz\n" if rate == 44100 else ""
    assert result.stderr == note
    report = vsps.json("tone", "in.wav", *variant)
    assert report["variant"] == ("fixed" if variant else "float")
    assert report["files"][0]["input"]["rate_hz"] == rate
    assert report["files"][0]["detection_rate_hz"] == (16000 if rate == 16000 else 8000)


@pytest.mark.parametrize("variant", VARIANTS)
def test_tones_after_other_signals(vsps, variant):
    """Noise under the tone, speech and a constant (A-law silence) between two."""
    samples = [0] * 8000 + answer(2) + [8] * 8000 + answer(2) + read_wav(RECORDING)[0][1600:17600] + [0] * 800 + answer(3)
    samples = [x + n for x, n in zip(samples, noise(len(samples) / 8000, 150))]
    check(found(vsps, samples, variant), [(1, 3), (4, 6), (8.1, 11.1)])
    samples = [0] * 8000 + answer(2) + [8] * 8000 + answer(2)
    check(found(vsps, samples, variant), [(1, 3), (4, 6)])


@pytest.mark.parametrize("variant", VARIANTS)
def test_what_is_no_answer_tone(vsps, variant):
    pause = [0] * 4000
    for samples in (
        [0],
        [0] * 20000,
        answer(4, period=100),
        answer(4, period=0.4),
        answer(4, period=0.5),
        answer(4, frequency=1900),
        answer(4, frequency=1000),
        answer(0.89),  # one reversal only
        noise(6, 2000),
        voice(4, 150),
        speech(6, 6000),
        tone(4, 5000, frequency=2100)[:7000] + pause + tone(4, 5000, frequency=2100)[:7000],
    ):
        assert found(vsps, pause + samples + pause, variant) == []
    vsps.put("in.wav", RECORDING.read_bytes())
    assert vsps.ok("tone", "in.wav", *variant).stdout.endswith("\n  no answer tone with phase reversals\n")


def test_text_and_channels(vsps):
    channels = [[0] * 8000 + answer(1.7) + [0] * 1000, speech(2.825, 5000)]
    vsps.put("two.wav", wav(pcm(interleave(channels)), channels=2))
    result = vsps.ok("tone", "two.wav")
    assert result.stderr == "vsps: two.wav: 2 channels, each heard by itself\n"
    lines = result.stdout.splitlines()
    assert lines[:2] == ["two.wav: 2.83 s, 8000 Hz, 2 channels", " channel 1"]
    assert lines[2] == "        1.00 s to       2.70 s, -19.3 dBov, detected at 1.904 s, 2 reversals up to 2.354 s"
    assert lines[3:] == [" channel 2", "  no answer tone with phase reversals"]
    both = vsps.json("tone", "two.wav")["files"][0]["channels"]
    assert [channel["tones"] for channel in both] == [found(vsps, samples, []) for samples in channels]
    vsps.put("in.raw", pcm(channels[0]))
    assert vsps.json("tone", "in.raw", "--raw", 8000)["files"][0]["channels"][0] == both[0]


def test_several_files_and_a_bad_one(vsps):
    for i in range(4):
        vsps.put(f"{i}.wav", wav16(answer(1 + 0.5 * i)))
    vsps.put("bad.wav", b"Dear operator,\n" * 50)
    result = vsps.run("tone", "--jobs", 3, "0.wav", "1.wav", "bad.wav", "missing.wav", "2.wav", "3.wav")
    assert result.returncode == 1
    first, second = result.stderr.splitlines()
    assert first.startswith("vsps: bad.wav: not readable as audio") and second.startswith("vsps: missing.wav: No such")
    assert result.stdout == "".join(vsps.ok("tone", f"{i}.wav").stdout for i in range(4))


@pytest.mark.parametrize("arguments", [[], ["in.wav", "--jobs", "0"], ["in.wav", "--raw", "0"], ["in.wav", "--bogus"]])
def test_bad_usage(vsps, arguments):
    vsps.put("in.wav", wav16(answer(1)))
    result = vsps.run("tone", *arguments)
    assert (result.returncode, result.stdout) == (2, "")
    assert "--help" in result.stderr
