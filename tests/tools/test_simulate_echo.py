"""What vsps simulate-echo makes of far end, near end, echo path and noise."""
import math
import os
import random
import resource
import struct

import pytest
from signals import FLOAT, pcm, read_wav, speech, tone, wav, wav16

# Models of G.168 Annex D: K, number of taps, the last of them, and energy of the response at an ERL of 0 dB.
MODELS = {
    "d2": (1.39e-5, 64, -724, -0.88),
    "d3": (1.44e-5, 96, -232, -0.50),
    "d4": (1.52e-5, 96, -573, -0.03),
    "d5": (1.77e-5, 128, 19, 1.29),
    "d6": (9.33e-6, 96, -123, -4.27),
    "d7": (1.51e-5, 120, -201, -0.09),
    "d8": (2.33e-5, 96, 179, 3.68),
    "d9": (1.33e-5, 99, -183, 2.41),
}


def power(samples):
    return sum(x * x for x in samples) / len(samples)


def dbov(samples):
    return 10 * math.log10(power(samples) / 32768**2)


def simulate(vsps, far, near, *options):
    """The output and the report; near may be None."""
    vsps.put("far.wav", wav16(far))
    if near is not None:
        vsps.put("near.wav", wav16(near))
    report = vsps.json("simulate-echo", "far.wav", "none" if near is None else "near.wav", "out.wav", *options)
    return read_wav(vsps.path("out.wav"))[0], report


def response(vsps, *options, length=400, height=32000):
    """That of the echo path to an impulse."""
    out, _ = simulate(vsps, [height] + [0] * (length - 1), None, *options)
    return [x / height for x in out]


@pytest.mark.parametrize("name", MODELS)
def test_models(vsps, name):
    k, taps, last, energy = MODELS[name]
    for erl in (0, 12.5):
        scale = 10 ** (-erl / 20)
        h = response(vsps, "--path", name, "--erl", erl)
        assert abs(h[taps - 1] - last * k * scale) < 2e-5
        assert not any(h[taps:])
        assert abs(10 * math.log10(sum(x * x for x in h)) - energy + erl) < 0.01
    report = simulate(vsps, speech(1, 3000), None, "--path", name)[1]
    assert report["path"] == {"name": name, "taps": taps, "delay_ms": 0, "erl_db": 12}


def test_one_model_in_full_detail(vsps):
    h = response(vsps, "--path", "d2", "--erl", 0)
    for tap, value in zip([-436, -829, -2797, -4208, -17968, -11215, 46150, 34480, -10427], h):
        assert abs(value - tap * 1.39e-5) < 2e-5


def test_output_is_near_end_and_echo_and_noise(vsps):
    """Against the convolution with a path of the test's own, in a file, at every place in the blocks."""
    taps = [0.3, 0, -0.5, 0.25, 0.125]
    vsps.put("path.txt", b"# a room\n0.3 0, -0.5;\n\n.25\t125e-3 # the end\r\n")
    scale = 10 ** (-6 / 20) / math.sqrt(sum(x * x for x in taps))
    far, near, delay = speech(1.2, 8000), speech(1.2, 3000, seed=5), 40
    out, report = simulate(vsps, far, near, "--path", "path.txt", "--erl", 6, "--delay", 5)
    for n, sample in enumerate(out):
        echo = sum(h * far[n - delay - k] for k, h in enumerate(taps) if n - delay - k >= 0)
        assert abs(sample - near[n] - scale * echo) < 0.501
    assert report["path"] == {"name": "path.txt", "taps": 5, "delay_ms": 5, "erl_db": 6}
    assert report["near"]["file"] == "near.wav" and report["noise"] is None
    assert report["output"]["samples_clipped"] == 0

    noisy, report = simulate(vsps, far, near, "--path", "path.txt", "--erl", 6, "--delay", 5, "--noise", -50)
    noise = [a - b for a, b in zip(noisy, out)]
    assert abs(dbov(noise) + 50) < 0.3 and abs(report["noise"]["level"]["level_dbov"] + 50) < 0.3


def test_noise_is_white_gaussian_and_repeats(vsps):
    noise, _ = simulate(vsps, [0] * 80000, None, "--noise", -40)
    assert abs(dbov(noise) + 40) < 0.1
    sigma = 327.68
    assert abs(sum(noise) / len(noise)) < 5 * sigma / math.sqrt(len(noise))
    assert abs(sum(x**4 for x in noise) / len(noise) / sigma**4 - 3) < 0.15
    for lag in (1, 2, 80):
        product = sum(a * b for a, b in zip(noise, noise[lag:])) / len(noise)
        assert abs(product) < 5 * sigma**2 / math.sqrt(len(noise))
    assert simulate(vsps, [0] * 80000, None, "--noise", -40)[0] == noise
    assert simulate(vsps, [0] * 80000, None, "--noise", -40, "--seed", 2)[0] != noise


def test_a_recorded_impulse_response_gets_the_loss(vsps):
    source = random.Random(1)
    white = [round(source.gauss(0, 3000)) for _ in range(40000)]
    decay = [source.uniform(-1, 1) * math.exp(-i / 300) for i in range(2000)]
    vsps.put("room.wav", wav(struct.pack("<2000f", *decay), kind=FLOAT, bits=32))
    out, report = simulate(vsps, white, None, "--path", "room.wav", "--erl", 9)
    assert abs(10 * math.log10(power(white) / power(out)) - 9) < 0.5
    assert abs(report["echo"]["measured_erl_db"] - 10 * math.log10(power(white) / power(out))) < 0.01

    vsps.put("fast.wav", wav16([round(20000 * x) for x in decay], rate=16000))
    result = vsps.ok("simulate-echo", "far.wav", "none", "out.wav", "--path", "fast.wav")
    assert result.stderr == "vsps: fast.wav: resampled from 16000 Hz to 8000 Hz\n"
    assert "echo path fast.wav of 1000 taps" in result.stdout


def test_different_lengths_and_rates(vsps):
    far, near = speech(2, 3000), speech(1, 3000, seed=2)
    vsps.put("far.wav", wav16(far))
    vsps.put("near.wav", wav16(near))
    result = vsps.ok("simulate-echo", "far.wav", "near.wav", "short.wav", "--near-at", 0.5)
    assert result.stderr == "vsps: near.wav: ends 0.50 s early, silent from there on\n"
    result = vsps.ok("simulate-echo", "far.wav", "near.wav", "long.wav", "--near-at", 2.25)
    assert result.stderr == "vsps: far.wav: ends 1.25 s early, silent from there on\n"
    long = read_wav(vsps.path("long.wav"))[0]
    assert len(long) == 26000 and long[18000:] == near
    assert len(read_wav(vsps.path("short.wav"))[0]) == 16000
    assert simulate(vsps, far, near, "--near-at", 0.5)[1]["near"]["begins_s"] == 0.5

    vsps.put("slow.wav", wav16(far[:11025], rate=11025))
    result = vsps.ok("simulate-echo", "slow.wav", "none", "out.wav")
    assert result.stderr == "vsps: slow.wav: resampled from 11025 Hz to 8000 Hz\n"
    assert len(read_wav(vsps.path("out.wav"))[0]) == 8000
    vsps.put("far.raw", pcm(far))
    vsps.ok("simulate-echo", "far.raw", "none", "raw.wav", "--raw", 8000)
    vsps.ok("simulate-echo", "far.wav", "none", "wav.wav")
    assert vsps.path("raw.wav").read_bytes() == vsps.path("wav.wav").read_bytes()


def test_16_khz_stays_16_khz(vsps):
    """The path has its shape and its gain at any rate, the near end its time."""
    samples = tone(1, 8000, frequency=1000)
    out, report = simulate(vsps, samples, None, "--path", "d4", "--erl", 0)
    vsps.put("fast.wav", wav16(tone(1, 8000, rate=16000, frequency=1000), rate=16000))
    vsps.put("talker.wav", wav16([1000] * 8000))
    result = vsps.ok("simulate-echo", "fast.wav", "none", "fast_out.wav", "--path", "d4", "--erl", 0)
    assert result.stderr == ""
    fast = read_wav(vsps.path("fast_out.wav"), 16000)[0]
    assert len(fast) == 16000
    error = [a - b for a, b in zip(fast[400:-400:2], out[200:-200])]
    assert power(error) < 1e-4 * power(out[200:-200])
    vsps.ok("simulate-echo", "fast.wav", "talker.wav", "with.wav", "--path", "d4", "--erl", 100, "--near-at", 0.5)
    near = read_wav(vsps.path("with.wav"), 16000)[0]
    assert len(near) == 24000 and max(map(abs, near[:7900])) < 5 and abs(near[12000] - 1000) < 5


@pytest.mark.parametrize("clipping", ["soft", "hard"])
@pytest.mark.parametrize("percent", [5, 25])
def test_a_loudspeaker_distorts(vsps, clipping, percent):
    """As much as it is told to at the far end's level, odd harmonics only, and less what is quieter."""

    def harmonic(samples, k):
        return sum(x * math.sin(2 * math.pi * k * n / 80) for n, x in enumerate(samples)) * math.sqrt(2) / len(samples)

    def distortion(samples):
        fundamental = harmonic(samples, 1) ** 2
        return 100 * math.sqrt((power(samples) - fundamental) / fundamental)

    loud = tone(2, 20000, frequency=100)
    vsps.put("path.txt", b"1")
    options = ["--path", "path.txt", "--erl", 0, "--distortion", percent, "--clipping", clipping]
    out, report = simulate(vsps, loud, None, *options)
    assert abs(distortion(out) / percent - 1) < 0.1  # the active level is measured to 0.1 dB
    assert abs(harmonic(out, 2)) < 1 < abs(harmonic(out, 3))
    assert report["loudspeaker"] == {"distortion_percent": percent, "clipping": clipping}
    if clipping == "hard":
        assert sum(x == max(out) for x in out) > 800 and out[:3] == loud[:3]
    quiet = [x // 10 for x in loud[:2000]]
    assert distortion(simulate(vsps, loud + quiet, None, *options)[0][-1600:]) < max(0.35, percent / 20)


def test_clipping_is_counted(vsps):
    far = [32000 if i % 100 < 50 else -32000 for i in range(8000)]
    vsps.put("path.txt", b"1")
    out, report = simulate(vsps, far, far, "--path", "path.txt", "--erl", 0)
    assert out == [32767 if x > 0 else -32768 for x in far]
    assert report["output"]["samples_clipped"] == 8000
    result = vsps.ok("simulate-echo", "far.wav", "near.wav", "out.wav", "--path", "path.txt", "--erl", 0)
    assert "  samples clipped   8000 (100.00 %)\n" in result.stdout


def test_report(vsps):
    far, near = tone(3, 3276.8, frequency=1000), tone(3, 327.68)
    out, report = simulate(vsps, far, near, "--erl", 10, "--noise", -60)
    echo, _ = simulate(vsps, far, None, "--erl", 10)
    for name, samples in (("far", far), ("near", near), ("echo", echo), ("output", out)):
        assert abs(report[name]["level"]["level_dbov"] - dbov(samples)) < 0.01
        assert abs(report[name]["level"]["active_level_dbov"] - dbov(samples)) < 0.1
    assert abs(report["echo"]["measured_erl_db"] - dbov(far) + dbov(echo)) < 0.01
    text = vsps.ok("simulate-echo", "far.wav", "near.wav", "out.wav", "--erl", 10, "--noise", -60).stdout
    for line in ("far end", "echo", "near end", "noise", "output", "echo return loss", "samples clipped"):
        assert f"\n  {line}" in text
    assert text.endswith("written: out.wav (8000 Hz, 24000 samples)\n")
    silent = simulate(vsps, [0] * 1000, None)[1]
    assert silent["echo"] == {"level": {"level_dbov": None, "active_level_dbov": None}, "measured_erl_db": None}


def test_files_that_cannot_be_used(vsps):
    vsps.put("far.wav", wav16(speech(1, 3000)))
    vsps.put("two.wav", wav(pcm([1, 2] * 800), channels=2))
    run = ("simulate-echo", "far.wav")
    vsps.fails("missing.wav", "No such file", "simulate-echo", "missing.wav", "none", "out.wav")
    vsps.fails("missing.wav", "No such file", *run, "missing.wav", "out.wav")
    vsps.fails("two.wav", "has 2 channels", "simulate-echo", "two.wav", "none", "out.wav")
    vsps.fails("two.wav", "has 2 channels", *run, "two.wav", "out.wav")
    vsps.fails("out.mp3", "unknown extension", *run, "none", "out.mp3")
    vsps.fails("no/out.wav", "No such file", *run, "none", "no/out.wav")
    vsps.fails("./far.wav", "is an input and an output", *run, "none", "./far.wav")

    run = (*run, "none", "out.wav", "--path")
    vsps.fails("d1", "neither an echo path from d2 to d9 nor a file", *run, "d1")
    vsps.fails("two.wav", "has 2 channels", *run, "two.wav")
    for content, reason in (
        (b"", "without energy"),
        (b"0 0 0\n", "without energy"),
        (b"1 2\n3 four\n", "line 2: 'four' is no number"),
        (b"0.5x", "'0.5x' is no number"),
        (b"1\ninf", "line 2"),
        (b"1e200 1e200", "without energy or out of range"),
        (b"1 " * 32001, "more than 4 s"),
    ):
        vsps.put("path.txt", content)
        vsps.fails("path.txt", reason, *run, "path.txt")
    vsps.path("folder.txt").mkdir()
    result = vsps.run(*run, "folder.txt")
    assert result.returncode == 1 and result.stderr.startswith("vsps: folder.txt: ") and result.stderr.count("\n") == 1


def test_out_of_memory_is_said(vsps):
    with open(os.environ["VSPS"], "rb") as program:
        if b"san_init" in program.read():
            pytest.skip("sanitizers need the address space")
    vsps.put("far.wav", wav16(speech(1, 3000)))
    vsps.put("path.txt", b"1\n" * 10_000_000)
    limit = lambda: resource.setrlimit(resource.RLIMIT_AS, (100 << 20, 100 << 20))
    result = vsps.run("simulate-echo", "far.wav", "none", "out.wav", "--path", "path.txt", preexec_fn=limit)
    assert (result.returncode, result.stdout, result.stderr) == (1, "", "vsps: out of memory\n")
    assert vsps.files() == ["far.wav", "path.txt"]


@pytest.mark.parametrize(
    "options",
    [
        ["--erl", "nan"],
        ["--erl", "101"],
        ["--noise", "3"],
        ["--noise", "loud"],
        ["--delay", "-1"],
        ["--near-at", "inf"],
        ["--seed", "-1"],
        ["--distortion", "0"],
        ["--distortion", "41"],
        ["--clipping", "hard"],
        ["--raw", "0"],
        ["more.wav"],
    ],
)
def test_bad_usage(vsps, options):
    vsps.put("far.wav", wav16(tone(1, 3000)))
    result = vsps.run("simulate-echo", "far.wav", "none", "out.wav", *options)
    assert (result.returncode, result.stdout) == (2, "")
    assert "--help" in result.stderr
    assert vsps.files() == ["far.wav"]
