// Excitation of comfort noise: random delays and pulses, so weighted that the energy is the gain's (`Calc_Exc_Rand`;
// G.723.1 A.4.3).
#include "core/checks.h"
#include "g723/exports.h"
#include "g723/operators.h"
#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kPast = 145, kSubframe = 60, kPair = 2 * kSubframe, kPairs = 2;
constexpr int kPulses[2] = {6, 5}, kPairPulses = 11;
constexpr Vsp32s kRate = 2;  // whose codebook of gains is used

struct Pulses {
    int place[kPairPulses];  // in the pair of subframes
    Vsp16s sign[kPairPulses];
};

// A number from 0 to below n.
Vsp16s drawBelow(Vsp16s n, Vsp16s* seed) {
    *seed = Vsp16s(Vsp16u(*seed) * 521 + 259);
    return Mul_16s(Vsp16s(*seed & 0x7FFF), n);
}

// The bits of one number are the two grids and the signs.
void drawGridsAndSigns(Vsp16s* seed, int* grid, Pulses& pulses) {
    int bits = drawBelow(1 << 13, seed);
    for (int i = 0; i < 2; i++, bits >>= 1) grid[i] = kSubframe * i + (bits & 1);
    for (int i = 0; i < kPairPulses; i++, bits >>= 1) pulses.sign[i] = (bits & 1) != 0 ? 0x4000 : -0x4000;
}

void drawPlaces(Vsp16s* seed, int number, int grid, int* place) {
    Vsp8u free[kSubframe / 2];
    for (int i = 0; i < kSubframe / 2; i++) free[i] = Vsp8u(i);
    for (int k = 0, left = kSubframe / 2; k < number; k++) {
        const int i = drawBelow(Vsp16s(left), seed);
        place[k] = 2 * free[i] + grid;
        free[i] = free[--left];
    }
}

// The weight of the pulses that brings the energy to the gain's: a root of a quadratic equation, the smaller one.
Vsp16s pulseWeight(const Vsp16s* exc, const Pulses& pulses, Vsp16s gain) {
    constexpr Vsp16s kPerPulse = 2979, kMost = 10000;  // 1 / 11 in Q15
    int largest = 0;
    for (int i = 0; i < kPair; i++) {
        const int magnitude = Abs_16s(exc[i]);
        largest = magnitude > largest ? magnitude : largest;
    }
    int shift = largest == 0 ? 0 : 4 - norm_16s(Vsp16s(largest));
    shift = shift < -2 ? -2 : shift;

    Vsp16s scaled[kPair];
    for (int i = 0; i < kPair; i++) scaled[i] = shr_16s(exc[i], shift);
    Vsp32s cross = 0;
    for (int k = 0; k < kPairPulses; k++) cross = mac_32s(cross, scaled[pulses.place[k]], pulses.sign[k]);
    const Vsp16s b = mulRound_16s(high_32s(Mul2_32s(cross)), kPerPulse);
    const Vsp16s level = Vsp16s(Mul2_16s32s(gain, kSubframe) >> 6);
    const Vsp32s wanted = shr_32s(Mul2_16s32s(level, gain), 2 * shift + 4);
    const Vsp32s c = g723::mul_32s16s_Q15(Sub_32s(Cnvrt_64s32s(2 * energy(scaled, kPair)), wanted), kPerPulse);
    const Vsp32s discriminant = Sub_32s(0, msu_32s(c, b, b));
    Vsp16s weight = Negate_16s(b);
    if (discriminant > 0) {
        const Vsp16s root = g723::squareRoot(discriminant);
        const Vsp16s x1 = Sub_16s(root, b), x2 = Add_16s(b, root);
        weight = Abs_16s(x2) < Abs_16s(x1) ? Negate_16s(x2) : x1;
    }
    weight = shl_16s(weight, shift + 1);
    return weight > kMost ? kMost : weight < -kMost ? Vsp16s(-kMost) : weight;
}

}  // namespace

VspStatus vspsRandomNoiseExcitation_G723_16s(Vsp16s gain, Vsp16s* pSeed, Vsp16s* pPastExc, Vsp16s* pDst, Vsp16s* pLag,
                                             Vsp16s* pOffset, Vsp16s* pIndex) {
    static constexpr Vsp16s kOffsets[4] = {1, 0, 1, 3};
    if (anyNull(pSeed, pPastExc, pDst, pLag, pOffset, pIndex)) return vspStsNullPtrErr;
    Vsp16s seed = *pSeed;
    pLag[0] = Vsp16s(drawBelow(21, &seed) + 123);
    pLag[1] = Vsp16s(drawBelow(19, &seed) + 123);
    for (int i = 0; i < 4; i++) pIndex[i] = Vsp16s(drawBelow(50, &seed) + 1);
    for (int i = 0; i < 4; i++) pOffset[i] = kOffsets[i];
    int grid[4];
    Pulses pulses[kPairs];
    for (int i = 0; i < kPairs; i++) drawGridsAndSigns(&seed, grid + 2 * i, pulses[i]);
    for (int i = 0; i < 4; i++) drawPlaces(&seed, kPulses[i % 2], grid[i], pulses[i / 2].place + (i % 2) * kPulses[0]);
    *pSeed = seed;

    // The delays are so long that neither subframe of a pair needs what the other one makes.
    Vsp16s history[kPast + kPairs * kPair];
    for (int i = 0; i < kPast; i++) history[i] = pPastExc[i];
    for (int i = 0; i < kPairs; i++) {
        Vsp16s* const past = history + kPair * i;
        Vsp16s* const exc = past + kPast;
        for (int j = 0; j < kSubframe; j++) exc[j] = 0;
        for (int j = 0; j < 2; j++)
            vspsDecodeAdaptiveVector_G723_16s(past + kSubframe * j, Vsp16s(pLag[i] - kSubframe), kOffsets[2 * i + j],
                                              pIndex[2 * i + j], kRate, exc + kSubframe * j);
        const Vsp16s weight = pulseWeight(exc, pulses[i], gain);
        for (int k = 0; k < kPairPulses; k++) {
            Vsp16s& at = exc[pulses[i].place[k]];
            at = Add_16s(at, Mul_16s(weight, pulses[i].sign[k]));
        }
    }
    for (int i = 0; i < kPast; i++) pPastExc[i] = history[kPairs * kPair + i];
    for (int i = 0; i < kPairs * kPair; i++) pDst[i] = history[kPast + i];
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
