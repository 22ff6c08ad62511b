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
    // Series of immittance spectral pairs: they begin with the first coefficient in place of `one`, steps take off low
    // words after all else, and results do not get to -32768.
    bool immittance = false;
};

constexpr int kMaxLspGrid = 64;  // points of a grid, with margin

// One of the two polynomials: kHalf + 1 coefficients. kImmittance: those of immittance spectral pairs, whose series begin
// with the first coefficient in place of `one`, take off low words after all else and do not get to -32768.
template <int kHalf, bool kImmittance = false>
struct LspPolynomial {
    Vsp16s f[kHalf + 1];
};

// Value at x, every step saturated.
template <int kHalf, bool kImmittance>
[[gnu::noinline]] static Vsp16s chebyshevSaturating(const LspPolynomial<kHalf, kImmittance>& p, const ChebyshevForm& form,
                                                    Vsp16s x) {
    Vsp32s b2 = form.one * 65536, b1 = mac_32s(Mul2_32s(x * form.slope), p.f[1], form.addend);
    if (kImmittance) {
        b2 = 2 * p.f[0] * form.addend;
        b1 = mac_32s(Mul2_32s(mulSplit_32s16s(b2, x)), p.f[1], form.addend);
    }
    const auto low = [](Vsp32s b) { return 2 * ((b >> 1) & 0x7FFF); };
    // -b2, split as everything
    const auto minus = [low](Vsp32s sum, Vsp32s b) { return Sub_32s(mac_32s(sum, Vsp16s(b >> 16), kMin16), low(b)); };
    for (int i = 2; i < kHalf; i++) {
        Vsp32s b0 = mulSplit_32s16s(b1, x);
        if (kImmittance) {
            b0 = mac_32s(mac_32s(b0, Vsp16s(b2 >> 16), kMin16 / 2), p.f[i], form.addend / 2);
            b0 = Sub_32s(Mul2_32s(b0), low(b2));
        } else {
            b0 = mac_32s(minus(Mul2_32s(b0), b2), p.f[i], form.addend);
        }
        b2 = b1;
        b1 = b0;
    }
    const Vsp32s sum = mac_32s(minus(mulSplit_32s16s(b1, x), b2), p.f[kHalf], form.last);
    const Vsp16s value = sat_16s(sum >> form.resultShift);
    return kImmittance && value == kMin16 ? Vsp16s(-kMax16) : value;
}

// The same in 64 bits, where the wide sums tell whether one of them saturates.
template <int kHalf, bool kImmittance>
VSP_INLINE Vsp16s chebyshev(const LspPolynomial<kHalf, kImmittance>& p, const ChebyshevForm& form, Vsp16s x) {
    Vsp64u outside = 0;
    const auto note = [&outside](Vsp64s a) {
        outside |= Vsp64u(a + 0x80000000LL);
        return a;
    };
    const auto times = [&](Vsp64s b) { return ((b >> 1) * x) >> 15; };  // half the product
    const auto sum = [&](Vsp64s product, Vsp64s b, Vsp64s coefficient, bool lowLast) {
        const Vsp64s low = lowLast ? b & 0xFFFE : 0, rest = (b & ~1LL) - low;
        return note(note(note(product - rest) + coefficient) - low);
    };
    Vsp64s b2 = form.one * 65536, b1 = 2 * x * form.slope;
    if (kImmittance) {
        b2 = 2 * p.f[0] * form.addend;
        b1 = 4 * times(b2);
    }
    b1 = note(b1 + 2 * (Vsp64s(p.f[1]) * form.addend));
    for (int i = 2; i < kHalf; i++) {
        const Vsp64s b0 = sum(note(4 * times(b1)), b2, 2 * (p.f[i] * form.addend), kImmittance);
        b2 = b1;
        b1 = b0;
    }
    const Vsp64s total = sum(note(2 * times(b1)), b2, 2 * (p.f[kHalf] * form.last), false);
    if (outside >> 32 != 0) [[unlikely]]
        return chebyshevSaturating(p, form, x);
    const Vsp16s value = sat_16s(Vsp32s(total) >> form.resultShift);
    return kImmittance && value == kMin16 ? Vsp16s(-kMax16) : value;
}

// What the steps of a series add, in every element: the doubled coefficients times their factors.
template <class W, int kHalf, bool kImmittance>
struct ChebyshevAddends {
    W of[kHalf + 1];

    [[gnu::always_inline]] static Vsp32s addend(const LspPolynomial<kHalf, kImmittance>& p, const ChebyshevForm& form,
                                                int i) {
        return 2 * p.f[i] * (i < kHalf ? form.addend : form.last);
    }
    ChebyshevAddends() = default;
    [[gnu::always_inline]] ChebyshevAddends(const LspPolynomial<kHalf, kImmittance>& p, const ChebyshevForm& form) {
        for (int i = 0; i <= kHalf; i++) of[i] = W::splat(addend(p, form, i));
    }
};

// Whether no step can saturate at any x: the coefficients are too small, as |U_n(x)| <= n + 1. Always false for
// immittance spectral pairs.
template <int kHalf, bool kImmittance>
VSP_INLINE bool neverSaturates(const LspPolynomial<kHalf, kImmittance>& p, const ChebyshevForm& form) {
    if (kImmittance) return false;
    const auto magnitude = [](Vsp32s a) { return Vsp64s(a < 0 ? -a : a); };
    Vsp64s sum = form.one * 65536, largest = sum, before = 0, beforeThat = 0;  // |b| of this step and of those before
    for (int i = 1; i < kHalf; i++) {
        sum += magnitude(p.f[i]) * (2 * form.addend);
        beforeThat = before;
        before = largest;
        largest += sum;
    }
    constexpr Vsp64s kRounding = 1 << 16;
    return 2 * before + beforeThat + sum + magnitude(p.f[kHalf]) * (2 * form.last) + kRounding < 1LL << 31;
}

// The values, before they are shifted and saturated, at 16-bit elements each of which stands in both halves of a pair.
// Where one may have saturated on the way a sign bit of outside is set, unless kNever tells that none does.
template <bool kNever, class V, int kHalf, bool kImmittance>
VSP_INLINE Wide<V> chebyshevOfPairs(const ChebyshevAddends<Wide<V>, kHalf, kImmittance>& addends, const ChebyshevForm& form,
                                    V pairs, Wide<V>& outside) {
    using W = Wide<V>;
    const W highs = W::splat(-0x10000), lows = W::splat(0x7FFF), even = W::splat(~1);
    const auto note = [&](auto bits) {
        if (!kNever) outside.v = outside.v | bits;
    };
    // Sums and differences, and where they leave 32 bits.
    const auto plus = [&](W a, W b) {
        const W result = add(a, b);
        note(~(a.v ^ b.v) & (a.v ^ result.v));
        return result;
    };
    const auto minus = [&](W a, W b) {
        const W result = sub(a, b);
        note((a.v ^ b.v) & (a.v ^ result.v));
        return result;
    };
    // a - b + c
    const auto sum = [&](W a, W b, W c, bool lowLast) {
        b.v = b.v & even.v;
        if (!lowLast) return plus(minus(a, b), c);
        const W high{b.v & highs.v};
        return minus(plus(minus(a, high), c), sub(b, high));
    };
    // twice b * x in Q15 of x, exact: (b >> 1) * x >> 15, the half of which is below 2^29, or its doubling saturates
    const auto product = [&](W b) {
        const W high = dot2(V{b.v & highs.v}, pairs), low = dot2(V{shrU(b, 1).v & lows.v}, pairs);
        const W t = add(high, shr(low, 15)), doubled = add(t, t), fourfold = add(doubled, doubled);
        note((t.v ^ doubled.v) | (doubled.v ^ fourfold.v));
        return doubled;
    };
    W b2, b1;
    if (kImmittance) {
        b2 = addends.of[0];
        const W doubled = product(b2);
        b1 = add(doubled, doubled);
    } else {
        const W slope = dot2(pairs, V{W::splat(form.slope).v});  // the slope stands in the lower half of the pairs
        b2 = W::splat(form.one * 65536);
        b1 = add(slope, slope);
    }
    b1 = add(b1, addends.of[1]);
    for (int i = 2; i < kHalf; i++) {
        const W doubled = product(b1), b0 = sum(add(doubled, doubled), b2, addends.of[i], kImmittance);
        b2 = b1;
        b1 = b0;
    }
    return sum(product(b1), b2, addends.of[kHalf], false);
}

// The values at the 16-bit elements of a vector.
template <bool kNever = false, int kHalf, bool kImmittance, class V>
VSP_INLINE V chebyshev(const ChebyshevAddends<Wide<V>, kHalf, kImmittance>& addends, const ChebyshevForm& form, V x,
                       Wide<V>& outside) {
    const Wide<V> lo = chebyshevOfPairs<kNever>(addends, form, V{zipLo(x, x).v}, outside);
    const Wide<V> hi = chebyshevOfPairs<kNever>(addends, form, V{zipHi(x, x).v}, outside);
    const V values = packSat(shr(lo, form.resultShift), shr(hi, form.resultShift));
    return kImmittance ? max(values, V::splat(-kMax16)) : values;
}
template <bool kNever = false, int kHalf, bool kImmittance, class V>
VSP_INLINE V chebyshev(const LspPolynomial<kHalf, kImmittance>& p, const ChebyshevForm& form, V x, Wide<V>& outside) {
    return chebyshev<kNever>(ChebyshevAddends<Wide<V>, kHalf, kImmittance>(p, form), form, x, outside);
}

// Values at the points of a grid, which is padded to kGrid.
template <int kGrid, bool kNever, int kHalf, bool kImmittance>
VSP_INLINE void chebyshevOnGrid(const LspPolynomial<kHalf, kImmittance>& p, const ChebyshevForm& form, const Vsp16s* grid,
                                Vsp16s* values) {
    Wide<S16> outside = Wide<S16>::splat(0);
    for (int i = 0; i < kGrid; i += S16::width) chebyshev<kNever>(p, form, S16::load(grid + i), outside).store(values + i);
    if (anyNegative(outside)) [[unlikely]]
        for (int i = 0; i < kGrid; i++) values[i] = chebyshevSaturating(p, form, grid[i]);
}

}  // namespace vsp::VSP_LEVEL
