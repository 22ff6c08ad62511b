// The open-loop pitch search (G.723.1 2.9, `Estim_Pitch`).
#include "core/checks.h"
#include "g723/exports.h"
#include "g723/operators.h"
#include "vector/correlate.h"
#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kShortest = 18, kLongest = 142, kLags = kLongest - kShortest + 1, kLen = 120;

// Energy of the samples before and correlation with them, by lag - kShortest.
struct LagSums {
    Vsp32s correlations[kLags], energies[kLags];

    [[gnu::always_inline]] explicit LagSums(const Vsp16s* src) {
        Vsp64s sum = energy(src - kShortest + 1, kLen), largest = sum;
        for (int i = 0; i < kLags; i++) {
            const Vsp16s* const x = src - kShortest - i;
            sum += x[0] * x[0] - x[kLen] * x[kLen];
            largest = sum > largest ? sum : largest;
            energies[i] = Cnvrt_64s32s(2 * sum);
        }
        // With energies in range no window overflows as it moves on.
        if (2 * largest > kMax32) {
            Vsp32s saturated = dotSaturating(src - kShortest + 1, src - kShortest + 1, kLen);
            for (int i = 0; i < kLags; i++) {
                const Vsp16s* const x = src - kShortest - i;
                saturated = mac_32s(msu_32s(saturated, x[kLen], x[kLen]), x[0], x[0]);
                energies[i] = saturated;
            }
        }
        if (doubledSumsFit(energy(src, kLen), largest)) {
            Vsp32s sums[kLags];
            correlate(src, kLen, src - kLongest, sums, kLags);
            for (int i = 0; i < kLags; i++) correlations[i] = 2 * sums[kLags - 1 - i];
        } else {
            for (int i = 0; i < kLags; i++) correlations[i] = dotSaturating(src, src - kShortest - i, kLen);
        }
    }
};

// Square of the correlation over the energy: square / energy * 2^-exponent.
struct Gain {
    int lag, exponent;
    Vsp32s square, energy;

    Gain(int tried, Vsp32s correlation, Vsp32s window) : lag(tried) {
        const int norm = norm_32s(correlation);
        const Vsp16s mantissa = round_32s(correlation << norm);
        const Vsp32s product = Mul2_16s32s(mantissa, mantissa);
        const int productNorm = norm_32s(product), energyNorm = norm_32s(window);
        square = (product << productNorm) >> 16;
        energy = round_32s(shl_32s(window, energyNorm));
        exponent = 2 * norm + productNorm - energyNorm;
        if (square >= energy) {
            exponent--;
            square >>= 1;
        }
    }
    Gain() : lag(kShortest), exponent(30), square(0x4000), energy(kMax16) {}

    // Lags that may be multiples of the best one must be better by a quarter.
    bool isBetterThan(const Gain& best) const {
        if (exponent > best.exponent) return false;
        if (exponent + 1 < best.exponent) return true;
        const Vsp32s other = exponent + 1 == best.exponent ? best.square >> 1 : best.square;
        const Vsp64s mine = 2LL * square * best.energy, its = 2LL * energy * other;
        return mine > its && (lag - best.lag < kShortest || mine - (mine >> 2) > its);
    }
};

}  // namespace

VspStatus vspsOpenLoopPitchSearch_G723_16s(const Vsp16s* pSrc, Vsp16s* pLag) {
    if (anyNull(pSrc, pLag)) return vspStsNullPtrErr;
    const LagSums sums(pSrc);
    Gain best;
    for (int i = 0; i < kLags; i++) {
        if (sums.correlations[i] <= 0) continue;
        const Gain gain(kShortest + i, sums.correlations[i], sums.energies[i]);
        if (gain.isBetterThan(best)) best = gain;
    }
    *pLag = Vsp16s(best.lag);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
