// Target, codebook search and excitation (G.728 blocks 11 to 21).
#include "core/checks.h"
#include "g728/block_float.h"
#include "g728/exports.h"
#include "g728/tables.h"
#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

using namespace g728;

static constexpr int kShapeCount = 128, kGains = 4;

VspStatus vspsTargetNormalize_G728_16s(const Vsp16s* pWeighted, const Vsp16s* pZeroInput, const Vsp16s* pGain, Vsp16s* pDst,
                                       Vsp16s* pScale) {
    if (anyNull(pWeighted, pZeroInput, pGain, pDst, pScale)) return vspStsNullPtrErr;
    const Float16 inverse = divide(16384, 14, pGain[0], pGain[1]);
    Vsp16s target[kVector];
    for (int n = 0; n < kVector; n++) target[n] = sat16((inverse.mantissa * sat_16s(pWeighted[n] - pZeroInput[n])) >> 15);
    const int scale = 2 + inverse.scale - 15 + normalise(target, kVector, 16);
    for (int n = 0; n < kVector; n++) pDst[n] = target[n];
    *pScale = sat16(scale);
    return vspStsNoErr;
}

VspStatus vspsImpulseResponse_G728_16s(const Vsp16s* pLPC, const Vsp16s* pZero, const Vsp16s* pPole, Vsp16s* pH) {
    if (anyNull(pLPC, pZero, pPole, pH)) return vspStsNullPtrErr;
    Vsp16s synthesis[kVector] = {8192}, h[kVector] = {8192};
    for (int n = 1; n < kVector; n++) {
        Vsp64s t = 0;
        for (int k = 0; k < n; k++) t -= pLPC[k] * synthesis[n - 1 - k];
        synthesis[n] = sat16(t >> 14);
        for (int k = 0; k < n; k++) t += pZero[k] * synthesis[n - 1 - k] - Vsp64s(pPole[k]) * h[n - 1 - k];
        h[n] = sat16(t >> 14);
    }
    for (int n = 0; n < kVector; n++) pH[n] = h[n];
    return vspStsNoErr;
}

// Both values in every pair.
VSP_INLINE S16 pair(Vsp16s a, Vsp16s b) { return {S32::splat(Vsp16u(a) | b * 0x10000).v}; }

// Sums of the squares of five values, Q15 of a 32-bit value, above 32767 for what clips. The values come in pairs.
template <class Zip>
VSP_INLINE S32 energyOf(const S16 (&x)[kVector], Zip zip) {
    const S32 most = S32::splat(1 << 30);  // no sum of three wraps as an unsigned value, nor does one of two squares
    S32 sum = S32::splat(0);
    for (int n = 0; n < kVector; n += 2) {
        const S16 two{zip(x[n], n + 1 < kVector ? x[n + 1] : S16::splat(0)).v};
        sum = add(sum, minU(dot2(two, two), most));
    }
    return shrU(minU(sum, most), 15);
}

VspStatus vspsCodebookEnergy_G728_16s(const Vsp16s* pH, Vsp16s* pEnergy) {
    if (anyNull(pH, pEnergy)) return vspStsNullPtrErr;
    for (int i = 0; i < kShapeCount; i += S16::width) {
        S16 shape[kVector], filtered[kVector];
        for (int n = 0; n < kVector; n++) shape[n] = S16::load(kShapes[n] + i);
        for (int n = 0; n < kVector; n++) {
            S32 low = S32::splat(0), high = low;
            for (int k = 0; k <= n; k += 2) {  // a shape and any 16-bit vector stay within 32 bits
                const S16 next = k < n ? shape[k + 1] : S16::splat(0);
                const S16 h = pair(pH[n - k], k < n ? pH[n - k - 1] : Vsp16s(0));
                low = add(low, dot2(S16{zipLo(shape[k], next).v}, h));
                high = add(high, dot2(S16{zipHi(shape[k], next).v}, h));
            }
            filtered[n] = packSat(shr(low, 14), shr(high, 14));
        }
        const S32 low = energyOf(filtered, [](S16 a, S16 b) { return zipLo(a, b); });
        const S32 high = energyOf(filtered, [](S16 a, S16 b) { return zipHi(a, b); });
        packSat(low, high).store(pEnergy + i);
    }
    return vspStsNoErr;
}

VspStatus vspsCodebookSearch_G728_16s(const Vsp16s* pTarget, Vsp32s scale, const Vsp16s* pH, const Vsp16s* pEnergy,
                                      Vsp16s* pIndex) {
    constexpr int kMostCorrelation = kMax16;
    constexpr int kThreshold[kGains - 1] = {5808, 10164, 17787};  // halfway between two gains
    if (anyNull(pTarget, pH, pEnergy, pIndex)) return vspStsNullPtrErr;
    if (scale < -6) return vspStsRangeErr;

    Vsp16s c[kVector];  // the target filtered backwards
    for (int j = 0; j < kVector; j++) {
        Vsp64s sum = 0;
        for (int n = j; n < kVector; n++) sum += pH[n - j] * pTarget[n];
        c[j] = sat16(shiftRight(Cnvrt_64s32s(sum), scale + 6LL));
    }
    // Distances of all shapes, each with its best gain; loops without branches, which run over many shapes at once.
    Vsp32s correlation[kShapeCount] = {}, distance[kShapeCount];
    for (int n = 0; n < kVector; n++)
        for (int i = 0; i < kShapeCount; i++) correlation[i] += kShapes[n][i] * c[n];
    for (int i = 0; i < kShapeCount; i++) {
        const Vsp32s magnitude = correlation[i] < 0 ? -correlation[i] : correlation[i], energy = pEnergy[i];
        Vsp32s twice = kTwiceGain[0], squared = kSquaredGain[0];
        for (int g = 1; g < kGains; g++) {
            const bool more = magnitude > kThreshold[g - 1] * energy;
            twice = more ? kTwiceGain[g] : twice;
            squared = more ? kSquaredGain[g] : squared;
        }
        const Vsp32s limited = magnitude >> 14 < kMostCorrelation ? magnitude >> 14 : kMostCorrelation;
        distance[i] = squared * energy - twice * limited;
    }
    int shape = 0;
    Vsp32s least = distance[0];
    for (int i = 1; i < kShapeCount; i++) least = distance[i] < least ? distance[i] : least;
    while (distance[shape] != least) shape++;

    const Vsp32s magnitude = correlation[shape] < 0 ? -correlation[shape] : correlation[shape];
    int gain = 0;
    for (int g = 1; g < kGains; g++)
        if (magnitude > kThreshold[g - 1] * pEnergy[shape]) gain = g;
    *pIndex = Vsp16s(8 * shape + gain + (correlation[shape] <= 0 ? kGains : 0));
    return vspStsNoErr;
}

VspStatus vspsExcitation_G728_16s(Vsp32s index, const Vsp16s* pGain, Vsp16s* pDst, Vsp16s* pScale) {
    static constexpr int kShift[kGains] = {3, 3, 2, 1};
    if (anyNull(pGain, pDst, pScale)) return vspStsNullPtrErr;
    if (index < 0 || index > 1023) return vspStsRangeErr;
    const int g = index % kGains;
    const Vsp64s product = pGain[0] * Vsp64s(kTwiceGain[g]) << kShift[g];
    const Vsp64s gain = roundHigh(index & kGains ? -product : product);
    const int scale = pGain[1] + 13 + kShift[g] - 16;
    Vsp16s shape[kVector];
    for (int n = 0; n < kVector; n++) shape[n] = kShapes[n][index >> 3];
    const int shift = normalise(shape, kVector, 16);
    for (int n = 0; n < kVector; n++) pDst[n] = Vsp16s(roundHigh(gain * shape[n]));
    *pScale = sat16(scale + 11 + shift - 16);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
