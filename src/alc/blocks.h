// What the level control does to the samples of its blocks of 8.
#pragma once

#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

constexpr int kBlock = 8;  // samples
constexpr int kGroup = 8;  // blocks

// Mean magnitude, power and peak of eight blocks.
struct BlockMeasures {
    Vsp32f mean[kGroup], power[kGroup], peak[kGroup];
};

// Sample i of every block into row i.
VSP_INLINE void transposeBlocks(const Vsp16s* x, Vsp16s rows[kBlock][kGroup]) {
    __m128i r[8], s[8];
    for (int b = 0; b < 8; b++) r[b] = S16_128::load(x + kBlock * b).v;
    for (int b = 0; b < 4; b++) {  // pairs of blocks b and b + 4, then of those
        s[2 * b] = _mm_unpacklo_epi16(r[b], r[b + 4]);
        s[2 * b + 1] = _mm_unpackhi_epi16(r[b], r[b + 4]);
    }
    for (int b = 0; b < 4; b++) {
        r[2 * b] = _mm_unpacklo_epi16(s[b], s[b + 4]);
        r[2 * b + 1] = _mm_unpackhi_epi16(s[b], s[b + 4]);
    }
    for (int b = 0; b < 4; b++) {
        S16_128{_mm_unpacklo_epi16(r[b], r[b + 4])}.store(rows[2 * b]);
        S16_128{_mm_unpackhi_epi16(r[b], r[b + 4])}.store(rows[2 * b + 1]);
    }
}

// The sum of the magnitudes is exact. That of the squares is rounded in every step, through a block in order.
VSP_INLINE void measureBlocks(const Vsp16s* x, BlockMeasures& m) {
    alignas(16) Vsp16s rows[kBlock][kGroup];
    transposeBlocks(x, rows);
    S16_128 peak = S16_128::splat(0);
    __m128i sumLow = _mm_setzero_si128(), sumHigh = sumLow;  // blocks 0..3 and 4..7
    __m128 squaresLow = _mm_setzero_ps(), squaresHigh = squaresLow;
    for (int i = 0; i < kBlock; i++) {
        const S16_128 row = magnitude(S16_128::load(rows[i]));
        const __m128i low = _mm_cvtepu16_epi32(row.v), high = _mm_unpackhi_epi16(row.v, _mm_setzero_si128());
        const __m128 lowFloat = _mm_cvtepi32_ps(low), highFloat = _mm_cvtepi32_ps(high);
        peak = maxU(peak, row);
        sumLow = _mm_add_epi32(sumLow, low);
        sumHigh = _mm_add_epi32(sumHigh, high);
        squaresLow = _mm_add_ps(squaresLow, _mm_mul_ps(lowFloat, lowFloat));
        squaresHigh = _mm_add_ps(squaresHigh, _mm_mul_ps(highFloat, highFloat));
    }
    const __m128 eighth = _mm_set1_ps(0.125f);
    const __m128i peakLow = _mm_cvtepu16_epi32(peak.v), peakHigh = _mm_unpackhi_epi16(peak.v, _mm_setzero_si128());
    _mm_storeu_ps(m.mean, _mm_mul_ps(_mm_cvtepi32_ps(sumLow), eighth));
    _mm_storeu_ps(m.mean + 4, _mm_mul_ps(_mm_cvtepi32_ps(sumHigh), eighth));
    _mm_storeu_ps(m.power, _mm_mul_ps(squaresLow, eighth));
    _mm_storeu_ps(m.power + 4, _mm_mul_ps(squaresHigh, eighth));
    _mm_storeu_ps(m.peak, _mm_cvtepi32_ps(peakLow));
    _mm_storeu_ps(m.peak + 4, _mm_cvtepi32_ps(peakHigh));
}

// Four samples times the gain, truncated towards zero; saturated here because a conversion beyond 32 bits loses the sign.
VSP_INLINE __m128i scaled(__m128i samples, __m128 gain) {
    const __m128 value = _mm_mul_ps(_mm_cvtepi32_ps(samples), gain);
    return _mm_cvttps_epi32(_mm_max_ps(_mm_set1_ps(-32768.0f), _mm_min_ps(_mm_set1_ps(32767.0f), value)));
}

VSP_INLINE void applyGain(const Vsp16s* x, Vsp16s* y, Vsp32f gain) {
    const S16_128 block = S16_128::load(x);
    const __m128 factor = _mm_set1_ps(gain);
    const __m128i low = _mm_cvtepi16_epi32(block.v), high = _mm_cvtepi16_epi32(_mm_srli_si128(block.v, 8));
    S16_128{_mm_packs_epi32(scaled(low, factor), scaled(high, factor))}.store(y);
}

}  // namespace vsp::VSP_LEVEL
