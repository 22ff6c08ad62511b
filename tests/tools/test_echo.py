"""What vsps echo leaves of an echo, and what it says about it."""
import math

import pytest
from signals import interleave, pcm, read_wav, speech, wav, wav16

PATH = b"0 0 0 0.2 0.4 -0.3 0.15 -0.1 0.05 0 0.03 -0.02"


def power(samples):
    return sum(x * x for x in samples) / len(samples)


def line(vsps, far, near=None, delay=0):
    """far.wav and near.wav, the near end with the echo of the far end at 8 dB."""
    vsps.put("far.wav", wav16(far))
    vsps.put("path.txt", PATH)
    if near is not None:
        vsps.put("talker.wav", wav16(near))
    vsps.ok("simulate-echo", "far.wav", "none" if near is None else "talker.wav", "near.wav", "--path", "path.txt",
            "--erl", 8, "--noise", -72, "--delay", delay)  # fmt: skip
    return read_wav(vsps.path("near.wav"))[0]


def cancel(vsps, *options):
    report = vsps.json("echo", "--far", "far.wav", "--near", "near.wav", "out.wav", *options)
    return read_wav(vsps.path("out.wav"))[0], report


ENGINES = [[], ["--fixed"], ["--engine", "fullband"], ["--engine", "fullband", "--fixed"]]


@pytest.mark.parametrize("engine", ENGINES, ids=lambda e: "-".join(e).replace("--", "") or "default")
def test_echo_is_removed(vsps, engine):
    near = line(vsps, speech(8, 12000))
    out, report = cancel(vsps, *engine)
    assert len(out) == len(near)
    removed = 10 * math.log10(power(near[32000:]) / power(out[32000:]))
    assert removed > 20
    assert abs(report["erle_of_output_db"] - removed) < 3 and abs(report["erle_db"] - removed) < 7
    assert report["convergence_to_20_db_s"] < 4
    assert report["settings"]["fixed_point"] == ("--fixed" in engine)
    assert report["settings"]["engine"] == ("fullband" if "fullband" in engine else "subband")
    late = [point["erle_db"] for point in report["erle_over_time"] if point["time_s"] > 4 and point["erle_db"] is not None]
    assert len(late) >= 4 and min(late) > 15


def test_ninety_seconds_are_measured_to_the_end(vsps):
    """More frames than are kept one by one."""
    near = line(vsps, speech(30, 12000) * 3)
    out, report = cancel(vsps, "--plot", "echo.svg")
    removed = 10 * math.log10(power(near[len(near) // 2 :]) / power(out[len(out) // 2 :]))
    assert abs(report["erle_db"] - removed) < 3
    points = report["erle_over_time"]
    assert 160 < len(points) < 190 and 89 < points[-1]["time_s"] < 90
    assert all(0.3 < b["time_s"] - a["time_s"] < 0.7 for a, b in zip(points[:-1], points[1:-1]))
    assert min(p["erle_db"] for p in points if p["time_s"] > 5 and p["erle_db"] is not None) > 15


def test_near_end_speech_is_kept_in_time(vsps):
    """The talker comes out as recorded: without a far end, and over its echo."""
    talker = [0] * 40000 + speech(3, 9000, seed=5)
    vsps.put("far.wav", wav16([0] * len(talker)))
    vsps.put("near.wav", wav16(talker))
    out, report = cancel(vsps)
    assert max(abs(a - b) for a, b in zip(out, talker)) <= 1
    assert report["erle_db"] is None and report["double_talk"]["seconds"] == 0

    line(vsps, speech(8, 9000), talker)
    out, report = cancel(vsps)
    error = power([a - b for a, b in zip(out[40000:], talker[40000:])])
    assert 10 * math.log10(power(talker[40000:]) / error) > 18
    assert report["double_talk"]["seconds"] > 1


@pytest.mark.parametrize("erl", [0, 20])
@pytest.mark.parametrize("engine", ENGINES, ids=lambda e: "-".join(e).replace("--", "") or "default")
def test_no_double_talk_without_a_talker(vsps, engine, erl):
    """Not on a line without any noise either, nor while the filter converges."""
    vsps.put("far.wav", wav16(speech(8, 12000)))
    vsps.ok("simulate-echo", "far.wav", "none", "near.wav", "--path", "d5", "--erl", erl)
    report = cancel(vsps, *engine)[1]
    assert report["double_talk"]["seconds"] <= 0.02 * 8
    assert report["erle_db"] > 10


def test_what_is_heard_is_suppressed_and_what_is_measured_is_not(vsps):
    """The report on the filters is the same; as long as they do not know how a loudspeaker distorts, the output is another."""
    vsps.put("far.wav", wav16(speech(5, 12000)))
    vsps.ok("simulate-echo", "far.wav", "none", "near.wav", "--erl", 8, "--noise", -72, "--distortion", 5)
    near = read_wav(vsps.path("near.wav"))[0]
    heard, report = cancel(vsps)
    left, plain = cancel(vsps, "--no-suppress")
    assert cancel(vsps, "--suppress")[0] == heard
    assert report["settings"]["suppression"] and not plain["settings"]["suppression"]
    for name in ("erle_db", "convergence_to_20_db_s", "bulk_delay_ms", "erle_over_time"):
        assert report[name] == plain[name]
    for out, value in ((left, plain["erle_db"]), (left, plain["erle_of_output_db"]), (heard, report["erle_of_output_db"])):
        assert abs(10 * math.log10(power(near[20000:]) / power(out[20000:])) - value) < 1
    assert report["erle_of_output_db"] > report["erle_db"] + 2
    for options in (["--suppress", "--no-suppress"], ["--suppress", "--engine", "fullband"]):
        assert vsps.run("echo", "--far", "far.wav", "--near", "near.wav", "out.wav", *options).returncode == 2


@pytest.mark.parametrize("engine", ENGINES[::3], ids=["default", "fullband-fixed"])
def test_swapped_and_unrelated_ends_are_said(vsps, engine):
    """And those of a call are not, with and without a talker."""
    far, talker = speech(12, 9000), [0] * 40000 + speech(7, 9000, seed=5)

    def said(far_file, near_file):
        return vsps.ok("echo", "--far", far_file, "--near", near_file, "out.wav", *engine).stderr

    for near, delay in ((None, 0), (talker, 0), (talker, 90)):
        line(vsps, far, near, delay)
        assert said("far.wav", "near.wav") == ""
        assert said("near.wav", "far.wav").endswith("seem to be swapped: the echo is in the far end\n")
    vsps.put("other.wav", wav16(talker))
    assert said("far.wav", "other.wav") == (
        "vsps: other.wav: seems to have nothing to do with the far end: no echo found\n"
    )


def test_bulk_delay_is_found(vsps):
    near = line(vsps, speech(12, 12000), delay=150)
    out, report = cancel(vsps, "--tail", 32)
    assert 110 < report["bulk_delay_ms"] < 155
    assert 10 * math.log10(power(near[64000:]) / power(out[64000:])) > 20


def test_no_echo_is_said(vsps):
    """Another talker and noise are no echo, and one that comes too late is not found."""
    vsps.put("far.wav", wav16(speech(6, 12000)))
    vsps.put("near.wav", wav16(speech(6, 9000, seed=5)))
    assert cancel(vsps)[1]["bulk_delay_ms"] is None
    line(vsps, speech(6, 12000), delay=1400)
    report = vsps.ok("echo", "--far", "far.wav", "--near", "near.wav", "out.wav").stdout
    assert "no echo found that begins within 1000 ms" in report
    assert "1000 ms" in vsps.ok("echo", "--help").stdout


def test_text_report_and_plot(vsps):
    line(vsps, speech(4, 12000))
    result = vsps.ok("echo", "--far", "far.wav", "--near", "near.wav", "out.flac", "--plot", "echo.png")
    assert result.stderr == ""
    assert "near.wav: 4.00 s, 8000 Hz, subband engine, floating point, tail 128 ms\n" in result.stdout
    for label in ("active levels", "bulk delay", "ERLE, dB", "convergence", "double talk", "x real time"):
        assert label in result.stdout
    assert "written: out.flac" in result.stdout and "plot: echo.png" in result.stdout
    assert vsps.path("echo.png").read_bytes().startswith(b"\x89PNG")


def test_different_lengths_and_rates_are_said(vsps):
    line(vsps, speech(3, 12000))
    vsps.put("short.wav", wav16(speech(2, 12000)))
    vsps.put("fast.raw", pcm([0] * 96000))
    result = vsps.ok("echo", "--far", "short.wav", "--near", "near.wav", "out.wav")
    assert result.stderr == "vsps: short.wav: 1.00 s shorter than near.wav, silent from there on\n"
    assert len(read_wav(vsps.path("out.wav"))[0]) == 24000
    result = vsps.ok("echo", "--far", "far.wav", "--near", "short.wav", "out.wav")
    assert result.stderr == "vsps: far.wav: 1.00 s longer than short.wav, the rest is left out\n"
    vsps.put("fast.wav", wav16([0] * 144000, rate=48000))
    result = vsps.ok("echo", "--far", "fast.wav", "--near", "near.wav", "out.wav")
    assert result.stderr == "vsps: fast.wav: resampled from 48000 Hz to 8000 Hz\n"


def test_both_ends_in_one_file(vsps):
    far, talker = speech(3, 12000), speech(3, 3000, seed=5)
    near = line(vsps, far, talker)
    expected, _ = cancel(vsps)
    vsps.put("call.wav", wav(pcm(interleave([far, near])), channels=2))
    vsps.put("swapped.wav", wav(pcm(interleave([near, far])), channels=2))
    for options in (["call.wav"], ["swapped.wav", "--swap"]):
        vsps.ok("echo", "--far-near", *options, "out.wav")
        assert read_wav(vsps.path("out.wav"))[0] == expected
    vsps.ok("echo", "--far", "far.wav", "--near", "call.wav", "--channel", 2, "out.wav")
    assert read_wav(vsps.path("out.wav"))[0] == expected
    vsps.fails("far.wav", "has 1 channel and not two", "echo", "--far-near", "far.wav", "out.wav")
    for options in (["--far", "far.wav", "--near", "near.wav", "--swap"], ["--far-near", "call.wav", "--near", "near.wav"],
                    ["--far-near", "call.wav", "--channel", "1"]):  # fmt: skip
        assert vsps.run("echo", *options, "out.wav").returncode == 2


@pytest.mark.parametrize("engine", [ENGINES[0], ENGINES[3]], ids=["default", "fullband-fixed"])
def test_16_khz_stays_16_khz(vsps, engine):
    """Up to 8 kHz there is something to cancel."""
    far = speech(8, 12000)
    vsps.put("far.wav", wav16(far, rate=16000))
    vsps.put("path.txt", PATH)
    vsps.ok("simulate-echo", "far.wav", "none", "near.wav", "--path", "path.txt", "--erl", 8, "--noise", -72)
    near = read_wav(vsps.path("near.wav"), 16000)[0]
    result = vsps.ok("echo", "--far", "far.wav", "--near", "near.wav", "out.wav", *engine)
    out = read_wav(vsps.path("out.wav"), 16000)[0]
    assert result.stderr == "" and "written: out.wav (16000 Hz, 64000 samples)\n" in result.stdout
    assert len(out) == len(near) == len(far)
    assert 10 * math.log10(power(near[32000:]) / power(out[32000:])) > 12


def test_bad_input(vsps):
    line(vsps, speech(1, 12000))
    vsps.put("stereo.wav", wav(pcm([0] * 1600), channels=2))
    vsps.fails("stereo.wav", "has 2 channels", "echo", "--far", "stereo.wav", "--near", "near.wav", "out.wav")
    vsps.fails("stereo.wav", "has 2 channels", "echo", "--far", "far.wav", "--near", "stereo.wav", "out.wav")
    vsps.fails("missing.wav", "", "echo", "--far", "missing.wav", "--near", "near.wav", "out.wav")
    vsps.fails("near.wav", "at once", "echo", "--far", "far.wav", "--near", "near.wav", "near.wav")
    for options in (["--tail", "0"], ["--tail", "501"], ["--tail", "nan"], ["--engine", "both"]):
        result = vsps.run("echo", "--far", "far.wav", "--near", "near.wav", "out.wav", *options)
        assert result.returncode == 2 and options[0] in result.stderr
    assert vsps.run("echo", "--near", "near.wav", "out.wav").returncode == 2
