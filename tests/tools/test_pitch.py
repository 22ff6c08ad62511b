"""What vsps pitch finds in voices of known pitch, and what it writes."""
import csv
import math
import random

import pytest
from signals import interleave, pcm, tone, voice, wav, wav16

COLUMNS = "channel time_s open_loop_lag lag fraction f0_hz gain prediction_gain_db level_dbov voiced".split()
SEARCHES = ("main", "a", "d")
# Semitones. Annex A's correlation is not normalised, so that it may miss the lag where a subframe has no pulse.
NEAR = {"main": 0.5, "a": 1.2, "d": 0.5}


def noise(seconds, amplitude):
    source = random.Random(1)
    return [round(source.gauss(0, amplitude)) for _ in range(int(seconds * 8000))]


def pitch(vsps, content, *options):
    """The report and the table of a file."""
    vsps.put("in.wav", content)
    report = vsps.json("pitch", "in.wav", "--csv", "out.csv", *options)
    with open(vsps.path("out.csv"), newline="") as file:
        rows = list(csv.DictReader(file))
    return report, [{name: float(value) for name, value in row.items()} for row in rows]


def semitones(a, b):
    return 12 * abs(math.log2(a / b))


@pytest.mark.parametrize("search", SEARCHES)
def test_voices_of_known_pitch(vsps, search):
    for f0 in (80, 123, 200.5, 333):
        report, rows = pitch(vsps, wav16(voice(1, f0)), "--search", search)
        channel = report["channels"][0]
        assert report["search"] == search
        assert semitones(channel["f0_hz"]["median"], f0) < 0.2
        assert channel["voiced_share"] > 0.7
        settled = [row for row in rows if row["time_s"] > 0.2]
        assert sum(semitones(row["f0_hz"], f0) < NEAR[search] for row in settled) > 0.9 * len(settled)


@pytest.mark.parametrize("search", SEARCHES)
def test_the_contour_follows_a_glide(vsps, search):
    glide = lambda t: 110 * 2 ** (t / 2)
    _, rows = pitch(vsps, wav16(voice(2, glide)), "--search", search)
    settled = [row for row in rows if row["time_s"] > 0.2]
    near = sum(semitones(row["f0_hz"], glide(row["time_s"] + 0.0025)) < NEAR[search] for row in settled)
    assert near > 0.9 * len(settled)


def test_the_prediction_gain_tells_voice_from_noise(vsps):
    _, rows = pitch(vsps, wav16(voice(1, 150) + noise(1, 2000) + voice(1, 150)))
    voiced = [sum(row["voiced"] for row in rows[i + 20 : i + 180]) / 160 for i in (0, 200, 400)]
    assert voiced[0] > 0.9 and voiced[1] < 0.15 and voiced[2] > 0.9
    gains = [sum(row["prediction_gain_db"] for row in rows[i + 20 : i + 180]) / 160 for i in (0, 200, 400)]
    assert gains[0] > 10 and gains[1] < 2 and gains[2] > 10


def test_the_pitch_does_not_depend_on_the_level(vsps):
    for amplitude in (60, 32767):
        report, _ = pitch(vsps, wav16(voice(1, 150, amplitude=amplitude)))
        assert semitones(report["channels"][0]["f0_hz"]["median"], 150) < 0.2


@pytest.mark.parametrize("search", SEARCHES)
def test_silence_has_no_pitch(vsps, search):
    report, rows = pitch(vsps, wav16([0] * 8000), "--search", search, "--plot", "plot.png")
    channel = report["channels"][0]
    assert (channel["frames"], channel["voiced_frames"]) == (100, 0)
    assert set(channel["f0_hz"].values()) == {None} and channel["prediction_gain_db"] is None
    assert all(row["gain"] == row["prediction_gain_db"] == row["voiced"] == 0 for row in rows)
    assert all(row["level_dbov"] == -math.inf for row in rows)
    assert "F0                -\n" in vsps.ok("pitch", "in.wav").stdout


def test_full_scale_square_wave_and_impulses(vsps):
    square = [32767 if i // 40 % 2 else -32768 for i in range(8000)]
    impulses = [32767 if i % 80 == 0 else 0 for i in range(8000)]
    for samples in (square, impulses):
        for search in SEARCHES:
            report, _ = pitch(vsps, wav16(samples), "--search", search)
            assert semitones(report["channels"][0]["f0_hz"]["median"], 100) < 0.2


def test_table(vsps):
    samples = voice(1, lambda t: 100 + 100 * t) + noise(0.5, 500)
    report, rows = pitch(vsps, wav16(samples + [1] * 79))
    assert vsps.path("out.csv").read_text().split("\n")[0] == ",".join(COLUMNS)
    assert len(rows) == 300 == 2 * report["channels"][0]["frames"]
    for i, row in enumerate(rows):
        assert row["channel"] == 1 and abs(row["time_s"] - 0.005 * i) < 1e-6
        assert 20 <= row["open_loop_lag"] <= 143 and 19 <= row["lag"] <= 144 and row["fraction"] in (-1, 0, 1)
        assert abs(row["f0_hz"] - 8000 / (row["lag"] + row["fraction"] / 3)) < 0.01
        assert 0 <= row["gain"] <= 1.2
        assert row["voiced"] == (row["gain"] >= 0.5 and row["prediction_gain_db"] >= 3)
        power = sum(x * x for x in samples[40 * i : 40 * i + 40]) / 40
        assert abs(row["level_dbov"] - 10 * math.log10(power / 32768**2)) < 0.06
    for first, second in zip(rows[::2], rows[1::2]):
        assert first["open_loop_lag"] == second["open_loop_lag"]
        assert abs(first["lag"] - first["open_loop_lag"]) <= 7 and abs(second["lag"] - first["lag"]) <= 10

    voiced = sorted(row["f0_hz"] for row in rows if row["voiced"])
    channel = report["channels"][0]
    assert channel["voiced_frames"] == sum(a["voiced"] and b["voiced"] for a, b in zip(rows[::2], rows[1::2]))
    assert voiced[0] <= channel["f0_hz"]["low_5_percent"] < channel["f0_hz"]["median"]
    assert channel["f0_hz"]["median"] < channel["f0_hz"]["high_95_percent"] <= voiced[-1]
    below = sum(f0 < channel["f0_hz"]["low_5_percent"] for f0 in voiced) / len(voiced)
    assert 0.03 < below <= 0.06


def test_channels_are_searched_by_themselves(vsps):
    voices = [voice(1, 120), voice(1, 220)]
    alone = [pitch(vsps, wav16(samples)) for samples in voices]
    report, rows = pitch(vsps, wav(pcm(interleave(voices)), channels=2), "--plot", "plot.png")
    assert [report["channels"][c] for c in (0, 1)] == [alone[c][0]["channels"][0] for c in (0, 1)]
    assert rows == [{**row, "channel": c + 1} for both in zip(alone[0][1], alone[1][1]) for c, row in enumerate(both)]
    result = vsps.ok("pitch", "in.wav")
    assert result.stderr == "vsps: in.wav: 2 channels, each searched by itself\n"
    assert " channel 2\n" in result.stdout


def test_other_rates_are_resampled(vsps):
    report, rows = pitch(vsps, wav16(voice(1, 140, rate=16000), rate=16000))
    assert report["input"]["rate_hz"] == 16000
    assert semitones(report["channels"][0]["f0_hz"]["median"], 140) < 0.2
    assert len(rows) == 200
    assert "resampled from 16000 Hz" in vsps.ok("pitch", "in.wav").stderr


def test_plot(vsps):
    vsps.put("in.wav", wav16(voice(1, 120) + noise(0.3, 300)))
    for kind, magic in (("png", b"\x89PNG"), ("svg", b"<?xml"), ("pdf", b"%PDF")):
        result = vsps.ok("pitch", "in.wav", "--plot", f"plot.{kind}")
        assert result.stderr == "" and f"plot: plot.{kind}\n" in result.stdout
        assert vsps.path(f"plot.{kind}").read_bytes().startswith(magic)
    text = vsps.path("plot.svg").read_text()
    for label in ("amplitude, full scale = 1", "F0, Hz", "time, s", ">waveform<", ">F0<"):
        assert label in text


def test_files_that_cannot_be_used(vsps):
    vsps.put("in.wav", wav16(tone(1, 3000)))
    vsps.put("short.wav", wav16(tone(1, 3000)[:79]))
    vsps.put("text", b"Dear operator,\n" * 50)
    csv_and_plot = ("--csv", "out.csv", "--plot", "plot.png")
    vsps.fails("short.wav", "too short", "pitch", "short.wav", *csv_and_plot)
    vsps.fails("text", "not readable as audio", "pitch", "text", *csv_and_plot)
    vsps.fails("missing.wav", "No such file", "pitch", "missing.wav", *csv_and_plot)
    vsps.fails("plot.bmp", "unknown extension", "pitch", "in.wav", "--csv", "out.csv", "--plot", "plot.bmp")
    vsps.fails("missing/plot.png", "No such file", "pitch", "in.wav", "--csv", "out.csv", "--plot", "missing/plot.png")
    vsps.fails("missing/out.csv", "No such file", "pitch", "in.wav", "--csv", "missing/out.csv", "--plot", "plot.png")
    vsps.fails("./in.wav", "input and an output", "pitch", "in.wav", "--csv", "./in.wav")
    vsps.fails("same.png", "is two outputs at once", "pitch", "in.wav", "--csv", "same.png", "--plot", "same.png")
    assert vsps.ok("pitch", "in.wav").stderr == ""  # the shortest one that is long enough comes next
    vsps.put("frame.wav", wav16(tone(1, 3000)[:80]))
    assert vsps.json("pitch", "frame.wav")["channels"][0]["frames"] == 1


@pytest.mark.parametrize(
    "arguments",
    [
        ["pitch"],
        ["pitch", "in.wav", "out.wav"],
        ["pitch", "in.wav", "--search", "b"],
        ["pitch", "in.wav", "--search"],
        ["pitch", "in.wav", "--csv"],
        ["pitch", "in.wav", "--raw", "0"],
    ],
)
def test_bad_usage(vsps, arguments):
    vsps.put("in.wav", wav16(tone(1, 3000)))
    result = vsps.run(*arguments)
    assert (result.returncode, result.stdout) == (2, "")
    assert "--help" in result.stderr
    assert vsps.files() == ["in.wav"]
