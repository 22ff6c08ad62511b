"""Where vsps vad hears speech, and what it writes."""
import csv
import math
import pathlib
import random

import pytest
from signals import interleave, pcm, read_wav, speech, tone, voice, wav, wav16

RECORDING = pathlib.Path(__file__).parents[1] / "support/data/demo-echotest.wav"
OPTIONS = (1, 2)
LAST_COLUMN = {1: "threshold_db", 2: "long_term_snr_db"}


def noise(seconds, amplitude, seed=1):
    source = random.Random(seed)
    return [round(source.gauss(0, amplitude)) for _ in range(int(seconds * 8000))]


def in_noise(*parts, amplitude=100):
    """Numbers are seconds of pause, lists of samples what is heard; all of it over soft noise."""
    samples = [x for part in parts for x in ([0] * int(8000 * part) if isinstance(part, (int, float)) else part)]
    return [x + n for x, n in zip(samples, noise(len(samples) / 8000, amplitude))]


def heard(vsps, samples, option, start, end):
    """The share of frames with speech between two times."""
    vsps.put("in.wav", wav16(samples))
    vsps.ok("vad", "in.wav", "--option", option, "--csv", "out.csv")
    flags = [row["speech"] for row in table(vsps, "out.csv") if start <= row["time_s"] < end - 0.005]
    return sum(flags) / len(flags)


def table(vsps, name):
    with open(vsps.path(name), newline="") as file:
        return [{key: float(value) for key, value in row.items()} for row in csv.DictReader(file)]


def recorded_phrases():
    """A phrase of 2.2 s at 2 and another of 3.9 s at 6.2, each followed by a pause."""
    samples = read_wav(RECORDING)[0]
    return in_noise(2, samples[1600:19200], 2, samples[78000:109200], 2, amplitude=30)


@pytest.mark.parametrize("option", OPTIONS)
def test_recorded_speech_with_pauses(vsps, option):
    samples = recorded_phrases()
    vsps.put("in.wav", wav16(samples))
    channel = vsps.json("vad", "in.wav", "--option", option)["files"][0]["channels"][0]
    assert 6.1 / 12.1 - 0.1 < channel["speech_share"] < 6.1 / 12.1 + 0.1
    assert channel["speech_level_dbov"] > channel["other_level_dbov"] + 25
    assert heard(vsps, samples, option, 2.2, 4.1) > 0.97
    assert heard(vsps, samples, option, 6.4, 9.9) > 0.9
    for start in (1, 5, 11):
        assert heard(vsps, samples, option, start, start + 1) < 0.05


@pytest.mark.parametrize("option", OPTIONS)
def test_what_is_not_speech(vsps, option):
    for samples in ([0] * 16000, [3] * 16000, [8000] * 40000, tone(4, 300, frequency=50)):
        assert heard(vsps, samples, option, 0.1, 2) == 0
    for amplitude in (20, 300, 3000):
        assert heard(vsps, noise(12, amplitude), option, 6, 12) < 0.05


@pytest.mark.parametrize("option", OPTIONS)
def test_a_step_in_the_noise_is_learned(vsps, option):
    samples = in_noise(2, noise(6, 1000, seed=2), 2)
    assert heard(vsps, samples, option, 2.1, 2.8) == 1
    assert heard(vsps, samples, option, 5, 8) < 0.05
    assert heard(vsps, samples, option, 8.1, 10) < 0.05


@pytest.mark.parametrize("option", OPTIONS)
def test_steady_tones_and_voices_are_not_taken_for_noise(vsps, option):
    for steady in (tone(6, 6000, frequency=700), tone(6, 2000, frequency=1900), voice(6, 120), voice(6, 210)):
        assert heard(vsps, in_noise(2, steady, 1), option, 2.02, 8) == 1


def test_option_1_stays_with_a_long_complex_signal(vsps):
    """A correlation that has been high for 100 frames gives 250 frames of hangover; a shorter one does not."""
    short, long = (in_noise(2, tone(seconds, 6000, frequency=1000), 7) for seconds in (1.5, 3))
    assert heard(vsps, short, 1, 3.8, 10) < 0.05
    assert heard(vsps, long, 1, 2, 9.8) == 1
    assert heard(vsps, long, 1, 10.2, 12) < 0.05
    assert heard(vsps, long, 2, 5.5, 12) < 0.05


@pytest.mark.parametrize("option", OPTIONS)
def test_report_table_and_labels_agree(vsps, option):
    samples = in_noise(2, speech(4, 6000), 1.5)[:-77]  # the last frame is not whole
    vsps.put("in.wav", wav16(samples))
    arguments = ("vad", "in.wav", "--option", option, "--csv", "out.csv", "--labels", "out.txt")
    report = vsps.json(*arguments)
    entry = report["files"][0]
    channel = entry["channels"][0]
    seconds = len(samples) / 8000
    assert report["option"] == option
    assert entry["detector"] == f"GSM-AMR option {option}"
    assert entry["input"] == {"file": "in.wav", "rate_hz": 8000, "channels": 1, "duration_s": round(seconds, 3)}
    assert (entry["csv"], entry["labels"], entry["plot"]) == ("out.csv", "out.txt", None)

    rows = table(vsps, "out.csv")
    columns = ["channel", "time_s", "speech", "level_dbov", "snr_db", LAST_COLUMN[option]]
    assert vsps.path("out.csv").read_text().split("\n")[0] == ",".join(columns)
    assert len(rows) == channel["frames"] == math.ceil(len(samples) / 160)
    segments = []
    for i, row in enumerate(rows):
        assert row["channel"] == 1 and abs(row["time_s"] - 0.02 * i) < 1e-6
        frame = samples[160 * i : 160 * i + 160]
        power = sum(x * x for x in frame) / len(frame)
        assert abs(row["level_dbov"] - 10 * math.log10(power / 32768**2)) < 0.06
        if row["speech"] and not (i and rows[i - 1]["speech"]):
            segments.append([0.02 * i, 0])
        if row["speech"]:
            segments[-1][1] = min(0.02 * (i + 1), seconds)
    assert len(segments) > 2
    assert [[s["start_s"], s["end_s"]] for s in channel["segments"]] == [pytest.approx(s, abs=1e-3) for s in segments]
    assert channel["speech_s"] == pytest.approx(sum(end - start for start, end in segments), abs=2e-3)
    assert channel["speech_share"] == pytest.approx(channel["speech_s"] / seconds, abs=1e-3)

    labels = [line.split("\t") for line in vsps.path("out.txt").read_text().splitlines()]
    assert {label[2] for label in labels} == {"speech"}
    assert [[float(x) for x in label[:2]] for label in labels] == [pytest.approx(s, abs=1e-5) for s in segments]
    text = vsps.ok(*arguments).stdout
    assert f"{channel['speech_s']:.2f} s of {seconds:.2f} s" in text and f", {len(segments)} segments\n" in text
    assert "table: out.csv\nlabels: out.txt\n" in text


def test_ratios_explain_the_decisions(vsps):
    vsps.put("in.wav", wav16(recorded_phrases()))
    vsps.ok("vad", "in.wav", "--csv", "1.csv")
    vsps.ok("vad", "in.wav", "--option", 2, "--csv", "2.csv")
    rows = table(vsps, "1.csv")[25:]
    assert all(row["speech"] for row in rows if row["snr_db"] > row["threshold_db"] + 0.1)
    starts = [b for a, b in zip(rows, rows[1:]) if b["speech"] and not a["speech"]]
    assert starts and all(row["snr_db"] > row["threshold_db"] - 0.1 for row in starts)
    rows = table(vsps, "2.csv")
    pause = sorted(row["snr_db"] for row in rows[40:95])
    assert abs(pause[len(pause) // 2]) < 2
    assert max(row["snr_db"] for row in rows[100:205]) > 25
    assert 25 < rows[-1]["long_term_snr_db"] < 50


def test_channels_and_rates(vsps):
    channels = [in_noise(1, speech(2, 6000)), noise(3, 50)]
    vsps.put("in.wav", wav(pcm(interleave(channels)), channels=2))
    arguments = ("vad", "in.wav", "--csv", "out.csv", "--labels", "out.txt", "--plot", "plot.png")
    result = vsps.ok(*arguments)
    assert result.stderr == "vsps: in.wav: 2 channels, each heard by itself\n" and " channel 2\n" in result.stdout
    both, rows = vsps.json(*arguments)["files"][0]["channels"], table(vsps, "out.csv")
    for c, samples in enumerate(channels):
        vsps.put("one.wav", wav16(samples))
        assert vsps.json("vad", "one.wav", "--csv", "one.csv")["files"][0]["channels"] == [both[c]]
        assert [row for row in rows if row["channel"] == c + 1] == [{**r, "channel": c + 1} for r in table(vsps, "one.csv")]
    labels = [line.split("\t")[2] for line in vsps.path("out.txt").read_text().splitlines()]
    assert labels.count("speech 1") == len(both[0]["segments"]) and labels.count("speech 2") == len(both[1]["segments"])

    vsps.put("fast.wav", wav16([x for x in channels[0] for _ in (0, 1)], rate=16000))
    result = vsps.ok("vad", "fast.wav", "--option", 1)
    assert result.stderr == "vsps: fast.wav: resampled from 16000 Hz to 8000 Hz\n"
    assert vsps.json("vad", "fast.wav", "--option", 1)["files"][0]["channels"][0]["frames"] == 150
    vsps.put("in.raw", pcm(channels[0]))
    raw = vsps.json("vad", "in.raw", "--raw", 8000)["files"][0]["channels"]
    assert raw == [both[0]]


def test_16_khz_is_heard_as_an_amr_wb_encoder_hears_it(vsps):
    slow = recorded_phrases()
    samples = [x for a, b in zip(slow, slow[1:]) for x in (a, (a + b) // 2)]
    vsps.put("in.wav", wav16(samples, rate=16000))
    result = vsps.ok("vad", "in.wav", "--csv", "out.csv", "--plot", "plot.svg")
    assert result.stderr == "" and result.stdout.startswith(f"in.wav: {len(samples) / 16000:.2f} s, 16000 Hz, 1 channel, AMR-WB\n")
    plot = vsps.path("plot.svg").read_text()
    assert ">waveform<" in plot and "AMR-WB" in plot and "signal to noise" not in plot
    rows = table(vsps, "out.csv")
    assert list(rows[0]) == ["channel", "time_s", "speech", "level_dbov"]
    vsps.ok("encode", "in.wav", "out.awb", "--rate", 12650)
    coded = vsps.path("out.awb").read_bytes()[9:]
    assert len(coded) == 33 * len(rows) == 33 * math.ceil(len(samples) / 320)
    assert [row["speech"] for row in rows] == [first >> 7 for first in coded[1::33]]  # the decision is a frame's first bit

    entry = vsps.json("vad", "in.wav")["files"][0]
    assert entry["detector"] == "AMR-WB" and entry["channels"][0]["frames"] == len(rows)
    segments = entry["channels"][0]["segments"]
    assert sum(s["end_s"] - s["start_s"] for s in segments) == pytest.approx(0.02 * sum(row["speech"] for row in rows))
    assert sum(row["speech"] for row in rows if 2.2 <= row["time_s"] < 4.1) > 0.95 * 95
    assert sum(row["speech"] for row in rows if 5 <= row["time_s"] < 6) < 3
    vsps.put("fast.wav", wav16([x for x in samples for _ in range(3)], rate=48000))
    result = vsps.ok("vad", "fast.wav")
    assert result.stderr == "vsps: fast.wav: resampled from 48000 Hz to 16000 Hz\n" and "AMR-WB" in result.stdout


def test_several_files_on_several_threads_give_what_each_gives_alone(vsps):
    names = [f"{i}.wav" for i in range(6)]
    for i, name in enumerate(names):
        vsps.put(name, wav16(in_noise(1, speech(2 if i else 12, 5000, seed=i)), rate=8000 if i != 3 else 11025))
    outputs = ("--csv", "{}-{}.csv", "--labels", "{}.txt", "--plot", "{}.svg")
    alone, content = [], {}
    for name in names:
        alone.append(vsps.ok("vad", name, *outputs))
        content.update({out: vsps.path(out).read_bytes() for out in vsps.files() if not out.endswith("wav")})
    assert len(content) == 18 and "5-5.csv" in content
    for out in content:
        vsps.path(out).unlink()
    together = vsps.ok("vad", "--jobs", 4, *outputs, "--", *names)
    assert together.stdout == "".join(result.stdout for result in alone)
    assert together.stderr == "".join(result.stderr for result in alone) != ""
    assert content == {out: vsps.path(out).read_bytes() for out in vsps.files() if not out.endswith("wav")}
    files = vsps.json("vad", *names, "--jobs", 3)["files"]
    assert [entry["input"]["file"] for entry in files] == names


def test_one_bad_file_does_not_stop_the_others(vsps):
    vsps.put("a.wav", wav16(speech(2, 5000)))
    vsps.put("b.wav", b"Dear operator,\n" * 50)
    vsps.put("d.wav", wav16(speech(2, 5000, seed=2)))
    for jobs in (1, 3):
        result = vsps.run("vad", "a.wav", "b.wav", "missing.wav", "d.wav", "--csv", "{}.csv", "--jobs", jobs)
        assert result.returncode == 1
        first, second = result.stderr.splitlines()
        assert first.startswith("vsps: b.wav: not readable as audio")
        assert second.startswith("vsps: missing.wav: No such file")
        assert result.stdout == vsps.ok("vad", "a.wav", "d.wav", "--csv", "{}.csv").stdout
        assert vsps.files() == ["a.csv", "a.wav", "b.wav", "d.csv", "d.wav"]


def test_files_that_cannot_be_used(vsps):
    vsps.put("in.wav", wav16(speech(1, 5000)))
    vsps.put("in.au", b"never read")
    vsps.fails("missing.wav", "No such file", "vad", "missing.wav", "--csv", "out.csv")
    vsps.fails("no/out.csv", "No such file", "vad", "in.wav", "--labels", "out.txt", "--csv", "no/out.csv")
    vsps.fails("plot.bmp", "unknown extension", "vad", "in.wav", "--csv", "out.csv", "--plot", "plot.bmp")
    vsps.fails("./in.wav", "is an input and an output at once", "vad", "in.wav", "--csv", "./{}.wav")
    vsps.fails("out", "is two outputs at once", "vad", "in.wav", "--csv", "out", "--labels", "out")
    vsps.fails("in.csv", "is two outputs at once", "vad", "in.wav", "in.au", "--csv", "{}.csv")


@pytest.mark.parametrize("kind, magic", [("png", b"\x89PNG"), ("svg", b"<?xml"), ("pdf", b"%PDF")])
def test_plot(vsps, kind, magic):
    for samples in (in_noise(1, speech(2, 5000)), [0] * 100):
        vsps.put("in.wav", wav16(samples))
        result = vsps.ok("vad", "in.wav", "--plot", f"it's a plot.{kind}")
        assert result.stderr == "" and f"plot: it's a plot.{kind}\n" in result.stdout
        assert vsps.path(f"it's a plot.{kind}").read_bytes().startswith(magic)
    if kind == "svg":
        text = vsps.path("it's a plot.svg").read_text()
        for label in (">speech<", ">waveform<", "signal to noise, dB", ">in the frame<", ">threshold<", "time, s"):
            assert label in text


@pytest.mark.parametrize(
    "arguments",
    [
        ["vad"],
        ["vad", "in.wav", "--option", "3"],
        ["vad", "in.wav", "--jobs", "0"],
        ["vad", "in.wav", "--raw", "0"],
        ["vad", "in.wav", "in.wav", "--csv", "out.csv"],
        ["vad", "in.wav", "in.wav", "--labels", "out.txt"],
        ["vad", "in.wav", "in.wav", "--plot", "plot.png"],
    ],
)
def test_bad_usage(vsps, arguments):
    vsps.put("in.wav", wav16(tone(1, 3000)))
    result = vsps.run(*arguments)
    assert (result.returncode, result.stdout) == (2, "")
    assert "--help" in result.stderr
    assert vsps.files() == ["in.wav"]
