// Groups of single-precision sub-bands for computing in double precision. The bands of a group are in an order of their
// own, the same in all of its vectors.
#pragma once

#include "ec/band_groups.h"
#include "vector/complex_vector.h"

namespace vsp::VSP_LEVEL {

template <>
struct Related<F64_128> {
    using Half = F64_1;
};
VSP_IF_256(template <> struct Related<F64_256> { using Half = F64_128; };)
VSP_IF_512(template <> struct Related<F64_512> { using Half = F64_256; };)

VSP_INLINE F32_1 narrow(F64_1 a) { return {Vsp32f(a.v)}; }
VSP_INLINE F32_128 narrow(F64_128 a) { return {_mm_cvtpd_ps(a.v)}; }
VSP_IF_256(VSP_INLINE F32_128 narrow(F64_256 a) { return {_mm256_cvtpd_ps(a.v)}; })
VSP_IF_512(VSP_INLINE F32_256 narrow(F64_512 a) { return {_mm512_cvtpd_ps(a.v)}; })

VSP_IF_256(VSP_INLINE F64_256 zipLo(F64_256 a, F64_256 b) { return {_mm256_unpacklo_pd(a.v, b.v)}; })
VSP_IF_256(VSP_INLINE F64_256 zipHi(F64_256 a, F64_256 b) { return {_mm256_unpackhi_pd(a.v, b.v)}; })

// Whether any element is less than zero, which -0.0 and a NaN are not.
VSP_INLINE bool anyNegative(F64_1 a) { return a.v < 0; }
VSP_INLINE bool anyNegative(F64_128 a) { return _mm_movemask_pd(_mm_cmplt_pd(a.v, _mm_setzero_pd())) != 0; }
VSP_IF_256(VSP_INLINE bool anyNegative(F64_256 a) {
    return _mm256_movemask_pd(_mm256_cmp_pd(a.v, _mm256_setzero_pd(), _CMP_LT_OQ)) != 0;
})
VSP_IF_512(VSP_INLINE bool anyNegative(F64_512 a) { return _mm512_cmp_pd_mask(a.v, _mm512_setzero_pd(), _CMP_LT_OQ) != 0; })

VSP_INLINE bool anyNegative(const Vsp64f* stepSize, Vsp32s numSubbands) {
    bool any = false;
    forBandGroups<F64>(0, numSubbands, [&]<class V>(Vsp32s k) { any |= anyNegative(V::load(stepSize + k)); });
    return any;
}

// Sums of a group in single precision.
template <class V>
using NarrowBands = Complex<decltype(narrow(V()))>;

// --- One band ----------------------------------------------------------------------------------------------------------

VSP_INLINE F64_1 loadStepsAs(F64_1, const Vsp64f* p) { return F64_1::load(p); }
VSP_INLINE Complex<F64_1> loadBandsAs(F64_1, const Vsp32fc* p) { return {{p->re}, {p->im}}; }
VSP_INLINE void storeBandsAs(F64_1, Complex<F32_1> a, Vsp32fc* p) { *p = {a.re.v, a.im.v}; }
VSP_INLINE void addToBands(Complex<F64_1> a, Vsp32fc* p) {
    p->re += Vsp32f(a.re.v);
    p->im += Vsp32f(a.im.v);
}

// --- Two bands ---------------------------------------------------------------------------------------------------------

VSP_INLINE F64_128 loadStepsAs(F64_128, const Vsp64f* p) { return F64_128::load(p); }
VSP_INLINE Complex<F64_128> loadBandsAs(F64_128, const Vsp32fc* p) {
    const __m128 a = _mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)));
    const __m128 b = _mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + 1)));
    return pairsOf(F64_128{_mm_cvtps_pd(a)}, F64_128{_mm_cvtps_pd(b)});
}
VSP_INLINE void storeBandsAs(F64_128, Complex<F32_128> a, Vsp32fc* p) {
    _mm_storeu_ps(&p->re, _mm_unpacklo_ps(a.re.v, a.im.v));
}
VSP_INLINE void addToBands(Complex<F64_128> a, Vsp32fc* p) {
    const __m128 sum = _mm_unpacklo_ps(narrow(a.re).v, narrow(a.im).v);
    _mm_storeu_ps(&p->re, _mm_add_ps(_mm_loadu_ps(&p->re), sum));
}

// --- Four bands, in the order 0, 2, 1, 3 --------------------------------------------------------------------------------

#if defined(__AVX2__)
VSP_INLINE F64_256 loadStepsAs(F64_256, const Vsp64f* p) { return {_mm256_permute4x64_pd(_mm256_loadu_pd(p), 0xD8)}; }
VSP_INLINE Complex<F64_256> loadBandsAs(F64_256, const Vsp32fc* p) {
    const F64_256 a = {_mm256_cvtps_pd(_mm_loadu_ps(&p->re))}, b = {_mm256_cvtps_pd(_mm_loadu_ps(&p[2].re))};
    return {zipLo(a, b), zipHi(a, b)};
}
VSP_INLINE void storeBandsAs(F64_256, Complex<F32_128> a, Vsp32fc* p) {
    const __m128 even = _mm_unpacklo_ps(a.re.v, a.im.v), odd = _mm_unpackhi_ps(a.re.v, a.im.v);
    _mm_storeu_ps(&p->re, _mm_movelh_ps(even, odd));
    _mm_storeu_ps(&p[2].re, _mm_movehl_ps(odd, even));
}
VSP_INLINE void addToBands(Complex<F64_256> a, Vsp32fc* p) {
    const F32_128 lower = narrow(zipLo(a.re, a.im)), upper = narrow(zipHi(a.re, a.im));
    add(F32_128::load(&p->re), lower).store(&p->re);
    add(F32_128::load(&p[2].re), upper).store(&p[2].re);
}
#endif

// --- Eight bands, in the order 0, 1, 4, 5, 2, 3, 6, 7 -------------------------------------------------------------------

#if defined(__AVX512F__)
VSP_INLINE F64_512 loadStepsAs(F64_512, const Vsp64f* p) {
    return {_mm512_permutexvar_pd(_mm512_setr_epi64(0, 1, 4, 5, 2, 3, 6, 7), _mm512_loadu_pd(p))};
}
VSP_INLINE Complex<F64_512> loadBandsAs(F64_512, const Vsp32fc* p) {
    const __m256 a = _mm256_loadu_ps(&p->re), b = _mm256_loadu_ps(&p[4].re);
    return {{_mm512_cvtps_pd(_mm256_shuffle_ps(a, b, 0x88))}, {_mm512_cvtps_pd(_mm256_shuffle_ps(a, b, 0xDD))}};
}
VSP_INLINE void storeBandsAs(F64_512, Complex<F32_256> a, Vsp32fc* p) {
    _mm256_storeu_ps(&p->re, _mm256_unpacklo_ps(a.re.v, a.im.v));
    _mm256_storeu_ps(&p[4].re, _mm256_unpackhi_ps(a.re.v, a.im.v));
}
VSP_INLINE void addToBands(Complex<F64_512> a, Vsp32fc* p) {
    const F32_256 re = narrow(a.re), im = narrow(a.im);
    add(F32_256::load(&p->re), {_mm256_unpacklo_ps(re.v, im.v)}).store(&p->re);
    add(F32_256::load(&p[4].re), {_mm256_unpackhi_ps(re.v, im.v)}).store(&p[4].re);
}
#endif

// --- Any group ---------------------------------------------------------------------------------------------------------

template <class V>
VSP_INLINE V loadSteps(const Vsp64f* p) {
    return loadStepsAs(V(), p);
}
template <class V>
VSP_INLINE Complex<V> loadBands(const Vsp32fc* p) {
    return loadBandsAs(V(), p);
}
template <class V>
VSP_INLINE void storeBands(NarrowBands<V> a, Vsp32fc* p) {
    storeBandsAs(V(), a, p);
}

}  // namespace vsp::VSP_LEVEL
