// The six zeros of the predictor, one to a lane of vectors. A coefficient is the upper half of its lane.
#pragma once

#include <immintrin.h>

#include "core/level.h"
#include "g726/state.h"

namespace vsp::VSP_LEVEL {

#if defined(__AVX2__)
using Lanes = Vsp32s __attribute__((vector_size(32)));
VSP_INLINE Lanes magnitudes(Lanes a) { return Lanes(_mm256_abs_epi32(__m256i(a))); }
VSP_INLINE Lanes floatBits(Lanes a) { return Lanes(_mm256_cvtepi32_ps(__m256i(a))); }
VSP_INLINE Lanes dotOfPairs(Lanes a, Lanes b) { return Lanes(_mm256_madd_epi16(__m256i(a), __m256i(b))); }
VSP_INLINE Lanes timesPowerOf2(Lanes a, Lanes e) {  // a shift by a negative or large count gives 0
    return Lanes(_mm256_sllv_epi32(__m256i(a), __m256i(e)) | _mm256_srlv_epi32(__m256i(a), __m256i(-e)));
}
#else
using Lanes = Vsp32s __attribute__((vector_size(16)));
VSP_INLINE Lanes magnitudes(Lanes a) { return Lanes(_mm_abs_epi32(__m128i(a))); }
VSP_INLINE Lanes floatBits(Lanes a) { return Lanes(_mm_cvtepi32_ps(__m128i(a))); }
VSP_INLINE Lanes dotOfPairs(Lanes a, Lanes b) { return Lanes(_mm_madd_epi16(__m128i(a), __m128i(b))); }
VSP_INLINE Lanes timesPowerOf2(Lanes a, Lanes e) {  // through the exponent of a float; a = 0 gives multiples of 32768
    return Lanes(_mm_cvttps_epi32(__m128(floatBits(a) + (e << 23))));
}
#endif
using Wrapping = Vsp32u __attribute__((vector_size(sizeof(Lanes))));
constexpr int kLanesParts = kG726Lanes * sizeof(Vsp32s) / sizeof(Lanes);

VSP_INLINE Lanes loadLanes(const Vsp32s* p) {
    Lanes a;
    __builtin_memcpy(&a, p, sizeof a);
    return a;
}

// The multiplication FMULT of coefficients and differences, modulo 2^16.
VSP_INLINE Lanes products(Lanes b, Lanes dq) {
    // A float's bits are the exponent and the mantissa of a magnitude; 0 counts as 1/2.
    const Lanes bits = floatBits(magnitudes(b >> 18) & 8191), half = Lanes{} + (126 << 23);
    const Lanes coefficient = bits > half ? bits : half;
    const Lanes mantissa = ((coefficient >> 18) & 31) | (1 << 16 | 32);
    const Lanes product = dotOfPairs(mantissa, dq & (48 << 16 | 63)) >> 4;
    const Lanes exponent = (coefficient >> 23) + ((dq >> 8) & 15) - (126 + 19);
    const Lanes magnitude = timesPowerOf2(product, exponent) & 32767, sign = (b ^ dq) >> 31;
    return (magnitude ^ sign) - sign;
}

struct ZeroPredictor {
    Lanes b[kLanesParts], dq[kLanesParts];

    [[gnu::always_inline]] void load(const G726State& s) {
        for (int i = 0; i < kLanesParts; i++) {
            b[i] = loadLanes(s.b + i * kG726Lanes / kLanesParts);
            dq[i] = loadLanes(s.dq + i * kG726Lanes / kLanesParts);
        }
    }
    [[gnu::always_inline]] void store(G726State& s) const {
        __builtin_memcpy(s.b, b, sizeof b);
        __builtin_memcpy(s.dq, dq, sizeof dq);
    }

    // SEZI, modulo 2^16.
    [[gnu::always_inline]] int prediction() const {
#if defined(__AVX2__)
        const __m256i all = __m256i(products(b[0], dq[0]));
        const __m128i four = _mm_add_epi32(_mm256_castsi256_si128(all), _mm256_extracti128_si256(all, 1));
#else
        const __m128i four = __m128i(products(b[0], dq[0]) + products(b[1], dq[1]));
#endif
        const __m128i two = _mm_add_epi32(four, _mm_unpackhi_epi64(four, four));
        return _mm_cvtsi128_si32(_mm_add_epi32(two, _mm_shuffle_epi32(two, 1)));
    }

    // UPB: towards the sign of step where a difference was positive, away from it where it was negative.
    template <int kLeak>
    [[gnu::always_inline]] void adapt(int step) {
        for (int i = 0; i < kLanesParts; i++) {
            const Lanes sign = dq[i] >> 31, steps = ((Lanes{} + (step << 16)) ^ sign) - sign;
            b[i] = Lanes(Wrapping(b[i]) - Wrapping((b[i] >> kLeak) & -65536) + Wrapping(steps));
        }
    }

    [[gnu::always_inline]] void clear() {
        for (Lanes& part : b) part = Lanes{};
    }

    [[gnu::always_inline]] void shiftIn(Vsp32s newest) {
#if defined(__AVX2__)
        const __m256i moved = _mm256_permutevar8x32_epi32(__m256i(dq[0]), _mm256_setr_epi32(0, 0, 0, 2, 3, 4, 5, 6));
        dq[0] = Lanes(_mm256_blend_epi32(moved, _mm256_set1_epi32(newest), 1 << kG726FirstZero));
#else
        dq[1] = Lanes(_mm_alignr_epi8(__m128i(dq[1]), __m128i(dq[0]), 12));
        dq[0] = Lanes(_mm_insert_epi32(_mm_slli_si128(__m128i(dq[0]), 4), newest, kG726FirstZero));
#endif
    }
};

}  // namespace vsp::VSP_LEVEL
