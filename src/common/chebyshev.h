// Sum and difference polynomials of an LP filter and their values on the unit circle by Chebyshev series (Az_lsp, Chebps).
#pragma once

#include "arithmetic/split_32.h"
#include "vector/signs.h"

namespace vsp::VSP_LEVEL {

// How a series is scaled; its coefficients are those of the polynomials in the format that goes with it.
struct ChebyshevForm {
    Vsp16s one;       // the start value 1, times 65536
    Vsp16s slope;     // factor of x in the first step
    Vsp16s addend;    // factor of a coefficient
    Vsp16s last;      // that of the last one
    int resultShift;  // right shift that leaves the result; it saturates to 16 bits
};

constexpr int kMaxLspGrid = 64;  // points of a grid, with margin

// One of the two polynomials: kHalf + 1 coefficients.
template <int kHalf>
struct LspPolynomial {
    Vsp16s f[kHalf + 1];
};

// Value at x, every step saturated.
template <int kHalf>
[[gnu::noinline]] static Vsp16s chebyshevSaturating(const LspPolynomial<kHalf>& p, const ChebyshevForm& form, Vsp16s x) {
    Vsp32s b2 = form.one * 65536, b1 = mac_32s(Mul2_32s(x * form.slope), p.f[1], form.addend);
    // -b2, split as everything
    const auto minus = [](Vsp32s sum, Vsp32s b) {
        return Sub_32s(mac_32s(sum, Vsp16s(b >> 16), kMin16), 2 * ((b >> 1) & 0x7FFF));
    };
    for (int i = 2; i < kHalf; i++) {
        const Vsp32s b0 = mac_32s(minus(Mul2_32s(mulSplit_32s16s(b1, x)), b2), p.f[i], form.addend);
        b2 = b1;
        b1 = b0;
    }
    const Vsp32s sum = mac_32s(minus(mulSplit_32s16s(b1, x), b2), p.f[kHalf], form.last);
    return sat_16s(sum >> form.resultShift);
}

// The same in 64 bits, where the wide sums tell whether one of them saturates.
template <int kHalf>
VSP_INLINE Vsp16s chebyshev(const LspPolynomial<kHalf>& p, const ChebyshevForm& form, Vsp16s x) {
    Vsp64u outside = 0;
    const auto note = [&outside](Vsp64s a) {
        outside |= Vsp64u(a + 0x80000000LL);
        return a;
    };
    Vsp64s b2 = form.one * 65536, b1 = note(2 * (x * form.slope + Vsp64s(p.f[1]) * form.addend));
    for (int i = 2; i < kHalf; i++) {
        const Vsp64s product = note(4 * (((b1 >> 1) * x) >> 15));
        const Vsp64s b0 = note(note(product - (b2 & ~1LL)) + 2 * (p.f[i] * form.addend));
        b2 = b1;
        b1 = b0;
    }
    const Vsp64s product = note(2 * (((b1 >> 1) * x) >> 15));
    const Vsp64s sum = note(note(product - (b2 & ~1LL)) + 2 * (p.f[kHalf] * form.last));
    if (outside >> 32 != 0) [[unlikely]]
        return chebyshevSaturating(p, form, x);
    return sat_16s(Vsp32s(sum) >> form.resultShift);
}

// The values at the 16-bit elements of a vector. Where one may have saturated on the way a sign bit of outside is set.
template <int kHalf, class V>
VSP_INLINE V chebyshev(const LspPolynomial<kHalf>& p, const ChebyshevForm& form, V x, Wide<V>& outside) {
    using W = Wide<V>;
    const W highs = W::splat(-0x10000), lows = W::splat(0x7FFF), even = W::splat(~1);
    const auto note = [&](auto bits) { outside.v = outside.v | bits; };
    // a - b + c, and where that leaves 32 bits
    const auto sum = [&](W a, W b, W c) {
        b.v = b.v & even.v;
        const W difference = sub(a, b), result = add(difference, c);
        note((a.v ^ b.v) & (a.v ^ difference.v));
        note(~(difference.v ^ c.v) & (difference.v ^ result.v));
        return result;
    };
    // The pairs are each of the same element twice.
    const auto half = [&](V pairs) {
        // twice b * x in Q15 of x, exact: (b >> 1) * x >> 15, the half of which is below 2^29, or its doubling saturates
        const auto product = [&](W b) {
            const W high = dot2(V{b.v & highs.v}, pairs), low = dot2(V{shrU(b, 1).v & lows.v}, pairs);
            const W t = add(high, shr(low, 15)), doubled = add(t, t), fourfold = add(doubled, doubled);
            note((t.v ^ doubled.v) | (doubled.v ^ fourfold.v));
            return doubled;
        };
        const W slope = dot2(pairs, V{W::splat(form.slope).v});  // the slope stands in the lower half of the pairs
        W b2 = W::splat(form.one * 65536), b1 = add(add(slope, slope), W::splat(2 * p.f[1] * form.addend));
        for (int i = 2; i < kHalf; i++) {
            const W doubled = product(b1), b0 = sum(add(doubled, doubled), b2, W::splat(2 * p.f[i] * form.addend));
            b2 = b1;
            b1 = b0;
        }
        return shr(sum(product(b1), b2, W::splat(2 * p.f[kHalf] * form.last)), form.resultShift);
    };
    return packSat(half(V{zipLo(x, x).v}), half(V{zipHi(x, x).v}));
}

// Values at the points of a grid, which is padded to kMaxLspGrid.
template <int kHalf>
VSP_INLINE void chebyshevOnGrid(const LspPolynomial<kHalf>& p, const ChebyshevForm& form, const Vsp16s* grid,
                                Vsp16s* values) {
    Wide<S16> outside = Wide<S16>::splat(0);
    for (int i = 0; i < kMaxLspGrid; i += S16::width) chebyshev(p, form, S16::load(grid + i), outside).store(values + i);
    if (anyNegative(outside)) [[unlikely]]
        for (int i = 0; i < kMaxLspGrid; i++) values[i] = chebyshevSaturating(p, form, grid[i]);
}

}  // namespace vsp::VSP_LEVEL
