// The states of the tone detectors, at the first multiple of 16 bytes of the caller's memory.
#pragma once

#include "vspsc/types.h"

namespace vsp {

// All in samples but the last. The run and the reversals stay at the largest value that they can have.
struct ToneCounts {
    Vsp32s run, minRun, maxRun;
    Vsp32s dip, maxDip;
    Vsp32s reversals;
};

struct ToneDetectState_32f {
    const Vsp32f* coeffs;
    Vsp32f powerOut, powerIn;
    Vsp32f x1, x2, y1, y2;
    Vsp32f alpha;
    ToneCounts counts;
};
static_assert(sizeof(ToneDetectState_32f) == 64);

struct ToneDetectState_16s {
    const Vsp16s* coeffs;  // Q12
    Vsp32s powerOut, powerIn;
    Vsp16s x1, x2, y1, y2;
    ToneCounts counts;
    Vsp16s alpha;  // Q14
};
static_assert(sizeof(ToneDetectState_16s) == 56);

}  // namespace vsp
