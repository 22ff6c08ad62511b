// What the searches of the algebraic codebooks have in common (3GPP TS 26.090, 5.7).
#pragma once

#include "arithmetic/standard_ops.h"
#include "common/algebraic_search.h"
#include "common/inv_sqrt.h"

namespace vsp::VSP_LEVEL {

constexpr int kMaxPulses = 10;
constexpr Best kNoCandidate{-1, 1};

// What a search finds: the positions of the pulses, and whether each is negative.
struct FoundPulses {
    int position[kMaxPulses];
    bool negative[kMaxPulses];
};

// The impulse response with nearly the energy 1 (`cor_h`).
struct ScaledResponse {
    Vsp16s h[kL_subfr];

    explicit ScaledResponse(const Vsp16s* impulse) {
        const Vsp32s total = Cnvrt_64s32s(2 * energy(impulse, kL_subfr) + 2);
        if (total >> 16 == kMax16) {
            for (int i = 0; i < kL_subfr; i++) h[i] = Vsp16s(impulse[i] >> 1);
            return;
        }
        const Vsp16s factor = Mul_16s(high_32s(shl_32s(ownInvSqrt(total >> 1), 7)), 32440);
        for (int i = 0; i < kL_subfr; i++) h[i] = round_32s(shl_32s(Mul2_16s32s(impulse[i], factor), 9));
    }
};

// mult(a, s) with s the product of two signs of +-32767; which has all bits set where they differ.
VSP_INLINE S16_128 withSigns(S16_128 a, S16_128 which) {
    return mulShift15(a, select(which, S16_128::splat(-32767), S16_128::splat(32766)));
}

// The searches. d is the target filtered backwards, h the impulse response with pitch sharpening.
int ownSearchTwoOfPairs(const Vsp16s* d, const Vsp16s* h, int subframe, FoundPulses& found);  // returns the half found
void ownSearchTwo(const Vsp16s* d, const Vsp16s* h, FoundPulses& found);
void ownSearchThree(const Vsp16s* d, const Vsp16s* h, FoundPulses& found);
void ownSearchFour(const Vsp16s* d, const Vsp16s* h, FoundPulses& found);
void ownSearchEight(const Vsp16s* d, const Vsp16s* residual, const Vsp16s* h, FoundPulses& found);
void ownSearchTen(const Vsp16s* d, const Vsp16s* residual, const Vsp16s* h, FoundPulses& found);

}  // namespace vsp::VSP_LEVEL
