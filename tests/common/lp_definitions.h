// Linear prediction as the standards' routines work: one saturating operation after the other. The tests compare the
// library with it; the benchmarks take it as the scalar definition.
#pragma once

#include <algorithm>
#include <vector>

#include "arithmetic/standard_ops.h"

namespace vsp::plain::lp {

using I16 = Vsp16s;
using I32 = Vsp32s;

inline bool overflow;  // of the operations that follow, where a routine looks at it
inline I32 keep(Vsp64s a) {
    const I32 kept = Cnvrt_64s32s(a);
    overflow |= kept != a;
    return kept;
}
inline I32 lMult(I16 a, I16 b) { return keep(2LL * a * b); }
inline I32 lAdd(I32 a, I32 b) { return keep(Vsp64s(a) + b); }
inline I32 lSub(I32 a, I32 b) { return keep(Vsp64s(a) - b); }
inline I32 lMac(I32 s, I16 a, I16 b) { return lAdd(s, lMult(a, b)); }
inline I32 lMsu(I32 s, I16 a, I16 b) { return lSub(s, lMult(a, b)); }
inline I32 lShl(I32 a, int n) { return n < 0 ? shl_32s(a, n) : keep(Vsp64s(a) * (1LL << std::min(n, 32))); }
inline I16 round16(I32 a) { return high_32s(lAdd(a, 0x8000)); }

struct Split {
    I16 hi, lo;
    explicit Split(I32 a) : hi(I16(a >> 16)), lo(I16((a >> 1) & 0x7FFF)) {}
    I32 value() const { return hi * 65536 + lo * 2; }
};
inline I32 mpy(Split a, I16 b) { return lMac(lMult(a.hi, b), Mul_16s(a.lo, b), 1); }
inline I32 mpy(Split a, Split b) { return lMac(lMac(lMult(a.hi, b.hi), Mul_16s(a.hi, b.lo), 1), Mul_16s(a.lo, b.hi), 1); }
inline I32 div32(I32 num, Split den) {
    const I16 approximation = Div_16s(0x3FFF, den.hi);
    const I32 t = mpy(Split(lSub(kMax32, mpy(den, approximation))), approximation);
    return lShl(mpy(Split(num), Split(t)), 2);
}

// Autocorr behind the window. Returns whether the samples were divided.
inline bool autoCorr(const I16* src, int len, I32* r, int lags, I32* norm) {
    std::vector<I16> y(src, src + len);
    int divisions = 0;
    for (;; divisions++) {
        overflow = false;
        r[0] = 1;
        for (const I16 a : y) r[0] = lMac(r[0], a, a);
        if (!overflow) break;
        for (I16& a : y) a = I16(a >> 2);
    }
    const int shift = norm_32s(r[0]);
    for (int k = 0; k < lags; k++) {
        if (k > 0) r[k] = 0;
        for (int i = k; k > 0 && i < len; i++) r[k] = lMac(r[k], y[std::size_t(i)], y[std::size_t(i - k)]);
        r[k] = Split(lShl(r[k], shift)).value();
    }
    *norm = shift - 4 * divisions;
    return divisions > 0;
}

// Lsp_Az: ten cosines to eleven coefficients.
inline void lspToLpc(const I16* lsp, I16* lpc) {
    I32 f[2][6];
    for (int p = 0; p < 2; p++) {
        f[p][0] = 1 << 24;
        f[p][1] = lMsu(0, lsp[p], 512);
        for (int i = 2; i <= 5; i++) {
            const I16 q = lsp[2 * i - 2 + p];
            f[p][i] = f[p][i - 2];
            for (int j = i; j > 1; j--) f[p][j] = lSub(lAdd(f[p][j], f[p][j - 2]), lShl(mpy(Split(f[p][j - 1]), q), 1));
            f[p][1] = lMsu(f[p][1], q, 512);
        }
    }
    lpc[0] = 4096;
    for (int i = 1; i <= 5; i++) {
        const I32 sum = lAdd(f[0][i], f[0][i - 1]), difference = lSub(f[1][i], f[1][i - 1]);
        const auto rounded = [](I32 a) { return I16((Vsp64s(a) + 4096) >> 13); };
        lpc[i] = rounded(lAdd(sum, difference));
        lpc[11 - i] = rounded(lSub(sum, difference));
    }
}

inline void residual(const I16* src, const I16* lpc, int order, I16* dst, int len) {
    for (int n = 0; n < len; n++) {
        I32 s = 0;
        for (int j = 0; j <= order; j++) s = lMac(s, lpc[j], src[n - j]);
        dst[n] = round16(lShl(s, 3));
    }
}

// Returns whether something saturated.
inline bool synthesis(const I16* lpc, const I16* src, I16* dst, int len, int order, const I16* mem) {
    std::vector<I16> y(mem, mem + order);
    overflow = false;
    for (int n = 0; n < len; n++) {
        I32 s = lMult(src[n], lpc[0]);
        for (int j = 1; j <= order; j++) s = lMsu(s, lpc[j], y[y.size() - std::size_t(j)]);
        y.push_back(round16(lShl(s, 3)));
    }
    std::copy(y.begin() + order, y.end(), dst);
    return overflow;
}

// The filter in Q27 and the reflection coefficients in Q31. Returns whether the recursion ended well.
inline bool levinson(const I32* r, int order, bool limited, std::vector<I32>& a, std::vector<I32>& k, I16& err) {
    const auto limit = [=](I32 num, I32 den) { return limited ? std::min(num, den) : num; };
    const auto value = [r](int i) { return Split(r[i]).value(); };
    const auto magnitude = [](I32 x) { return Abs_32s(x); };
    a.assign(std::size_t(order + 1), 0);
    k.assign(std::size_t(order), 0);
    I32 alpha = value(0);
    int exponent = 0;
    for (int i = 1; i <= order; i++) {
        const auto at = [&](int j) -> I32& { return a[std::size_t(j)]; };
        I32 s = 0;
        for (int j = 1; j < i; j++) s = lAdd(s, mpy(Split(r[j]), Split(at(i - j))));
        s = i == 1 ? limit(value(1), alpha) : lAdd(lShl(s, 4), value(i));
        I32 q = div32(i == 1 ? magnitude(s) : limit(magnitude(s), alpha), Split(alpha));
        if (s > 0) q = lSub(0, q);
        q = lShl(q, exponent);
        k[std::size_t(i - 1)] = q;
        if (i > 1 && std::abs(q >> 16) > 32750) return false;
        const auto before = a;
        for (int j = 1; j < i; j++)
            at(j) = Split(lAdd(mpy(Split(q), Split(before[std::size_t(i - j)])), before[std::size_t(j)])).value();
        at(i) = Split(q >> 4).value();
        alpha = mpy(Split(alpha), Split(lSub(kMax32, magnitude(mpy(Split(q), Split(q))))));
        const int shift = norm_32s(alpha);
        alpha = Split(lShl(alpha, shift)).value();
        exponent += shift;
    }
    err = shr_16s(high_32s(alpha), exponent);
    return true;
}

struct RootSearch {
    int points, bisections;
    bool amr;  // Q10 polynomials only, with other factors
};

inline I16 chebyshev(const I16* f, I16 x, int one, int slope, int addend, int last, int shift) {
    Split b2(one * 65536), b1(lMac(lMult(x, I16(slope)), f[1], I16(addend)));
    const auto less = [&](I32 t) { return lMsu(lMac(t, b2.hi, kMin16), b2.lo, 1); };
    for (int i = 2; i < 5; i++) {
        const Split b0(lMac(less(lShl(mpy(b1, x), 1)), f[i], I16(addend)));
        b2 = b1;
        b1 = b0;
    }
    return high_32s(lShl(lMac(less(mpy(b1, x)), f[5], I16(last)), shift));
}

// Az_lsp. Returns whether all roots were found.
inline bool lpcToLsp(const I16* lpc, const I16* grid, RootSearch search, I16* lsp) {
    I16 f[2][6];
    const auto polynomials = [&](I16 one, I16 factor) {
        bool saturated = false;
        f[0][0] = f[1][0] = one;
        for (int i = 0; i < 5; i++) {
            const int sum = high_32s(lMac(lMult(lpc[i + 1], factor), lpc[10 - i], factor)) - f[0][i];
            const int difference = high_32s(lMsu(lMult(lpc[i + 1], factor), lpc[10 - i], factor)) + f[1][i];
            f[0][i + 1] = sat_16s(sum);
            f[1][i + 1] = sat_16s(difference);
            saturated |= sum != f[0][i + 1] || difference != f[1][i + 1];
        }
        return saturated;
    };
    const bool small = search.amr ? (polynomials(1024, 8192), false) : polynomials(2048, 16384);
    if (small) polynomials(1024, 8192);
    const auto at = [&](int p, I16 x) {
        if (search.amr) return chebyshev(f[p], x, 256, 512, 8192, 4096, 6);
        return small ? chebyshev(f[p], x, 128, 256, 4096, 2048, 7) : chebyshev(f[p], x, 256, 512, 4096, 2048, 6);
    };
    int found = 0;
    I16 xLow = grid[0], yLow = at(0, xLow);
    for (int j = 1; j < search.points && found < 10; j++) {
        const int p = found % 2;
        I16 xHigh = xLow, yHigh = yLow;
        xLow = grid[j];
        yLow = at(p, xLow);
        if (lMult(yLow, yHigh) > 0) continue;
        for (int i = 0; i < search.bisections; i++) {
            const I16 x = Add_16s(I16(xLow >> 1), I16(xHigh >> 1)), y = at(p, x);
            const bool lower = lMult(yLow, y) <= 0;
            (lower ? xHigh : xLow) = x;
            (lower ? yHigh : yLow) = y;
        }
        const I16 width = Sub_16s(xHigh, xLow), rise = Sub_16s(yHigh, yLow);
        if (rise != 0) {
            const int e = norm_16s(Abs_16s(rise));
            I16 slope = I16(lMult(width, Div_16s(16383, shl_16s(Abs_16s(rise), e))) >> (20 - e));
            if (rise < 0) slope = Negate_16s(slope);
            xLow = Sub_16s(xLow, I16(lMult(yLow, slope) >> 11));
        }
        lsp[found++] = xLow;
        yLow = at(found % 2, xLow);
    }
    return found == 10;
}

}  // namespace vsp::plain::lp
