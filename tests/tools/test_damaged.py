"""Damaged files, absurd options and interrupted runs: always one of the three exit codes, in bounded time and memory, and no
half of a file under an output's name.

VSPSC_DAMAGED=N tries N times as many as the suite of every day.
"""
import os
import random
import re
import resource
import signal
import subprocess
import time

import pytest
from signals import speech, wav, wav16

ROUNDS = 6 * int(os.environ.get("VSPSC_DAMAGED", "1"))
PRECIOUS = b"something precious"
SPEECH = speech(1, 6000)
CODECS = ["amr", "awb", "g723", "bit", "g722", "gsm", "g726-32", "g7221", "g728", "pcma"]


def limit():
    resource.setrlimit(resource.RLIMIT_CPU, (20, 20))
    if not os.environ.get("VSPSC_SANITIZE"):
        resource.setrlimit(resource.RLIMIT_AS, (1 << 30, 1 << 30))


def survives(vsps, *arguments, outputs=(), **options):
    """The exit code; outputs are as before, or whole."""
    for out in outputs:
        vsps.put(out, PRECIOUS)
    before = vsps.files()
    result = vsps.run(*arguments, preexec_fn=limit, **{"stdin": subprocess.DEVNULL, **options})
    what = f"{arguments}: {result.returncode}\n{result.stdout[-2000:]}{result.stderr[-2000:]}"
    assert result.returncode in (0, 1, 2), what
    assert result.returncode != 1 or result.stderr.startswith("vsps: "), what
    for out in outputs:
        assert (result.returncode == 0) != (vsps.path(out).read_bytes() == PRECIOUS), what
    assert vsps.files() == before, what
    return result.returncode


def damaged(content, chance):
    """One to four faults in a file, most of them near its beginning, where the headers are."""
    data = bytearray(content)
    for _ in range(chance.randint(1, 4)):
        if not data:
            break
        at = chance.randrange(min(len(data), chance.choice([4, 16, 64, 400, len(data)])))
        kind = chance.randrange(6)
        if kind == 0:
            data[at] ^= 1 << chance.randrange(8)
        elif kind == 1:
            size = chance.choice([1, 2, 4, 8])
            number = chance.choice([0, 1, 0x7F, 0x80, 0xFF, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF, 0xFFFFFFFE, len(data)])
            data[at : at + size] = (number % (1 << 8 * size)).to_bytes(size, chance.choice(["little", "big"]))
        elif kind == 2:
            del data[at:]
        elif kind == 3:
            data[at:at] = bytes(chance.randrange(256) for _ in range(chance.randint(1, 40)))
        elif kind == 4:
            del data[at : at + chance.randint(1, 40)]
        else:
            other = chance.randrange(len(data))
            data[at : at + 20] = data[other : other + 20]
    return bytes(data)


@pytest.fixture
def vsps(vsps):
    vsps.put("in.wav", wav16(SPEECH))
    return vsps


def recordings(vsps):
    for out in ("whole.flac", "whole.aiff", "whole.au"):
        vsps.ok("level", "in.wav", out)
    yield from ((name, vsps.path(name).read_bytes()) for name in ("in.wav", "whole.flac", "whole.aiff", "whole.au"))
    yield "two.wav", wav(bytes(8000), channels=2)
    yield "float.wav", wav(bytes(8000), kind=3, bits=32)


def test_damaged_recordings(vsps):
    chance = random.Random(1)
    for name, content in list(recordings(vsps)):
        for _ in range(ROUNDS):
            vsps.put("damaged", damaged(content, chance))
            command, outputs = chance.choice(
                [(["level", "damaged", "out.wav"], ["out.wav"]), (["vad", "damaged", "--csv", "out.csv"], ["out.csv"]),
                 (["tone", "damaged"], []), (["pitch", "damaged", "--csv", "out.csv"], ["out.csv"]),
                 (["echo", "--far", "damaged", "--near", "in.wav", "out.flac"], ["out.flac"]),
                 (["simulate-echo", "damaged", "none", "out.wav"], ["out.wav"]),
                 (["encode", "damaged", "out.amr"], ["out.amr"]), (["encode", "damaged", "out.gsm"], ["out.gsm"])]
            )  # fmt: skip
            survives(vsps, *command, outputs=outputs)


@pytest.mark.parametrize("codec", CODECS)
def test_damaged_streams(vsps, codec):
    chance = random.Random(codec)
    options = ["--codec", "g729"] if codec == "bit" else []
    vsps.ok("encode", "in.wav", f"whole.{codec}", *options)
    streams = [(f"damaged.{codec}", vsps.path(f"whole.{codec}").read_bytes(), options)]
    if codec == "gsm":
        vsps.ok("encode", "in.wav", "whole.wav", "--codec", "gsm")
        streams.append(("damaged.wav", vsps.path("whole.wav").read_bytes(), []))
    for name, content, options in streams:
        for _ in range(ROUNDS):
            vsps.put(name, damaged(content, chance))
            lose = chance.choice([[], ["--lose", 30]])
            survives(vsps, "decode", name, "out.wav", *options, *lose, outputs=["out.wav"])


ABSURD = ["", "-", "--", "0", "-1", "1", "2", "1e308", "-1e308", "nan", "inf", "4294967296", "2147483647", "-2147483648", "0.5",
          "99999999999999999999", "in.wav", "missing.wav", "/", ".", "{}", "\u00e9\u2603", "a" * 5000, "%s%n", "8000", "all"]  # fmt: skip


@pytest.mark.parametrize("command", ["codecs", "decode", "denoise", "echo", "encode", "info", "level", "pitch", "simulate-echo", "tone", "vad"])
def test_absurd_options(vsps, command):
    chance = random.Random(command)
    options = sorted(set(re.findall(r"--[a-z][a-z-]+", vsps.ok(command, "--help").stdout)) - {"--help"})
    before = vsps.path("in.wav").read_bytes()
    for _ in range(4 * ROUNDS):
        arguments = [command]
        for _ in range(chance.randint(0, 6)):
            arguments += [chance.choice(options)] if options and chance.random() < 0.6 else []
            arguments += [chance.choice(ABSURD)] if chance.random() < 0.7 else []
        inputs = [["in.wav", "out.wav"], ["--far", "in.wav", "--near", "in.wav", "out.wav"], ["in.wav"], []]
        arguments += chance.choice(inputs)
        result = vsps.run(*arguments, preexec_fn=limit, stdin=subprocess.DEVNULL)
        assert result.returncode in (0, 1, 2), f"{arguments}: {result.returncode}\n{result.stderr[-2000:]}"
        assert vsps.path("in.wav").read_bytes() == before, arguments


CODING = {
    "encode": (["encode", "-", "out.amr", "--raw", 8000], bytes(160000), "out.amr"),
    "decode": (["decode", "-", "out.wav", "--codec", "gsm"], b"\xd0" + bytes(32), "out.wav"),
}


@pytest.mark.parametrize("name", CODING)
def test_an_interrupted_coder_leaves_nothing(vsps, name):
    command, data, out = CODING[name]
    vsps.put(out, PRECIOUS)
    before = vsps.files()
    process = subprocess.Popen([os.environ["VSPS"], *map(str, command)], cwd=vsps.directory, stdin=subprocess.PIPE,
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE)  # fmt: skip
    process.stdin.write(data * 100)
    process.stdin.flush()
    for _ in range(600):
        if len(vsps.files()) > len(before):
            break
        time.sleep(0.1)
    assert len(vsps.files()) == len(before) + 1
    process.send_signal(signal.SIGINT)
    assert process.wait(timeout=60) == -signal.SIGINT
    assert vsps.files() == before and vsps.path(out).read_bytes() == PRECIOUS


def test_a_coder_on_a_full_disk_keeps_what_was_there(vsps):
    vsps.ok("encode", "in.wav", "whole.gsm")
    vsps.put("out.g722", PRECIOUS)
    vsps.put("out.wav", PRECIOUS)
    full = lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (2000, 2000))
    vsps.fails("out.g722", "File too large", "encode", "in.wav", "out.g722", preexec_fn=full)
    vsps.fails("out.wav", "File too large", "decode", "whole.gsm", "out.wav", preexec_fn=full)


def test_a_coder_whose_reader_has_gone_says_so(vsps):
    result = vsps.run_without_reader("encode", "in.wav", "-", "--codec", "pcma")
    assert result == (1, "vsps: standard output: cannot be written: Broken pipe\n")
