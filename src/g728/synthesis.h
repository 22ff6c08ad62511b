// The synthesis filter of order 50, whose past is ten vectors of block floating point (G.728 blocks 9, 22 and 32).
#pragma once

#include "g728/exact_sums.h"

namespace vsp::VSP_LEVEL::g728 {

constexpr int kSynthesisOrder = 50, kPastVectors = kSynthesisOrder / kVector;

struct Vector {
    Vsp16s x[kVector];  // the oldest first
    Vsp16s scale;
};

struct SynthesisMemory {
    Vector past[kPastVectors];  // the newest first
    Vector pending;             // the response to the past alone

    void reset() {
        for (Vector& v : past) v = {{}, 16};
        pending = {{}, 16};
    }

    // The response of the filter to its past becomes pending.
    void ring(const Vsp16s* lpc) {
        int least = past[0].scale;
        for (const Vector& v : past) least = v.scale < least ? v.scale : least;
        Vsp64s sums[kVector];
        if (!sumsOfSmall(lpc, least, sums)) sumsOfAny(lpc, least, sums);
        Vsp16s response[kVector];
        for (int n = 0; n < kVector; n++) {
            Vsp64s t = sums[n];
            for (int m = 0; m < n; m++) t -= lpc[n - 1 - m] * response[m];
            response[n] = sat16(t >> 14);
        }
        for (int n = 0; n < kVector; n++) pending.x[n] = response[n];
        pending.scale = sat16(least + normalise(pending.x, kVector, 15));
    }

    // The response to an excitation and no past; the excitation is scaled down until it fits. Returns the scale.
    static Vsp64s excite(const Vsp16s* lpc, const Vsp16s* src, Vsp64s scale, Vsp16s* z) {
        constexpr Vsp64s kLimit = 1 << 28;
        Vsp16s e[kVector];
        for (int n = 0; n < kVector; n++) e[n] = src[n];
        for (;; scale--) {
            bool fits = true;
            for (int n = 0; n < kVector; n++) {
                Vsp64s t = 16384 * e[n];
                for (int m = 0; m < n; m++) t -= lpc[n - 1 - m] * z[m];
                fits = fits && t >= -kLimit && t < kLimit;
                z[n] = Vsp16s(t >> 14);
            }
            if (fits) return scale;
            for (Vsp16s& x : e) x >>= 1;
        }
    }

    // Adds z to what is pending: the newest vector of the past, returned.
    const Vector& advance(const Vsp16s* z, Vsp64s scale) {
        const Vsp64s least = scale < pending.scale ? scale : pending.scale;
        const Vsp64s limit = least > 3 ? kMax16 : least >= 0 ? 4095 << least : shiftRight(4095, -least);
        const Vsp64s lower = least > 3 ? kMin16 : -limit;
        Vector sum;
        for (int n = 0; n < kVector; n++) {
            const Vsp64s x = shiftRight(pending.x[n], pending.scale - least) + shiftRight(z[n], scale - least);
            sum.x[n] = Vsp16s(x > limit ? limit : x < lower ? lower : x);
        }
        sum.scale = sat16(least + normalise(sum.x, kVector, 14));
        Vector older[kPastVectors - 1];
        for (int v = 0; v < kPastVectors - 1; v++) older[v] = past[v];
        for (int v = 0; v < kPastVectors - 1; v++) past[v + 1] = older[v];
        past[0] = sum;
        return past[0];
    }

  private:
    static constexpr int kNegligible = 30;  // shift from which on the oldest vector does not count

    // For each sample of the next vector the sum of the products with the past, brought to a common scale vector after
    // vector, in vectors: if no sample is larger than those that advance() makes. Products with a vector's coefficients are
    // taken of two samples at a time.
    bool sumsOfSmall(const Vsp16s* lpc, int least, Vsp64s* sums) const {
        constexpr int kStride = kVector + 1, kWords = kPastVectors * kStride, kMost = 0xFFFF / kVector, kZeros = 6;
        alignas(32) Vsp16s negated[kWords];
        S16_128 largest = S16_128::splat(0);
        const Vsp16s* const words = reinterpret_cast<const Vsp16s*>(past);
        for (int i = 0; i < kWords; i += S16_128::width) {
            const int at = i < kWords - S16_128::width ? i : kWords - S16_128::width;
            const S16_128 x = S16_128::load(words + at);
            largest = maxU(largest, magnitude(x));
            sub(S16_128::splat(0), x).store(negated + at);
        }
        if (largestU(largest) > kMost) return false;

        alignas(32) Vsp32s pairs[kSynthesisOrder + 1 + kZeros];  // coefficients i and i - 1
        pairs[0] = Vsp16u(lpc[0]);
        for (int i = 0; i + kOutputs < kSynthesisOrder; i += kOutputs) storePairs(lpc + i, pairs + i);
        for (int i = kSynthesisOrder / kOutputs * kOutputs + 1; i < kSynthesisOrder; i++)
            pairs[i] = Vsp16u(lpc[i]) | lpc[i - 1] * 0x10000;
        pairs[kSynthesisOrder] = lpc[kSynthesisOrder - 1] * 0x10000;
        for (int i = 1; i <= kZeros; i++) pairs[kSynthesisOrder + i] = 0;

        ExactSums total;
        for (int v = 0; v < kPastVectors; v++) {
            const int shift = past[v].scale - least;
            if (v == kPastVectors - 1 && shift >= kNegligible) continue;
            const Vsp16s* const x = negated + kStride * v;
            const Vsp32s* const c = pairs + kVector * v;
            const Eight32s two = dotPairs(Eight32s::load(c + 4), x),
                           four = add(two, dotPairs(Eight32s::load(c + 2), x + 2));
            total.add(shr(add(four, mulLower(Eight32s::load(c), x[4])), shift));
        }
        total.store(sums);
        return true;
    }

    [[gnu::noinline]] void sumsOfAny(const Vsp16s* lpc, int least, Vsp64s* sums) const {
        for (int n = 0; n < kVector; n++) {
            sums[n] = 0;
            for (int v = 0; v < kPastVectors; v++) {
                const int shift = past[v].scale - least;
                if (v == kPastVectors - 1 && shift >= kNegligible) continue;
                Vsp64s part = 0;
                for (int m = 0; m < kVector; m++) {
                    const int i = kVector * (v + 1) - 1 - m + n;
                    if (i < kSynthesisOrder) part -= lpc[i] * past[v].x[m];
                }
                sums[n] += shiftRight(part, shift > 30 ? 63 : shift);
            }
        }
    }
};

}  // namespace vsp::VSP_LEVEL::g728
