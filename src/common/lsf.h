// Line spectral pairs (cosines) and frequencies by tables of the cosine at 64 steps (Lsp_lsf, Lsf_lsp).
#pragma once

#include "arithmetic/basic_ops.h"
#include "common/tables.h"
#include "core/level.h"
#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

// The last of the steps whose cosine is not below the LSP, but none after `limit`.
VSP_INLINE int cosineStep(Vsp16s lsp, int limit) {
    const Sliding16 below = Sliding16::splat(sat_16s(lsp - 1));
    int last = -1;
    for (int i = 0; i < kCosineSteps; i += 32) {
        Sliding16 cosines[32 / Sliding16::width];
        for (int k = 0; k < 32 / Sliding16::width; k++) cosines[k] = Sliding16::load(lsfCosine + i + Sliding16::width * k);
        last += countGreater(cosines, below);
    }
    return last < limit ? last : limit;
}

// Frequencies of half the sampling rate in Q15, 0 .. 16384; from the last one to the first, whose steps never rise.
template <int kOrder>
VSP_INLINE void lspToLsf(const Vsp16s* lsp, Vsp16s* lsf) {
    int step = kCosineSteps - 1;
    for (int i = kOrder - 1; i >= 0; i--) {
        step = cosineStep(lsp[i], step);
        const Vsp32s product = 2 * sat_16s(lsp[i] - lsfCosine[step]) * lsfAcosSlope[step];
        lsf[i] = sat_16s(round_32s(Cnvrt_64s32s(product * 8LL)) + step * 256);
    }
}

}  // namespace vsp::VSP_LEVEL
