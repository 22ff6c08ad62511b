// Sums of doubled products that saturate at every step, formed exactly where none can.
#pragma once

#include "arithmetic/standard_ops.h"
#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

// A vector with its energy in 64 bits.
struct Segment {
    const Vsp16s* samples;
    int len;
    Vsp64s squares;

    [[gnu::always_inline]] Segment(const Vsp16s* x, int n) : samples(x), len(n), squares(energy(x, n)) {}
    Vsp32s energy32() const { return Cnvrt_64s32s(2 * squares); }
};

VSP_INLINE Vsp32s correlation(const Segment& a, const Segment& b) {
    if (!doubledSumsFit(a.squares, b.squares)) [[unlikely]]
        return dotSaturating(a.samples, b.samples, a.len);
    return Vsp32s(2 * dot(a.samples, b.samples, a.len));
}

// Shifts the values left together until the largest magnitude is normalised, and rounds them to their high halves.
VSP_INLINE void normaliseTogether(const Vsp32s* x, int n, Vsp16s* high) {
    Vsp32s largest = 0;
    for (int i = 0; i < n; i++) {
        const Vsp32s magnitude = Abs_32s(x[i]);
        largest = magnitude > largest ? magnitude : largest;
    }
    const int norm = norm_32s(largest);
    for (int i = 0; i < n; i++) high[i] = round_32s(shl_32s(x[i], norm));
}

}  // namespace vsp::VSP_LEVEL
