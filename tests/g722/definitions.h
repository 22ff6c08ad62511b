// G.722 as the Recommendation reads: one band, one sample, one saturating operation after the other. Arguments are taken as
// valid. Also what the benchmarks call scalar.
#pragma once

#include "arithmetic/basic_ops.h"

namespace vsp::test::g722 {

constexpr int kQ6[29] = {35,  72,  110, 150,  190,  233,  276,  323,  370,  422,  473,  530,  587,  650, 714,
                         786, 858, 940, 1023, 1121, 1219, 1339, 1458, 1612, 1765, 1980, 2195, 2557, 2919};
// Magnitudes of the inverse quantisers from the smallest to the largest, and what they add to the logarithmic scale factor.
constexpr int kLevels4[8] = {0, 1200, 2584, 4240, 6288, 8968, 12896, 20456};
constexpr int kSteps4[8] = {-60, -30, 58, 172, 334, 538, 1198, 3042};
constexpr int kLevels5[15] = {280, 880, 1520, 2208, 2960, 3784, 4696, 5712, 6864, 8184, 9752, 11664, 14120, 17560, 23352};
constexpr int kLevels6[30] = {136,  432,   728,   1040,  1360,  1688,  2032,  2400,  2776,  3168,
                              3576, 4008,  4464,  4944,  5456,  6000,  6576,  7192,  7856,  8576,
                              9360, 10232, 11192, 12280, 13512, 14984, 16704, 19008, 21904, 24808};

inline Vsp16s mul(int a, int b) { return Vsp16s((a * b) >> 15); }
inline Vsp16s plus(int a, int b) { return sat_16s(a + b); }
inline int clamp(int x, int low, int high) { return x < low ? low : x > high ? high : x; }
inline int sign(int x) { return x < 0 ? -1 : 1; }

// The value of a low-band code of so many bits.
inline int lowLevel(int code, int bits) {
    if (bits == 4) return code == 0 ? 0 : code < 8 ? -kLevels4[8 - code] : kLevels4[15 - code];
    if (bits == 5) return code < 2 || code == 31 ? -280 : code < 16 ? -kLevels5[16 - code] : kLevels5[30 - code];
    return code < 4 ? -136 : code < 32 ? -kLevels6[33 - code] : code < 62 ? kLevels6[61 - code] : -kLevels6[63 - code];
}

struct Band {
    bool high;
    Vsp16s s = 0, sz = 0, a1 = 0, a2 = 0, b[7] = {}, d[7] = {}, r1 = 0, p1 = 0, p2 = 0, nb = 0;

    int det() const {
        const int mantissa[32] = {2048, 2093, 2139, 2186, 2233, 2282, 2332, 2383, 2435, 2489, 2543,
                                  2599, 2656, 2714, 2774, 2834, 2896, 2960, 3025, 3091, 3158, 3228,
                                  3298, 3371, 3444, 3520, 3597, 3676, 3756, 3838, 3922, 4008};
        const int shift = (high ? 10 : 8) - (nb >> 11), value = mantissa[(nb >> 6) & 31];
        return 4 * (shift < 0 ? value << -shift : value >> shift);
    }

    int quantise(int x) const {
        const int e = plus(x, -s), magnitude = e < 0 ? -e - 1 : e;
        if (high) {
            const bool outer = magnitude >= mul(8 * 564, det());
            return e < 0 ? (outer ? 0 : 1) : (outer ? 2 : 3);
        }
        int reached = 0;
        while (reached < 29 && magnitude >= mul(8 * kQ6[reached], det())) reached++;
        return e >= 0 ? 61 - reached : reached < 2 ? 63 - reached : 33 - reached;
    }

    int adaptationLevel(int code) const {
        return high ? (code < 2 ? -1 : 1) * (code % 2 == 0 ? 7408 : 1616) : lowLevel(code >> 2, 4);
    }

    Vsp16s output(int code, int mode) const {
        const int level = high ? adaptationLevel(code) : lowLevel(code >> (mode - 1), 7 - mode);
        return Vsp16s(clamp(plus(s, mul(det(), level)), -16384, 16383));
    }

    void adapt(int code) {
        const Vsp16s d0 = mul(det(), adaptationLevel(code)), p0 = plus(d0, sz), r0 = plus(s, d0);
        const int ril = code >> 2, index = ril == 0 || ril == 15 ? 0 : ril < 8 ? 8 - ril : 15 - ril;
        const int step = high ? (code % 2 == 0 ? 798 : -214) : kSteps4[index];
        nb = Vsp16s(clamp(mul(nb, 32512) + step, 0, high ? 22528 : 18432));
        for (int i = 1; i <= 6; i++) b[i] = plus(d0 == 0 ? 0 : 128 * sign(d0) * sign(d[i]), mul(b[i], 32640));
        for (int i = 6; i > 1; i--) d[i] = d[i - 1];
        d[1] = d0;
        const int w1 = sat_16s(4 * a1), w2 = sign(p0) == sign(p1) ? sat_16s(-w1) : w1;
        const int next = plus(plus(w2 >> 7, 128 * sign(p0) * sign(p2)), mul(a2, 32512));
        a2 = Vsp16s(clamp(next, -12288, 12288));
        a1 = Vsp16s(clamp(plus(192 * sign(p0) * sign(p1), mul(a1, 32640)), a2 - 15360, 15360 - a2));
        p2 = p1;
        p1 = p0;
        sz = 0;
        for (int i = 6; i >= 1; i--) sz = plus(sz, mul(sat_16s(2 * d[i]), b[i]));
        s = plus(plus(mul(a1, sat_16s(2 * r0)), mul(a2, sat_16s(2 * r1))), sz);
        r1 = r0;
    }
};

struct Bands {
    Band low{false}, high{true};
};

inline void encode(const Vsp16s* src, Vsp16s* dst, int len, Bands& bands) {
    for (int n = 0; n < len / 2; n++) {
        const int low = bands.low.quantise(src[2 * n]), high = bands.high.quantise(src[2 * n + 1]);
        dst[n] = Vsp16s(low | high << 6);
        bands.low.adapt(low);
        bands.high.adapt(high);
    }
}

inline void decode(const Vsp16s* src, Vsp16s* dst, int len, int mode, Bands& bands) {
    for (int n = 0; n < len; n++) {
        const int low = src[n] & 63, high = (src[n] >> 6) & 3;
        dst[2 * n] = bands.low.output(low, mode);
        dst[2 * n + 1] = bands.high.output(high, mode);
        bands.low.adapt(low);
        bands.high.adapt(high);
    }
}

constexpr int kQmf[24] = {3,    -11, -11,  53,   12,  -156, 32,   362, -210, -805, 951, 3876,
                          3876, 951, -805, -210, 362, 32,   -156, 12,  53,   -11,  -11, 3};

// Shifts two samples into the history, of which the newest comes first, and filters.
inline void filterPair(Vsp16s older, Vsp16s newer, Vsp16s (&x)[24], Vsp32s& a, Vsp32s& b) {
    for (int i = 23; i > 1; i--) x[i] = x[i - 2];
    x[1] = older;
    x[0] = newer;
    a = b = 0;
    for (int i = 0; i < 24; i++) (i % 2 == 0 ? a : b) += kQmf[i] * x[i];
}

inline void analyse(const Vsp16s* src, Vsp16s* dst, int len, Vsp16s (&x)[24]) {
    for (int n = 0; n < len; n += 2) {
        Vsp32s a, b;
        filterPair(src[n], src[n + 1], x, a, b);
        dst[n] = Vsp16s(clamp((a + b) >> 14, -16384, 16383));
        dst[n + 1] = Vsp16s(clamp((a - b) >> 14, -16384, 16383));
    }
}

inline void synthesise(const Vsp16s* src, Vsp16s* dst, int len, Vsp16s (&x)[24]) {
    for (int n = 0; n < len; n += 2) {
        Vsp32s a, b;
        filterPair(plus(src[n], src[n + 1]), plus(src[n], -src[n + 1]), x, a, b);
        dst[n] = sat_16s(a >> 11);
        dst[n + 1] = sat_16s(b >> 11);
    }
}

}  // namespace vsp::test::g722
