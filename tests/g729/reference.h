// The routines of G.729 as the standard writes them: one saturating operation after the other, one sample after the other.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <utility>
#include <vector>

#include "core/api.h"
#include "support/samples.h"
#include "support/vector_case.h"

namespace vsp::test::g729 {

using Signal = std::vector<Vsp16s>;

inline Vsp32s sat32(long long a) { return Vsp32s(std::clamp<long long>(a, -0x80000000LL, 0x7FFFFFFF)); }
inline Vsp16s sat16(long long a) { return Vsp16s(std::clamp<long long>(a, -0x8000, 0x7FFF)); }
inline Vsp32s L_mult(Vsp16s a, Vsp16s b) { return sat32(2LL * a * b); }
inline Vsp32s L_mac(Vsp32s s, Vsp16s a, Vsp16s b) { return sat32(1LL * s + L_mult(a, b)); }
inline Vsp32s L_msu(Vsp32s s, Vsp16s a, Vsp16s b) { return sat32(1LL * s - L_mult(a, b)); }
inline Vsp32s L_shl(Vsp32s a, int n) { return n < 0 ? a >> std::min(-n, 31) : sat32(a * (1LL << std::min(n, 32))); }
inline Vsp16s extract_h(Vsp32s a) { return Vsp16s(a >> 16); }
inline Vsp16s round16(Vsp32s a) { return extract_h(sat32(a + 0x8000LL)); }
inline int norm_l(Vsp32s a) {  // of a value that is not negative
    int n = 0;
    while (a != 0 && (a << n) < 0x40000000) n++;
    return n;
}
inline Vsp32s Mpy_32(Vsp32s a, Vsp32s b) {
    const int ah = a >> 16, al = (a >> 1) & 0x7FFF, bh = b >> 16, bl = (b >> 1) & 0x7FFF;
    return Vsp32s(2LL * (ah * bh + ((ah * bl) >> 15) + ((al * bh) >> 15)));
}
inline Vsp32s Inv_sqrt(const Api& api, Vsp32s a) {  // has vectors of its own
    api.vspsInvSqrt_32s_I(&a, 1);
    return a;
}
inline Vsp32s dot(const Vsp16s* a, const Vsp16s* b, int n) {
    Vsp32s s = 0;
    for (int i = 0; i < n; i++) s = L_mac(s, a[i], b[i]);
    return s;
}

inline Signal Convolve(const Vsp16s* x, const Vsp16s* h, int len, int scaleFactor) {
    Signal y;
    for (int n = 0; n < len; n++) {
        Vsp32s s = 0;
        for (int i = 0; i <= n; i++) s = L_mac(s, x[i], h[n - i]);
        y.push_back(extract_h(L_shl(s, 15 - scaleFactor)));
    }
    return y;
}

inline Signal Cor_h_X(const Vsp16s* x, const Vsp16s* h, int len) {
    std::vector<Vsp32s> y;
    Vsp32s max = 0;
    for (int n = 0; n < len; n++) {
        y.push_back(dot(x + n, h, len - n));
        max = std::max(max, sat32(std::llabs(y.back())));
    }
    Signal d;
    for (const Vsp32s v : y) d.push_back(Vsp16s(v >> (18 - std::min(norm_l(max), 16))));
    return d;
}

// memory: ten outputs, the newest last. overflow tells whether a step saturated.
inline Signal Syn_filt(const Vsp16s* a, const Signal& x, const Signal& memory, int scaleFactor, bool& overflow) {
    Signal y = memory;
    const auto checked = [&](long long v) {
        overflow |= v != sat32(v);
        return sat32(v);
    };
    for (const Vsp16s in : x) {
        Vsp32s s = checked(2LL * in * a[0]);
        for (int j = 1; j <= 10; j++) s = checked(1LL * s - checked(2LL * a[j] * y[y.size() - std::size_t(j)]));
        s = checked(s * (1LL << (15 - scaleFactor)));
        y.push_back(extract_h(checked(s + 0x8000LL)));
    }
    return {y.begin() + 10, y.end()};
}

inline std::pair<Vsp32s, int> Lag_max(const Vsp16s* s, int len, int lagMin, int lagMax) {
    std::pair<Vsp32s, int> best(-0x7FFFFFFF - 1, lagMax);
    for (int k = lagMax; k >= lagMin; k--)
        if (const Vsp32s c = dot(s, s - k, len); c >= best.first) best = {c, k};
    return best;
}

// signal: 223 samples
inline int Pitch_ol(const Api& api, const Signal& signal) {
    long long energy = 0;
    for (const int s : signal) energy += 2LL * s * s;
    Signal scaled;
    for (const int s : signal)
        scaled.push_back(energy > 0x7FFFFFFF ? Vsp16s(s >> 3) : energy >= 1 << 20 ? Vsp16s(s) : sat16(8 * s));
    const Vsp16s* current = scaled.data() + 143;
    const auto section = [&](int lagMin, int lagMax) {
        const auto [max, lag] = Lag_max(current, 80, lagMin, lagMax);
        return std::pair(Vsp16s(Mpy_32(max, Inv_sqrt(api, dot(current - lag, current - lag, 80)))), lag);
    };
    auto best = section(80, 143);
    for (const auto& next : {section(40, 79), section(20, 39)})
        if ((best.first * 27853) >> 15 < next.first) best = next;
    return best.second;
}

inline int Pitch_ol_fast(const Api& api, const Signal& signal) {
    const auto product = [](const Vsp16s* a, const Vsp16s* b, int n) {
        long long s = 0;
        for (int i = 0; i < n; i += 2) s += 2LL * a[i] * b[i];
        return s;
    };
    const long long energy = product(signal.data(), signal.data(), 223);
    Signal scaled;
    for (const int s : signal)
        scaled.push_back(energy > 0x7FFFFFFF ? Vsp16s(s >> 3) : energy >= 1 << 20 ? Vsp16s(s) : sat16(8 * s));
    const Vsp16s* current = scaled.data() + 143;
    const auto at = [&](int lag) { return product(current, current - lag, 80); };
    const auto section = [&](int first, int end, int step) {
        std::pair<Vsp32s, int> best(-0x7FFFFFFF - 1, first);
        for (int k = first; k < end; k += step) {
            if (at(k) != sat32(at(k))) return std::pair(0x7FFFFFFF, k);
            if (at(k) > best.first) best = {Vsp32s(at(k)), k};
        }
        return best;
    };
    std::pair<Vsp32s, int> best[4] = {{}, section(20, 40, 1), section(40, 80, 1), section(80, 143, 2)};
    const int centre = best[3].second;
    for (const int k : {centre + 1, centre - 1})
        if (sat32(at(k)) > best[3].first) best[3] = {sat32(at(k)), k};
    int norm[4], T[4];
    for (int i = 1; i <= 3; i++) {
        T[i] = best[i].second;
        norm[i] = Vsp16s(Mpy_32(best[i].first, Inv_sqrt(api, sat32(1 + product(current - T[i], current - T[i], 80)))));
    }
    if (std::abs(2 * T[2] - T[3]) < 5 || std::abs(3 * T[2] - T[3]) < 7) norm[2] += norm[3] >> 2;
    if (std::abs(2 * T[1] - T[2]) < 5 || std::abs(3 * T[1] - T[2]) < 7) norm[1] += (norm[2] * 6554) >> 15;
    int winner = 1;
    for (int i = 2; i <= 3; i++)
        if (norm[winner] < norm[i]) winner = i;
    return T[winner];
}

// Of the lags t_min .. t_max. u points at the current subframe.
inline Signal Norm_Corr(const Api& api, const Vsp16s* u, const Vsp16s* x, const Vsp16s* h, int t_min, int t_max) {
    Signal f = Convolve(u - t_min, h, 40, 12), corr;
    const bool large = dot(f.data(), f.data(), 40) > 1 << 26;
    if (large)
        for (Vsp16s& v : f) v = Vsp16s(v >> 2);
    for (int k = t_min; k <= t_max; k++) {
        const Vsp32s r = dot(x, f.data(), 40), q = Inv_sqrt(api, dot(f.data(), f.data(), 40));
        corr.push_back(sat16(Mpy_32(r, q)));
        const Vsp16s e = u[-(k + 1)];
        for (std::size_t j = 39; j > 0; j--) f[j] = sat16(extract_h(L_shl(L_mult(e, h[j]), large ? 1 : 3)) + f[j - 1]);
        f[0] = Vsp16s(large ? e >> 2 : e);
    }
    return corr;
}

inline constexpr Vsp16s kInter3[] = {29519, 24906, 13896, 2755, -3459, -3969, -1561, 534, 1023, 516, 0, -194, 0};
inline constexpr Vsp16s kInter3l[] = {29443, 25207, 14701, 3143, -4402, -5850, -2783, 1211, 3130, 2259, 0,
                                      -1652, -1666, -464,  756,  1099,  550,   -245,  -634, -451, 0,    308,
                                      296,   78,    -120,  -165, -79,   34,    91,    70,   0};

inline Vsp32s Interpol_3(const Vsp16s* c, int fraction) {
    if (fraction < 0) {
        fraction += 3;
        c--;
    }
    Vsp32s s = 16384;
    for (int i = 0; i < 4; i++) s += c[-i] * kInter3[fraction + 3 * i] + c[1 + i] * kInter3[3 - fraction + 3 * i];
    return s >> 15;
}

// excitation: 194 samples
inline void Pred_lt_3(Signal& excitation, int lag, int fraction) {
    Vsp16s* const out = excitation.data() + 154;
    const Vsp16s* x0 = out - lag;
    fraction = -fraction;
    if (fraction < 0) {
        fraction += 3;
        x0--;
    }
    for (int n = 0; n < 40; n++) {
        Vsp32s s = 0;
        for (int i = 0; i < 10; i++) {
            s = L_mac(s, x0[n - i], kInter3l[fraction + 3 * i]);
            s = L_mac(s, x0[n + 1 + i], kInter3l[3 - fraction + 3 * i]);
        }
        out[n] = round16(s);
    }
}

using Delay = std::pair<int, int>;  // lag and fraction
inline Delay range(int lag, int subframe) {
    const int span = subframe == 0 ? 6 : 9, t_min = std::max(lag - (subframe == 0 ? 3 : 5), 20);
    return t_min + span > 143 ? Delay(143 - span, 143) : Delay(t_min, t_min + span);
}

// The main search, and that of Annex D.
inline Delay Pitch_fr3(const Api& api, const Signal& excitation, const Signal& x, const Signal& h, int lag, int subframe,
                       bool annexD) {
    const auto [t_min, t_max] = range(lag, subframe);
    const Signal corr = Norm_Corr(api, excitation.data() + 154, x.data(), h.data(), t_min - 4, t_max + 4);
    const auto at = [&, first = t_min - 4](int k) { return &corr[std::size_t(k - first)]; };
    int best = t_min;
    for (int k = t_min; k <= t_max; k++)
        if (*at(k) >= *at(best)) best = k;
    int first = -2, last = 2;
    if (subframe == 0 && best > 84) return {best, 0};
    if (annexD && subframe == 1) {
        const int d = best - (t_max - 4);
        if (d < -2 || d > 1) return {best, 0};
        if (d == -2) first = 0;
        if (d == 1) last = 0;
    }
    int fraction = first;
    for (int f = first; f <= last; f++)
        if (Interpol_3(at(best), f) > Interpol_3(at(best), fraction)) fraction = f;
    return fraction == -2 ? Delay(best - 1, 1) : fraction == 2 ? Delay(best + 1, -1) : Delay(best, fraction);
}

// Leaves the vector in the excitation.
inline Delay Pitch_fr3_fast(Signal& excitation, const Signal& x, const Signal& h, int lag, int subframe) {
    const Signal d = Cor_h_X(x.data(), h.data(), 40);
    const auto sum = [&](const Vsp16s* v) {
        long long s = 0;
        for (std::size_t i = 0; i < 40; i++) s += 1LL * d[i] * v[i];
        return s;
    };
    const auto doubled = [&](int k) { return sat32(2 * sum(&excitation[154] - k)); };
    const auto plain = [&](const Signal& candidate) { return sat32(sum(&candidate[154])); };
    const auto [t_min, t_max] = range(lag, subframe);
    int best = t_min;
    for (int k = t_min; k <= t_max; k++)
        if (doubled(k) > doubled(best)) best = k;
    int fraction = 0;
    Signal kept = excitation;
    Pred_lt_3(kept, best, 0);
    if (subframe == 1 || best <= 84)
        for (const int f : {-1, 1}) {
            Signal candidate = excitation;
            Pred_lt_3(candidate, best, f);
            if (plain(candidate) > plain(kept)) {
                fraction = f;
                kept = candidate;
            }
        }
    excitation = kept;
    return {best, fraction};
}

inline int G_pitch(const Signal& x, const Signal& y) {
    const auto sum = [](const Signal& a, const Signal& b, int shiftA, int shiftB) {
        long long s = 0;
        for (std::size_t i = 0; i < 40; i++) s += (a[i] >> shiftA) * (b[i] >> shiftB);
        return s;
    };
    long long yy = sum(y, y, 0, 0), xy = sum(x, y, 0, 0);
    int expYY = 0, expXY = 0;
    if (yy >= 0x3FFFFFFF) {
        yy = sum(y, y, 2, 2);
        expYY = -4;
    }
    if (xy >= 0x3FFFFFFF || xy < -0x3FFFFFFF) {
        xy = sum(x, y, 0, 2);
        expXY = -2;
    }
    if (xy <= 0) return 0;
    const Vsp32s yyLong = sat32(2 * yy + 1), xyLong = sat32(2 * xy);
    const int yyMantissa = round16(L_shl(yyLong, norm_l(yyLong))), xyMantissa = round16(L_shl(xyLong, norm_l(xyLong)));
    const int right = expXY + norm_l(xyLong) - expYY - norm_l(yyLong), quotient = (xyMantissa >> 1) * 32768 / yyMantissa;
    return std::min<int>(right >= 0 ? quotient >> std::min(right, 31) : sat16(quotient * (1LL << -right)), 19661);
}

}  // namespace vsp::test::g729
