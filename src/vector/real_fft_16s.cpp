// Computed in double precision: 16-bit samples times the length of the longest transform need more than 24 bits.
#include "arithmetic/basic_ops.h"
#include "vector/real_fft.h"
#include "vector/real_fft_spec.h"

namespace vsp::VSP_LEVEL {

// --- Between words and doubles: as many 32-bit words in the lower part of a register as V has elements ------------------

template <class V>
VSP_INLINE V fromWords(__m128i a) {
    if constexpr (V::width == 1)
        return {_mm_cvtsd_f64(_mm_cvtepi32_pd(a))};
    else if constexpr (V::width == 2)
        return {_mm_cvtepi32_pd(a)};
    else
        return {_mm256_cvtepi32_pd(a)};
}

// Rounded to nearest, within lowest and highest.
VSP_INLINE __m128i toWords(F64_128 a, Vsp64f lowest, Vsp64f highest) {
    return _mm_cvtpd_epi32(_mm_min_pd(_mm_max_pd(a.v, _mm_set1_pd(lowest)), _mm_set1_pd(highest)));
}
VSP_INLINE __m128i toWords(F64_1 a, Vsp64f lowest, Vsp64f highest) {
    return toWords(F64_128{_mm_set_sd(a.v)}, lowest, highest);
}
VSP_IF_256(VSP_INLINE __m128i toWords(F64_256 a, Vsp64f lowest, Vsp64f highest) {
    return _mm256_cvtpd_epi32(_mm256_min_pd(_mm256_max_pd(a.v, _mm256_set1_pd(lowest)), _mm256_set1_pd(highest)));
})

template <int words>
VSP_INLINE __m128i loadWords(const void* p) {
    __m128i a = _mm_setzero_si128();
    __builtin_memcpy(&a, p, words * sizeof(Vsp32s));
    return a;
}
template <int words>
VSP_INLINE void storeWords(__m128i a, void* p) {
    __builtin_memcpy(p, &a, words * sizeof(Vsp32s));
}

// --- Samples and bins --------------------------------------------------------------------------------------------------

struct SamplePairs {
    const Vsp16s* p;
    template <class V>
    [[gnu::always_inline]] Complex<V> load(int i) const {
        const __m128i pairs = loadWords<V::width>(p + 2 * i);
        return {fromWords<V>(_mm_srai_epi32(_mm_slli_epi32(pairs, 16), 16)), fromWords<V>(_mm_srai_epi32(pairs, 16))};
    }
};

struct RoundedSamplePairs {
    Vsp16s* p;
    template <class V>
    [[gnu::always_inline]] void store(int i, Complex<V> a) const {
        const __m128i re = toWords(a.re, kMin16, kMax16), im = toWords(a.im, kMin16, kMax16);
        storeWords<V::width>(_mm_blend_epi16(re, _mm_slli_epi32(im, 16), 0xAA), p + 2 * i);
    }
};

struct Bins {
    const Vsp32sc* p;
    template <class V>
    [[gnu::always_inline]] Complex<V> load(int i) const {
        if constexpr (V::width < 4) {
            const __m128i a = loadWords<2 * V::width>(p + i);
            constexpr int kEven = V::width == 1 ? 0 : 0x08, kOdd = V::width == 1 ? 1 : 0x0D;
            return {fromWords<V>(_mm_shuffle_epi32(a, kEven)), fromWords<V>(_mm_shuffle_epi32(a, kOdd))};
        } else {
            const __m128 a = _mm_castsi128_ps(loadWords<4>(p + i)), b = _mm_castsi128_ps(loadWords<4>(p + i + 2));
            return {fromWords<V>(_mm_castps_si128(_mm_shuffle_ps(a, b, 0x88))),
                    fromWords<V>(_mm_castps_si128(_mm_shuffle_ps(a, b, 0xDD)))};
        }
    }
};

struct RoundedBins {
    Vsp32sc* p;
    Vsp64f factor;
    template <class V>
    [[gnu::always_inline]] void store(int i, Complex<V> a) const {
        const Complex<V> scaled = scale(a, V::splat(factor));
        const __m128i re = toWords(scaled.re, kMin32, kMax32), im = toWords(scaled.im, kMin32, kMax32);
        storeWords<V::width == 1 ? 2 : 4>(_mm_unpacklo_epi32(re, im), p + i);
        if constexpr (V::width == 4) storeWords<4>(_mm_unpackhi_epi32(re, im), p + i + 2);
    }
};

// 2^-n; beyond any result's range it is enough to stay there.
static Vsp64f powerOfHalf(Vsp32s n) {
    constexpr Vsp32s kFarAway = 900, kBias = 1023;
    const Vsp64s bits = Vsp64s(kBias - (n > kFarAway ? kFarAway : n < -kFarAway ? -kFarAway : n)) << 52;
    Vsp64f power;
    __builtin_memcpy(&power, &bits, sizeof power);
    return power;
}

VspStatus ownRealFftGetSize_16s(Vsp32s order, Vsp32s* pSpecSize, Vsp32s* pInitBufSize, Vsp32s* pWorkBufSize) {
    if (order < 1 || order > kMaxFftOrder) return vspStsSizeErr;
    *pSpecSize = specSize<Vsp64f>(order);
    *pInitBufSize = 0;
    *pWorkBufSize = workSize<Vsp64f>(order);
    return vspStsNoErr;
}

VspStatus ownRealFftInit_16s(const RealFftSpec_16s** ppSpec, Vsp32s order, Vsp8u* pSpecMem, Vsp8u*) {
    if (order < 1 || order > kMaxFftOrder) return vspStsSizeErr;
    *ppSpec = initSpec<RealFftSpec_16s, Vsp64f>(order, pSpecMem);
    return vspStsNoErr;
}

VspStatus ownRealFftFwd_16s32s_Sfs(const Vsp16s* pSrc, Vsp32sc* pDst, const RealFftSpec_16s* pSpec, Vsp32s scaleFactor,
                                   Vsp8u* pBuf) {
    realFftForward<Vsp64f>(pSpec->order, SamplePairs{pSrc}, RoundedBins{pDst, powerOfHalf(scaleFactor)}, pSpec->tables(),
                           pSpec->blocks(), alignedUp<Vsp64f>(pBuf));
    return vspStsNoErr;
}

VspStatus ownRealFftInv_32s16s_Sfs(const Vsp32sc* pSrc, Vsp16s* pDst, const RealFftSpec_16s* pSpec, Vsp32s scaleFactor,
                                   Vsp8u* pBuf) {
    const Vsp64f factor = powerOfHalf(scaleFactor) * pSpec->oneByN;
    realFftInverse<Vsp64f>(pSpec->order, Bins{pSrc}, RoundedSamplePairs{pDst}, pSpec->tables(), pSpec->blocks(),
                           alignedUp<Vsp64f>(pBuf), factor);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
