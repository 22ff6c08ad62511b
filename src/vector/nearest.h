// The smallest of many 32-bit values that are made a vector at a time, and where it was: the first of equal ones.
#pragma once

#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

// Where a > b the elements of x, else those of y.
VSP_INLINE S32_128 whereGreater(S32_128 a, S32_128 b, S32_128 x, S32_128 y) {
    return {_mm_blendv_epi8(y.v, x.v, _mm_cmpgt_epi32(a.v, b.v))};
}
VSP_IF_256(VSP_INLINE S32_256 whereGreater(S32_256 a, S32_256 b, S32_256 x, S32_256 y) {
    return {_mm256_blendv_epi8(y.v, x.v, _mm256_cmpgt_epi32(a.v, b.v))};
})
VSP_IF_512(VSP_INLINE S32_512 whereGreater(S32_512 a, S32_512 b, S32_512 x, S32_512 y) {
    return {_mm512_mask_blend_epi32(_mm512_cmpgt_epi32_mask(a.v, b.v), y.v, x.v)};
})

// Bit i tells whether a[i] < b[i].
VSP_INLINE Vsp32u whereSmaller(S32_128 a, S32_128 b) {
    return Vsp32u(_mm_movemask_ps(_mm_castsi128_ps(_mm_cmplt_epi32(a.v, b.v))));
}
VSP_IF_256(VSP_INLINE Vsp32u whereSmaller(S32_256 a, S32_256 b) {
    return Vsp32u(_mm256_movemask_ps(_mm256_castsi256_ps(_mm256_cmpgt_epi32(b.v, a.v))));
})
VSP_IF_512(VSP_INLINE Vsp32u whereSmaller(S32_512 a, S32_512 b) { return _mm512_cmplt_epi32_mask(a.v, b.v); })

// The smallest element.
VSP_INLINE Vsp32s smallestOf(S32_128 a) {
    const S32_128 pairs = min(a, S32_128{_mm_unpackhi_epi64(a.v, a.v)});
    return _mm_cvtsi128_si32(min(pairs, S32_128{_mm_shuffle_epi32(pairs.v, 1)}).v);
}
VSP_IF_256(VSP_INLINE Vsp32s smallestOf(S32_256 a) {
    return smallestOf(min(S32_128{_mm256_castsi256_si128(a.v)}, S32_128{_mm256_extracti128_si256(a.v, 1)}));
})
VSP_IF_512(VSP_INLINE Vsp32s smallestOf(S32_512 a) {
    return smallestOf(min(S32_256{_mm512_castsi512_si256(a.v)}, S32_256{_mm512_extracti64x4_epi64(a.v, 1)}));
})

// Values are offered as the halves of S16 vectors: lo and hi as zipLo and zipHi give them, with the indices of their
// elements.
class Smallest {
  public:
    // Nothing of `limit` or more is taken; then the index is 0.
    [[gnu::always_inline]] explicit Smallest(Vsp32s limit)
        : values_{S32::splat(limit), S32::splat(limit)}, indices_{S32::splat(0), S32::splat(0)} {}

    [[gnu::always_inline]] void offer(S32 lo, S32 hi, S32 indexLo, S32 indexHi) {
        offer(0, lo, indexLo);
        offer(1, hi, indexHi);
    }

    struct Found {
        Vsp32s value;
        int index;
    };

    [[gnu::always_inline]] int index() const { return found().index; }

    [[gnu::always_inline]] Found found() const {
        const Vsp32s value = smallestOf(min(values_[0], values_[1]));
        const S32 least = S32::splat(value), none = S32::splat(0x7FFFFFFF);
        const int index = smallestOf(
            min(whereGreater(values_[0], least, none, indices_[0]), whereGreater(values_[1], least, none, indices_[1])));
        return {value, index};
    }

  private:
    [[gnu::always_inline]] void offer(int half, S32 value, S32 index) {
        indices_[half] = whereGreater(values_[half], value, index, indices_[half]);
        values_[half] = min(values_[half], value);
    }

    S32 values_[2], indices_[2];
};

// The indices of the elements of an S16 vector.
struct RunningIndices {
    S32 lo, hi;

    [[gnu::always_inline]] RunningIndices() {
        Vsp16s numbers[S16::width];
        for (int i = 0; i < S16::width; i++) numbers[i] = Vsp16s(i);
        const S16 zero = S16::splat(0), all = S16::load(numbers);
        lo = zipLo(all, zero);
        hi = zipHi(all, zero);
    }
    [[gnu::always_inline]] void advance(int n) {
        lo = add(lo, S32::splat(n));
        hi = add(hi, S32::splat(n));
    }
};

}  // namespace vsp::VSP_LEVEL
