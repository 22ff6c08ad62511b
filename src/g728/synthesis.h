// The synthesis filter of order 50, whose past is ten vectors of block floating point (G.728 blocks 9, 22 and 32).
#pragma once

#include "g728/block_float.h"

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
        constexpr int kLanes = 8, kNarrow = 1 << 16;
        int least = past[0].scale;
        for (const Vector& v : past) least = v.scale < least ? v.scale : least;
        Vsp16s a[kSynthesisOrder + kLanes] = {};
        for (int i = 0; i < kSynthesisOrder; i++) a[i] = lpc[i];
        Vsp64s sums[kLanes] = {};
        for (int v = 0; v < kPastVectors; v++) {
            const Vector& old = past[v];
            const int shift = old.scale - least;
            if (v == kPastVectors - 1 && shift >= 30) continue;
            const Vsp16s* const ofLast = a + kVector * (v + 1) - 1;  // the coefficients of its last sample are the first
            int magnitudes = 0;
            for (const Vsp16s x : old.x) magnitudes += x < 0 ? -x : x;
            if (magnitudes < kNarrow) {  // as of vectors that advance() has made
                Vsp32s part[kLanes] = {};
                for (int m = 0; m < kVector; m++)
                    for (int n = 0; n < kLanes; n++) part[n] -= ofLast[n - m] * old.x[m];
                for (int n = 0; n < kLanes; n++) sums[n] += part[n] >> (shift < 31 ? shift : 31);
            } else {
                for (int n = 0; n < kVector; n++) {
                    Vsp64s part = 0;
                    for (int m = 0; m < kVector; m++) part -= ofLast[n - m] * old.x[m];
                    sums[n] += shiftRight(part, shift > 30 ? 63 : shift);
                }
            }
        }
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
        for (int n = 0; n < kVector;) {
            Vsp64s t = 16384 * e[n];
            for (int m = 0; m < n; m++) t -= lpc[n - 1 - m] * z[m];
            if (t >= -kLimit && t < kLimit) {
                z[n++] = Vsp16s(t >> 14);
                continue;
            }
            for (Vsp16s& x : e) x >>= 1;
            scale--;
            n = 0;
        }
        return scale;
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
        for (int v = kPastVectors - 1; v > 0; v--) past[v] = past[v - 1];
        past[0] = sum;
        return past[0];
    }
};

}  // namespace vsp::VSP_LEVEL::g728
