// The search of the gains of one subframe or of two in a table: the entry with the smallest sum of terms.
#pragma once

#include "gsmamr/gain_terms.h"
#include "vector/nearest.h"

namespace vsp::VSP_LEVEL {

constexpr int kGainTerms = 5;

// The columns of a table for a subframe, with the largest values in them, all of which are positive.
struct GainColumns {
    const Vsp16s *pitch, *code;
    Vsp16s largestPitch, largestCode;
};

// Whether no sum of the products with c leaves 32 bits.
template <int Subframes>
VSP_INLINE bool gainSumsFit(const GainColumns (&columns)[Subframes], const Vsp32s* c, const Vsp16s (&gcode0)[Subframes]) {
    Vsp64s bound = 0;
    for (int s = 0; s < Subframes; s++) {
        const Vsp32s p = columns[s].largestPitch, g = (columns[s].largestCode * gcode0[s]) >> 15;
        const Vsp64s x[kGainTerms] = {(p * p) >> 15, p, (g * g) >> 15, g, (g * p) >> 15};
        for (int k = 0; k < kGainTerms; k++) {
            const Vsp64s term = c[kGainTerms * s + k];
            bound += ((term < 0 ? -term : term) * x[k] >> 15) + 4;
        }
    }
    return bound < kMax32;
}

// Needs sums that fit. Sums are halved; Mpy_32_16 of hi, lo and x is twice hi * x + (lo * x >> 15).
template <int Subframes>
VSP_INLINE int searchGains(const GainColumns (&columns)[Subframes], const Vsp32s* c, const Vsp16s (&gcode0)[Subframes],
                           int entries) {
    const auto product = [](S16 a, S16 b) { return S16{shl(mulHi(a, b), 1).v | shrU(mulLo(a, b), 15).v}; };
    Smallest smallest(1 << 30);
    RunningIndices indices;
    for (int i = 0; i < entries; i += S16::width) {
        S32 lo = S32::splat(0), hi = lo;
        for (int s = 0; s < Subframes; s++) {
            const S16 p = S16::load(columns[s].pitch + i);
            const S16 g = product(S16::load(columns[s].code + i), S16::splat(gcode0[s]));
            const S16 x[kGainTerms] = {product(p, p), p, product(g, g), g, product(g, p)};
            for (int k = 0; k < kGainTerms; k++) {
                const Vsp32s term = c[kGainTerms * s + k];
                const S16 low = product(x[k], S16::splat(Vsp16s((term >> 1) & 0x7FFF)));
                const S16 weights{S32::splat(Vsp32s(Vsp16u(term >> 16) | 1u << 16)).v};  // of x and of low
                lo = add(lo, dot2(S16{zipLo(x[k], low).v}, weights));
                hi = add(hi, dot2(S16{zipHi(x[k], low).v}, weights));
            }
        }
        smallest.offer(lo, hi, indices.lo, indices.hi);
        indices.advance(S16::width);
    }
    return smallest.index();
}

}  // namespace vsp::VSP_LEVEL
