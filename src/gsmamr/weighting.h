// The perceptual weighting filter A(z/gamma1) / A(z/gamma2) of a subframe (3GPP TS 26.090 5.3).
#pragma once

#include "arithmetic/basic_ops.h"
#include "core/level.h"
#include "gsmamr/lp_tables.h"
#include "gsmamr/modes.h"

namespace vsp::VSP_LEVEL {

struct WeightingFilters {
    Vsp16s numerator[11], denominator[11];

    [[gnu::always_inline]] WeightingFilters(const Vsp16s* lpc, Vsp32s mode) {
        const Vsp16s* const gamma = mode == kMode102 || mode == kMode122 ? gamma1_12k2 : gamma1;
        numerator[0] = denominator[0] = lpc[0];
        for (int i = 1; i <= 10; i++) {
            numerator[i] = mulRound_16s(lpc[i], gamma[i - 1]);
            denominator[i] = mulRound_16s(lpc[i], gamma2[i - 1]);
        }
    }
};

}  // namespace vsp::VSP_LEVEL
