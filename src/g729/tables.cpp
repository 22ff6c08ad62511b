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

// Whether the filter at one fraction is that at the other side read backwards, and its sum is near 1.
template <int Taps>
static consteval bool mirrored(const Vsp16s (&filters)[7][Taps]) {
    for (int f = 0; f < 7; f++) {
        for (int i = 0; i < Taps; i++)
            if (filters[f][i] != filters[6 - f][Taps - 1 - i]) return false;
        const int sum = sumOf(filters[f], Taps);
        if (sum < 32650 || sum > 33150) return false;
    }
    return true;
}
static_assert(mirrored(tab_hup_s) && mirrored(tab_hup_l));

}  // namespace vsp
