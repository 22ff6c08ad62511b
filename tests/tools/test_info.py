import json
import os
import pathlib
import subprocess


def test_json_gives_the_version_record_the_level_and_what_the_library_exports(vsps):
    info = vsps.json("info")
    library = info["library"]
    assert (library["major"], library["minor"], library["major_build"], library["build"]) == (6, 1, 137, 818)
    assert library["target_cpu"] == "y8"
    assert library["version"] == "6.1 build 137.56"
    assert library["build_date"] == "Mar 17 2010"
    assert info["level"] in ("y8", "v3", "v4")
    assert library["name"].endswith("+") == (info["level"] != "y8")

    symbols = subprocess.run(
        ["nm", "-D", "--defined-only", os.environ["VSPSC_LIBRARY"]], capture_output=True, text=True, check=True
    ).stdout.split("\n")
    exported = [line for line in symbols if " T " in line]
    assert info["exported_functions"] == len(exported) == sum(info["families"].values())
    assert info["families"]["ALC"] == len([line for line in exported if "G169" in line])


def test_text_says_the_same(vsps):
    text, info = vsps.ok("info").stdout, json.loads(vsps.ok("info", "--json").stdout)
    for value in (info["library"]["name"], info["library"]["version"], f"{info['level']} (x86-64"):
        assert value in text
    for family, count in info["families"].items():
        assert [family, str(count)] in [line.split()[:2] for line in text.split("\n")]


def test_tells_families_that_only_answer_sizes_from_built_ones(vsps):
    info = vsps.json("info")
    unbuilt = info["families_of_sizes_only"]
    marked = [line.split()[0] for line in vsps.ok("info").stdout.split("\n") if line.endswith("sizes of its states only")]
    assert marked == unbuilt
    assert "RTA" in unbuilt and not {"EC", "G729", "GSMAMR", "Version"} & set(unbuilt)
    headers = pathlib.Path(__file__).parents[2] / "include/vspsc"
    for header in headers.glob("*.h"):  # says so, too
        assert ("so far the library only answers" in header.read_text()) == (header.stem.upper() in unbuilt), header


def test_help_and_version(vsps):
    assert "level" in vsps.ok("--help").stdout
    assert "6.1" in vsps.ok("--version").stdout
    assert "Examples:" in vsps.ok("level", "--help").stdout


def test_standard_output_that_cannot_be_written(vsps):
    with open("/dev/full", "w") as full:
        result = subprocess.run([os.environ["VSPS"], "info"], stdout=full, stderr=subprocess.PIPE, text=True)
    assert (result.returncode, result.stderr) == (1, "vsps: standard output: cannot be written\n")
