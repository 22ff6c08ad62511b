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

// The signs of a track's places, for rows of correlations with them: mult(a, s) with s the product of two signs of
// +-32767. That is 32766 or -32767, so that a or -a changes by the high half of a product with -4 or 2.
class TrackSigns {
  public:
    // negative: -1 at places whose sign is negative, else 0.
    [[gnu::always_inline]] explicit TrackSigns(const Vsp16s* negative) {
        const S16_128 equal = S16_128::load(negative), one = S16_128::splat(1);
        const S16_128 differ{~equal.v};
        const S16_128 ofEqual = S16_128::splat(-4), ofDifferent = S16_128::splat(2);
        signs_[0].v = equal.v | one.v;
        signs_[1].v = differ.v | one.v;
        factors_[0] = select(equal, ofDifferent, ofEqual);
        factors_[1] = select(equal, ofEqual, ofDifferent);
    }
    // The row of a place whose own sign is given likewise.
    [[gnu::always_inline]] S16_128 applied(S16_128 row, Vsp16s negative) const {
        const int which = negative & 1;
        return add(S16_128{_mm_sign_epi16(row.v, signs_[which].v)}, mulHi(row, factors_[which]));
    }

  private:
    S16_128 signs_[2], factors_[2];
};

// The correlations of the places of two tracks with their signs, by those of the one and by those of the other. The signs
// of b are signsOfB.
VSP_INLINE void formPairs(const TrackCorrelations& correlations, int a, int b, const Vsp16s* negativeOfA,
                          const TrackSigns& signsOfB, Vsp16s (&ab)[kPlaces][kPlaces], Vsp16s (&ba)[kPlaces][kPlaces]) {
    S16_128 rows[kPlaces];
    correlations.pairs(a, b, ab, [&](S16_128 row, int i) { return rows[i] = signsOfB.applied(row, negativeOfA[i]); });
    if (a == b) {
        for (int i = 0; i < kPlaces; i++) ab[i][i] = correlations.diagonal(a)[i];
        return;
    }
    transpose(rows);
    for (int i = 0; i < kPlaces; i++) rows[i].store(ba[i]);
}

// The searches. d is the target filtered backwards, h the impulse response with pitch sharpening.
int ownSearchTwoOfPairs(const Vsp16s* d, const Vsp16s* h, int subframe, FoundPulses& found);  // returns the half found
void ownSearchTwo(const Vsp16s* d, const Vsp16s* h, FoundPulses& found);
void ownSearchThree(const Vsp16s* d, const Vsp16s* h, FoundPulses& found);
void ownSearchFour(const Vsp16s* d, const Vsp16s* h, FoundPulses& found);
void ownSearchEight(const Vsp16s* d, const Vsp16s* residual, const Vsp16s* h, FoundPulses& found);
void ownSearchTen(const Vsp16s* d, const Vsp16s* residual, const Vsp16s* h, FoundPulses& found);

}  // namespace vsp::VSP_LEVEL
