#!/usr/bin/python3
"""What calls from Python cost above C.

Of the functions of libvspscy8: a call on the shortest arrays, where the work itself takes nanoseconds. Of the echo
canceller: blocks of 10 ms against the same signal in one call, which is C alone but for one call.

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

print("\ncanceller, blocks of 10 ms       us in C  us in Python   more")
rng = np.random.default_rng(1)
for rate, engine, kind in [(8000, "subband", np.int16), (16000, "subband", np.int16), (8000, "fullband", np.int16),
                           (16000, "fullband", np.int16), (8000, "subband", np.float32)]:  # fmt: skip
    n = rate // 100
    far = (2000 * rng.normal(size=n * 60)).astype(kind)
    near = (far / 2 + 20 * rng.normal(size=far.size)).astype(kind)
    blocks = [(far[i : i + n].copy(), near[i : i + n].copy()) for i in range(0, far.size, n)]
    python, c = vspsc.EchoCanceller(rate, engine=engine), vspsc.EchoCanceller(rate, engine=engine)
    kind_of_c = "Vsp16s" if kind == np.int16 else "Vsp32f"
    process = voice.vspvEchoCancellerProcess_16s if kind == np.int16 else voice.vspvEchoCancellerProcess_32f
    one, two, out = (ffi.from_buffer(f"{kind_of_c}[]", v) for v in (far, near, np.empty_like(far)))

    def in_python():
        for f, s in blocks:
            python.process(f, s)

    def in_c():
        process(c._pointer, one, two, out, far.size)

    slow, fast = [], []
    for _ in range(60):  # by turns, so that both see the same machine
        slow.append(best(in_python, 1, 3) / len(blocks))
        fast.append(best(in_c, 1, 3) / len(blocks))
    print(f"{rate:>6} Hz {engine:<9} {np.dtype(kind).name:<8} {min(fast):10.2f} {min(slow):13.2f} {100 * (min(slow) / min(fast) - 1):5.1f} %")
