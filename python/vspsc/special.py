"""Functions whose arrays are as long as the state was initialised for: the filter bank and G.728's hybrid windows."""

from operator import index
from typing import Any, NamedTuple

import numpy as np
import numpy.typing as npt

from vspsc.functions import _Vsp8u, _Vsp16s, _Vsp32f, _Vsp32fc, _Vsp32s, _Vsp32sc
from vspsc.library import NULL, ffi, lib
from vspsc.state import State
from vspsc.status import outcome

A = npt.NDArray[Any] | None


class LibraryVersion(NamedTuple):
    """The library's record of itself."""

    major: int
    minor: int
    majorBuild: int
    build: int
    targetCpu: str
    Name: str  #: ends in "+" on a level above the baseline
    Version: str
    BuildDate: str


def vspscGetLibVersion() -> LibraryVersion:
    """Tells which library this is.

    >>> vspscGetLibVersion().Name.rstrip("+")
    'libvspscy8.so.6.1'
    """
    v = lib.vspscGetLibVersion()
    text = [ffi.string(s).decode() for s in (v.targetCpu, v.Name, v.Version, v.BuildDate)]
    return LibraryVersion(v.major, v.minor, v.majorBuild, v.build, *text)


class _FilterBank(State):
    """A filter bank: `order`, `frameSize` and `windowLen` as it was initialised, `bufferSize` bytes of scratch."""

    __slots__ = ("order", "frameSize", "windowLen", "bufferSize")
    bytes = 0
    order: int
    frameSize: int
    windowLen: int
    bufferSize: int


class SubbandProcessState_32f(_FilterBank):
    """State of vspsSubbandAnalysis_32f32fc and vspsSubbandSynthesis_32fc32f."""

    __slots__ = ()


class SubbandProcessState_16s(_FilterBank):
    """State of vspsSubbandAnalysis_16s32sc_Sfs and vspsSubbandSynthesis_32sc16s_Sfs."""

    __slots__ = ()


def _done(status: int, name: str) -> int:
    if status:
        outcome(status, name)
    return status


def _sizes(kind: str, order: int, windowLen: int, pStateSize: A, pInitBufSize: A, pBufSize: A) -> int:
    name = f"vspsSubbandProcessGetSize_{kind}"
    write = _Vsp32s.write
    return _done(getattr(lib, name)(order, windowLen, write(pStateSize, 1, "pStateSize"), write(pInitBufSize, 1, "pInitBufSize"),
                                    write(pBufSize, 1, "pBufSize")), name)  # fmt: skip


def _initialise(kind: str, state: _FilterBank | None, order: int, frameSize: int, windowLen: int, pWindow: A, pInitBuf: A) -> int:
    """Allocates what these settings need; the state is as it was if the library refuses them."""
    expected: type[_FilterBank] = SubbandProcessState_32f if kind == "32f" else SubbandProcessState_16s
    name = f"vspsSubbandProcessInit_{kind}"
    if state is not None and type(state) is not expected:
        raise TypeError(f"pState must be a {expected.__name__} or None, not {type(state).__name__}")
    order, frameSize, windowLen = index(order), index(frameSize), index(windowLen)
    sizes = np.zeros(3, np.int32)
    _sizes(kind, order, windowLen, sizes[:1], sizes[1:2], sizes[2:])
    fresh = expected()
    fresh._allocate(int(sizes[0]))
    window = (_Vsp32f if kind == "32f" else _Vsp16s).read(pWindow, windowLen, "pWindow")
    buffer = _Vsp8u.write(pInitBuf, int(sizes[1]), "pInitBuf")
    status = _done(getattr(lib, name)(NULL if state is None else fresh.pointer, order, frameSize, windowLen, window, buffer), name)
    assert state is not None  # which the library has refused
    state._memory, state.pointer, state.ready = fresh._memory, fresh.pointer, True
    state.order, state.frameSize, state.windowLen, state.bufferSize = order, frameSize, windowLen, int(sizes[2])
    return status


def _run(name: str, kind: type[_FilterBank], analyse: bool, source: A, destination: A, state: Any, buffer: A, *scale: int) -> int:
    if type(state) is not kind or not state.ready:
        raise TypeError(f"pState must be an initialised {kind.__name__}")
    frame, bands = state.frameSize, 2**state.order // 2 + 1
    signal, spectrum = (_Vsp32f, _Vsp32fc) if kind is SubbandProcessState_32f else (_Vsp16s, _Vsp32sc)
    if analyse:
        arrays = signal.read(source, frame, "pSrc"), spectrum.write(destination, bands, "pDst")
    else:
        arrays = spectrum.read(source, bands, "pSrc"), signal.write(destination, frame, "pDst")
    scratch = _Vsp8u.write(buffer, state.bufferSize, "pBuf")
    return _done(getattr(lib, name)(*arrays, state.pointer, *scale, scratch), name)


def vspsSubbandProcessGetSize_32f(order: int, windowLen: int, pStateSize: A, pInitBufSize: A, pBufSize: A) -> int:
    """Sizes for the floating-point filter bank, in bytes: int32[1] each. States of this package allocate themselves."""
    return _sizes("32f", order, windowLen, pStateSize, pInitBufSize, pBufSize)


def vspsSubbandProcessGetSize_16s(order: int, windowLen: int, pStateSize: A, pInitBufSize: A, pBufSize: A) -> int:
    """Sizes for the fixed-point filter bank, in bytes: int32[1] each. States of this package allocate themselves."""
    return _sizes("16s", order, windowLen, pStateSize, pInitBufSize, pBufSize)


def vspsSubbandProcessInit_32f(pState: SubbandProcessState_32f | None, order: int, frameSize: int, windowLen: int, pWindow: A,
                               pInitBuf: A) -> int:  # fmt: skip
    """Formats a floating-point filter bank; pWindow: float32[windowLen] or None for a built-in one, pInitBuf: uint8."""
    return _initialise("32f", pState, order, frameSize, windowLen, pWindow, pInitBuf)


def vspsSubbandProcessInit_16s(pState: SubbandProcessState_16s | None, order: int, frameSize: int, windowLen: int, pWindow: A,
                               pInitBuf: A) -> int:  # fmt: skip
    """Formats a fixed-point filter bank; pWindow: int16[windowLen], Q13, or None for a built-in one, pInitBuf: uint8."""
    return _initialise("16s", pState, order, frameSize, windowLen, pWindow, pInitBuf)


def vspsSubbandAnalysis_32f32fc(pSrc: A, pDst: A, pState: SubbandProcessState_32f, pBuf: A) -> int:
    """Splits float32[frameSize] into complex64[N/2 + 1] sub-bands, N = 2^order; pBuf: uint8[pState.bufferSize]."""
    return _run("vspsSubbandAnalysis_32f32fc", SubbandProcessState_32f, True, pSrc, pDst, pState, pBuf)


def vspsSubbandAnalysis_16s32sc_Sfs(pSrc: A, pDst: A, pState: SubbandProcessState_16s, scaleFactor: int, pBuf: A) -> int:
    """Splits int16[frameSize] into Vsp32sc[N/2 + 1] sub-bands, N = 2^order; pBuf: uint8[pState.bufferSize]."""
    return _run("vspsSubbandAnalysis_16s32sc_Sfs", SubbandProcessState_16s, True, pSrc, pDst, pState, pBuf, scaleFactor)


def vspsSubbandSynthesis_32fc32f(pSrc: A, pDst: A, pState: SubbandProcessState_32f, pBuf: A) -> int:
    """Joins complex64[N/2 + 1] sub-bands into float32[frameSize]; pBuf: uint8[pState.bufferSize]."""
    return _run("vspsSubbandSynthesis_32fc32f", SubbandProcessState_32f, False, pSrc, pDst, pState, pBuf)


def vspsSubbandSynthesis_32sc16s_Sfs(pSrc: A, pDst: A, pState: SubbandProcessState_16s, scaleFactor: int, pBuf: A) -> int:
    """Joins Vsp32sc[N/2 + 1] sub-bands into int16[frameSize]; pBuf: uint8[pState.bufferSize]."""
    return _run("vspsSubbandSynthesis_32sc16s_Sfs", SubbandProcessState_16s, False, pSrc, pDst, pState, pBuf, scaleFactor)


class WinHybridState_G728_16s(State):
    """State of a hybrid window of G.728, of `order` 50 or 10, with `block` new samples a call."""

    __slots__ = ("order", "block")
    bytes = 384
    order: int
    block: int


def vspsWinHybridInit_G728_16s(order: int, nonRec: int, block: int, pState: WinHybridState_G728_16s | None) -> int:
    """Resets a hybrid window: order, nonRec and block are 50, 35, 20 or 10, 30, 20 or 10, 20, 4."""
    order, block = index(order), index(block)
    if pState is not None and type(pState) is not WinHybridState_G728_16s:
        raise TypeError("pState must be a WinHybridState_G728_16s or None")
    pointer = NULL if pState is None else pState.pointer
    status = _done(lib.vspsWinHybridInit_G728_16s(order, nonRec, block, pointer), "vspsWinHybridInit_G728_16s")
    if pState is not None:
        pState.order, pState.block, pState.ready = order, block, True
    return status


def _window(state: Any, order: int) -> Any:
    if type(state) is not WinHybridState_G728_16s or not state.ready or state.order != order:
        raise TypeError(f"pState must be an initialised WinHybridState_G728_16s of order {order}")
    return state.pointer


def vspsWinHybrid_G728_16s(pSrc: A, pDst: A, pState: WinHybridState_G728_16s) -> int:
    """Autocorrelation behind the windows of order 10: int16[pState.block] to int16[11]."""
    pointer = _window(pState, 10)
    source, destination = _Vsp16s.read(pSrc, pState.block, "pSrc"), _Vsp16s.write(pDst, 11, "pDst")
    return _done(lib.vspsWinHybrid_G728_16s(source, destination, pointer), "vspsWinHybrid_G728_16s")


def vspsWinHybridBlock_G728_16s(pSrc: A, pScale: A, pDst: A, pState: WinHybridState_G728_16s) -> int:
    """Autocorrelation behind the window of order 50: int16[20] and int16[4] scales to int16[51]."""
    pointer = _window(pState, 50)
    sources = _Vsp16s.read(pSrc, 20, "pSrc"), _Vsp16s.read(pScale, 4, "pScale")
    return _done(lib.vspsWinHybridBlock_G728_16s(*sources, _Vsp16s.write(pDst, 51, "pDst"), pointer), "vspsWinHybridBlock_G728_16s")


__all__ = [name for name in globals() if name.startswith("vsps") or name.endswith(("State_32f", "State_16s", "State_G728_16s"))]
