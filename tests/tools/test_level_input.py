"""What vsps level reads, and what it says of files that it cannot read."""
import math
import struct
import subprocess

import pytest
from signals import ALAW, FLOAT, ULAW, alaw, interleave, pcm, read_wav, speech, tone, ulaw, wav, wav16

SPEECH = speech(2, 6000)
WAV = wav16(SPEECH)
AU = struct.pack(">4sIIIII", b".snd", 24, 2000, 3, 8000, 1) + bytes(2000)


def floats(values):
    return wav(struct.pack(f"<{len(values)}f", *values), kind=FLOAT, bits=32)


BAD_FILES = {
    "empty": (b"", "the file is empty"),
    "text": (b"Dear operator,\n" * 50, "not readable as audio"),
    "header_cut": (WAV[:30], "not readable as audio"),
    "header_only": (WAV[:44], "holds no samples: cut short"),
    "no_samples": (wav16([]), "no samples"),
    "no_channels": (wav(bytes(200), channels=0), "not readable as audio: Channel count"),
    "0_hz": (wav16(SPEECH, rate=0), "the sample rate is 0 Hz"),
    "0_hz_au": (AU[:16] + bytes(4) + AU[20:], "the sample rate is 0 Hz"),
    "1_hz": (wav16(SPEECH, rate=1), "1 Hz"),
    "2_ghz": (wav16(SPEECH, rate=2**31 - 1), "Hz is not supported"),
    "nan": (floats([0.1] * 5 + [math.nan]), "sample 5 is not a finite number"),
    "infinite": (floats([-math.inf]), "sample 0 is not a finite number"),
    "headerless": (pcm(SPEECH), "audio without a header needs --raw RATE"),
}


@pytest.mark.parametrize("name", BAD_FILES)
def test_bad_file(vsps, name):
    content, reason = BAD_FILES[name]
    vsps.put(name, content)
    vsps.fails(name, reason, "level", name, "out.wav")


def test_what_is_there_of_a_file_cut_short_is_used(vsps):
    for content, samples, bytes in ((WAV[:20044], 10000, "20000 of 32000"), (WAV[:-2], 15999, "31998 of 32000"),
                                    (AU[:1024], 500, "1000 of 2000")):  # fmt: skip
        vsps.put("cut", content)
        result = vsps.ok("level", "cut", "out.wav")
        assert result.stderr == f"vsps: cut: cut short, holds {bytes} bytes of audio\n"
        assert len(read_wav(vsps.path("out.wav"))[0]) == samples

    vsps.put("in.wav", WAV)
    vsps.ok("level", "in.wav", "whole.flac")
    vsps.put("cut.flac", vsps.path("whole.flac").read_bytes()[:-2000])
    assert "cut.flac: cut short, holds 1" in vsps.ok("level", "cut.flac", "out.wav").stderr
    cut = vsps.ok("level", "-", "out.wav", input=WAV[:20044])
    assert cut.stderr == "vsps: standard input: cut short, holds 10000 of 16000 samples\n"
    assert len(read_wav(vsps.path("out.wav"))[0]) == 10000


def test_a_header_is_not_taken_for_sound(vsps):
    vsps.put("in.wav", WAV)
    vsps.fails("in.wav", "has the header of WAV: leave out --raw", "level", "--raw", 8000, "in.wav", "out.wav")
    vsps.fails("standard input", "leave out --raw", "level", "--raw", 8000, "-", "out.wav", input=WAV)


def test_what_is_not_a_file(vsps):
    vsps.fails("missing.wav", "No such file", "level", "missing.wav", "out.wav")
    vsps.fails(vsps.directory, "is a directory", "level", vsps.directory, "out.wav")
    vsps.fails("/dev/zero", "neither a file nor a pipe", "level", "/dev/zero", "out.wav", "--raw", 8000)


def test_one_channel_of_several(vsps):
    left, right = SPEECH, speech(2, 600, seed=2)
    vsps.put("two.wav", wav(pcm(interleave([left, right])), channels=2))
    for channel, samples in ((1, left), (2, right)):
        assert level_of(vsps, "one.wav", wav16(samples)) == level_of(vsps, "two.wav", vsps.path("two.wav").read_bytes(), "--channel", channel)  # fmt: skip
    vsps.fails("two.wav", "has no channel 3, only 2", "level", "two.wav", "new.wav", "--channel", 3)


def level_of(vsps, name, content, *options):
    vsps.put(name, content)
    vsps.ok("level", name, "out.wav", *options)
    return read_wav(vsps.path("out.wav"))


def test_every_encoding_gives_the_samples_that_it_stands_for(vsps):
    codes = bytes((i * 37 + i // 256) & 0xFF for i in range(8000))
    of_alaw = level_of(vsps, "in.wav", wav16([alaw(c) for c in codes]))
    of_ulaw = level_of(vsps, "in.wav", wav16([ulaw(c) for c in codes]))
    assert of_alaw != of_ulaw
    assert level_of(vsps, "in.wav", wav(codes, kind=ALAW, bits=8)) == of_alaw
    assert level_of(vsps, "in.al", codes, "--raw", 8000) == of_alaw
    assert level_of(vsps, "in.wav", wav(codes, kind=ULAW, bits=8)) == of_ulaw
    assert level_of(vsps, "in.ulaw", codes, "--raw", 8000) == of_ulaw

    linear = level_of(vsps, "in.wav", WAV)
    assert level_of(vsps, "in.sln", pcm(SPEECH), "--raw", 8000) == linear
    assert level_of(vsps, "in.dat", pcm(SPEECH), "--raw", 8000) == linear
    assert level_of(vsps, "in.wav", floats([x / 32768 for x in SPEECH])) == linear


def test_samples_beyond_full_scale_are_clipped_and_counted(vsps):
    vsps.put("loud.wav", floats([0.5, 1.0, 1.5, -1.0, -2.0] * 100))
    result = vsps.ok("level", "loud.wav", "out.wav")
    assert result.stderr == "vsps: loud.wav: 200 samples beyond full scale were clipped\n"


def test_streams_whose_length_the_header_does_not_know(vsps):
    expected = level_of(vsps, "in.wav", WAV)
    for announced in (0xFFFFFFFF, 0x7FFFF000):
        stream = wav(pcm(SPEECH), announced=announced)
        assert level_of(vsps, "stream.wav", stream) == expected
        vsps.put("stream.wav", stream)
        with open(vsps.path("stream.wav"), "rb") as file:
            cat = subprocess.Popen(["cat"], stdin=file, stdout=subprocess.PIPE)
            vsps.ok("level", "/dev/stdin", "out.wav", stdin=cat.stdout)
        assert read_wav(vsps.path("out.wav")) == expected


@pytest.mark.parametrize("rate", [11025, 16000, 44100, 48000])
def test_other_rates_are_resampled(vsps, rate):
    samples = tone(1.5, 8000, rate)
    vsps.put("in.wav", wav(pcm(interleave([samples, samples])), channels=2, rate=rate))
    result = vsps.ok("level", "in.wav", "out.wav", "--json")
    assert f"resampled from {rate} Hz to 8000 Hz" in result.stderr
    assert "2 channels, each controlled by itself" in result.stderr
    left, right = read_wav(vsps.path("out.wav"))
    assert left == right
    assert abs(len(left) - len(samples) * 8000 / rate) < 1
    at_8000 = level_of(vsps, "at_8000.wav", wav16(tone(1.5, 8000)))[0]
    difference = [abs(a - b) for a, b in zip(left, at_8000)][400:-400]  # the ends ring
    assert max(difference) < 0.03 * max(at_8000)
