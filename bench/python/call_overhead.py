#!/usr/bin/python3
"""What calls from Python cost above C.

Of the functions of libvspscy8: a call on the shortest arrays, where the work itself takes nanoseconds. Of the echo
canceller: blocks of 10 ms, with a new array for the result or with the same three arrays in every call, against the same
signal in one call, which is C alone but for one call; and as the least that Python can do, the same calls without any check: three
addresses, a new array and cffi's call, or cffi's call alone. Of codecs: frame by frame, and a second of speech in one call.

    PYTHONPATH=build/dev/python VSPSC_LIBRARY_PATH=build/dev/lib bench/python/call_overhead.py
"""

import time

import numpy as np
import vspsc
from vspsc.library import ffi, voice


def best(work, calls, repetitions=200):
    """Least time of a call, microseconds: other programs take time away and never give any."""
    times = []
    for _ in range(repetitions):
        start = time.perf_counter_ns()
        for _ in range(calls):
            work()
        times.append((time.perf_counter_ns() - start) / calls)
    return min(times) / 1000


def arrays(*sizes, dtype=np.int16):
    return [np.zeros(n, dtype) for n in sizes]


x, y, z = arrays(8, 8, 8)
a, b = arrays(1, 1, dtype=np.int32)
history = arrays(11)[0]
quantities = arrays(40, 40, 40, 40, 40, 40, 40)
state = vspsc.ALCState_G169_16s()
vspsc.vspsALCInit_G169_16s(state)
functions = {
    "1 array, 3 numbers": lambda: vspsc.vspsMulC_NR_16s_ISfs(3, x, 1, 15),
    "3 arrays, 2 numbers": lambda: vspsc.vspsMul_NR_16s_Sfs(x, y, z, 1, 15),
    "2 arrays, a state": lambda: vspsc.vspsALC_G169_16s(x, y, 8, state),
    "history, 2 arrays, 3 numbers": lambda: vspsc.vspsAutoCorrLagMax_Inv_16s(history, 1, 1, 2, a, b),
    "5 arrays": lambda: vspsc.vspsDotProdAutoScale_16s32s_Sfs(x, y, 1, a, b),
}
print("call of a function            us")
for name, work in functions.items():
    print(f"{name:<29} {best(work, 500):.2f}")

BLOCKS = 28  # whole blocks of the canceller in sub-bands, 14 ms
SHORTS = ffi.typeof("Vsp16s*")


def by_turns(*works, rounds=60):
    """Least time of each, microseconds; by turns, so that all see the same machine."""
    least = [1e9] * len(works)
    for _ in range(rounds):
        least = [min(t, best(work, 1, 3)) for t, work in zip(least, works)]
    return least


print("\ncanceller, blocks of 10 ms            us in C    new array       same arrays     unchecked: new  same")
rng = np.random.default_rng(1)
for rate, tail, engine, arithmetic, kind in [
    (8000, 128, "subband", "float", np.int16), (16000, 128, "subband", "float", np.int16), (16000, 256, "subband", "float", np.int16),
    (16000, 256, "subband", "fixed", np.int16), (8000, 128, "subband", "float", np.float32), (8000, 32, "fullband", "float", np.int16),
    (8000, 128, "fullband", "float", np.int16), (16000, 128, "fullband", "float", np.int16),
]:  # fmt: skip
    n = rate // 100
    far = (2000 * rng.normal(size=n)).astype(kind)
    near = (far / 2 + 20 * rng.normal(size=n)).astype(kind)
    new, same, in_c, unchecked_new, unchecked_same = (vspsc.EchoCanceller(rate, tail, engine=engine, arithmetic=arithmetic) for _ in range(5))
    out, all_far, all_near = np.empty_like(far), np.tile(far, BLOCKS), np.tile(near, BLOCKS)
    process = voice.vspvEchoCancellerProcess_16s if kind == np.int16 else voice.vspvEchoCancellerProcess_32f
    pointer, address, empty = ffi.typeof("Vsp16s*" if kind == np.int16 else "Vsp32f*"), ffi.from_buffer, np.empty
    pointers = [address(pointer, a) for a in (all_far, all_near, np.empty_like(all_far))]

    def with_new():
        for _ in range(BLOCKS):
            new.process(far, near)

    def with_same():
        for _ in range(BLOCKS):
            same.process(far, near, out)

    def without_checks_new():
        canceller = unchecked_new._pointer
        for _ in range(BLOCKS):
            result = empty(n, kind)
            process(canceller, address(pointer, far), address(pointer, near), address(pointer, result), n)

    def without_checks_same():
        canceller, (one, two, three) = unchecked_same._pointer, (address(pointer, a) for a in (far, near, out))
        for _ in range(BLOCKS):
            process(canceller, one, two, three, n)

    times = by_turns(lambda: process(in_c._pointer, *pointers, n * BLOCKS), with_new, with_same, without_checks_new, without_checks_same)
    c, *more = (t / BLOCKS for t in times)
    name = f"{rate:>6} Hz {tail:>4} ms {engine} {arithmetic} {np.dtype(kind).name}"
    print(f"{name:<43}{c:7.2f}" + "".join(f"   {t - c:+6.2f} {100 * (t / c - 1):4.1f} %" for t in more))

print("\ncodec, a frame                    us in C  frame by frame     in one call")
for name in ["pcmu", "g722", "g729a", "amr", "g723"]:
    codec = vspsc.Codec(name)
    n = codec.frame_samples
    signal = (3000 * rng.normal(size=codec.sampling_rate // n * n)).astype(np.int16)
    encoder, decoder = codec.encoder(), codec.decoder()
    frames = encoder.process(signal)
    samples, room, told = ffi.from_buffer(SHORTS, signal), ffi.new("Vsp8u[]", codec.max_frame_bytes), ffi.new("VspvFrame*")
    heard = np.empty(n, np.int16)
    octets = [(ffi.from_buffer("Vsp8u*", f.data), ffi.new("VspvFrame*", (f.type, f.quality, f.bit_rate, len(f.data)))) for f in frames]
    blocks = np.split(signal, len(frames))
    for what, works in {
        "encode": (lambda: [voice.vspvEncode(encoder._object.pointer, samples + i * n, room, told) for i in range(len(frames))],
                   lambda: [encoder.process(b) for b in blocks], lambda: encoder.process(signal)),
        "decode": (lambda: [voice.vspvDecode(decoder._object.pointer, o, t, ffi.from_buffer(SHORTS, heard)) for o, t in octets],
                   lambda: [decoder.process(f) for f in frames], lambda: decoder.process(frames)),
    }.items():  # fmt: skip
        c, *more = (t / len(frames) for t in by_turns(*works, rounds=15))
        print(f"{what} {name:<25}{c:9.2f}" + "".join(f"   {t - c:+6.2f} {100 * (t / c - 1):4.1f} %" for t in more))
