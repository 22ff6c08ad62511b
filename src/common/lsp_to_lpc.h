// Line spectral pairs back to the LP filter (Lsp_Az, Get_lsp_pol).
#pragma once

#include "arithmetic/split_32.h"
#include "vector/four_32s.h"

namespace vsp::VSP_LEVEL {

// The product of 1 - 2 * lsp * z^-1 + z^-2 over every second element of lsp, up to the middle coefficient, in Q(kFormat).
// kProductFirst: of the two terms of a step the product is subtracted first.
template <int kHalf, int kFormat = 24, bool kProductFirst = false>
VSP_INLINE void lspProduct(const Vsp16s* lsp, Vsp32s* f) {
    constexpr int kSlope = 1 << (kFormat - 14);
    f[0] = 1 << kFormat;
    f[1] = -kSlope * lsp[0];
    for (int i = 2; i <= kHalf; i++) {
        const Vsp16s q = lsp[2 * (i - 1)];
        f[i] = f[i - 2];
        for (int j = i; j >= 2; j--) {
            const Vsp32s product = Mul2_32s(mulSplit_32s16s(f[j - 1], q));
            f[j] = kProductFirst ? addRare_32s(subRare_32s(f[j], product), f[j - 2])
                                 : subRare_32s(addRare_32s(f[j], f[j - 2]), product);
        }
        f[1] = subRare_32s(f[1], kSlope * q);
    }
}

// The same product of five factors for one element of lsp or, in each half of a vector, for one of two interleaved ones.
// All coefficients are computed that the symmetry of each partial product shows twice, so that a step is the same for all.
template <class V>
struct LspProduct {
    using W = Wide<V>;
    W coefficients;                            // 2 to 5
    W before;                                  // those from 1 to 4
    W magnitudes = W::splat(0);                // all that bear on saturation
    static constexpr Vsp32u kLimit = 1 << 29;  // of magnitudes with which no step saturates

    // cosines(k): that of factor k in both halves of every pair.
    template <class Cosines>
    [[gnu::always_inline]] explicit LspProduct(Cosines cosines) {
        const W highs = W::splat(-0x10000), lows = W::splat(0x7FFF);
        const W onlyFirst = inEveryBlock<W>(0, 0, 0, 1024), one = inEveryBlock<W>(0, 0, 1 << 24, 0);
        W first = sub(one, dot2(cosines(0), V{onlyFirst.v}));  // coefficients 0 and 1 behind anything
        coefficients = inEveryBlock<W>(1 << 24, 0, 0, 0);
        for (int k = 1; k < 5; k++) {
            before = movedIn<1>(first, coefficients);
            magnitudes.v |= magnitude(coefficients).v;
            const V q = cosines(k);
            const W high = dot2(V{before.v & highs.v}, q), low = dot2(V{shrU(before, 1).v & lows.v}, q);
            const W quarter = add(high, shr(low, 15)), half = add(quarter, quarter);
            coefficients = sub(add(coefficients, movedIn<2>(first, coefficients)), add(half, half));
            first = sub(first, dot2(q, V{onlyFirst.v}));
        }
        before = movedIn<1>(first, coefficients);
        magnitudes.v |= magnitude(coefficients).v;
    }
};

// Sums and differences of the products for the even and the odd elements, at coefficients 2 to 5 of the filter.
struct LspSums {
    S32_128 sum, difference, magnitudes;
};

VSP_INLINE LspSums lspSums(const Vsp16s* lsp) {
#if defined(__AVX2__)
    const LspProduct<S16_256> product([&](int k) {
        const S16_256 pairs = splatPair<S16_256>(lsp + 2 * k);
        return S16_256{_mm256_shuffle_epi8(pairs.v, _mm256_set_m128i(_mm_set1_epi16(0x0302), _mm_set1_epi16(0x0100)))};
    });
    const auto lower = [](S32_256 a) { return S32_128{_mm256_castsi256_si128(a.v)}; };
    const auto upper = [](S32_256 a) { return S32_128{_mm256_extracti128_si256(a.v, 1)}; };
    return {add(lower(product.coefficients), lower(product.before)),
            sub(upper(product.coefficients), upper(product.before)),
            {lower(product.magnitudes).v | upper(product.magnitudes).v}};
#else
    const LspProduct<S16_128> even([&](int k) { return S16_128::splat(lsp[2 * k]); });
    const LspProduct<S16_128> odd([&](int k) { return S16_128::splat(lsp[2 * k + 1]); });
    return {add(even.coefficients, even.before), sub(odd.coefficients, odd.before), {even.magnitudes.v | odd.magnitudes.v}};
#endif
}

template <int kHalf>
[[gnu::noinline]] static void lspToLpcSaturating(const Vsp16s* lsp, Vsp16s* lpc) {
    Vsp32s f1[kHalf + 1], f2[kHalf + 1];
    lspProduct<kHalf>(lsp, f1);
    lspProduct<kHalf>(lsp + 1, f2);
    const auto toQ12 = [](Vsp32s a) { return Vsp16s((a >> 13) + ((a >> 12) & 1)); };
    lpc[0] = 4096;
    for (int i = kHalf; i > 0; i--) {
        const Vsp32s sum = addRare_32s(f1[i], f1[i - 1]), difference = subRare_32s(f2[i], f2[i - 1]);
        lpc[i] = toQ12(addRare_32s(sum, difference));
        lpc[2 * kHalf + 1 - i] = toQ12(subRare_32s(sum, difference));
    }
}

// lsp: ten cosines, Q15. lpc: eleven coefficients, Q12, of which the low 16 bits are kept.
VSP_INLINE void lspToLpc(const Vsp16s* lsp, Vsp16s* lpc) {
    constexpr int kHalf = 5;
    const LspSums sums = lspSums(lsp);
    if (largestU(sums.magnitudes) >= LspProduct<S16_128>::kLimit) [[unlikely]]
        return lspToLpcSaturating<kHalf>(lsp, lpc);
    int even = 0, odd = 0;
    for (int i = 0; i < kHalf; i++) {
        even += lsp[2 * i];
        odd += lsp[2 * i + 1];
    }
    const auto toQ12 = [](S32_128 a) { return shr(add(shr(a, 12), S32_128::splat(1)), 1); };
    const auto ends = [](int a) { return Vsp16s((a + 4) >> 3); };  // the same of 1024 times a
    lpc[0] = 4096;
    lpc[1] = ends(-even - odd);
    storeFour(lowerHalves(toQ12(add(sums.sum, sums.difference))), lpc + 2);
    storeFour(lowerHalvesReversed(toQ12(sub(sums.sum, sums.difference))), lpc + kHalf + 1);
    lpc[2 * kHalf] = ends(0x8000 - even + odd);
}

}  // namespace vsp::VSP_LEVEL
