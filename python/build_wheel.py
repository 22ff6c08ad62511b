#!/usr/bin/python3
"""Packs the package with the libraries into a wheel for x86-64 Linux.

Usage: build_wheel.py PACKAGE_FOLDER VERSION LIBVSPSCY8 LIBVSPSVOICE WHEEL_FOLDER
"""

import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

SETUP = """
from setuptools import Distribution, setup
from wheel.bdist_wheel import bdist_wheel


class WithLibraries(Distribution):
    def has_ext_modules(self):
        return True


class PlatformWheel(bdist_wheel):
    def get_tag(self):
        return "py3", "none", "{tag}"


setup(name="vspsc", version="{version}", packages=["vspsc"], package_data={{"vspsc": ["py.typed", "*.so.*"]}},
      description="Telephone speech processing: codecs, echo cancellation, detectors", license="BSD-3-Clause",
      python_requires=">=3.10", install_requires=["cffi>=1.15", "numpy>=1.24"], cmdclass={{"bdist_wheel": PlatformWheel}}, distclass=WithLibraries)
"""


def platform_tag(libraries: list[str]) -> str:
    """By the newest symbols of the C library that the libraries want."""
    symbols = subprocess.run(["objdump", "-T", *libraries], text=True, capture_output=True, check=True).stdout
    newest = max(int(minor) for minor in re.findall(r"GLIBC_2\.(\d+)", symbols))
    return f"manylinux_2_{max(newest, 17)}_x86_64"


def main() -> None:
    package, version, *libraries, folder = sys.argv[1:]
    pathlib.Path(folder).mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory() as name:
        tree = pathlib.Path(name)
        shutil.copytree(package, tree / "vspsc", ignore=shutil.ignore_patterns("__pycache__"))
        for library in libraries:
            soname = pathlib.Path(library).resolve()
            shutil.copy(soname, tree / "vspsc" / soname.name)
            subprocess.run(["strip", "--strip-unneeded", tree / "vspsc" / soname.name], check=True)
        (tree / "setup.py").write_text(SETUP.format(version=version, tag=platform_tag(libraries)))
        subprocess.run([sys.executable, "-m", "pip", "-q", "wheel", "--no-build-isolation", "--no-deps", "--no-index",
                        "-w", pathlib.Path(folder).resolve(), "."], cwd=tree, check=True)  # fmt: skip
    print(*pathlib.Path(folder).glob("*.whl"))


if __name__ == "__main__":
    main()
