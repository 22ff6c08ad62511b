"""The scripts in examples/python, on small recordings."""

import csv
import pathlib
import subprocess
import sys

import numpy as np
import pytest
from test_voice import speech

soundfile = pytest.importorskip("soundfile")
EXAMPLES = pathlib.Path(__file__).parents[2] / "examples/python"


def run(folder, name, *arguments):
    result = subprocess.run([sys.executable, EXAMPLES / name, *arguments], cwd=folder, capture_output=True, text=True, check=False)
    assert result.returncode == 0, result.stderr
    return result.stdout


def test_pictures(tmp_path):
    pytest.importorskip("matplotlib")
    soundfile.write(tmp_path / "a.wav", speech(6), 8000)
    soundfile.write(tmp_path / "b.wav", speech(2, seed=5), 8000)
    median = int(run(tmp_path, "pitch_contour.py", "a.wav", "pitch.png").split()[-2])
    assert 90 <= median <= 150  # as test_voice makes it
    assert "detector 2" in run(tmp_path, "speech_in_noise.py", "a.wav", "speech.png")
    decibels = int(run(tmp_path, "echo_cancelled.py", "a.wav", "b.wav", "echo.png", "out.wav").split()[-3])
    assert decibels > 15 and soundfile.info(tmp_path / "out.wav").frames == 48000
    for picture in ("pitch.png", "speech.png", "echo.png"):
        assert (tmp_path / picture).read_bytes().startswith(b"\x89PNG")


def test_calls_are_marked_whatever_the_number_of_workers(tmp_path):
    pytest.importorskip("distributed")
    (tmp_path / "calls").mkdir()
    for i in range(5):
        soundfile.write(tmp_path / f"calls/{i}.wav", speech(1 + i, seed=i), 8000)
    (tmp_path / "calls/3x.wav").write_text("damaged")
    reports = []
    for workers in ("1", "2"):
        told = run(tmp_path, "mark_calls.py", "calls", "report.csv", "--workers", workers)
        assert told.startswith("6 recordings, 15 s") and "1 not readable" in told
        reports.append((tmp_path / "report.csv").read_text())
    assert reports[0] == reports[1]
    lines = list(csv.DictReader(reports[0].splitlines()))
    assert [pathlib.Path(line["recording"]).stem for line in lines] == ["0", "1", "2", "3", "3x", "4"]
    assert lines[4]["error"] and not any(line["error"] for line in lines if line is not lines[4])
    spans = [tuple(map(float, part.split("-"))) for part in lines[5]["parts"].split()]
    assert np.isclose(sum(b - a for a, b in spans), float(lines[5]["speech"]), atol=0.02)
