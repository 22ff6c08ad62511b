// Partial convolution (G.729 Convolve).
#include "arithmetic/basic_ops.h"
#include "common/exports.h"
#include "common/lengths.h"
#include "core/checks.h"
#include "vector/correlate.h"
#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

namespace {

// Every partial sum saturates. From the end, so that pDst may be a source.
void convolveSaturating(const Vsp16s* pSrc1, const Vsp16s* pSrc2, Vsp16s* pDst, int len, int shift) {
    for (int n = len - 1; n >= 0; n--) {
        Vsp32s sum = 0;
        for (int i = 0; i <= n; i++) sum = mac_32s(sum, pSrc1[i], pSrc2[n - i]);
        pDst[n] = sat_16s((sum >> 1) >> shift);
    }
}

// dst[first .. first + V::width - 1]. reversed ends with pSrc1[0], padded has V::width - 1 zeros or more before pSrc2[0].
template <class V>
VSP_INLINE V convolveUnit(const Vsp16s* reversedEnd, const Vsp16s* padded, int first, int shift) {
    const int taps = first + V::width;
    const auto sums = offsetSums<V>(reversedEnd - taps, taps, padded - (V::width - 1));
    return packSatAlternating(shr(sums.even[0], shift), shr(sums.odd[0], shift));
}

// The first outputs, of which there are fewer than a vector has, need the fewest taps: they go into the narrowest vectors.
template <class V = Sliding16>
VSP_INLINE void convolve(const Vsp16s* reversedEnd, const Vsp16s* padded, Vsp16s* pDst, int len, int shift) {
    int first = len % V::width;
    if constexpr (V::width > 8) {
        convolve<Half<V>>(reversedEnd, padded, pDst, first, shift);
    } else if (first > 0) {
        Vsp16s outputs[V::width];
        convolveUnit<V>(reversedEnd, padded, 0, shift).store(outputs);
        for (int i = 0; i < first; i++) pDst[i] = outputs[i];
    }
    for (; first < len; first += V::width) convolveUnit<V>(reversedEnd, padded, first, shift).store(pDst + first);
}

VSP_INLINE void convolveExact(const Vsp16s* pSrc1, const Vsp16s* pSrc2, Vsp16s* pDst, int len, int shift) {
    constexpr int kPad = Sliding16::width;
    Vsp16s reversed[8 + kMaxFast], padded[kPad + kMaxFast + 8];
    Vsp16s* const reversedEnd = reversed + 8 + len;
    for (int i = 0; i < len; i++) reversedEnd[-1 - i] = pSrc1[i];
    for (int i = 0; i < 8; i++) reversed[i] = padded[kPad + len + i] = 0;
    for (int i = 0; i < kPad; i++) padded[i] = 0;
    for (int i = 0; i < len; i++) padded[kPad + i] = pSrc2[i];
    convolve(reversedEnd, padded + kPad, pDst, len, shift);
}

}  // namespace

VspStatus vspsConvPartial_16s_Sfs(const Vsp16s* pSrc1, const Vsp16s* pSrc2, Vsp16s* pDst, Vsp32s len, Vsp32s scaleFactor) {
    if (anyNull(pSrc1, pSrc2, pDst)) return vspStsNullPtrErr;
    if (scaleFactor < 0) return vspStsBadArgErr;
    if (len < 1) return vspStsSizeErr;
    const int shift = scaleFactor < 31 ? scaleFactor : 31;
    if (len > kMaxFast || !doubledSumsFit(energy(pSrc1, len), energy(pSrc2, len))) {
        convolveSaturating(pSrc1, pSrc2, pDst, len, shift);
        return vspStsNoErr;
    }
    if (len == kL_subfr)
        convolveExact(pSrc1, pSrc2, pDst, kL_subfr, shift);
    else
        convolveExact(pSrc1, pSrc2, pDst, len, shift);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
