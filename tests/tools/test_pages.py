"""Manual pages and completions: what --help and the headers say, without warnings of groff."""

import os
import pathlib
import pty
import re
import subprocess
import sys

import pytest

SOURCE = pathlib.Path(__file__).parents[2]
PAGES = pathlib.Path(os.environ["VSPSC_PAGES"])
sys.path.insert(0, str(SOURCE / "tests/core"))
from exports import exported_names, voice_names  # noqa: E402


def vsps(*arguments):
    return subprocess.run([os.environ["VSPS"], *arguments], capture_output=True, text=True, check=True).stdout


def commands():
    return re.findall(r"^  ([a-z0-9-]+) {2,}", vsps("--help").partition("Subcommands:")[2], re.M)


def options(command):
    return re.findall(r"^  (?:-\w,)?(--[a-z-]+)", vsps(command, "--help"), re.M)


def complete_in_bash(*words):
    program = f'source {PAGES}/bash/vsps; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _vsps; printf "%s\\n" "${{COMPREPLY[@]}}"'
    return subprocess.run(["bash", "-c", program, "bash", *words], capture_output=True, text=True, check=True).stdout.split()


def test_pages_have_no_faults():
    pages = [*PAGES.glob("man1/*.1"), *PAGES.glob("man3/*.3"), SOURCE / "docs/man/vspsc.7"]
    result = subprocess.run(["groff", "-man", "-ww", "-z", "-Tutf8", *pages], capture_output=True, text=True, check=False)
    assert result.returncode == 0 and result.stderr == ""


def test_every_command_and_option_has_its_place():
    assert len(commands()) >= 10
    assert {p.name for p in PAGES.glob("man1/*")} == {"vsps.1", *(f"vsps-{c}.1" for c in commands())}
    for command in commands():
        page = (PAGES / f"man1/vsps-{command}.1").read_text().replace("\\-", "-")
        assert f"vsps-{command}\\fR(1)" in (PAGES / "man1/vsps.1").read_text().replace("\\-", "-")
        for option in options(command):
            assert f"\\fB{option}\\fR" in page, f"{command} {option}"
    assert "EXIT STATUS" in (PAGES / "man1/vsps.1").read_text()


def test_exit_codes_are_those_of_the_pages(tmp_path):
    page = (PAGES / "man1/vsps-vad.1").read_text().partition(".SH EXIT STATUS")[2]
    assert [line for line in page.splitlines() if line.isdigit()] == ["0", "1", "2"]
    vsps("vad", "--help")
    for status, arguments in ((1, ["vad", tmp_path / "missing.wav"]), (2, ["vad", "--no-such-option"]), (2, [])):
        assert subprocess.run([os.environ["VSPS"], *arguments], capture_output=True, check=False).returncode == status


def test_a_terminal_gets_no_colours():
    ours, theirs = pty.openpty()
    for arguments in (["--help"], ["info"], ["codecs"], ["vad", "missing.wav"]):
        subprocess.run([os.environ["VSPS"], *arguments], stdout=theirs, stderr=theirs, env={**os.environ, "TERM": "xterm-256color"}, check=False)
    os.set_blocking(ours, False)
    shown = os.read(ours, 1 << 16)
    assert b"Exit codes" in shown and b"\x1b" not in shown
    assert "NO_COLOR" in (PAGES / "man1/vsps.1").read_text()


def test_every_function_has_its_page():
    assert {p.stem for p in PAGES.glob("man3/*")} == set(exported_names(SOURCE)) | set(voice_names(SOURCE))


def test_bash_completes_commands_options_and_values(tmp_path):
    assert set(commands()) < set(complete_in_bash("vsps", ""))
    assert complete_in_bash("vsps", "enc") == ["encode"]
    for command in commands():
        assert complete_in_bash("vsps", command, "--") == options(command)
    assert complete_in_bash("vsps", "echo", "--engine", "") == ["subband", "fullband"]
    (tmp_path / "call.wav").touch()
    assert complete_in_bash("vsps", "vad", f"{tmp_path}/c") == [f"{tmp_path}/call.wav"]


@pytest.mark.skipif(not os.path.exists("/usr/bin/zsh"), reason="zsh is not installed")
def test_zsh_reads_its_completion():
    subprocess.run(["zsh", "-n", PAGES / "zsh/_vsps"], check=True)
