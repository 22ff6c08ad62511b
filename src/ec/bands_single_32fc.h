// Groups of single-precision sub-bands for computing in single precision, real and imaginary parts in turn as in memory.
#pragma once

#include "ec/band_groups.h"

namespace vsp::VSP_LEVEL {

#define VSP_BANDS(Name, bits, mm)                                                                     \
    struct Name {                                                                                     \
        static constexpr int width = bits / 64;                                                       \
        __m##bits v;                                                                                  \
        [[gnu::always_inline]] static Name load(const Vsp32fc* p) { return {mm##_loadu_ps(&p->re)}; } \
        [[gnu::always_inline]] void store(Vsp32fc* p) const { mm##_storeu_ps(&p->re, v); }            \
    };                                                                                                \
    VSP_INLINE Name add(Name a, Name b) { return {mm##_add_ps(a.v, b.v)}; }                           \
    VSP_INLINE Name mul(Name a, Name b) { return {mm##_mul_ps(a.v, b.v)}; }                           \
    VSP_INLINE Name realOf(Name a) { return {mm##_moveldup_ps(a.v)}; }                                \
    VSP_INLINE Name imaginaryOf(Name a) { return {mm##_movehdup_ps(a.v)}; }                           \
    VSP_INLINE Name swapped(Name a) { return {mm##_shuffle_ps(a.v, a.v, 0xB1)}; }
VSP_BANDS(Bands_128, 128, _mm)
VSP_IF_256(VSP_BANDS(Bands_256, 256, _mm256))
VSP_IF_512(VSP_BANDS(Bands_512, 512, _mm512))
#undef VSP_BANDS

// (a.re - b.re, a.im + b.im)
VSP_INLINE Bands_128 subAdd(Bands_128 a, Bands_128 b) { return {_mm_addsub_ps(a.v, b.v)}; }
VSP_IF_256(VSP_INLINE Bands_256 subAdd(Bands_256 a, Bands_256 b) { return {_mm256_addsub_ps(a.v, b.v)}; })
VSP_IF_512(VSP_INLINE Bands_512 subAdd(Bands_512 a, Bands_512 b) {
    return {_mm512_mask_sub_ps(_mm512_add_ps(a.v, b.v), 0x5555, a.v, b.v)};
})
// (a.re, 0 - a.im)
VSP_INLINE Bands_128 conjugated(Bands_128 a) { return {_mm_blend_ps(a.v, _mm_sub_ps(_mm_setzero_ps(), a.v), 0xA)}; }
VSP_IF_256(VSP_INLINE Bands_256 conjugated(Bands_256 a) {
    return {_mm256_blend_ps(a.v, _mm256_sub_ps(_mm256_setzero_ps(), a.v), 0xAA)};
})
VSP_IF_512(VSP_INLINE Bands_512 conjugated(Bands_512 a) {
    return {_mm512_mask_sub_ps(a.v, 0xAAAA, _mm512_setzero_ps(), a.v)};
})

// One band, in the lower half of a vector.
struct Bands_64 : Bands_128 {
    static constexpr int width = 1;
    [[gnu::always_inline]] static Bands_64 load(const Vsp32fc* p) {
        return {{_mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)))}};
    }
    [[gnu::always_inline]] void store(Vsp32fc* p) const { _mm_storel_pi(reinterpret_cast<__m64*>(p), v); }
};
VSP_INLINE Bands_64 add(Bands_64 a, Bands_64 b) { return {{_mm_add_ps(a.v, b.v)}}; }
VSP_INLINE Bands_64 mul(Bands_64 a, Bands_64 b) { return {{_mm_mul_ps(a.v, b.v)}}; }
VSP_INLINE Bands_64 realOf(Bands_64 a) { return {{_mm_moveldup_ps(a.v)}}; }
VSP_INLINE Bands_64 imaginaryOf(Bands_64 a) { return {{_mm_movehdup_ps(a.v)}}; }
VSP_INLINE Bands_64 swapped(Bands_64 a) { return {{_mm_shuffle_ps(a.v, a.v, 0xB1)}}; }
VSP_INLINE Bands_64 subAdd(Bands_64 a, Bands_64 b) { return {{_mm_addsub_ps(a.v, b.v)}}; }
VSP_INLINE Bands_64 conjugated(Bands_64 a) { return {conjugated(static_cast<const Bands_128&>(a))}; }

template <>
struct Related<Bands_128> {
    using Half = Bands_64;
};
VSP_IF_256(template <> struct Related<Bands_256> { using Half = Bands_128; };)
VSP_IF_512(template <> struct Related<Bands_512> { using Half = Bands_256; };)

using Bands = VSP_NATIVE(Bands);

// For what uses the bands twice, where g++ would rather load them twice.
template <class V>
VSP_INLINE V loadOnce(const Vsp32fc* p) {
    V bands = V::load(p);
    __asm__("" : "+x"(bands.v));
    return bands;
}

// Fixed-point bands in floating point.
VSP_INLINE Bands_64 floatsAs(Bands_64, const Vsp32fc* p) { return Bands_64::load(p); }
VSP_INLINE Bands_64 floatsAs(Bands_64, const Vsp32sc* p) {
    return {{_mm_cvtepi32_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)))}};
}
VSP_INLINE Bands_128 floatsAs(Bands_128, const Vsp32fc* p) { return Bands_128::load(p); }
VSP_INLINE Bands_128 floatsAs(Bands_128, const Vsp32sc* p) { return {_mm_cvtepi32_ps(S32_128::load(&p->re).v)}; }
#if defined(__AVX2__)
VSP_INLINE Bands_256 floatsAs(Bands_256, const Vsp32fc* p) { return Bands_256::load(p); }
VSP_INLINE Bands_256 floatsAs(Bands_256, const Vsp32sc* p) { return {_mm256_cvtepi32_ps(S32_256::load(&p->re).v)}; }
#endif
#if defined(__AVX512F__)
VSP_INLINE Bands_512 floatsAs(Bands_512, const Vsp32fc* p) { return Bands_512::load(p); }
VSP_INLINE Bands_512 floatsAs(Bands_512, const Vsp32sc* p) { return {_mm512_cvtepi32_ps(S32_512::load(&p->re).v)}; }
#endif

// Step sizes rounded to single precision, each for both parts of its band.
VSP_INLINE Bands_64 stepsAs(Bands_64, const Vsp64f* p) { return {{_mm_set1_ps(Vsp32f(*p))}}; }
VSP_INLINE Bands_128 stepsAs(Bands_128, const Vsp64f* p) {
    const __m128 s = _mm_cvtpd_ps(_mm_loadu_pd(p));
    return {_mm_unpacklo_ps(s, s)};
}
#if defined(__AVX2__)
VSP_INLINE Bands_256 stepsAs(Bands_256, const Vsp64f* p) {
    const __m128 s = _mm256_cvtpd_ps(_mm256_loadu_pd(p));
    return {_mm256_set_m128(_mm_unpackhi_ps(s, s), _mm_unpacklo_ps(s, s))};
}
#endif
#if defined(__AVX512F__)
VSP_INLINE Bands_512 stepsAs(Bands_512, const Vsp64f* p) {
    const __m512i twice = _mm512_setr_epi32(0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7);
    return {_mm512_permutexvar_ps(twice, _mm512_castps256_ps512(_mm512_cvtpd_ps(_mm512_loadu_pd(p))))};
}
#endif

}  // namespace vsp::VSP_LEVEL
