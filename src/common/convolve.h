// The exact part of a convolution, for sums that do not leave 32 bits.
#pragma once

#include "common/lengths.h"
#include "vector/correlate.h"

namespace vsp::VSP_LEVEL {

// dst[first .. first + V::width - 1]. reversed ends with pSrc1[0], padded has V::width - 1 zeros or more before pSrc2[0].
template <class V>
VSP_INLINE V convolveUnit(const Vsp16s* reversedEnd, const Vsp16s* padded, int first, int shift, Vsp32s rounding) {
    const int taps = first + V::width;
    const auto sums = offsetSums<V>(reversedEnd - taps, taps, padded - (V::width - 1));
    const auto r = Wide<V>::splat(rounding);
    return packSatAlternating(shr(add(sums.even[0], r), shift), shr(add(sums.odd[0], r), shift));
}

// The first outputs, of which there are fewer than a vector has, need the fewest taps: they go into the narrowest vectors.
template <class V = Sliding16>
VSP_INLINE void convolve(const Vsp16s* reversedEnd, const Vsp16s* padded, Vsp16s* pDst, int len, int shift,
                         Vsp32s rounding) {
    int first = len % V::width;
    if constexpr (V::width > 8) {
        convolve<Half<V>>(reversedEnd, padded, pDst, first, shift, rounding);
    } else if (first > 0) {
        Vsp16s outputs[V::width];
        convolveUnit<V>(reversedEnd, padded, 0, shift, rounding).store(outputs);
        for (int i = 0; i < first; i++) pDst[i] = outputs[i];
    }
    for (; first < len; first += V::width) convolveUnit<V>(reversedEnd, padded, first, shift, rounding).store(pDst + first);
}

// pDst[n] = sat16((rounding + the sum of pSrc1[i] * pSrc2[n - i], i = 0 .. n) >> shift), n = 0 .. len-1, len at most
// kMaxFast. pDst may be a source.
VSP_INLINE void convolveExact(const Vsp16s* pSrc1, const Vsp16s* pSrc2, Vsp16s* pDst, int len, int shift,
                              Vsp32s rounding = 0) {
    constexpr int kPad = Sliding16::width;
    Vsp16s reversed[8 + kMaxFast], padded[kPad + kMaxFast + 8];
    Vsp16s* const reversedEnd = reversed + 8 + len;
    for (int i = 0; i < len; i++) reversedEnd[-1 - i] = pSrc1[i];
    for (int i = 0; i < 8; i++) reversed[i] = padded[kPad + len + i] = 0;
    for (int i = 0; i < kPad; i++) padded[i] = 0;
    for (int i = 0; i < len; i++) padded[kPad + i] = pSrc2[i];
    convolve(reversedEnd, padded + kPad, pDst, len, shift, rounding);
}

}  // namespace vsp::VSP_LEVEL
