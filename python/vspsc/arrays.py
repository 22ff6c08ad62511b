"""What the generated functions check of an array before its address goes to the library."""

from typing import Any, Callable, NoReturn, Sequence

import numpy as np

from vspsc.library import NULL, ffi

_from_buffer = ffi.from_buffer
_ndarray = np.ndarray


def refuse(array: object, dtype: np.dtype[Any], need: int, writable: bool, name: str) -> NoReturn:
    """Says what is wrong with an argument."""
    if not isinstance(array, _ndarray):
        raise TypeError(f"{name} must be a numpy array of {dtype} or None, not {type(array).__name__}")
    if array.dtype != dtype:
        raise TypeError(f"{name} must be an array of {dtype}, not of {array.dtype}")
    if array.size < need:
        raise ValueError(f"{name} needs {need} elements and has {array.size}")
    if not array.flags.c_contiguous:
        raise ValueError(f"{name} is not contiguous")
    if not array.flags.aligned:
        raise ValueError(f"{name} is not aligned to its element type")
    if writable and not array.flags.writeable:
        raise ValueError(f"{name} is read-only")
    raise ValueError(f"{name} cannot be used")


class Elements:
    """Arrays of one element type.

    `read` and `write` give the address of an array of at least `need` elements, `read_after` and `write_after` that of
    the element behind `history` earlier ones; None is a null pointer. `rows` gives addresses of arrays.
    """

    def __init__(self, dtype: np.dtype[Any], ctype: str) -> None:
        self.dtype = dtype
        self._pointers = ffi.typeof(f"{ctype}*[]")
        pointer = ffi.typeof(f"{ctype}*")  # a call converts arrays that cffi knows the length of more slowly

        # Closures: a call through these is what a call of the library costs more than in C.
        def address(writable: bool) -> Callable[[Any, int, str], Any]:
            def of(array: Any, need: int, name: str) -> Any:
                try:
                    if type(array) is _ndarray and array.dtype is dtype and array.size >= need:
                        if array.base is None or array.flags.aligned:
                            return _from_buffer(pointer, array, writable)
                    elif array is None:
                        return NULL
                    elif isinstance(array, _ndarray):
                        array = np.asarray(array)
                        if array.dtype == dtype and array.size >= need and array.flags.aligned:
                            return _from_buffer(pointer, array, writable)
                except (ValueError, BufferError):
                    pass
                refuse(array, dtype, need, writable, name)

            return of

        self.read, self.write = address(False), address(True)

        def behind(of: Callable[[Any, int, str], Any]) -> Callable[[Any, int, int, str], Any]:
            def after(array: Any, need: int, history: int, name: str) -> Any:
                if history < 0:
                    return NULL if array is None else of(array, need, name)  # the library refuses what leads to this
                start = of(array, need + history, name)
                return start + history if start else start

            return after

        self.read_after, self.write_after = behind(self.read), behind(self.write)

    def rows(self, arrays: "np.ndarray[Any, Any] | Sequence[Any] | None", number: int, need: int, writable: bool,
             name: str) -> tuple[Any, Any]:  # fmt: skip
        """An array of pointers to `number` arrays, given as such or as the rows of one; and what keeps these in memory."""
        if arrays is None:
            return NULL, None
        if not isinstance(arrays, _ndarray):
            arrays = list(arrays)
        elif arrays.ndim < 2:
            raise ValueError(f"{name} must have two dimensions")
        if len(arrays) < number:
            raise ValueError(f"{name} needs {number} rows and has {len(arrays)}")
        of = self.write if writable else self.read
        kept = [of(row, need, name) for row in arrays]
        return ffi.new(self._pointers, kept), kept
