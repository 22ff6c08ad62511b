// Line spectral pairs back to the LP filter (Lsp_Az, Get_lsp_pol).
#pragma once

#include "arithmetic/split_32.h"
#include "core/level.h"

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

// lsp: 2 * kHalf cosines, Q15. lpc: one more coefficients, Q12, of which the low 16 bits are kept.
template <int kHalf>
VSP_INLINE void lspToLpc(const Vsp16s* lsp, Vsp16s* lpc) {
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

}  // namespace vsp::VSP_LEVEL
