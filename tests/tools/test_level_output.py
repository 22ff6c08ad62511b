"""Where vsps level writes, and that nothing half-written stays."""
import array
import os
import resource
import stat
import subprocess

import pytest
from signals import pcm, read_wav, speech, wav16

WAV = wav16(speech(2, 6000))


@pytest.fixture
def vsps(vsps):
    vsps.put("in.wav", WAV)
    vsps.put("old.wav", b"something precious")
    return vsps


@pytest.mark.parametrize(
    "out, reason",
    [
        ("missing/out.wav", "No such file"),
        ("/dev/full", "No space left"),
        (".", "is a directory"),
        ("out.xyz", "unknown extension"),
        ("out", "unknown extension"),
        ("in.wav/out.wav", "Not a directory"),
    ],
)
def test_output_that_cannot_be_written(vsps, out, reason):
    vsps.fails(out, reason, "level", "in.wav", out)
    vsps.fails(out, reason, "level", "in.wav", out, "--plot", "plot.png")


@pytest.mark.parametrize(
    "plot, reason",
    [
        ("missing/plot.png", "No such file"),
        ("plot.bmp", "unknown extension"),
        ("old.wav", "unknown extension"),
    ],
)
def test_plot_that_cannot_be_written_leaves_no_audio_either(vsps, plot, reason):
    vsps.fails(plot, reason, "level", "in.wav", "out.wav", "--plot", plot)


def test_a_plot_is_refused_before_the_work_if_gnuplot_is_missing(vsps):
    arguments = ("level", "missing.wav", "out.wav", "--plot", "plot.png")
    vsps.fails("plot.png", "gnuplot", *arguments, env={**os.environ, "PATH": "/nonexistent"})


def test_a_full_disk_keeps_what_was_there(vsps):
    limit = lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (10000, 10000))
    for out in ("out.wav", "old.wav", "old.flac"):
        vsps.fails(out, "File too large", "level", "in.wav", out, preexec_fn=limit)


@pytest.mark.skipif(os.geteuid() == 0, reason="root may write anything")
def test_a_write_protected_file_is_kept(vsps):
    vsps.path("old.wav").chmod(0o400)
    vsps.fails("old.wav", "Permission denied", "level", "in.wav", "old.wav")


def test_an_existing_file_is_replaced_with_its_mode_and_through_links(vsps):
    vsps.ok("level", "in.wav", "new.wav")
    vsps.path("old.wav").chmod(0o640)
    vsps.path("link.wav").symlink_to("old.wav")
    vsps.ok("level", "in.wav", "link.wav")
    assert vsps.path("link.wav").is_symlink()
    assert vsps.path("old.wav").read_bytes() == vsps.path("new.wav").read_bytes()
    assert stat.S_IMODE(vsps.path("old.wav").stat().st_mode) == 0o640


def test_a_device_or_pipe_is_written_and_not_replaced(vsps):
    assert vsps.ok("level", "in.wav", "/dev/null").stderr == ""
    assert stat.S_ISCHR(os.stat("/dev/null").st_mode)
    for name in ("out.flac", "out.wav"):
        vsps.ok("level", "in.wav", name)
        os.mkfifo(vsps.path("pipe." + name))
        with subprocess.Popen(["cat", vsps.path("pipe." + name)], stdout=subprocess.PIPE) as cat:
            vsps.ok("level", "in.wav", "pipe." + name)
            assert cat.stdout.read()[44:] == vsps.path(name).read_bytes()[44:]


def test_an_input_is_never_overwritten(vsps):
    """Whatever name leads to it."""
    vsps.path("soft.wav").symlink_to("in.wav")
    os.link(vsps.path("in.wav"), vsps.path("hard.wav"))
    for out in ("in.wav", "./in.wav", vsps.path("in.wav"), "soft.wav", "hard.wav"):
        for file in ("in.wav", "hard.wav"):
            vsps.fails(out, "is an input and an output at once", "level", file, out)
    with open(vsps.path("in.wav"), "rb") as file:
        vsps.fails("in.wav", "is an input and an output at once", "level", "-", "in.wav", stdin=file)
    vsps.path("plot.svg").symlink_to("in.wav")
    vsps.fails("plot.svg", "is an input and an output at once", "level", "in.wav", "out.wav", "--plot", "plot.svg")
    vsps.path("out.svg").symlink_to("old.wav")
    vsps.fails("out.svg", "is two outputs at once", "level", "in.wav", "old.wav", "--plot", "out.svg")
    assert vsps.path("in.wav").read_bytes() == WAV


def test_the_extension_says_the_format(vsps):
    for name in ("out.wav", "out.FLAC", "out.au", "out.aiff", "out.raw", "out.ul", "out.alaw"):
        vsps.ok("level", "in.wav", name)
    content = {name: vsps.path(name).read_bytes() for name in vsps.files()}
    samples = read_wav(vsps.path("out.wav"))[0]
    big_endian = array.array("h", samples)
    big_endian.byteswap()
    assert content["out.raw"] == pcm(samples)
    assert content["out.au"][:4] == b".snd" and content["out.au"].endswith(big_endian.tobytes())
    assert content["out.aiff"][:4] == b"FORM" and content["out.FLAC"][:4] == b"fLaC"
    assert len(content["out.ul"]) == len(content["out.alaw"]) == len(samples)
    # FLAC is lossless: what comes of it is what comes of the WAV.
    vsps.ok("level", "out.wav", "a.wav")
    vsps.ok("level", "out.FLAC", "b.wav")
    assert vsps.path("a.wav").read_bytes() == vsps.path("b.wav").read_bytes()


@pytest.mark.parametrize("kind, magic", [("png", b"\x89PNG"), ("PNG", b"\x89PNG"), ("svg", b"<?xml"), ("pdf", b"%PDF")])
def test_plot(vsps, kind, magic):
    name = f"it's {{a}} $plot.{kind}"
    result = vsps.ok("level", "in.wav", "out.wav", "--plot", name)
    assert result.stderr == ""
    assert name in result.stdout
    assert vsps.path(name).read_bytes().startswith(magic)
    assert vsps.path(name).stat().st_size > 5000


def test_svg_shows_levels_gain_and_units(vsps):
    vsps.ok("level", "in.wav", "out.wav", "--plot", "plot.svg")
    text = vsps.path("plot.svg").read_text()
    for label in ("level, dBov", "gain, dB", "time, s", ">input<", ">output<", ">target<", ">maximum<"):
        assert label in text
