// Complex FIR filters, one per sub-band, and their adaptation by NLMS: fixed-point values, computed in single precision.
#include "core/checks.h"
#include "ec/bands_32sc.h"
#include "ec/bands_single_32fc.h"
#include "ec/exports.h"
#include "ec/subband_limits.h"
#include "vector/signs.h"

namespace vsp::VSP_LEVEL {

namespace {

// The same bits as words and as values, real and imaginary parts in turn. A Bands_64 has two words in the lower half.
VSP_INLINE S32_128 wordsOf(Bands_128 a) { return {_mm_castps_si128(a.v)}; }
VSP_INLINE Bands_64 bandsOf(Bands_64, S32_128 a) { return {{_mm_castsi128_ps(a.v)}}; }
VSP_INLINE Bands_128 bandsOf(Bands_128, S32_128 a) { return {_mm_castsi128_ps(a.v)}; }
VSP_IF_256(VSP_INLINE S32_256 wordsOf(Bands_256 a) { return {_mm256_castps_si256(a.v)}; })
VSP_IF_256(VSP_INLINE Bands_256 bandsOf(Bands_256, S32_256 a) { return {_mm256_castsi256_ps(a.v)}; })
VSP_IF_512(VSP_INLINE S32_512 wordsOf(Bands_512 a) { return {_mm512_castps_si512(a.v)}; })
VSP_IF_512(VSP_INLINE Bands_512 bandsOf(Bands_512, S32_512 a) { return {_mm512_castsi512_ps(a.v)}; })

VSP_INLINE Bands_128 splatAs(Bands_128, Vsp32f x) { return {_mm_set1_ps(x)}; }
VSP_INLINE Bands_64 splatAs(Bands_64, Vsp32f x) { return {{_mm_set1_ps(x)}}; }
VSP_IF_256(VSP_INLINE Bands_256 splatAs(Bands_256, Vsp32f x) { return {_mm256_set1_ps(x)}; })
VSP_IF_512(VSP_INLINE Bands_512 splatAs(Bands_512, Vsp32f x) { return {_mm512_set1_ps(x)}; })

// The largest float that is a word; below the lowest one the instruction saturates by itself.
constexpr Vsp32f kMostWord = 0x1p31f - 0x1p7f;

VSP_INLINE S32_128 rounded(Bands_128 a) { return {_mm_cvtps_epi32(_mm_min_ps(a.v, _mm_set1_ps(kMostWord)))}; }
VSP_IF_256(VSP_INLINE S32_256 rounded(Bands_256 a) {
    return {_mm256_cvtps_epi32(_mm256_min_ps(a.v, _mm256_set1_ps(kMostWord)))};
})
VSP_IF_512(VSP_INLINE S32_512 rounded(Bands_512 a) {
    return {_mm512_cvtps_epi32(_mm512_min_ps(a.v, _mm512_set1_ps(kMostWord)))};
})

template <class V>
VSP_INLINE auto wordsAt(const Vsp32sc* p) {
    return wordsOf(V::load(reinterpret_cast<const Vsp32fc*>(p)));
}
template <class V, class Words>
VSP_INLINE void storeWords(Words a, Vsp32sc* p) {
    bandsOf(V(), a).store(reinterpret_cast<Vsp32fc*>(p));
}

// 2^n, -126 <= n <= 127
VSP_INLINE Vsp32f powerOf2(Vsp32s n) { return __builtin_bit_cast(Vsp32f, (n + 127) << 23); }

// Some groups of bands at once, as a sum alone would wait for its last addition.
template <class V, int groups>
VSP_INLINE void filter(const Vsp32sc* const* src, const Vsp32sc* const* coef, Vsp32sc* dst, Vsp32s len, Vsp32s k,
                       Vsp32f factor, bool large) {
    V real[groups] = {}, imaginary[groups] = {};  // products with real and with imaginary parts of the coefficients
    for (Vsp32s t = 0; t < len; t++) {
        const Vsp32sc *const x = src[t] + k, *const c = coef[t] + k;
        prefetchNext(large, x, c);
        for (int i = 0; i < groups; i++) {
            const V value = floatsAs(V(), x + i * V::width), tap = floatsAs(V(), c + i * V::width);
            real[i] = add(real[i], mul(value, realOf(tap)));
            imaginary[i] = add(imaginary[i], mul(value, imaginaryOf(tap)));
        }
    }
    for (int i = 0; i < groups; i++) {
        const V sum = subAdd(real[i], swapped(imaginary[i]));
        storeWords<V>(rounded(mul(sum, splatAs(V(), factor))), dst + k + i * V::width);
    }
}

// Mantissa * 2^-s, for both parts of a band; s = exponent - scaleFactor, within what products with words can be told by.
template <class V>
VSP_INLINE V stepsOf(const Vsp32sc* p, Vsp32s scaleFactor) {
    constexpr Vsp32s kLeast = -30, kMost = 126;
    const auto words = wordsAt<V>(p);
    using Words = decltype(wordsAt<V>(p));
    const Words atLeast = max(words, Words::splat(kLeast));  // what is subtracted from it does not wrap
    const Words s = min(max(sub(atLeast, Words::splat(scaleFactor)), Words::splat(kLeast)), Words::splat(kMost));
    const Words power = mulLo(sub(Words::splat(127), s), Words::splat(1 << 23));
    return mul(realOf(floatsAs(V(), p)), imaginaryOf(bandsOf(V(), power)));
}

}  // namespace

VspStatus vspsFIRSubbandFast_EC_32sc_Sfs(const Vsp32sc* const* ppSrc, const Vsp32sc* const* ppCoef, Vsp32sc* pDst,
                                         Vsp32s len, Vsp32s numSubbands, Vsp32s scaleFactor) {
    if (anyNull(ppSrc, ppCoef, pDst)) return vspStsNullPtrErr;
    if (numSubbands < 1 || numSubbands > kMaxSubbands) return vspStsCountRangeErr;
    if (len < 1 || len > kMaxSubbandTaps) return vspStsRangeErr;
    if (scaleFactor < -kMaxSubbandScale || scaleFactor > kMaxSubbandScale) return vspStsRangeErr;
    const bool large = isLarge(len, numSubbands);
    const Vsp32f factor = powerOf2(-scaleFactor);
    Vsp32s k = 0;
    for (; numSubbands - k >= 2 * Bands::width; k += 2 * Bands::width)
        filter<Bands, 2>(ppSrc, ppCoef, pDst, len, k, factor, large);
    forBandGroups<Bands>(k, numSubbands,
                         [=]<class V>(Vsp32s at) { filter<V, 1>(ppSrc, ppCoef, pDst, len, at, factor, large); });
    return vspStsNoErr;
}

VspStatus vspsFIRSubbandFastCoeffUpdate_EC_32sc_I(const Vsp32sc* pStepSize, const Vsp32sc* const* ppSrc,
                                                  const Vsp32sc* pErr, Vsp32sc* const* ppCoef, Vsp32s len,
                                                  Vsp32s numSubbands, Vsp32s scaleFactor) {
    if (anyNull(pStepSize, ppSrc, pErr, ppCoef)) return vspStsNullPtrErr;
    if (numSubbands < 1 || numSubbands > kMaxSubbands) return vspStsCountRangeErr;
    if (len < 1 || len > kMaxSubbandTaps) return vspStsRangeErr;
    if (scaleFactor < 0 || scaleFactor > kMaxSubbandScale) return vspStsRangeErr;
    if (anyNegativeMantissa(pStepSize, numSubbands)) return vspStsSizeErr;
    const bool large = isLarge(len, numSubbands);
    forBandGroups<Bands>(0, numSubbands, [=]<class V>(Vsp32s k) {
        const V scaled = mul(floatsAs(V(), pErr + k), stepsOf<V>(pStepSize + k, scaleFactor));
        const V turned = conjugated(swapped(scaled));
        for (Vsp32s t = 0; t < len; t++) {
            const Vsp32sc* const x = ppSrc[t] + k;
            Vsp32sc* const c = ppCoef[t] + k;
            prefetchNext(large, x, c);
            const V value = floatsAs(V(), x);
            const V change = add(mul(scaled, realOf(value)), mul(turned, imaginaryOf(value)));
            storeWords<V>(addSat32(wordsAt<V>(c), rounded(change)), c);
        }
    });
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
