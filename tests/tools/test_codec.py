"""Recordings through the codecs: vsps codecs, encode and decode."""
import math
import os
import pathlib
import random
import struct
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
# Octets of the longest frame.
FRAMED_CODECS = {"g729": 10, "g729a": 10, "g729d": 10, "g729e": 15, "g729i": 15, "amr": 31, "amrwb": 60}
FRAMED_CODECS |= {"g7221": 80, "g7221c": 120, "g728": 5, "g723": 24}
VOICE = voice(2, 120)


def rate(codec):
    return {"g722": 16000, "g7221": 16000, "g7221c": 32000, "awb": 16000}.get(codec, 8000)


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
    assert [c["name"] for c in codecs] == [*CODECS, *FRAMED_CODECS]
    octets = {name: octets for name, (octets, _) in CODECS.items()} | FRAMED_CODECS
    assert {c["name"]: c["max_frame_octets"] for c in codecs} == octets
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


@pytest.mark.parametrize("codec", [c for c in CODECS if not c.startswith("g726")])
def test_wav_files_with_the_tag_of_the_codec(vsps, codec):
    vsps.put("in.wav", wav16(VOICE[:-100]))
    vsps.ok("encode", "in.wav", f"x.{codec}")
    written = vsps.json("encode", "in.wav", "coded.wav", "--codec", codec)
    header = vsps.path("coded.wav").read_bytes()[:64]
    assert 0 <= struct.unpack("<I", header.split(b"data")[1][:4])[0] - written["octets"] < 5  # whole blocks
    expected = decoded(vsps, f"x.{codec}")
    report = vsps.json("decode", "coded.wav", "out.wav")
    assert report["codec"] == codec and report["frames"] == written["frames"]
    heard = read_wav(vsps.path("out.wav"), rate(codec))[0]
    assert heard[: len(expected)] == expected and len(heard) - len(expected) < 8


def test_wav_files_whose_tag_lies(vsps):
    def tagged(name, tag, block, bits, data=bytes(260), rate=8000, channels=1):
        header = struct.pack("<IHHIIHH", 16, tag, channels, rate, rate, block, bits)
        vsps.put(name, b"RIFF" + struct.pack("<I", 28 + len(data)) + b"WAVEfmt " + header + b"data" + struct.pack("<I", len(data)) + data)  # fmt: skip

    tagged("alaw.wav", 6, 2, 16)
    tagged("gsm.wav", 0x31, 33, 0)
    tagged("ends.wav", 0x31, 65, 0, bytes(66))
    tagged("other.wav", 0x1234, 1, 4)
    tagged("fast.wav", 7, 1, 8, rate=16000)
    tagged("two.wav", 7, 2, 8, channels=2)
    tagged("good.wav", 7, 1, 8)
    vsps.put("pcm.wav", wav16(VOICE))
    vsps.put("short.wav", vsps.path("good.wav").read_bytes()[:-9])
    vsps.put("header.wav", vsps.path("good.wav").read_bytes()[:30])
    vsps.put("none.wav", b"not a header")
    vsps.fails("alaw.wav", "says A-law, but 16 bits", "decode", "alaw.wav", "out.wav")
    vsps.fails("alaw.wav", "says A-law, but 16 bits", "encode", "alaw.wav", "out.gsm")
    vsps.fails("gsm.wav", "says GSM 6.10, but 0 bits a sample in blocks of 33", "decode", "gsm.wav", "out.wav")
    vsps.fails("ends.wav", "ends within a block of GSM 6.10", "decode", "ends.wav", "out.wav")
    vsps.fails("other.wav", "tag 0x1234", "decode", "other.wav", "out.wav")
    vsps.fails("fast.wav", "is at 16000 Hz", "decode", "fast.wav", "out.wav")
    vsps.fails("two.wav", "2 channels", "decode", "two.wav", "out.wav")
    vsps.fails("pcm.wav", "nothing to decode", "decode", "pcm.wav", "out.wav")
    vsps.fails("short.wav", "cut short, holds 251 of 260", "decode", "short.wav", "out.wav")
    vsps.fails("header.wav", "within the header", "decode", "header.wav", "out.wav")
    vsps.fails("none.wav", "no header of a WAV file", "decode", "none.wav", "out.wav")
    vsps.fails("good.wav", "is pcmu and not gsm", "decode", "good.wav", "out.wav", "--codec", "gsm")
    vsps.fails("out.wav", "no tag for g726-32", "encode", "pcm.wav", "out.wav", "--codec", "g726-32")
    vsps.ok("decode", "good.wav", "out.wav")


def test_comparison_with_the_original(vsps):
    """A delay is found, errors of a known size are measured, and what is silent or far away does not count."""
    source = random.Random(1)
    speech_like = [round(source.gauss(0, 1000)) for _ in range(40000)] + [0] * 8000
    vsps.put("in.wav", wav16(speech_like))
    vsps.ok("encode", "in.wav", "x.pcma")
    clean = vsps.json("encode", "in.wav", "y.pcma", "--against", "in.wav")["against"]
    assert clean["delay_samples"] == 0 and 34 < clean["segmental_snr_db"] <= 35
    for late in (-333, 0, 57, 800):
        vsps.put("original.wav", wav16(speech_like[late:] if late >= 0 else [0] * -late + speech_like))
        against = vsps.json("decode", "x.pcma", "heard.wav", "--against", "original.wav")["against"]
        assert against["delay_samples"] == late and against["delay_ms"] == pytest.approx(late / 8)
        assert abs(against["segmental_snr_db"] - clean["segmental_snr_db"]) < 0.3
    for decibels in (3, 6, 12):  # louder by so much: the spectra differ by that, and so does the rest relative to the signal
        louder = [round(x * 10 ** (decibels / 20)) for x in speech_like]
        vsps.put("original.wav", wav16(louder))
        against = vsps.json("decode", "x.pcma", "heard.wav", "--against", "original.wav")["against"]
        assert against["log_spectral_distance_db"] == pytest.approx(decibels, abs=0.3)
        assert against["segmental_snr_db"] == pytest.approx(-20 * math.log10(1 - 10 ** (-decibels / 20)), abs=0.3)
    silent = vsps.json("decode", "x.pcma", "heard.wav", "--against", vsps.put("silent.wav", wav16([0] * 48000)))["against"]
    assert silent["segmental_snr_db"] is None and silent["log_spectral_distance_db"] is None
    text = vsps.ok("decode", "x.pcma", "heard.wav", "--against", "original.wav").stdout
    assert "segmental SNR 2.5 dB, log-spectral distance 12." in text
    vsps.fails("missing.wav", "No such file", "decode", "x.pcma", "out.wav", "--against", "missing.wav")
    vsps.fails("tiny.wav", "too short", "decode", "x.pcma", "out.wav", "--against", vsps.put("tiny.wav", wav16([1] * 100)))
    vsps.fails("in.wav", "is an input and an output", "decode", "x.pcma", "in.wav", "--against", "in.wav")


def test_losses_are_seen_in_the_comparison(vsps):
    vsps.put("in.wav", RECORDING.read_bytes())
    for codec in ("g722", "gsm", "g726-32", "g7221"):
        vsps.ok("encode", "in.wav", f"x.{codec}")
        results = [vsps.json("decode", f"x.{codec}", "h.wav", "--against", "in.wav", "--lose", p)["against"] for p in (0, 3, 10)]  # fmt: skip
        assert results[0]["segmental_snr_db"] > results[1]["segmental_snr_db"] > results[2]["segmental_snr_db"] + 1
        assert results[0]["log_spectral_distance_db"] < results[1]["log_spectral_distance_db"] < results[2]["log_spectral_distance_db"]  # fmt: skip


@pytest.mark.parametrize("kind, magic", [("png", b"\x89PNG"), ("svg", b"<?xml")])
def test_plot(vsps, kind, magic):
    vsps.put("in.wav", wav16([0] * 8000 + VOICE))
    vsps.ok("encode", "in.wav", "x.g722")
    result = vsps.ok("decode", "x.g722", "out.wav", "--against", "in.wav", "--plot", f"it's.{kind}", "--lose", 5)
    assert f"plot: it's.{kind}\n" in result.stdout
    content = vsps.path(f"it's.{kind}").read_bytes()
    assert content.startswith(magic)
    if kind == "svg":
        for label in (b">original<", b">decoded<", b"frequency, kHz", b"log-spectral distance", b"of the frames lost"):
            assert label in content
    vsps.put("silent.wav", wav16([0] * 1000))
    vsps.ok("encode", "silent.wav", "x.pcma", "--against", "silent.wav", "--plot", f"it's.{kind}")


def test_several_files_on_several_threads_give_what_each_gives_alone(vsps):
    names = [f"{i}.wav" for i in range(5)]
    for i, name in enumerate(names):
        vsps.put(name, wav16(voice(1 + i % 2, 100 + 10 * i)))
    outputs = ("{}.gsm", "--against", "{}.wav", "--plot", "{}.svg")
    for name in names:
        vsps.ok("encode", name, *outputs)
    made = [name for name in vsps.files() if name not in names]
    content = {name: vsps.path(name).read_bytes() for name in made}
    assert len(made) == 10
    for name in made:
        vsps.path(name).unlink()
    reports = vsps.json("encode", *names, *outputs, "--jobs", 4)["files"]
    assert [report["input"] for report in reports] == names
    assert content == {name: vsps.path(name).read_bytes() for name in vsps.files() if name not in names}

    vsps.put("bad.gsm", b"\0" * 33)
    result = vsps.run("decode", "0.gsm", "bad.gsm", "missing.gsm", "1.gsm", "heard-{}.wav", "--jobs", 2)
    assert result.returncode == 1
    assert result.stdout.count("written: ") == 2
    assert result.stderr.splitlines() == ["vsps: bad.gsm: frame 1 is not one of gsm", "vsps: missing.gsm: No such file or directory"]  # fmt: skip
    assert [name for name in vsps.files() if name.startswith("heard")] == ["heard-0.wav", "heard-1.wav"]
    vsps.fails("heard-0.wav", "is two outputs at once", "decode", "0.gsm", "0.gsm", "heard-{}.wav")


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
        ["encode", "in.wav", "x.raw", "--codec", "g7291"],
        ["encode", "in.wav", "-"],
        ["encode", "in.wav"],
        ["encode", "in.wav", "in.wav", "x.gsm", "--json"],
        ["encode", "in.wav", "x.wav"],
        ["encode", "in.wav", "x.gsm", "--dtx"],
        ["decode", "x.gsm", "out.wav", "--plot", "plot.png"],
        ["decode", "x.gsm", "out.wav", "--rate", 64000],
        ["decode", "x.gsm", "out.wav", "--jobs", 0],
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


# The file's name, options of the encoder, bit rate, and octets without and with discontinuous transmission: 60 frames of
# speech and 240 of silence, of 10 ms, or half as many of 20 ms, or a third of 30 ms.
@pytest.mark.parametrize(
    ("name", "options", "rate_of_codec", "octets"),
    [
        ("call.g729", ["--codec", "g729a"], 8000, 3000),
        ("call.g729d", [], 6400, 2400),
        ("call.g729e", [], 11800, 4500),
        ("call.g729i", ["--rate", 6400], 6400, 2400),
        ("call.bit", ["--codec", "g729"], 8000, 2 * 82 * 300),
        ("call.bit", ["--codec", "g729i", "--rate", 11800], 11800, 2 * 120 * 300),
        ("call.g728", [], 16000, 5 * 8 * 150),
        ("call.amr", [], 12200, 6 + 32 * 150),
        ("call.amr", ["--rate", 4750], 4750, 6 + 13 * 150),
        ("call.awb", [], 23850, 9 + 61 * 150),
        ("call.awb", ["--rate", 6600], 6600, 9 + 18 * 150),
        ("call.g723", [], 6300, 24 * 100),
        ("call.g723", ["--rate", 5300], 5300, 20 * 100),
    ],
)
def test_codecs_of_frames(vsps, name, options, rate_of_codec, octets):
    spoken = [x // 4 for x in VOICE[:4800]] + [0] * 19200
    vsps.put("in.wav", wav16(spoken))
    report = vsps.json("encode", "in.wav", name, *options, "--against", "in.wav")
    assert (report["bit_rate"], os.path.getsize(vsps.path(name))) == (rate_of_codec, octets)
    assert report["against"]["log_spectral_distance_db"] < 7
    heard = decoded(vsps, name, *options)
    times = rate(name[5:]) // 8000
    assert len(heard) == times * len(spoken) and max(map(abs, heard[-4000:])) < 100 < max(map(abs, heard[: times * 4800]))
    whole = vsps.path(name).read_bytes()
    if name.endswith(("bit", "amr", "awb", "g723")):
        vsps.ok("encode", "in.wav", "dtx." + name[5:], *options, "--dtx")
        assert os.path.getsize(vsps.path("dtx." + name[5:])) < octets * 0.75
        assert max(map(abs, decoded(vsps, "dtx." + name[5:], *options)[-4000:])) < 100
    vsps.put("cut." + name[5:], whole[:-1])
    vsps.fails("cut." + name[5:], "cut short", "decode", "cut." + name[5:], "out.wav", *options)


@pytest.mark.parametrize(("codec", "source"), [("g7221", 16000), ("g7221c", 32000), ("g7221c", 48000)])
def test_transform_codecs(vsps, codec, source):
    vsps.put("in.wav", wav16(voice(2, 120, source), source))
    near = []
    for bits in (24000, 32000):
        report = vsps.json("encode", "in.wav", f"x.{codec}", "--rate", bits, "--against", "in.wav")
        assert report["octets"] == os.path.getsize(vsps.path(f"x.{codec}")) == bits // 400 * report["frames"]
        near.append(report["against"]["segmental_snr_db"])
        heard = decoded(vsps, f"x.{codec}", "--rate", bits)
        vsps.ok("encode", "in.wav", "x.bit", "--codec", codec, "--rate", bits)
        assert os.path.getsize(vsps.path("x.bit")) == 2 * (2 + bits // 50) * report["frames"]
        vsps.ok("decode", "x.bit", "heard.wav", "--codec", codec)
        assert read_wav(vsps.path("heard.wav"), rate(codec))[0] == heard
    assert 10 < near[0] < near[1]


def test_what_is_in_coded_files_of_frames_is_checked(vsps):
    vsps.put("in.wav", wav16(VOICE))
    vsps.put("wb.amr", b"#!AMR-WB\n" + bytes(61))
    vsps.put("narrow.awb", b"#!AMR\n" + bytes(61))
    vsps.put("type.awb", b"#!AMR-WB\n" + bytes([10 << 3]) + bytes(61))
    vsps.put("many.amr", b"#!AMR_MC1.0\n" + bytes(40))
    vsps.put("other.amr", bytes(40))
    vsps.put("type.amr", b"#!AMR\n" + bytes([12 << 3]) + bytes(40))
    vsps.put("noise.bit", bytes(range(200)))
    vsps.put("long.bit", struct.pack("<HH118H", 0x6B21, 118, *[0x7F] * 118))
    vsps.put("odd.bit", struct.pack("<HH80H", 0x6B21, 80, *[0x55] * 80))
    vsps.put("erased.bit", struct.pack("<HH80H", 0x6B21, 80, *[0] * 80) + struct.pack("<HH", 0x6B20, 0) + bytes(4))
    for name, reason in {
        "wb.amr": "AMR-WB; use --codec amrwb",
        "narrow.awb": "AMR; use --codec amr",
        "type.awb": "frame 1 is none of AMR-WB",
        "many.amr": "several channels",
        "other.amr": "not the header",
        "type.amr": "frame 1 is none of AMR",
        "noise.bit": "synchronisation",
        "long.bit": "118 bits, which is none of g729",
        "odd.bit": "no bit",
    }.items():
        vsps.fails(name, reason, "decode", name, "out.wav")
    vsps.fails("x.bit", "holds G.729", "encode", "in.wav", "x.bit", "--codec", "gsm")
    assert len(decoded(vsps, "erased.bit")) == 240
    for arguments in (["x.g729", "--dtx"], ["x.amr", "--dtx", "3"], ["x.awb", "--dtx", "2"], ["x.bit", "--codec", "g729e", "--dtx"]):
        assert vsps.run("encode", "in.wav", *arguments).returncode == 2
