// Sums of products of one vector with another at many offsets: lag correlation, convolution and FIR filtering alike.
#pragma once

#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

// out[n] = sum of c[t] * z[n + t] over the taps, for Units * V::width outputs n, in 32 bits that wrap. Every load of z
// pairs neighbouring samples for the even outputs; one sample further on it does so for the odd ones.
template <class V, int Units>
struct OffsetSums {
    Wide<V> even[Units], odd[Units];

    [[gnu::always_inline]] void store(Vsp32s* out) const {
        for (int u = 0; u < Units; u++) storeAlternating(even[u], odd[u], out + u * V::width);
    }
};

template <class V, int Units>
VSP_INLINE void addTaps(OffsetSums<V, Units>& sums, V pair, const Vsp16s* z) {
    for (int u = 0; u < Units; u++) {
        sums.even[u] = add(sums.even[u], dot2(V::load(z + u * V::width), pair));
        sums.odd[u] = add(sums.odd[u], dot2(V::load(z + u * V::width + 1), pair));
    }
}

// Reads z[0 .. outputs + taps - 2]. An odd number of taps must be 3 or more.
template <class V, int Units = 1>
VSP_INLINE OffsetSums<V, Units> offsetSums(const Vsp16s* c, int taps, const Vsp16s* z) {
    OffsetSums<V, Units> sums;
    for (int u = 0; u < Units; u++) sums.even[u] = sums.odd[u] = Wide<V>::splat(0);
    for (int t = 0; t + 1 < taps; t += 2) addTaps(sums, splatPair<V>(c + t), z + t);
    if (taps % 2 != 0) {
        const Vsp16s last[2] = {0, c[taps - 1]};
        addTaps(sums, splatPair<V>(last), z + taps - 2);
    }
    return sums;
}

template <int Units, class V>
VSP_INLINE void correlateUnits(const Vsp16s* c, int taps, const Vsp16s* z, Vsp32s* out) {
    offsetSums<V, Units>(c, taps, z).store(out);
}

// Any number of outputs and taps. Reads z[0 .. outputs + taps - 2].
template <class V = Sliding16>
VSP_INLINE void correlate(const Vsp16s* c, int taps, const Vsp16s* z, Vsp32s* out, int outputs) {
    constexpr int W = V::width;
    if (outputs >= W && taps > 1) {
        int n = 0;
        for (; n + 4 * W <= outputs; n += 4 * W) correlateUnits<4, V>(c, taps, z + n, out + n);
        if (n + 2 * W <= outputs) {
            correlateUnits<2, V>(c, taps, z + n, out + n);
            n += 2 * W;
        }
        if (n + W <= outputs) {
            correlateUnits<1, V>(c, taps, z + n, out + n);
            n += W;
        }
        if (n < outputs) correlateUnits<1, V>(c, taps, z + outputs - W, out + outputs - W);
    } else if constexpr (W > 8) {
        correlate<Half<V>>(c, taps, z, out, outputs);
    } else {
        for (int n = 0; n < outputs; n++) {
            Vsp32u sum = 0;
            for (int t = 0; t < taps; t++) sum += Vsp32u(c[t] * z[n + t]);
            out[n] = Vsp32s(sum);
        }
    }
}

// One vector of outputs and, for each, the largest magnitude that its sum had after an even number of taps.
template <class V>
VSP_INLINE void correlateTracked(const Vsp16s* c, int taps, const Vsp16s* z, Vsp32s* out, Vsp32s* largest) {
    OffsetSums<V, 1> sums, peaks;
    sums.even[0] = sums.odd[0] = peaks.even[0] = peaks.odd[0] = Wide<V>::splat(0);
    const auto track = [&] {
        peaks.even[0] = max(peaks.even[0], magnitude(sums.even[0]));
        peaks.odd[0] = max(peaks.odd[0], magnitude(sums.odd[0]));
    };
    for (int t = 0; t + 1 < taps; t += 2) {
        addTaps(sums, splatPair<V>(c + t), z + t);
        track();
    }
    sums.store(out);
    peaks.store(largest);
}

}  // namespace vsp::VSP_LEVEL
