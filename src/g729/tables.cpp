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

}  // namespace vsp
