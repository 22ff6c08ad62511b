// What the quantiser and the decoder of the LSFs share (3GPP TS 26.090, 5.2.5).
#pragma once

#include "arithmetic/standard_ops.h"
#include "core/level.h"
#include "gsmamr/lsf_tables.h"
#include "gsmamr/mode_checks.h"

namespace vsp::VSP_LEVEL {

constexpr int kLsfOrder = 10;

// The three codebooks of a bit rate, from whose second every `step2`-th entry is used. Silence descriptors have those
// of 7.4.
struct ThreeCodebooks {
    const Vsp16s *first, *second, *third;  // by element
    int size1, stride2, step2, size3;
};

VSP_INLINE ThreeCodebooks threeCodebooks(Vsp32s mode) {
    const bool low = mode == kMode475 || mode == kMode515, large = mode == kMode795;
    return {large ? svq3_cb1_795[0] : svq3_cb1[0],
            svq3_cb2[0],
            low ? svq3_cb3_475_515[0] : svq3_cb3[0],
            large ? 512 : 256,
            512,
            low ? 2 : 1,
            low ? 128 : 512};
}

// The prediction of the residual from that of the frame before.
VSP_INLINE void predictLsf(Vsp32s mode, const Vsp16s* prevRes, Vsp16s* predicted) {
    constexpr Vsp16s kFactor122 = 21299;
    for (int i = 0; i < kLsfOrder; i++)
        predicted[i] = mode == kMode122 ? Add_16s(svq5_mean[i], Mul_16s(prevRes[i], kFactor122))
                                        : Add_16s(svq3_mean[i], Mul_16s(prevRes[i], svq3_pred[i]));
}

// That of a silence descriptor, which knows no frame before.
VSP_INLINE void predictLsfOfSid(int start, Vsp16s* predicted) {
    for (int i = 0; i < kLsfOrder; i++) predicted[i] = Add_16s(svq3_mean[i], svq3_init[start][i]);
}

// Keeps the LSFs at a distance (`Reorder_lsf`).
VSP_INLINE void reorderLsf(Vsp16s* lsf) {
    constexpr Vsp16s kGap = 205;
    Vsp16s least = kGap;
    for (int i = 0; i < kLsfOrder; i++) {
        if (lsf[i] < least) lsf[i] = least;
        least = Add_16s(lsf[i], kGap);
    }
}

// The residuals of indices: of one vector, of both at 12.2 kbit/s.
void ownLsfResidual(const Vsp16s* index, Vsp32s mode, Vsp16s* residual);

}  // namespace vsp::VSP_LEVEL
