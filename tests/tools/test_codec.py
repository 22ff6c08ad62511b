"""Recordings through the codecs: vsps codecs, encode and decode."""
import math
import os
import pathlib
import subprocess

import pytest
from signals import interleave, pcm, read_wav, voice, wav, wav16

RECORDING = pathlib.Path(__file__).parents[1] / "support/data/demo-echotest.wav"
# Octets of a 20 ms frame, and the lowest signal-to-noise ratio (dB) of a voice.
CODECS = {
    "pcma": (160, 35),
    "pcmu": (160, 35),
    "g722": (160, 25),
    "gsm": (33, 6),
    "g726-16": (40, 8),
    "g726-24": (60, 14),
    "g726-32": (80, 20),
    "g726-40": (100, 20),
    "aal2-g726-16": (40, 8),
    "aal2-g726-24": (60, 14),
    "aal2-g726-32": (80, 20),
    "aal2-g726-40": (100, 20),
}
VOICE = voice(2, 120)


def rate(codec):
    return 16000 if codec == "g722" else 8000


def snr(codec, expected, heard):
    """In dB, without the start; the filters of G.722 delay by 22 samples."""
    delay = 22 if codec == "g722" else 0
    pairs = list(zip(expected, heard[delay:]))[2000:]
    return 10 * math.log10(sum(x * x for x, _ in pairs) / max(1, sum((x - y) ** 2 for x, y in pairs)))


def decoded(vsps, name, *options):
    vsps.ok("decode", name, "heard.wav", *options)
    return read_wav(vsps.path("heard.wav"), rate(name.split(".")[-1]))[0]


def test_the_list_of_codecs(vsps):
    codecs = vsps.json("codecs")["codecs"]
    assert [c["name"] for c in codecs] == list(dict.fromkeys([*list(CODECS)[:2], "g722", "gsm", *CODECS]))
    assert {c["name"]: c["max_frame_octets"] for c in codecs} == {name: octets for name, (octets, _) in CODECS.items()}
    g722 = codecs[2]
    assert g722["bit_rates"] == [64000, 56000, 48000] and g722["several_rates"] and g722["rate_hz"] == 16000
    assert g722["rtp"] == {"name": "G722", "clock_rate_hz": 8000, "payload_type": 9}
    lines = vsps.ok("codecs").stdout.splitlines()
    assert [line.split()[0] for line in lines[1:]] == [c["name"] for c in codecs]


@pytest.mark.parametrize("codec", CODECS)
def test_there_and_back(vsps, codec):
    octets, quality = CODECS[codec]
    samples = voice(2, 120, rate(codec))[: -rate(codec) // 1000]  # ends within a frame
    vsps.put("in.wav", wav16(samples, rate(codec)))
    report = vsps.json("encode", "in.wav", f"x.{codec}")
    assert (report["codec"], report["frames"], report["samples"]) == (codec, 100, len(samples))
    size = 3300 if codec == "gsm" else math.ceil(octets * len(samples) / rate(codec) * 50)
    assert os.path.getsize(vsps.path(f"x.{codec}")) == report["octets"] == size
    heard = decoded(vsps, f"x.{codec}")
    assert 0 <= len(heard) - len(samples) < 4 if codec != "gsm" else len(heard) == 16000
    assert snr(codec, samples, heard) > quality


def test_the_orders_of_bits(vsps):
    vsps.put("in.wav", wav16(VOICE))
    vsps.ok("encode", "in.wav", "x.g726-32")
    vsps.ok("encode", "in.wav", "x.aal2-g726-32")
    swapped = bytes((b & 15) << 4 | b >> 4 for b in vsps.path("x.g726-32").read_bytes())
    assert swapped == vsps.path("x.aal2-g726-32").read_bytes()


def test_rates_and_resampling(vsps):
    vsps.put("in.wav", wav16(VOICE))
    result = vsps.ok("encode", "in.wav", "x.g722")
    assert result.stderr == "vsps: in.wav: resampled from 8000 Hz to 16000 Hz\n"
    full = vsps.path("x.g722").read_bytes()
    for bits, mask in ((56000, 0xFE), (48000, 0xFC)):
        vsps.ok("encode", "in.wav", "x.g722", "--rate", bits)
        assert vsps.path("x.g722").read_bytes() == bytes(b & mask for b in full)
        right, wrong = decoded(vsps, "x.g722", "--rate", bits), decoded(vsps, "x.g722")
        vsps.put("y.g722", full)
        assert snr("pcma", decoded(vsps, "y.g722"), right) > snr("pcma", decoded(vsps, "y.g722"), wrong)


def test_pipes_names_and_channels(vsps):
    vsps.put("in.wav", wav16(VOICE))
    vsps.ok("encode", "in.wav", "x.ul")
    vsps.ok("encode", "in.wav", "other", "--codec", "pcmu")
    assert vsps.path("x.ul").read_bytes() == vsps.path("other").read_bytes()
    expected = decoded(vsps, "x.ul")

    run = lambda data, *arguments: subprocess.run([os.environ["VSPS"], *arguments], input=data, capture_output=True)  # noqa: E731
    coded = run(wav16(VOICE), "encode", "-", "-", "--codec", "pcmu")
    assert coded.stdout == vsps.path("x.ul").read_bytes()
    assert b"written: standard output" in coded.stderr
    vsps.path("heard.wav").write_bytes(run(coded.stdout, "decode", "-", "-", "--codec", "pcmu").stdout)
    assert read_wav(vsps.path("heard.wav"))[0] == expected

    vsps.put("two.wav", wav(pcm(interleave([[0] * len(VOICE), VOICE])), channels=2))
    vsps.fails("two.wav", "has 2 channels", "encode", "two.wav", "y.ul")
    vsps.ok("encode", "two.wav", "y.ul", "--channel", 2)
    assert vsps.path("y.ul").read_bytes() == coded.stdout


@pytest.mark.parametrize("codec", ["pcma", "g722", "gsm", "g726-32"])
def test_lost_frames_are_concealed(vsps, codec):
    vsps.put("in.wav", RECORDING.read_bytes())
    vsps.ok("encode", "in.wav", f"x.{codec}")
    whole = decoded(vsps, f"x.{codec}")
    heard = {}
    for seed in (1, 2, 1):
        report = vsps.json("decode", f"x.{codec}", "heard.wav", "--lose", 10, "--seed", seed)
        assert abs(report["frames_lost"] / report["frames"] - 0.1) < 0.03
        samples = read_wav(vsps.path("heard.wav"), rate(codec))[0]
        assert heard.setdefault(seed, samples) == samples and len(samples) == len(whole)
    assert heard[1] != heard[2]
    everything = vsps.json("decode", f"x.{codec}", "heard.wav", "--lose", 100)
    assert everything["frames_lost"] == everything["frames"]
    assert max(map(abs, read_wav(vsps.path("heard.wav"), rate(codec))[0])) < 100
    if codec in ("pcma", "g726-32"):  # where silence in place of a third of the frames would leave two thirds of the energy
        energy = sum(x * x for x in decoded(vsps, f"x.{codec}", "--lose", 33)) / sum(x * x for x in whole)
        assert 0.8 < energy < 1.2


def test_streams_that_cannot_be_decoded(vsps):
    vsps.put("in.wav", wav16(VOICE))
    vsps.ok("encode", "in.wav", "x.gsm")
    vsps.ok("encode", "in.wav", "x.pcma")
    vsps.ok("encode", "in.wav", "x.al")
    coded = vsps.path("x.gsm").read_bytes()
    vsps.put("cut.gsm", coded[:-1])
    vsps.put("bad.gsm", coded[:330] + b"\0" + coded[331:])
    vsps.put("empty.gsm", b"")
    vsps.put("wav.g722", wav16(VOICE))
    vsps.put("out.wav", b"before")
    vsps.fails("cut.gsm", "cut short", "decode", "cut.gsm", "out.wav")
    vsps.fails("bad.gsm", "frame 11 is not one of gsm", "decode", "bad.gsm", "out.wav")
    vsps.fails("x.pcma", "is not one of gsm", "decode", "x.pcma", "out.wav", "--codec", "gsm")
    vsps.fails("empty.gsm", "empty", "decode", "empty.gsm", "out.wav")
    vsps.fails("missing.gsm", "No such file", "decode", "missing.gsm", "out.wav")
    vsps.fails("wav.g722", "has the header of WAV", "decode", "wav.g722", "out.wav")
    vsps.fails("x.al", "is an input and an output", "encode", "x.al", "x.al", "--raw", 8000)
    vsps.fails("x.xyz", "--codec", "encode", "in.wav", "x.xyz")


@pytest.mark.parametrize(
    "arguments",
    [
        ["encode", "in.wav", "x.g722", "--rate", 40000],
        ["encode", "in.wav", "x.raw", "--codec", "g729"],
        ["encode", "in.wav", "-"],
        ["decode", "x.gsm", "out.wav", "--lose", 101],
        ["decode", "x.gsm", "out.wav", "--lose", -1],
    ],
)
def test_bad_usage(vsps, arguments):
    vsps.put("in.wav", wav16(VOICE))
    vsps.put("x.gsm", b"\xd0" + bytes(32))
    result = vsps.run(*arguments)
    assert (result.returncode, result.stdout) == (2, "")
    assert "--" in result.stderr and vsps.files() == ["in.wav", "x.gsm"]
