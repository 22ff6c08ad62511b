"""What vsps level does to speech and what it reports."""
import math

import pytest
from signals import interleave, pcm, read_wav, speech, tone, wav, wav16


def level(vsps, samples, *options):
    vsps.put("in.wav", wav16(samples))
    report = vsps.json("level", "in.wav", "out.wav", *options)
    return read_wav(vsps.path("out.wav"))[0], report


def dbov(samples):
    return 10 * math.log10(sum(x * x for x in samples) / len(samples) / 32768**2)


def test_no_sample_is_lost_at_the_end(vsps):
    whole, _ = level(vsps, speech(3, 6000))
    for length in (1, 2, 7, 8, 9, 159, 160, 161, 20003):
        part, report = level(vsps, speech(3, 6000)[:length])
        assert len(part) == length == report["output"]["samples"]
        blocks = length // 8 * 8
        assert part[:blocks] == whole[:blocks]
        # The last samples have the gain of their incomplete block.
        assert all(abs(a - b) <= 0.2 * abs(b) + 1 for a, b in zip(part[blocks:], whole[blocks:]))


@pytest.mark.parametrize("amplitude", [600, 3000, 20000])
def test_speech_comes_out_at_the_target(vsps, amplitude):
    for target in (20, 26.1, 32):
        _, report = level(vsps, speech(8, amplitude), "--two-pass", "--target", target, "--max-gain", 40)
        assert abs(report["channels"][0]["output"]["active_level_dbov"] + target) < 3


def test_the_maximum_gain_holds(vsps):
    _, report = level(vsps, speech(8, 600), "--two-pass", "--max-gain", 5)
    gain = report["channels"][0]["gain_db"]
    assert abs(gain["last"] - 5) < 0.1 and abs(gain["highest"] - 5) < 0.1


def test_the_limit_holds_and_limited_samples_are_counted(vsps):
    samples = speech(8, 20000)
    out, report = level(vsps, samples, "--two-pass", "--target", 10, "--limit", 12)
    limit = math.floor(32768 / 10 ** (12 / 20))
    assert max(abs(x) for x in out) in (limit - 1, limit)
    assert report["channels"][0]["samples_limited"] == sum(abs(x) >= limit - 1 for x in out) > 10
    assert level(vsps, samples)[1]["channels"][0]["samples_limited"] == 0


def test_a_limit_that_leaves_nothing_is_said(vsps):
    vsps.put("in.wav", wav16(speech(1, 3000)))
    result = vsps.ok("level", "in.wav", "out.wav", "--limit", 200)
    assert result.stderr == "vsps: no sample keeps a limit of 200 dB: the output is silent\n"
    assert not any(read_wav(vsps.path("out.wav"))[0])
    assert vsps.ok("level", "in.wav", "out.wav", "--limit", 80).stderr == ""


def test_one_pass_begins_attenuated_and_says_until_when(vsps):
    samples = [1, -1] * 2000 + tone(4, 3000)
    out, report = level(vsps, samples)
    channel = report["channels"][0]
    assert abs(channel["gain_db"]["first"] + 30.1) < 0.5
    gains = [dbov(out[i : i + 160]) - dbov(samples[i : i + 160]) for i in range(4000, len(out), 160)]
    assert gains[0] < -15 and gains[-1] > -10
    settled = next(i for i, gain in enumerate(gains) if gain > gains[-1] - 6)
    assert abs(channel["attenuated_until_s"] - (0.5 + 0.02 * settled)) < 0.05
    assert "start attenuated" in vsps.ok("level", "in.wav", "out.wav").stdout


def test_twelve_minutes_are_measured_as_one(vsps):
    minute = pcm(speech(60, 3000))
    vsps.put("short.raw", minute)
    vsps.put("long.raw", minute * 12)
    short, long = (vsps.json("level", "--raw", 8000, name, "out.wav", "--plot", "plot.svg")["channels"][0]
                   for name in ("short.raw", "long.raw"))  # fmt: skip
    assert abs(long["attenuated_until_s"] - short["attenuated_until_s"]) <= 0.04
    assert long["gain_db"]["first"] == short["gain_db"]["first"]
    assert abs(long["gain_db"]["highest"] - short["gain_db"]["highest"]) < 1
    for signal in ("input", "output"):
        assert abs(long[signal]["active_level_dbov"] - short[signal]["active_level_dbov"]) < 1
        assert abs(long[signal]["speech_activity"] - short[signal]["speech_activity"]) < 0.02


def test_two_passes_are_one_pass_over_the_recording_twice(vsps):
    samples = speech(4, 3000)
    twice, _ = level(vsps, samples + samples)
    out, report = level(vsps, samples, "--two-pass")
    assert out == twice[len(samples) :]
    assert report["channels"][0]["attenuated_until_s"] is None
    assert "start attenuated" not in vsps.ok("level", "in.wav", "out.wav", "--two-pass").stdout


def test_channels_are_controlled_by_themselves(vsps):
    channels = [speech(3, 600), speech(3, 20000, seed=2), tone(3, 1000)]
    vsps.put("three.wav", wav(pcm(interleave(channels)), channels=3))
    report = vsps.json("level", "three.wav", "three_out.wav")
    together = read_wav(vsps.path("three_out.wav"))
    for i, samples in enumerate(channels):
        alone, report_alone = level(vsps, samples)
        assert together[i] == alone
        assert report["channels"][i] == report_alone["channels"][0]


def test_the_gain_in_the_report_is_that_between_the_samples(vsps):
    samples = tone(5, 2000)
    out, report = level(vsps, samples)
    last = dbov(out[-160:]) - dbov(samples[-160:])
    assert abs(report["channels"][0]["gain_db"]["last"] - last) < 0.1


def test_active_level_leaves_the_pauses_out(vsps):
    _, report = level(vsps, tone(4, 3276.8))
    steady = report["channels"][0]["input"]
    assert abs(steady["active_level_dbov"] + 23.01) < 0.1
    assert steady["speech_activity"] > 0.97
    assert abs(steady["peak_dbov"] + 20) < 0.01
    _, report = level(vsps, (tone(2, 3276.8) + [0] * 24000) * 4)
    bursts = report["channels"][0]["input"]
    assert abs(bursts["active_level_dbov"] + 23.5) < 0.6  # 200 ms of hangover count as speech
    assert abs(bursts["speech_activity"] - 2.2 / 5) < 0.03


def test_silence_and_a_single_sample_have_no_level(vsps):
    for samples in ([0] * 20000, [1000]):
        out, report = level(vsps, samples)
        assert len(out) == len(samples)
        assert report["channels"][0]["input"]["active_level_dbov"] is None
        vsps.ok("level", "in.wav", "out.wav", "--two-pass", "--plot", "plot.png")


def test_json_has_everything(vsps):
    _, report = level(vsps, speech(3, 3000), "--plot", "plot.svg", "--limit", 1)
    assert report["input"] == {"file": "in.wav", "rate_hz": 8000, "channels": 1}
    assert report["output"] == {"file": "out.wav", "rate_hz": 8000, "samples": 24000, "duration_s": 3}
    assert report["plot"] == "plot.svg"
    assert report["settings"] == {"target_db": 26.1, "limit_db": 1, "max_gain_db": 11.6, "two_pass": False}
    assert report["times_real_time"] > 1
    assert list(report["channels"][0]) == ["input", "output", "gain_db", "samples_limited", "attenuated_until_s"]


@pytest.mark.parametrize(
    "arguments",
    [
        [],
        ["no-such-command"],
        ["level"],
        ["level", "in.wav"],
        ["level", "in.wav", "out.wav", "more.wav"],
        ["level", "in.wav", "out.wav", "--bogus"],
        ["level", "in.wav", "out.wav", "--target", "-1"],
        ["level", "in.wav", "out.wav", "--target", "nan"],
        ["level", "in.wav", "out.wav", "--limit", "inf"],
        ["level", "in.wav", "out.wav", "--limit", "loud"],
        ["level", "in.wav", "out.wav", "--max-gain", "-0.5"],
        ["level", "in.wav", "out.wav", "--max-gain", "1e999"],
        ["level", "in.wav", "out.wav", "--raw", "0"],
        ["level", "in.wav", "out.wav", "--raw", "-8000"],
    ],
)
def test_bad_usage(vsps, arguments):
    vsps.put("in.wav", wav16(speech(1, 3000)))
    result = vsps.run(*arguments)
    assert (result.returncode, result.stdout) == (2, "")
    assert "--help" in result.stderr
    assert vsps.files() == ["in.wav"]
