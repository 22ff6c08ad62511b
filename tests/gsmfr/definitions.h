// The steps of GSM full rate that are done with vectors, as the standard reads: one operation of its arithmetic after the
// other. Arguments are taken as valid. Also what the benchmarks call scalar.
#pragma once

#include "arithmetic/basic_ops.h"

namespace vsp::test::gsmfr {

inline Vsp16s add(int a, int b) { return sat_16s(a + b); }
inline Vsp16s sub(int a, int b) { return sat_16s(a - b); }
inline Vsp16s mult(int a, int b) { return sat_16s((a * b) >> 15); }
inline Vsp16s mult_r(int a, int b) { return sat_16s((a * b + 16384) >> 15); }
inline Vsp16s abs_s(int a) { return sat_16s(a < 0 ? -a : a); }
inline int norm_l(Vsp32s a) {  // of a positive value
    int n = 0;
    while (a < 0x40000000) {
        a *= 2;
        n++;
    }
    return n;
}

inline VspStatus preprocess(const Vsp16s* x, Vsp16s* s, Vsp32s* mem) {
    for (int k = 0; k < 160; k++) {
        const Vsp16s so = Vsp16s((x[k] >> 3) * 4);
        const int msp = mem[1] >> 15, lsp = mem[1] & 0x7FFF;
        const Vsp32s l_s2 = Add_32s((so - Vsp16s(mem[0])) * 32768, mult_r(lsp, 32735));
        mem[0] = so;
        mem[1] = Add_32s(msp * 32735, l_s2);
        const Vsp16s sof = Vsp16s(Add_32s(mem[1], 16384) >> 15);
        s[k] = add(sof, mult_r(Vsp16s(mem[2]), -28180));
        mem[2] = sof;
    }
    return vspStsNoErr;
}

inline VspStatus autoCorr(Vsp16s* s, Vsp32s* acf) {
    Vsp16s smax = 0;
    for (int k = 0; k < 160; k++) smax = abs_s(s[k]) > smax ? abs_s(s[k]) : smax;
    const int scalauto = smax == 0 ? 0 : 4 - norm_l(smax << 16);
    if (scalauto > 0)
        for (int k = 0; k < 160; k++) s[k] = mult_r(s[k], 16384 >> (scalauto - 1));
    for (int k = 0; k <= 8; k++) {
        acf[k] = 0;
        for (int i = k; i < 160; i++) acf[k] += 2 * s[i] * s[i - k];
    }
    if (scalauto > 0)
        for (int k = 0; k < 160; k++) s[k] = Vsp16s(s[k] * (1 << scalauto));
    return vspStsNoErr;
}

inline VspStatus schur(const Vsp32s* l_acf, Vsp16s* r) {
    for (int i = 0; i < 8; i++) r[i] = 0;
    if (l_acf[0] <= 0) return vspStsNoErr;
    Vsp16s p[9], k[9];
    for (int i = 0; i <= 8; i++) p[i] = k[i] = Vsp16s(Vsp32s(Vsp32u(l_acf[i]) << norm_l(l_acf[0])) >> 16);
    for (int n = 1; n <= 8 && p[0] >= abs_s(p[1]); n++) {
        int quotient = 0, rest = abs_s(p[1]);
        for (int bit = 0; bit < 15 && rest != 0; bit++) {
            rest *= 2;
            quotient *= 2;
            if (rest >= p[0]) {
                rest -= p[0];
                quotient++;
            }
            if (rest == 0) quotient <<= 14 - bit;
        }
        r[n - 1] = Vsp16s(p[1] > 0 ? -quotient : quotient);
        p[0] = add(p[0], mult_r(p[1], r[n - 1]));
        for (int m = 1; m <= 8 - n; m++) {
            const Vsp16s next = p[m + 1];
            p[m] = add(next, mult_r(k[m], r[n - 1]));
            k[m] = add(k[m], mult_r(next, r[n - 1]));
        }
    }
    return vspStsNoErr;
}

// The reflection coefficients for sample k.
inline void interpolated(const Vsp16s* previous, const Vsp16s* current, int k, Vsp16s* r) {
    for (int i = 0; i < 8; i++) {
        const int p = previous[i], c = current[i], quarters = add(p >> 2, c >> 2);
        const Vsp16s lar = Vsp16s(k < 13   ? add(quarters, p >> 1)
                                  : k < 27 ? add(p >> 1, c >> 1)
                                  : k < 40 ? add(quarters, c >> 1)
                                           : c);
        const int x = abs_s(lar), y = x < 11059 ? 2 * x : x < 20070 ? x + 11059 : add(x >> 2, 26112);
        r[i] = Vsp16s(lar < 0 ? -y : y);
    }
}

inline VspStatus analysisFilter(const Vsp16s* previous, const Vsp16s* current, Vsp16s* s, Vsp16s* u) {
    Vsp16s r[8];
    for (int k = 0; k < 160; k++) {
        if (k == 0 || k == 13 || k == 27 || k == 40) interpolated(previous, current, k, r);
        Vsp16s di = s[k], sav = di;
        for (int i = 0; i < 8; i++) {
            const Vsp16s ui = u[i];
            u[i] = sav;
            sav = add(ui, mult_r(r[i], di));
            di = add(di, mult_r(r[i], ui));
        }
        s[k] = di;
    }
    return vspStsNoErr;
}

inline VspStatus synthesisFilter(const Vsp16s* previous, const Vsp16s* current, const Vsp16s* src, Vsp16s* dst,
                                 Vsp16s* mem) {
    Vsp16s r[8], v[9] = {mem[0], mem[1], mem[2], mem[3], mem[4], mem[5], mem[6], mem[7]};
    for (int k = 0; k < 160; k++) {
        if (k == 0 || k == 13 || k == 27 || k == 40) interpolated(previous, current, k, r);
        Vsp16s s = src[k];
        for (int i = 7; i >= 0; i--) {
            s = sub(s, mult_r(r[i], v[i]));
            v[i + 1] = add(v[i], mult_r(r[i], s));
        }
        dst[k] = v[0] = s;
    }
    for (int i = 0; i < 8; i++) mem[i] = v[i];
    return vspStsNoErr;
}

constexpr Vsp16s kGains[4] = {3277, 11469, 21299, 32767};

inline VspStatus longTermPredict(const Vsp16s* d, const Vsp16s* past, Vsp16s* e, Vsp16s* lag, Vsp16s* gain) {
    Vsp16s dmax = 0;
    for (int k = 0; k < 40; k++) dmax = abs_s(d[k]) > dmax ? abs_s(d[k]) : dmax;
    const int norm = dmax == 0 ? 6 : norm_l(dmax << 16), scal = norm < 6 ? 6 - norm : 0;
    Vsp32s largest = 0, power = 0;
    *lag = 40;
    for (Vsp16s candidate = 40; candidate <= 120; candidate++) {
        Vsp32s sum = 0;
        for (int k = 0; k < 40; k++) sum += (d[k] >> scal) * past[120 + k - candidate];
        if (sum > largest) {
            largest = sum;
            *lag = candidate;
        }
    }
    for (int k = 0; k < 40; k++) power += 2 * (past[120 + k - *lag] >> 3) * (past[120 + k - *lag] >> 3);
    largest = (2 * largest) >> (6 - scal);
    *gain = 0;
    if (largest >= power && largest > 0) {
        *gain = 3;
    } else if (largest > 0) {
        const int n = norm_l(power), r = (largest << n) >> 16, s = (power << n) >> 16;
        *gain = Vsp16s(r <= mult(s, 6554) ? 0 : r <= mult(s, 16384) ? 1 : r <= mult(s, 26214) ? 2 : 3);
    }
    for (int k = 0; k < 40; k++) e[k] = sub(d[k], mult_r(kGains[*gain], past[120 + k - *lag]));
    return vspStsNoErr;
}

inline VspStatus weightingFilter(const Vsp16s* e, Vsp16s* x) {
    const int h[11] = {-134, -374, 0, 2054, 5741, 8192, 5741, 2054, 0, -374, -134};
    for (int k = 0; k < 40; k++) {
        Vsp32s sum = 4096;
        for (int i = 0; i <= 10; i++)
            if (k + 5 - i >= 0 && k + 5 - i < 40) sum += h[i] * e[k + 5 - i];
        x[k] = sat_16s(sum >> 13);
    }
    return vspStsNoErr;
}

inline VspStatus longTermSynthesis(const Vsp16s* e, Vsp16s* past, Vsp16s* d, Vsp16s lag, Vsp16s gain, Vsp16s* previous) {
    if (lag >= 40 && lag <= 120) *previous = lag;
    for (int k = 0; k < 40; k++) d[k] = add(e[k], mult_r(kGains[gain & 3], past[120 + k - *previous]));
    for (int k = 0; k < 80; k++) past[k] = past[k + 40];
    for (int k = 0; k < 40; k++) past[80 + k] = d[k];
    return vspStsNoErr;
}

inline VspStatus postprocess(Vsp16s* s, Vsp16s* mem) {
    for (int k = 0; k < 160; k++) {
        *mem = add(s[k], mult_r(*mem, 28180));
        s[k] = Vsp16s(add(*mem, *mem) & 0xFFF8);
    }
    return vspStsNoErr;
}

}  // namespace vsp::test::gsmfr
