#include "g729/tables.h"

namespace vsp {

constexpr Vsp16s inter_3[13] = {29519, 24906, 13896, 2755, -3459, -3969, -1561, 534, 1023, 516, 0, -194, 0};

static constexpr Vsp16s inter_3l[31] = {
    29443, 25207, 14701, 3143, -4402, -5850, -2783, 1211, 3130, 2259, 0,   -1652, -1666, -464, 756, 1099,
    550,   -245,  -634,  -451, 0,     308,   296,   78,   -120, -165, -79, 34,    91,    70,   0,
};

static consteval int sumOf(const Vsp16s* table, int n) {
    int sum = 0;
    for (int i = 0; i < n; i++) sum += table[i];
    return sum;
}
static_assert(sumOf(inter_3, 13) == 63966 && sumOf(inter_3l, 31) == 63865);

constexpr ThirdFilters<Vsp16s> inter_3l_taps = ThirdFilters<Vsp16s>::from(inter_3l, 1);
constexpr ThirdFilters<Vsp32f> inter_3l_32f_taps = ThirdFilters<Vsp32f>::from(inter_3l, 1.0f / 32768);
static_assert(inter_3l_taps.keepsSamplesExact());

constexpr Vsp8u trackTable0[16] = {1, 3, 6, 8, 11, 13, 16, 18, 21, 23, 26, 28, 31, 33, 36, 38};
constexpr Vsp8u trackTable1[32] = {0,  2,  4,  5,  7,  9,  10, 12, 14, 15, 17, 19, 20, 22, 24, 25,
                                   27, 29, 30, 32, 34, 35, 37, 39, 1,  6,  11, 16, 21, 26, 31, 36};

// Bit p is set for each position p.
template <int Places>
static consteval unsigned long long positionsOf(const Vsp8u (&table)[Places]) {
    unsigned long long positions = 0;
    for (const Vsp8u position : table) positions |= 1ULL << position;
    return positions;
}
static_assert(positionsOf(trackTable0) == 0x5294A5294AULL && positionsOf(trackTable1) == 0xBDEF7BDEF7ULL);

constexpr Vsp16s tab_hup_s[7][4] = {
    {-188, 2873, 31650, -1597},  {-484, 7041, 28469, -2147}, {-933, 12266, 23705, -1992}, {-1492, 18050, 18050, -1492},
    {-1992, 23705, 12266, -933}, {-2147, 28469, 7041, -484}, {-1597, 31650, 2873, -188},
};
constexpr Vsp16s tab_hup_l[7][16] = {
    {-40, 72, -156, 315, -579, 1023, -1874, 4439, 31915, -3390, 1595, -887, 501, -266, 130, -59},
    {-77, 147, -317, 631, -1150, 2030, -3773, 9639, 29436, -5579, 2727, -1527, 859, -453, 218, -101},
    {-106, 212, -455, 892, -1614, 2850, -5392, 15206, 25569, -6549, 3303, -1860, 1041, -543, 258, -122},
    {-123, 253, -538, 1044, -1876, 3319, -6414, 20676, 20676, -6414, 3319, -1876, 1044, -538, 253, -123},
    {-122, 258, -543, 1041, -1860, 3303, -6549, 25569, 15206, -5392, 2850, -1614, 892, -455, 212, -106},
    {-101, 218, -453, 859, -1527, 2727, -5579, 29436, 9639, -3773, 2030, -1150, 631, -317, 147, -77},
    {-59, 130, -266, 501, -887, 1595, -3390, 31915, 4439, -1874, 1023, -579, 315, -156, 72, -40},
};

constexpr Vsp32f tab_hup_s_32f[7][4] = {
    {-0.005772f, 0.087669f, 0.965882f, -0.048753f}, {-0.014793f, 0.214886f, 0.868791f, -0.065537f},
    {-0.028507f, 0.374334f, 0.723418f, -0.060834f}, {-0.045567f, 0.550847f, 0.550847f, -0.045567f},
    {-0.060834f, 0.723418f, 0.374334f, -0.028507f}, {-0.065537f, 0.868791f, 0.214886f, -0.014793f},
    {-0.048753f, 0.965882f, 0.087669f, -0.005772f},
};
constexpr Vsp32f tab_hup_l_32f[7][16] = {
    {-0.001246f, 0.0022f, -0.004791f, 0.009621f, -0.017685f, 0.031212f, -0.057225f, 0.13547f, 0.973955f, -0.103495f,
     0.048663f, -0.02709f, 0.01528f, -0.00816f, 0.003961f, -0.001827f},
    {-0.002388f, 0.004479f, -0.009715f, 0.019261f, -0.035118f, 0.061945f, -0.115187f, 0.294161f, 0.898322f, -0.170283f,
     0.083211f, -0.046645f, 0.02621f, -0.013854f, 0.006641f, -0.003099f},
    {-0.003277f, 0.006456f, -0.013906f, 0.027229f, -0.049283f, 0.08699f, -0.16459f, 0.464041f, 0.780309f, -0.199879f,
     0.100795f, -0.056792f, 0.031761f, -0.016606f, 0.007866f, -0.00374f},
    {-0.00377f, 0.007714f, -0.016462f, 0.031849f, -0.057272f, 0.101294f, -0.195755f, 0.630993f, 0.630993f, -0.195755f,
     0.101294f, -0.057272f, 0.031849f, -0.016462f, 0.007714f, -0.00377f},
    {-0.00374f, 0.007866f, -0.016606f, 0.031761f, -0.056792f, 0.100795f, -0.199879f, 0.780309f, 0.464041f, -0.16459f,
     0.08699f, -0.049283f, 0.027229f, -0.013906f, 0.006456f, -0.003277f},
    {-0.003099f, 0.006641f, -0.013854f, 0.02621f, -0.046645f, 0.083211f, -0.170283f, 0.898322f, 0.294161f, -0.115187f,
     0.061945f, -0.035118f, 0.019261f, -0.009715f, 0.004479f, -0.002388f},
    {-0.001827f, 0.003961f, -0.00816f, 0.01528f, -0.02709f, 0.048663f, -0.103495f, 0.973955f, 0.13547f, -0.057225f,
     0.031212f, -0.017685f, 0.009621f, -0.004791f, 0.0022f, -0.001246f},
};

// Whether the filter at one fraction is that at the other side read backwards, and its sum is near 1, that is `one`.
template <class T, int Taps>
static consteval bool mirrored(const T (&filters)[7][Taps], double one) {
    for (int f = 0; f < 7; f++) {
        double sum = 0;
        for (int i = 0; i < Taps; i++) {
            if (filters[f][i] != filters[6 - f][Taps - 1 - i]) return false;
            sum += filters[f][i];
        }
        if (sum < 0.996 * one || sum > 1.012 * one) return false;
    }
    return true;
}
static_assert(mirrored(tab_hup_s, 32768) && mirrored(tab_hup_l, 32768));
static_assert(mirrored(tab_hup_s_32f, 1) && mirrored(tab_hup_l_32f, 1));

static constexpr Vsp16s ph_imp_low[40] = {
    14690, 11518, 1268,  -2762, -5672, 7514,  -36,  -2808, -3041, 4823,  2952, -8425, 3785, 1455,
    2179,  -8638, 8051,  -2104, -1455, 777,   1108, -2386, 2254,  -364,  -675, -2104, 6046, -5682,
    1072,  3123,  -5059, 5312,  -2330, -3729, 6924, -3890, 675,   -1776, 29,   10145,
};
static constexpr Vsp16s ph_imp_mid[40] = {
    30274, 3831,  -4037, 2972, -1049, -1003, 2477,  -3044, 2815, -2232, 1753, -1612, 1714,  -1776,
    1543,  -1009, 429,   -170, 472,   -1265, 2176,  -2707, 2523, -1622, 344,  826,   -1530, 1724,
    -1658, 1701,  -2064, 2644, -3061, 2897,  -1979, 557,   780,  -1370, 842,  655,
};
static_assert(sumOf(ph_imp_low, 40) == 32764 && sumOf(ph_imp_mid, 40) == 32761);

static consteval PhaseResponses makePhaseResponses() {
    PhaseResponses responses{};
    for (int i = 0; i < 80; i++) {
        responses.ofStrength[0][i] = ph_imp_low[i % 40];
        responses.ofStrength[1][i] = ph_imp_mid[i % 40];
        responses.ofStrength[2][i] = i % 40 == 0 ? 32767 : 0;
    }
    return responses;
}
constexpr PhaseResponses phaseResponses = makePhaseResponses();

}  // namespace vsp
