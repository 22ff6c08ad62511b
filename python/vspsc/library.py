"""The two shared libraries: beside this file in a wheel, else those of the system."""

import os
import platform
import sys
from typing import Any

_NAMES = ("libvspscy8.so.6.1", "libvspsvoice.so.1")


def _folder() -> str:
    """Where the libraries are: VSPSC_LIBRARY_PATH, this package, or "" for where the system looks."""
    for folder in (os.environ.get("VSPSC_LIBRARY_PATH", ""), os.path.dirname(os.path.abspath(__file__))):
        if folder and all(os.path.exists(os.path.join(folder, name)) for name in _NAMES):
            return folder
    return ""


def _open() -> tuple[Any, Any, Any]:
    if not sys.platform.startswith("linux") or platform.machine() != "x86_64" or sys.maxsize < 2**32:
        raise ImportError(f"vspsc is for x86-64 Linux, not for {platform.machine()} {sys.platform}")
    from vspsc._cffi import ffi as declared  # generated

    folder = _folder()
    try:
        first, second = (declared.dlopen(os.path.join(folder, name)) for name in _NAMES)
    except OSError as error:
        raise ImportError(f"vspsc needs {' and '.join(_NAMES)}: {error}") from error
    return declared, first, second


#: cffi's view of the headers, libvspscy8 and libvspsvoice.
ffi, lib, voice = _open()
NULL: Any = ffi.NULL
