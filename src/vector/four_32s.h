// Blocks of four 32-bit values: what recursions in every 128 bits of a vector need.
#pragma once

#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

// The lower halves of the elements one after the other, and in reverse order.
VSP_INLINE S16_128 lowerHalves(S32_128 a) {
    return {_mm_shuffle_epi8(a.v, _mm_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, -1, -1, -1, -1, -1, -1, -1, -1))};
}
VSP_INLINE S16_128 lowerHalvesReversed(S32_128 a) {
    return {_mm_shuffle_epi8(a.v, _mm_setr_epi8(12, 13, 8, 9, 4, 5, 0, 1, -1, -1, -1, -1, -1, -1, -1, -1))};
}

// Four elements in every 128 bits.
template <class V>
VSP_INLINE V inEveryBlock(Vsp32s a, Vsp32s b, Vsp32s c, Vsp32s d) {
    if constexpr (sizeof(V) == 16) return {_mm_setr_epi32(a, b, c, d)};
    VSP_IF_256(else return {_mm256_setr_epi32(a, b, c, d, a, b, c, d)};)
}

// In every 128 bits the last n elements of `before` and the first ones of a behind them.
template <int n>
VSP_INLINE S32_128 movedIn(S32_128 before, S32_128 a) {
    return {_mm_alignr_epi8(a.v, before.v, 16 - 4 * n)};
}
VSP_IF_256(template <int n> VSP_INLINE S32_256 movedIn(S32_256 before, S32_256 a) {
    return {_mm256_alignr_epi8(a.v, before.v, 16 - 4 * n)};
})

}  // namespace vsp::VSP_LEVEL
