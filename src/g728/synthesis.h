// The synthesis filter of order 50, whose past is ten vectors of block floating point (G.728 blocks 9, 22 and 32).
#pragma once

#include "g728/exact_sums.h"

namespace vsp::VSP_LEVEL::g728 {

constexpr int kSynthesisOrder = 50, kPastVectors = kSynthesisOrder / kVector;

struct Vector {
    Vsp16s x[kVector];  // the oldest first
    Vsp16s scale;
};

#if defined(__AVX512BW__)
// Of two vectors of the past at a time, side by side and eight outputs each: which two samples, of the 32-bit elements, and
// which two coefficients make the products; the second one of the last sample is none.
struct ProductPlaces {
    Vsp32s samples[kPastVectors / 2][3][2 * kOutputs];
    Vsp16s coefficients[kPastVectors / 2][3][4 * kOutputs];
};
constexpr ProductPlaces productPlaces() {
    constexpr Vsp16s kNone = 63;
    ProductPlaces places{};
    for (int pair = 0; pair < kPastVectors / 2; pair++)
        for (int two = 0; two < 3; two++)
            for (int i = 0; i < 2 * kOutputs; i++) {
                const int vector = 2 * pair + i / kOutputs, newest = kVector * vector + 4 - 2 * two + i % kOutputs;
                places.samples[pair][two][i] = 3 * vector + two;
                places.coefficients[pair][two][2 * i] = Vsp16s(newest);
                places.coefficients[pair][two][2 * i + 1] = two < 2 ? Vsp16s(newest - 1) : kNone;
            }
    return places;
}
constexpr ProductPlaces kPlaces = productPlaces();
#endif

struct SynthesisMemory {
    Vector past[kPastVectors];  // the newest first
    Vector pending;             // the response to the past alone

    void reset() {
        for (Vector& v : past) v = {{}, 16};
        pending = {{}, 16};
    }

    // The response of the filter to its past becomes pending.
    void ring(const Vsp16s* lpc) {
        int least = past[0].scale;
        for (const Vector& v : past) least = v.scale < least ? v.scale : least;
        Vsp64s sums[kOutputs];
        if (!sumsOfSmall(lpc, least, sums)) sumsOfAny(lpc, least, sums);
        Vsp16s response[kVector];
        for (int n = 0; n < kVector; n++) {
            Vsp64s t = sums[n];
            for (int m = 0; m < n; m++) t -= lpc[n - 1 - m] * response[m];
            response[n] = sat16(t >> 14);
        }
        S16_128 x = five(response);
        pending.scale = sat16(least + normalise(x, 15));
        storeFive(x, pending.x);
    }

    // The response to an excitation and no past; the excitation is scaled down until it fits. Returns the scale.
    static Vsp64s excite(const Vsp16s* lpc, const Vsp16s* src, Vsp64s scale, Vsp16s* z) {
        constexpr Vsp64s kLimit = 1 << 28;
        Vsp16s e[kVector];
        for (int n = 0; n < kVector; n++) e[n] = src[n];
        for (;; scale--) {
            bool fits = true;
            for (int n = 0; n < kVector; n++) {
                Vsp64s t = 16384 * e[n];
                for (int m = 0; m < n; m++) t -= lpc[n - 1 - m] * z[m];
                fits = fits && t >= -kLimit && t < kLimit;
                z[n] = Vsp16s(t >> 14);
            }
            if (fits) return scale;
            for (Vsp16s& x : e) x >>= 1;
        }
    }

    // Adds z to what is pending: the newest vector of the past, returned.
    const Vector& advance(const Vsp16s (&z)[kVector], Vsp64s scale) {
        const Vsp64s least = scale < pending.scale ? scale : pending.scale;
        const Vsp32s limit = least > 3 ? kMax16 : least >= 0 ? 4095 << least : Vsp32s(shiftRight(4095, -least));
        const Vsp32s lower = least > 3 ? kMin16 : -limit;
        const auto lowered = [](S16_128 x, Vsp64s n) { return shr(widen(x), n < 31 ? int(n) : 31); };
        const Eight32s x = add(lowered(loadFive(pending.x), pending.scale - least), lowered(five(z), scale - least));
        S16_128 sum = narrowSat(max(min(x, Eight32s::splat(limit)), Eight32s::splat(lower)));
        const Vsp16s sumScale = sat16(least + normalise(sum, 14));
        makeRoom();
        storeFive(sum, past[0].x);
        past[0].scale = sumScale;
        return past[0];
    }

  private:
    // Moves the past by one vector; the oldest one is lost.
    void makeRoom() {
        using V = Sliding16;
        constexpr int kWords = (kPastVectors - 1) * (kVector + 1), kWidth = V::width,
                      kCount = (kWords + kWidth - 1) / kWidth;
        Vsp16s* const words = reinterpret_cast<Vsp16s*>(past);
        const auto place = [](int i) { return i < kCount - 1 ? i * kWidth : kWords - kWidth; };
        V kept[kCount];
        for (int i = 0; i < kCount; i++) kept[i] = V::load(words + place(i));
        for (int i = 0; i < kCount; i++) kept[i].store(words + place(i) + kVector + 1);
    }

    static constexpr int kNegligible = 30;  // shift from which on the oldest vector does not count

    static constexpr int kMost = 0xFFFF / kVector;  // five products with samples that are no larger fit in 32 bits

#if defined(__AVX512BW__)
    // For each sample of the next vector the sum of the products with the past, brought to a common scale vector after
    // vector, in vectors: if no sample is larger than those that advance() makes.
    bool sumsOfSmall(const Vsp16s* lpc, int least, Vsp64s* sums) const {
        const __m512i first = _mm512_loadu_si512(past), second = _mm512_maskz_loadu_epi32(0x3FFF, &past[5].x[2]);
        const __m512i most = _mm512_set1_epi16(kMost);
        if ((_mm512_cmpgt_epu16_mask(_mm512_abs_epi16(first), most) |
             _mm512_cmpgt_epu16_mask(_mm512_abs_epi16(second), most)) != 0)
            return false;
        const __m512i lower = _mm512_loadu_si512(lpc), upper = _mm512_maskz_loadu_epi16(0x3FFFF, lpc + 32);
        S32_512 low = S32_512::splat(0), high = low;
        for (int pair = 0; pair < kPastVectors / 2; pair++) {
            const auto samples = [&](int two) {
                return _mm512_permutex2var_epi32(first, _mm512_loadu_si512(kPlaces.samples[pair][two]), second);
            };
            const auto products = [&](int two, __m512i x) {
                const __m512i places = _mm512_loadu_si512(kPlaces.coefficients[pair][two]);
                return S32_512{_mm512_madd_epi16(_mm512_permutex2var_epi16(lower, places, upper), x)};
            };
            const S32_512 last{samples(2)};
            const S32_512 five = add(add(products(0, samples(0)), products(1, samples(1))), products(2, last.v));
            const S32_512 shift = sub(shr(last, 16), S32_512::splat(least));
            S32_512 part{_mm512_srav_epi32(sub(S32_512::splat(0), five).v, shift.v)};
            if (pair == kPastVectors / 2 - 1) {
                const __mmask16 negligible = _mm512_cmpge_epi32_mask(shift.v, _mm512_set1_epi32(kNegligible)) & 0xFF00;
                part.v = _mm512_maskz_mov_epi32(__mmask16(~negligible), part.v);
            }
            low = add(low, part);
            high = add(high, shr(part, 16));
        }
        ExactSums total;
        total.addSums(foldSum(low), foldSum(high));
        total.store(sums);
        return true;
    }
#else
    // Eight coefficients from i on, zeros around them.
    template <int i>
    [[gnu::always_inline]] static S16_128 coefficients(const Vsp16s* lpc) {
        constexpr int kLast = kSynthesisOrder - S16_128::width;
        if constexpr (i < 0)
            return {_mm_slli_si128(S16_128::load(lpc).v, -2 * i)};
        else if constexpr (i <= kLast)
            return S16_128::load(lpc + i);
        else
            return elementsFrom<i - kLast>(S16_128::load(lpc + kLast), S16_128::splat(0));
    }

    template <int i>
    [[gnu::always_inline]] static Eight32s coefficientPairs(const Vsp16s* lpc) {
        return pairsOf(coefficients<i>(lpc), coefficients<i - 1>(lpc));
    }

    // The products with the vectors from v on, those of two samples at a time.
    template <int v>
    [[gnu::always_inline]] void addVectors(ExactSums& total, const Vsp16s* lpc, int least) const {
        if constexpr (v < kPastVectors) {
            const int shift = past[v].scale - least;
            if (v < kPastVectors - 1 || shift < kNegligible) {
                const Vsp16s* const x = past[v].x;
                const Eight32s two = dotPairs(coefficientPairs<kVector * v + 4>(lpc), x),
                               four = add(two, dotPairs(coefficientPairs<kVector * v + 2>(lpc), x + 2)),
                               five = add(four, mulLower(widen(coefficients<kVector * v>(lpc)), x[4]));
                total.add(shr(sub(Eight32s::splat(0), five), shift));
            }
            addVectors<v + 1>(total, lpc, least);
        }
    }

    // For each sample of the next vector the sum of the products with the past, brought to a common scale vector after
    // vector, in vectors: if no sample is larger than those that advance() makes.
    bool sumsOfSmall(const Vsp16s* lpc, int least, Vsp64s* sums) const {
        constexpr int kWords = kPastVectors * (kVector + 1);
        S16_128 largest = S16_128::splat(0);
        const Vsp16s* const words = reinterpret_cast<const Vsp16s*>(past);
        for (int i = 0; i < kWords; i += S16_128::width) {
            const int at = i < kWords - S16_128::width ? i : kWords - S16_128::width;
            largest = maxU(largest, magnitude(S16_128::load(words + at)));
        }
        if (largestU(largest) > kMost) return false;

        ExactSums total;
        addVectors<0>(total, lpc, least);
        total.store(sums);
        return true;
    }

#endif

    [[gnu::noinline]] void sumsOfAny(const Vsp16s* lpc, int least, Vsp64s* sums) const {
        for (int n = 0; n < kVector; n++) {
            sums[n] = 0;
            for (int v = 0; v < kPastVectors; v++) {
                const int shift = past[v].scale - least;
                if (v == kPastVectors - 1 && shift >= kNegligible) continue;
                Vsp64s part = 0;
                for (int m = 0; m < kVector; m++) {
                    const int i = kVector * (v + 1) - 1 - m + n;
                    if (i < kSynthesisOrder) part -= lpc[i] * past[v].x[m];
                }
                sums[n] += shiftRight(part, shift > 30 ? 63 : shift);
            }
        }
    }
};

}  // namespace vsp::VSP_LEVEL::g728
