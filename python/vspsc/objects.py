"""Objects of the voice layer: memory, samples, statuses."""

from collections import deque
from typing import Any

import numpy as np
import numpy.typing as npt

from vspsc import records
from vspsc.library import ffi
from vspsc.library import voice as _voice
from vspsc.status import outcome

Samples = npt.NDArray[np.int16]
Records = npt.NDArray[np.void]

INT16, FLOAT32 = np.dtype(np.int16), np.dtype(np.float32)
# A call converts pointers faster than arrays that cffi knows the length of.
SHORTS, FLOATS, OCTETS = ffi.typeof("Vsp16s*"), ffi.typeof("Vsp32f*"), ffi.typeof("Vsp8u*")


def done(status: int, function: str) -> None:
    if status:
        outcome(status, function)


def result_of(function: str, *arguments: Any) -> int:
    """The number that a function of the library writes behind its last pointer."""
    size = ffi.new("Vsp32s*")
    done(getattr(_voice, function)(*arguments, size), function)
    return int(size[0])


def samples_of(samples: object, *kinds: np.dtype[Any]) -> npt.NDArray[Any]:
    """Contiguous samples of int16 or one of these types; a copy only where they are not."""
    if isinstance(samples, np.ndarray) and samples.ndim == 1:
        kind = samples.dtype
        if kind is INT16 or kind == INT16 or kind in kinds:
            if type(samples) is np.ndarray and samples.flags.c_contiguous and samples.flags.aligned:
                return samples
            return np.require(samples, kind, ["C", "A"]).view(np.ndarray)
    what = f"{samples.ndim}-dimensional {samples.dtype}" if isinstance(samples, np.ndarray) else type(samples).__name__
    raise TypeError(f"samples must be a one-dimensional numpy array of {' or '.join(map(str, (INT16, *kinds)))}, not {what}")


def choice(what: str, choices: dict[str, int], given: str) -> int:
    if given not in choices:
        raise ValueError(f"{what} must be one of {', '.join(choices)}, not {given!r}")
    return choices[given]


def check_rate(rate: int, *possible: int) -> None:
    if rate not in possible:
        raise ValueError(f"the sampling rate must be {' or '.join(map(str, possible))} Hz, not {rate}")


class Object:
    """An object of the voice layer in memory of its own. Two threads cannot use it at the same time."""

    def __init__(self, kind: str, size: int) -> None:
        self._memory = ffi.new("char[]", size + 63)
        self.pointer = ffi.cast(f"{kind}*", self._memory + -int(ffi.cast("uintptr_t", self._memory)) % 64)
        self.idle = deque([self.pointer])  # empty while a thread uses the object; cheaper than a lock

    def __enter__(self) -> Any:
        try:
            return self.idle.pop()
        except IndexError:
            raise RuntimeError("another thread uses this object") from None

    def __exit__(self, *_: object) -> None:
        self.idle.append(self.pointer)

    def __reduce__(self) -> Any:
        raise TypeError(f"{type(self).__name__} cannot be copied")


def found(function: str, detector: Object, kind: str, most: int, *samples: Any) -> Records:
    """The records of this kind that a call of a detector finds."""
    result, count = np.zeros(most, getattr(records, kind)), ffi.new("Vsp32s*")
    if most:
        with detector as pointer:
            done(getattr(_voice, function)(pointer, *samples, ffi.from_buffer(kind + "[]", result), count), function)
    return result[: count[0]]
