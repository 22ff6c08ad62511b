"""What vsps g168 says of the echo canceller."""
import pytest


def results(vsps, *options):
    report = vsps.json("g168", *options)
    return {(r["test"], r["what"]): r for r in report["results"]}


@pytest.mark.parametrize("engine", [[], ["--engine", "fullband", "--fixed"]], ids=["default", "fullband-fixed"])
def test_a_line_passes(vsps, engine):
    """Limits and verdicts are those of the text."""
    options = ["--path", "d3", "--test", "3A", "5", "tone", *engine]
    found = results(vsps, *options)
    assert len(found) == 5
    for r in found.values():
        (line,) = r["paths"]
        assert line["path"] == "d3" and line["passed"], r
        assert (r["least"] is None or line["measured"] >= r["least"]) and (r["most"] is None or line["measured"] <= r["most"])
    text = vsps.ok("g168", *options).stdout
    assert text.count("PASS") == 5 and "FAIL" not in text and "\n5 of 5 passed in " in text


@pytest.mark.parametrize("fixed", [False, True])
def test_nothing_comes_back_from_a_line_without_noise(vsps, fixed):
    """Where the echo sets in after digital silence, and in the pauses of the source."""
    found = results(vsps, "--path", "d2", "d5", "--test", "2A", *(["--fixed"] if fixed else []))
    assert all(p["passed"] for r in found.values() for p in r["paths"])


def test_tones_leave_the_filters_as_they_are(vsps):
    (found,) = results(vsps, "--path", "d3", "d9", "--test", "6").values()
    assert all(p["passed"] for p in found["paths"])


def test_a_canceller_that_is_too_short_fails(vsps):
    """Of two echoes 300 ms apart one is left, 9 dB below the far end."""
    vsps.put("two.txt", b"1 " + b"0 " * 2400 + b"1")
    found = results(vsps, "--path", "d4", "two.txt", "--test", "2B", "--tail", 1)
    losses = [r for (_, what), r in found.items() if "after 10 s" in what]
    assert len(losses) == 3
    for r in losses:
        good, bad = r["paths"]
        assert good["passed"] and not bad["passed"] and 6 < bad["measured"] < 11


def test_bad_usage(vsps):
    for options in (["--test", "9"], ["--tail", "0"], ["--erl", "nan"], ["--engine", "both"]):
        assert vsps.run("g168", *options).returncode == 2
    vsps.fails("d1", "neither an echo path from d2 to d9 nor a file", "g168", "--path", "d1")
