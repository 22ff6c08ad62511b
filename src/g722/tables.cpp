#include "g722/tables.h"

namespace vsp {

// One half of the filter, which is symmetric.
static constexpr Vsp16s h[12] = {3, -11, -11, 53, 12, -156, 32, 362, -210, -805, 951, 3876};

static consteval QmfTaps analysisTaps() {
    QmfTaps taps{};
    for (int i = 0; i < 24; i++) {
        taps.first[i] = h[i < 12 ? i : 23 - i];
        taps.second[i] = Vsp16s(i % 2 == 0 ? -taps.first[i] : taps.first[i]);
    }
    return taps;
}

static consteval QmfTaps synthesisTaps() {
    QmfTaps taps{};
    for (int i = 0; i < 24; i++) (i % 2 == 0 ? taps.second : taps.first)[i] = h[i < 12 ? i : 23 - i];
    return taps;
}

constexpr QmfTaps qmfAnalysis = analysisTaps(), qmfSynthesis = synthesisTaps();

static consteval int sumOfTaps(const Vsp16s (&taps)[24]) {
    int sum = 0;
    for (const Vsp16s tap : taps) sum += tap;
    return sum;
}
static_assert(sumOfTaps(qmfAnalysis.first) == 8192 && sumOfTaps(qmfAnalysis.second) == 0);
static_assert(sumOfTaps(qmfSynthesis.first) == 4096 && sumOfTaps(qmfSynthesis.second) == 4096);

static constexpr Vsp16s q6[kLowThresholds] = {35,   72,   110,  150,  190,  233,  276,  323,  370,  422,
                                              473,  530,  587,  650,  714,  786,  858,  940,  1023, 1121,
                                              1219, 1339, 1458, 1612, 1765, 1980, 2195, 2557, 2919};

static consteval LowThresholds thresholds() {
    LowThresholds t{};
    for (int i = 0; i < kLowThresholds; i++) t.values[i] = Vsp16u(16 * q6[i]);
    return t;
}
constexpr LowThresholds lowThresholds = thresholds();
static_assert(lowThresholds.values[kLowThresholds - 1] == 46704 && lowThresholds.values[kLowThresholds] == 0);

// Inverse quantisers: the standard's values times 8.
static constexpr Vsp16s qm2[4] = {-7408, -1616, 7408, 1616};
static constexpr Vsp16s qm4[16] = {0,     -20456, -12896, -8968, -6288, -4240, -2584, -1200,
                                   20456, 12896,  8968,   6288,  4240,  2584,  1200,  0};
static constexpr Vsp16s qm5[32] = {-280,  -280,  -23352, -17560, -14120, -11664, -9752, -8184, -6864, -5712, -4696,
                                   -3784, -2960, -2208,  -1520,  -880,   23352,  17560, 14120, 11664, 9752,  8184,
                                   6864,  5712,  4696,   3784,   2960,   2208,   1520,  880,   280,   -280};
static constexpr Vsp16s qm6[64] = {
    -136,  -136,  -136,  -136,  -24808, -21904, -19008, -16704, -14984, -13512, -12280, -11192, -10232, -9360, -8576, -7856,
    -7192, -6576, -6000, -5456, -4944,  -4464,  -4008,  -3576,  -3168,  -2776,  -2400,  -2032,  -1688,  -1360, -1040, -728,
    24808, 21904, 19008, 16704, 14984,  13512,  12280,  11192,  10232,  9360,   8576,   7856,   7192,   6576,  6000,  5456,
    4944,  4464,  4008,  3576,  3168,   2776,   2400,   2032,   1688,   1360,   1040,   728,    432,    136,   -432,  -136};

// Every table has its values with both signs, but for those of the codes that no encoder sends.
static consteval bool antisymmetric(const Vsp16s* table, int unsent, int levels) {
    for (int i = 0; i < levels; i++) {
        int partners = 0;
        for (int j = 0; j < levels; j++) partners += table[unsent + i] == -table[unsent + j];
        if (partners != 1) return false;
    }
    return true;
}
static_assert(antisymmetric(qm4, 1, 14) && antisymmetric(qm5, 2, 30) && antisymmetric(qm6, 4, 60));

static consteval LowOutput output() {
    LowOutput o{};
    for (int code = 0; code < 64; code++) {
        o.levels[0][code] = qm6[code];
        o.levels[1][code] = qm5[code >> 1];
        o.levels[2][code] = qm4[code >> 2];
    }
    return o;
}
constexpr LowOutput lowOutput = output();

static constexpr Vsp16s ril4[16] = {0, 7, 6, 5, 4, 3, 2, 1, 7, 6, 5, 4, 3, 2, 1, 0};
static constexpr Vsp16s wl[8] = {-60, -30, 58, 172, 334, 538, 1198, 3042};

static consteval LowQuantiser quantiser() {
    LowQuantiser q{};
    for (Vsp16s code = 0; code < 64; code++) q.byCode[code] = {code, qm4[code >> 2], wl[ril4[code >> 2]], 0};
    for (int n = 0; n <= kLowThresholds; n++) {
        q.byThresholds[0][n] = q.byCode[61 - n];
        q.byThresholds[1][n] = q.byCode[n < 2 ? 63 - n : 33 - n];
    }
    return q;
}
constexpr LowQuantiser lowQuantiser = quantiser();

static constexpr Vsp16s wh[2] = {798, -214};
constexpr QuantiserStep highQuantiser[4] = {
    {0 << 6, qm2[0], wh[0], 0}, {1 << 6, qm2[1], wh[1], 0}, {2 << 6, qm2[2], wh[0], 0}, {3 << 6, qm2[3], wh[1], 0}};

// ILB: 2048 * 2^(i/32)
static constexpr Vsp16s ilb[32] = {2048, 2093, 2139, 2186, 2233, 2282, 2332, 2383, 2435, 2489, 2543,
                                   2599, 2656, 2714, 2774, 2834, 2896, 2960, 3025, 3091, 3158, 3228,
                                   3298, 3371, 3444, 3520, 3597, 3676, 3756, 3838, 3922, 4008};

static consteval ScaleFactors factors() {
    ScaleFactors f{};
    for (int i = 0; i <= kHighLogScaleMax >> 6; i++) {
        const int right = 10 - (i >> 5);
        f.values[i] = Vsp16s(4 * (right >= 0 ? ilb[i & 31] >> right : ilb[i & 31] << -right));
    }
    return f;
}
constexpr ScaleFactors scaleFactors = factors();
static_assert(scaleFactors.values[0] == 8 && scaleFactors.values[kLowScaleOffset] == 32);
static_assert(scaleFactors.values[kHighLogScaleMax >> 6] == 16384);

}  // namespace vsp
