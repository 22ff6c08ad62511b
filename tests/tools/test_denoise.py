"""What vsps denoise does to noise and speech, and what it reports."""
import math
import os
import pathlib
import random
import subprocess

import pytest
from signals import interleave, pcm, read_wav, tone, wav, wav16

RECORDING = pathlib.Path(__file__).parents[1] / "support/data/demo-echotest.wav"
FLOORS = {"off": 0, "low": 10, "normal": 14, "high": 18, "auto": 18}
SPEECH = slice(20000, 35000)  # of noisy_speech()


def noise(seconds, amplitude, rate=8000, seed=1):
    source = random.Random(seed)
    return [round(source.gauss(0, amplitude)) for _ in range(int(seconds * rate))]


def noisy_speech():
    """2 s of noise, 2.2 s of a recorded phrase, 2 s of noise."""
    samples = [0] * 16000 + read_wav(RECORDING)[0][1600:19200] + [0] * 16000
    return [max(-32768, min(32767, x + n)) for x, n in zip(samples, noise(7, 200))]


def level(samples):
    return 10 * math.log10(sum(x * x for x in samples) / len(samples) + 1e-9)


def denoise(vsps, samples, *options, rate=8000):
    vsps.put("in.wav", wav16(samples, rate))
    report = vsps.json("denoise", "in.wav", "out.wav", *options)
    return read_wav(vsps.path("out.wav"), report["output"]["rate_hz"])[0], report


@pytest.mark.parametrize("rate, latency", [(8000, 256), (16000, 512), (22050, 512), (32000, 1024)])
def test_the_output_is_in_step_with_the_input_and_as_long(vsps, rate, latency):
    for length in (1, rate // 100, latency, rate + 77):
        samples = tone(2, 5000, rate)[:length]
        out, report = denoise(vsps, samples, "--mode", "off", rate=rate)
        assert len(out) == length and max(abs(a - b) for a, b in zip(out, samples)) <= 1
        assert report["delay_removed_samples"] == latency
        assert report["output"] == {"file": "out.wav", "rate_hz": rate, "samples": length, "duration_s": round(length / rate, 3)}


@pytest.mark.parametrize("rate, used", [(6000, 8000), (11025, 8000), (24000, 22050), (48000, 32000)])
def test_other_rates_become_the_next_below(vsps, rate, used):
    out, report = denoise(vsps, noise(1, 500, rate), rate=rate)
    assert report["input"]["rate_hz"] == rate and report["output"]["rate_hz"] == used
    assert abs(len(out) - used) <= 1
    assert f"resampled from {rate} Hz to {used} Hz" in vsps.ok("denoise", "in.wav", "out.wav").stderr


@pytest.mark.parametrize("mode, floor", FLOORS.items())
def test_noise_falls_by_the_floor_of_the_mode_and_speech_stays(vsps, mode, floor):
    samples = noisy_speech()
    out, report = denoise(vsps, samples, "--mode", mode)
    assert report["mode"] == mode
    lowered = level(samples[-12000:]) - level(out[-12000:])
    assert floor - 1.5 < lowered < floor + 0.5
    (channel,) = report["channels"]
    assert abs(channel["quiet_lowered_db"] - lowered) < 1.5
    assert abs(channel["speech_share"] - 2.2 / 6.2) < 0.06
    assert abs(level(samples[SPEECH]) - level(out[SPEECH])) < 0.5
    rest = [a - b for a, b in zip(samples[SPEECH], out[SPEECH])]
    assert level(rest) < level(samples[SPEECH]) - 12


def test_channels_are_treated_by_themselves(vsps):
    channels = [noisy_speech(), noise(6.2, 1000, seed=2)]
    vsps.put("two.wav", wav(pcm(interleave(channels)), channels=2))
    report = vsps.json("denoise", "two.wav", "two_out.wav", "--plot", "plot.svg")
    together = read_wav(vsps.path("two_out.wav"))
    for i, samples in enumerate(channels):
        alone, report_alone = denoise(vsps, samples)
        assert together[i] == alone and report["channels"][i] == report_alone["channels"][0]
    for label in (b">channel 1, before<", b">channel 2, after<", b"frequency, kHz"):
        assert label in vsps.path("plot.svg").read_bytes()


def test_silence_and_a_single_sample_tell_nothing(vsps):
    for samples, share in (([0] * 20000, 0), ([1000], None)):
        out, report = denoise(vsps, samples, "--plot", "plot.png")
        assert len(out) == len(samples) and report["plot"] == "plot.png"
        assert report["channels"] == [{"speech_share": share, "quiet_lowered_db": None}]
        assert "lowered by -\n" in vsps.ok("denoise", "in.wav", "out.wav").stdout


def test_a_pipe_without_headers(vsps):
    samples = noisy_speech()
    vsps.put("in.wav", wav16(samples))
    text = vsps.ok("denoise", "in.wav", "out.raw", "--mode", "high").stdout
    for label in ("in.wav: 6.20 s, 8000 Hz, 1 channel, mode high", "% of the time", "lowered by 1", "32 ms (256 samples)"):
        assert label in text
    process = subprocess.run([os.environ["VSPS"], "denoise", "--raw", "8000", "--mode", "high", "-", "-"], input=pcm(samples),
                             capture_output=True, check=True)  # fmt: skip
    assert process.stdout == vsps.path("out.raw").read_bytes()
    assert b"written: standard output (8000 Hz, 49600 samples)" in process.stderr



@pytest.mark.parametrize("arguments", [[], ["in.wav"], ["in.wav", "out.wav", "more.wav"], ["in.wav", "out.wav", "--mode", "loud"],
                                       ["in.wav", "out.wav", "--mode", "5"], ["in.wav", "out.wav", "--raw", "-1"]])  # fmt: skip
def test_bad_usage(vsps, arguments):
    vsps.put("in.wav", wav16([1] * 800))
    result = vsps.run("denoise", *arguments)
    assert (result.returncode, result.stdout) == (2, "")
    assert "--help" in result.stderr and vsps.files() == ["in.wav"]
