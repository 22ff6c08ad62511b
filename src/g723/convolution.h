// Filtering with an impulse response: the first samples of a convolution.
#pragma once

#include "arithmetic/standard_ops.h"
#include "vector/correlate.h"
#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

// An impulse response of a subframe behind as many zeros and a few.
struct PaddedResponse {
    static constexpr int kLen = 60, kZeros = 64;
    alignas(64) Vsp16s samples[2 * kZeros];
    Vsp64s squares;

    [[gnu::always_inline]] explicit PaddedResponse(const Vsp16s* h) : squares(energy(h, kLen)) {
        for (int i = 0; i < kZeros; i++) samples[i] = 0;
        for (int i = 0; i < kZeros; i++) samples[kZeros + i] = i < kLen ? h[i] : Vsp16s(0);
    }
    const Vsp16s* response() const { return samples + kZeros; }

    // sums[n] = the sum of x[j] * h[n - j], j = 0 .. n, n = 0 .. 59: exact if it fits 32 bits.
    [[gnu::always_inline]] void convolve(const Vsp16s* x, Vsp32s* sums) const {
        Vsp16s reversed[kLen];
        for (int j = 0; j < kLen; j++) reversed[kLen - 1 - j] = x[j];
        using V = Sliding16;
        for (int first = 0; first < kLen; first += V::width) {
            // The last vector ends with the last output.
            const int from = first + V::width <= kLen ? first : kLen - V::width, taps = from + V::width;
            correlateUnits<1, V>(reversed + kLen - taps, taps, response() - (V::width - 1), sums + from);
        }
    }
};

}  // namespace vsp::VSP_LEVEL
