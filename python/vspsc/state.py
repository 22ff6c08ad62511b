"""Memory of the library's state objects."""

from typing import Any, ClassVar

from vspsc.library import NULL, ffi


class State:
    """A state object of the library, which owns its memory.

    It is empty until the library's initialiser has been called with it; every other function refuses it until then. Two
    threads must not pass one state at the same time. A state cannot be copied.
    """

    __slots__ = ("_memory", "pointer", "ready")
    bytes: ClassVar[int]  #: what the library wants

    def __init__(self) -> None:
        self._allocate(self.bytes)

    def _allocate(self, size: int) -> None:
        self._memory = ffi.new("char[]", size + 63)
        address = int(ffi.cast("uintptr_t", self._memory))
        self.pointer: Any = ffi.cast("void*", self._memory + -address % 64)
        self.ready = False

    def __reduce__(self) -> Any:
        raise TypeError(f"{type(self).__name__} cannot be copied")


def to_initialise(state: object, kind: type[State], name: str) -> Any:
    """The address of a state that an initialiser is to write."""
    if type(state) is kind:
        return state.pointer
    if state is None:
        return NULL
    raise TypeError(f"{name} must be a {kind.__name__} or None, not {type(state).__name__}")


def make_room(state: object, kind: type[State], get_size: Any, *arguments: int) -> None:
    """Memory for what a state is to be initialised with; where the arguments are bad the initialiser will say so."""
    size = ffi.new("Vsp32s*")
    if type(state) is kind and get_size(*arguments, size) == 0:
        state._allocate(size[0])


def initialised_with(state: object, kind: type[State], name: str) -> None:
    """Of a state by whose initialisation the lengths of arrays go: refuses any other."""
    if type(state) is not kind or not state.ready:
        raise TypeError(f"{name} must be an initialised {kind.__name__}")


def initialised(state: object, kind: type[State], name: str) -> Any:
    """The address of a state that has been initialised."""
    if type(state) is kind and state.ready:
        return state.pointer
    if type(state) is kind:
        raise ValueError(f"{name} has not been initialised")
    return to_initialise(state, kind, name)
