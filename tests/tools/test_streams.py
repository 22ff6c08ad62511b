"""Pipes in place of files: what goes in and out, in how much memory, and what an interrupted run leaves."""
import fcntl
import json
import os
import signal
import subprocess
import termios
import time

import pytest
from signals import interleave, parse_wav, pcm, read_wav, speech, wav, wav16

SAMPLES = speech(3, 6000)
WAV = wav16(SAMPLES)

# What each command makes of the recording "-" or "in.wav", in place of {}.
COMMANDS = {
    "level": ["level", "{}"],
    "level-two-pass": ["level", "--two-pass", "{}"],
    "denoise": ["denoise", "{}"],
    "echo": ["echo", "--far", "far.wav", "--near", "{}"],
    "echo-far": ["echo", "--far", "{}", "--near", "far.wav"],
    "simulate-echo": ["simulate-echo", "{}", "none"],
    "simulate-echo-near": ["simulate-echo", "far.wav", "{}"],
}


@pytest.fixture
def vsps(vsps):
    vsps.put("in.wav", WAV)
    vsps.put("far.wav", wav16(speech(3, 9000, seed=2)))
    return vsps


def start(vsps, *arguments):
    pipe = subprocess.PIPE
    return subprocess.Popen([os.environ["VSPS"], *map(str, arguments)], cwd=vsps.directory, stdin=pipe, stdout=pipe, stderr=pipe)  # fmt: skip


def through(vsps, data, *arguments):
    """Standard output and standard error of a run that reads the data from a pipe."""
    process = start(vsps, *arguments)
    out, errors = process.communicate(data, timeout=60)
    assert process.returncode == 0, errors
    return out, errors.decode()


@pytest.mark.parametrize("name", COMMANDS)
def test_standard_input_and_output_do_as_files(vsps, name):
    command = [argument.format("in.wav") for argument in COMMANDS[name]]
    vsps.ok(*command, "out.wav")
    expected = read_wav(vsps.path("out.wav"))
    command = [argument.format("-") for argument in COMMANDS[name]]
    out, report = through(vsps, WAV, *command, "-")
    assert parse_wav(out) == expected
    assert "written: standard output (8000 Hz, 24000 samples)" in report
    assert vsps.files() == ["far.wav", "in.wav", "out.wav"]


def test_headerless_in_and_out(vsps):
    vsps.ok("level", "in.wav", "out.raw")
    out, _ = through(vsps, pcm(SAMPLES), "level", "--raw", 8000, "-", "-")
    assert out == vsps.path("out.raw").read_bytes()


def test_standard_output_into_a_file_gets_the_length(vsps):
    vsps.ok("level", "in.wav", "out.wav")
    with open(vsps.path("redirected.wav"), "wb") as file:
        subprocess.run([os.environ["VSPS"], "level", vsps.path("in.wav"), "-"], stdout=file, stderr=subprocess.DEVNULL)
    assert vsps.path("redirected.wav").read_bytes() == vsps.path("out.wav").read_bytes()


def test_json_goes_to_standard_error_beside_the_audio(vsps):
    out, report = through(vsps, WAV, "level", "--json", "-", "-")
    assert len(parse_wav(out)[0]) == len(SAMPLES)
    assert report.startswith("{") and '"file": "-"' in report


def test_one_standard_input_and_output_for_one_file(vsps):
    vsps.fails("standard input", "only one", "echo", "--far", "-", "--near", "-", "out.wav", stdin=subprocess.DEVNULL)


def test_output_comes_before_the_input_has_ended(vsps):
    process = start(vsps, "level", "--raw", 8000, "-", "-")
    process.stdin.write(pcm(SAMPLES[:8000]))
    process.stdin.flush()
    assert len(process.stdout.read(8000)) == 8000
    process.communicate(timeout=60)


def test_a_reader_that_has_gone_is_a_write_error(vsps):
    result = vsps.run_without_reader("level", "in.wav", "-")
    assert result == (1, "vsps: standard output: cannot be written: Broken pipe\n")


# A sanitizer keeps freed memory.
measures_memory = pytest.mark.skipif(bool(os.environ.get("VSPSC_SANITIZE")), reason="instrumented")


def memory(vsps, minutes, *arguments):
    """Of a run, in KB, that has read so many minutes of headerless audio at 8000 Hz: what it allocated, because how much
    of its files is mapped depends on the machine's other work."""
    process = start(vsps, *arguments)
    minute = pcm(SAMPLES * 20)
    for _ in range(minutes):
        process.stdin.write(minute)
    with open(f"/proc/{process.pid}/status") as status:
        allocated = next(int(line.split()[1]) for line in status if line.startswith("RssAnon"))
    process.communicate(timeout=60)
    assert process.returncode == 0
    return allocated


@measures_memory
@pytest.mark.parametrize("name", ["denoise", "level", "level-two-pass", "echo-far", "simulate-echo"])
def test_twenty_minutes_need_no_more_memory_than_one(vsps, name):
    command = [argument.format("-") for argument in COMMANDS[name]]
    if name == "echo-far":
        vsps.put("far.raw", pcm(SAMPLES * 400))
        command[-1] = "far.raw"
    short = memory(vsps, 1, *command, "out.wav", "--raw", 8000)
    assert memory(vsps, 20, *command, "out.wav", "--raw", 8000) < short + 2000


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM])
@pytest.mark.parametrize("name", ["level", "echo", "simulate-echo"])
def test_an_interrupted_run_leaves_nothing(vsps, name, number):
    before = vsps.files()
    vsps.put("out.wav", b"something precious")
    process = start(vsps, *[argument.format("-") for argument in COMMANDS[name]], "out.wav")
    process.stdin.write(WAV[:10000])
    process.stdin.flush()
    for _ in range(600):
        if len(vsps.files()) > len(before) + 1:
            break
        time.sleep(0.1)
    assert len(vsps.files()) == len(before) + 2
    process.send_signal(number)
    assert process.wait(timeout=60) == -number
    assert vsps.files() == sorted([*before, "out.wav"])
    assert vsps.path("out.wav").read_bytes() == b"something precious"


# Commands that write no recording, and the files that they write.
ANALYSES = {
    "vad": (["vad", "{}", "--csv", "out.csv", "--labels", "out.txt"], ["out.csv", "out.txt"]),
    "pitch": (["pitch", "{}", "--search", "a", "--csv", "out.csv"], ["out.csv"]),
    "tone": (["tone", "{}"], []),
}


def without_speed(report):
    return [line for line in report.split("\n") if "real time" not in line]


@pytest.mark.parametrize("name", ANALYSES)
def test_analyses_of_standard_input_and_tables_to_standard_output(vsps, name):
    command, outputs = ANALYSES[name]
    report = vsps.ok(*[argument.format("in.wav") for argument in command]).stdout.replace("in.wav", "standard input")
    written = {out: vsps.path(out).read_bytes() for out in outputs}
    piped, errors = through(vsps, WAV, *[argument.format("-") for argument in command])
    assert without_speed(piped.decode()) == without_speed(report) and errors == ""
    assert written == {out: vsps.path(out).read_bytes() for out in outputs}
    for out, content in written.items():
        table, errors = through(vsps, WAV, *["-" if argument in ("{}", out) else argument for argument in command])
        assert table == content
        assert without_speed(errors) == without_speed(report.replace(out, "standard output"))


def test_lines_of_a_table_come_before_the_input_has_ended(vsps):
    for command in (["vad", "--labels", "out.txt"], ["pitch"]):
        process = start(vsps, *command, "--raw", 8000, "-", "--csv", "-")
        process.stdin.write(pcm(SAMPLES[:16000]))
        process.stdin.flush()
        assert len([process.stdout.readline() for _ in range(80)]) == 80
        process.stdout.close()  # a write error
        errors = process.communicate(pcm(SAMPLES) * 20, timeout=60)[1]
        assert process.returncode == 1 and errors == b"vsps: standard output: cannot be written: Broken pipe\n"
        assert vsps.files() == ["far.wav", "in.wav"]


@measures_memory
@pytest.mark.parametrize("name", ANALYSES)
def test_analyses_of_twenty_minutes_need_no_more_memory_than_of_one(vsps, name):
    plot = [] if name == "tone" else ["--plot", "plot.svg"]
    command = [*[argument.format("-") for argument in ANALYSES[name][0]], *plot, "--raw", 8000]
    short = memory(vsps, 1, *command)
    assert memory(vsps, 20, *command) < short + 2000


def until_all_is_read(process):
    for _ in range(600):
        if int.from_bytes(fcntl.ioctl(process.stdin, termios.FIONREAD, bytes(4)), "little") == 0:
            return
        time.sleep(0.1)


@pytest.mark.parametrize("command", ["pitch -", "level - out.wav", "echo --far far.wav --near - out.wav"])
def test_the_speed_is_of_the_whole_command(vsps, command):
    process = start(vsps, *command.split(), "--json")
    process.stdin.write(WAV[:20000])
    process.stdin.flush()
    until_all_is_read(process)
    time.sleep(1)
    out, _ = process.communicate(WAV[20000:], timeout=60)
    assert json.loads(out)["times_real_time"] < 12


@pytest.mark.parametrize("name", ["vad", "pitch"])
def test_an_interrupted_analysis_leaves_nothing(vsps, name):
    before = vsps.files()
    process = start(vsps, *[argument.format("-") for argument in ANALYSES[name][0]], "--raw", 8000)
    process.stdin.write(pcm(SAMPLES))
    process.stdin.flush()
    for _ in range(600):
        if len(vsps.files()) == len(before) + len(ANALYSES[name][1]):
            break
        time.sleep(0.1)
    process.send_signal(signal.SIGINT)
    assert process.wait(timeout=60) == -signal.SIGINT
    assert vsps.files() == before


@pytest.mark.parametrize("name", ["vad", "pitch"])
def test_analyses_overwrite_no_input(vsps, name):
    os.link(vsps.path("in.wav"), vsps.path("hard.csv"))
    os.symlink("in.wav", vsps.path("soft.svg"))
    vsps.fails("hard.csv", "is an input and an output at once", name, "in.wav", "--csv", "hard.csv")
    vsps.fails("soft.svg", "is an input and an output at once", name, "in.wav", "--plot", "soft.svg")
    os.symlink(vsps.put("plot.svg", b"old"), vsps.path("out.csv"))
    vsps.fails("plot.svg", "is two outputs at once", name, "in.wav", "--csv", "out.csv", "--plot", "plot.svg")
    vsps.fails("standard output", "is two outputs at once", name, "in.wav", "--csv", "-", "--plot", "-")


@pytest.mark.parametrize("name", ANALYSES)
def test_one_channel_of_several(vsps, name):
    channels = [SAMPLES, speech(3, 9000, seed=2)]
    vsps.put("two.wav", wav(pcm(interleave(channels)), channels=2))
    expected = vsps.ok(name, "far.wav").stdout.replace("far.wav", "two.wav")
    result = vsps.ok(name, "two.wav", "--channel", 2)
    assert without_speed(result.stdout) == without_speed(expected) and result.stderr == ""
    vsps.fails("two.wav", "has no channel 3, only 2", name, "two.wav", "--channel", 3)
