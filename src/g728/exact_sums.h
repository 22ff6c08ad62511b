// Sums of products for eight outputs at a time, exact in 64 bits.
#pragma once

#include "g728/block_float.h"
#include "vector/eight_32s.h"

namespace vsp::VSP_LEVEL::g728 {

constexpr int kOutputs = 8;  // of which a vector of samples needs the first five

// Five elements and zeros behind them. Elements that are stored and loaded in the same pieces do not wait for memory.
VSP_INLINE S16_128 loadFive(const Vsp16s* x) {
    return {_mm_insert_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(x)), x[4], 4)};
}
VSP_INLINE void storeFive(S16_128 a, Vsp16s* x) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(x), a.v);
    x[4] = Vsp16s(_mm_extract_epi16(a.v, 4));
}

// Sums of 32-bit values by their upper halves and modulo 2^32, which gives the lower halves as well.
class ExactSums {
  public:
    [[gnu::always_inline]] void add(Eight32s x) {
        low_ = VSP_LEVEL::add(low_, x);
        high_ = VSP_LEVEL::add(high_, shr(x, 16));
    }
    // Two products of any 16-bit values: 2 * (-32768)^2 fits as well with 2^16 taken off.
    [[gnu::always_inline]] void addProducts(Eight32s x) {
        add(VSP_LEVEL::add(x, Eight32s::splat(-0x10000)));
        taken_++;
    }
    [[gnu::always_inline]] void subtractProducts(Eight32s x) {
        const Eight32s fitting = VSP_LEVEL::add(x, Eight32s::splat(-0x10000));
        low_ = sub(low_, fitting);
        high_ = sub(high_, shr(fitting, 16));
        taken_--;
    }
    // Of the sums of parts, and of their upper halves.
    [[gnu::always_inline]] void addSums(Eight32s low, Eight32s high) {
        low_ = VSP_LEVEL::add(low_, low);
        high_ = VSP_LEVEL::add(high_, high);
    }
    // At least the first five of kOutputs sums.
    [[gnu::always_inline]] void store(Vsp64s* sums) const {
#if defined(__AVX512BW__)
        inSixtyFour().store(sums);
#else
        alignas(32) Vsp32s low[kOutputs], high[kOutputs];
        low_.store(low);
        high_.store(high);
        for (int n = 0; n < kVector; n++) {
            const Vsp64s upper = Vsp64s(high[n]) * 0x10000;
            sums[n] = upper + Vsp32s(Vsp32u(low[n] - upper)) + taken_ * 0x10000LL;
        }
#endif
    }
    // The first five in 16 bits, as roundQ14().
    [[gnu::always_inline]] void storeRounded(Vsp16s* x) const {
#if defined(__AVX512BW__)
        const __m512i rounded = VSP_LEVEL::add(inSixtyFour(), S64_512::splat(0x2000)).v;
        storeFive({_mm512_cvtsepi64_epi16(_mm512_srai_epi64(rounded, 14))}, x);
#else
        Vsp64s sums[kOutputs];
        store(sums);
        for (int n = 0; n < kVector; n++) x[n] = roundQ14(sums[n]);
#endif
    }

  private:
    Eight32s low_ = Eight32s::splat(0), high_ = Eight32s::splat(0);
    int taken_ = 0;

#if defined(__AVX512BW__)
    [[gnu::always_inline]] S64_512 inSixtyFour() const {
        const S64_512 upper{_mm512_slli_epi64(_mm512_cvtepi32_epi64(high_.v), 16)};
        const S64_512 lower{_mm512_cvtepi32_epi64(sub(low_, shl(high_, 16)).v)};
        return VSP_LEVEL::add(VSP_LEVEL::add(upper, lower), S64_512::splat(taken_ * 0x10000LL));
    }
#endif
};

// a[i] and b[i] as pairs.
#if defined(__AVX2__)
VSP_INLINE Eight32s pairsOf(S16_128 a, S16_128 b) { return {_mm256_set_m128i(zipHi(a, b).v, zipLo(a, b).v)}; }
#else
VSP_INLINE Eight32s pairsOf(S16_128 a, S16_128 b) { return {zipLo(a, b), zipHi(a, b)}; }
#endif

// Eight elements from place `at` of sixteen on, zeros behind them.
template <int at>
VSP_INLINE S16_128 elementsFrom(S16_128 first, S16_128 second) {
    if constexpr (at > 8)
        return elementsFrom<at - 8>(second, S16_128::splat(0));
    else
        return {_mm_alignr_epi8(second.v, first.v, 2 * at)};
}

// Brings the extreme element to the size of a number of so many bits, at most 16; returns the shifts.
VSP_INLINE int normalise(S16_128& x, int bits) {
    const int n = norm(largestU(S16_128{x.v ^ shr(x, 15).v}), bits);
    x = n < 0 ? shr(x, -n) : shl(x, n);
    return n;
}

VSP_INLINE S16_128 five(const Vsp16s (&x)[kVector]) { return {_mm_setr_epi16(x[0], x[1], x[2], x[3], x[4], 0, 0, 0)}; }

// The ten samples before a vector and its five ones, and zeros.
struct Fifteen {
    S16_128 first, second;

    [[gnu::always_inline]] Fifteen(const Vsp16s* ten, S16_128 five) : first(S16_128::load(ten)) {
        Vsp32s two;
        __builtin_memcpy(&two, ten + 8, sizeof two);
        second.v = _mm_or_si128(_mm_cvtsi32_si128(two), _mm_slli_si128(five.v, 4));
    }
    [[gnu::always_inline]] void storeNewest(Vsp16s* ten) const {
        elementsFrom<5>(first, second).store(ten);
        const Vsp32s two = _mm_cvtsi128_si32(_mm_srli_si128(second.v, 10));
        __builtin_memcpy(ten + 8, &two, sizeof two);
    }
};

// Products of the coefficients i and i + 1 with the samples before each output.
template <int i>
VSP_INLINE Eight32s twoTaps(const Vsp16s* c, const Fifteen& x) {
    return dotPairs(pairsOf(elementsFrom<9 - i>(x.first, x.second), elementsFrom<8 - i>(x.first, x.second)), c + i);
}

// A filter of order 10 on a vector: the sum of c[i] * x[n - 1 - i] for each n.
VSP_INLINE void addTenTaps(ExactSums& total, const Vsp16s* c, const Fifteen& x) {
    total.addProducts(twoTaps<0>(c, x));
    total.addProducts(twoTaps<2>(c, x));
    total.addProducts(twoTaps<4>(c, x));
    total.addProducts(twoTaps<6>(c, x));
    total.addProducts(twoTaps<8>(c, x));
}
VSP_INLINE void subtractTenTaps(ExactSums& total, const Vsp16s* c, const Fifteen& x) {
    total.subtractProducts(twoTaps<0>(c, x));
    total.subtractProducts(twoTaps<2>(c, x));
    total.subtractProducts(twoTaps<4>(c, x));
    total.subtractProducts(twoTaps<6>(c, x));
    total.subtractProducts(twoTaps<8>(c, x));
}

// The same of memory: ten samples lie before x, and any six behind.
VSP_INLINE void sumsOfTen(const Vsp16s* c, const Vsp16s* x, Vsp64s* sums) {
    ExactSums total;
    addTenTaps(total, c, Fifteen(x - 10, S16_128::load(x)));
    total.store(sums);
}

}  // namespace vsp::VSP_LEVEL::g728
