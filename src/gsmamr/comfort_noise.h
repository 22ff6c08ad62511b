// What both sides of discontinuous transmission share (3GPP TS 26.092).
#pragma once

#include "common/dtx.h"
#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

VSP_INLINE void resetLsp(Vsp16s* lsp) {
    static constexpr Vsp16s kStart[10] = {30000, 26000, 21000, 15000, 8000, 0, -8000, -15000, -21000, -26000};
    for (int i = 0; i < 10; i++) lsp[i] = kStart[i];
}

// log2 of the energy of a frame, Q10, less that of its length.
VSP_INLINE Vsp16s frameLogEnergy(const Vsp16s* src) {
    Vsp16s exponent, fraction;
    ownLog2(Cnvrt_64s32s(2 * energy(src, 160)), &exponent, &fraction);
    return Sub_16s(Add_16s(shl_16s(exponent, 10), Vsp16s(fraction >> 5)), 8521);
}

// Gives the predictor of the code gain the level of the noise, Q10.
VSP_INLINE void setPredictor(Vsp16s* pred, Vsp16s level) {
    constexpr Vsp16s kLeast = -14436;
    Vsp16s decibels = Sub_16s(level, 9000);
    decibels = decibels > 0 ? Vsp16s(0) : decibels < kLeast ? kLeast : decibels;
    for (int i = 0; i < 4; i++) {
        pred[i] = decibels;
        pred[4 + i] = Mul_16s(5443, decibels);
    }
}

}  // namespace vsp::VSP_LEVEL
