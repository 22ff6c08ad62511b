// States of the filter bank, behind the first aligned address of the caller's memory. The prototype window, the delay (or
// overlap) line and the specification of the transform follow them.
#pragma once

#include "vector/real_fft.h"

namespace vsp::VSP_LEVEL {

struct SubbandState_32f {
    Vsp32s windowLen, fftLen, frameSize;
    Vsp32f* line;
    Vsp32f* window;
    const RealFftSpec_32f* fft;
};
static_assert(sizeof(SubbandState_32f) == 40);

struct SubbandState_16s {
    Vsp16s* line;
    Vsp16s* window;  // Q13
    const RealFftSpec_16s* fft;
    Vsp32s windowLen, fftLen, frameSize;
};
constexpr int kHeader_16s = 48;
static_assert(sizeof(SubbandState_16s) <= kHeader_16s);

}  // namespace vsp::VSP_LEVEL
