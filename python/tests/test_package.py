"""The package as a whole: types, doctests, the wheel."""

import doctest
import importlib
import os
import pathlib
import subprocess
import sys
import zipfile

import pytest
import vspsc

BUILD = pathlib.Path(os.environ["VSPSC_BUILD"])
PYTHON = pathlib.Path(__file__).parents[1]
WITHOUT_BUILD = {k: v for k, v in os.environ.items() if k not in ("PYTHONPATH", "VSPSC_LIBRARY_PATH")}


@pytest.mark.parametrize("name", ["vspsc", "vspsc.codec", "vspsc.special", "vspsc.voice"])
def test_examples_in_docstrings(name):
    failed, tried = doctest.testmod(importlib.import_module(name))
    assert tried > 0 and failed == 0


def test_types(tmp_path):
    (tmp_path / "use.py").write_text(
        "import numpy as np\nimport vspsc\nx = np.zeros(8, np.int16)\nvspsc.vspsMulC_NR_16s_ISfs(1, x, 8, 0)\n"
        'vspsc.Codec("g722").encoder().process(x)\nvspsc.vspsMulC_NR_16s_ISfs("1", x, 8, 0)\n'
    )
    command = ["mypy", "--config-file", PYTHON / "pyproject.toml", "--cache-dir", BUILD / "python/mypy"]
    environment = {**os.environ, "MYPYPATH": str(BUILD / "python")}
    result = subprocess.run([*command, tmp_path / "use.py"], env=environment, capture_output=True, text=True, check=False)
    assert "use.py:6: error: Argument 1" in result.stdout and "Found 1 error" in result.stdout, result.stdout  # none in the package


def test_another_platform_is_refused_with_a_clear_line():
    program = "import platform; platform.machine = lambda: 'aarch64'; import vspsc"
    result = subprocess.run([sys.executable, "-c", program], capture_output=True, text=True, check=False)
    assert result.returncode == 1
    assert result.stderr.splitlines()[-1] == "ImportError: vspsc is for x86-64 Linux, not for aarch64 linux"


def test_missing_libraries_are_named(tmp_path):
    (tmp_path / "vspsc").symlink_to(pathlib.Path(vspsc.__file__).parent)
    result = subprocess.run([sys.executable, "-c", "import vspsc"], env={**WITHOUT_BUILD, "PYTHONPATH": str(tmp_path)},
                            capture_output=True, text=True, check=False)  # fmt: skip
    if result.returncode != 0:  # they may be installed
        assert "ImportError: vspsc needs libvspscy8.so.6.1 and libvspsvoice.so.1" in result.stderr


def test_wheel(tmp_path):
    subprocess.run([os.environ["CMAKE"], "--build", BUILD, "--target", "wheel"], capture_output=True, check=True)
    (wheel,) = (BUILD / "python/dist").glob("vspsc-*-py3-none-manylinux_2_*_x86_64.whl")
    names = zipfile.ZipFile(wheel).namelist()
    assert {"vspsc/libvspscy8.so.6.1", "vspsc/libvspsvoice.so.1", "vspsc/functions.py", "vspsc/py.typed"} <= set(names)
    subprocess.run([sys.executable, "-m", "venv", "--system-site-packages", "--without-pip", tmp_path / "env"], check=True)
    python = tmp_path / "env/bin/python"

    def pip(*arguments):
        return subprocess.run([sys.executable, "-m", "pip", "--python", python, *arguments], env=WITHOUT_BUILD,
                              capture_output=True, text=True, check=False)  # fmt: skip

    installed = pip("install", "--no-index", "--no-deps", wheel)
    assert installed.returncode == 0, installed.stderr
    program = "import vspsc; print(vspsc.vspscGetLibVersion().Name, vspsc.library._folder(), len(vspsc.codecs()))"
    result = subprocess.run([python, "-c", program], env=WITHOUT_BUILD, cwd=tmp_path, capture_output=True, text=True, check=True)
    assert result.stdout.startswith("libvspscy8.so.6.1") and str(tmp_path / "env") in result.stdout
    foreign = wheel.rename(wheel.with_name(wheel.name.replace("x86_64", "aarch64")))
    try:
        refused = pip("install", "--no-index", "--no-deps", foreign)
        assert refused.returncode != 0 and "not a supported wheel on this platform" in refused.stderr
    finally:
        foreign.rename(wheel)
    assert pip("uninstall", "-y", "vspsc").returncode == 0
    assert not list((tmp_path / "env").rglob("*vsps*"))
