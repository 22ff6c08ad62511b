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

template <class T>
static consteval ThirdFilters<T> filters(T one) {
    ThirdFilters<T> filters{};
    for (int f = 0; f < 3; f++)
        for (int i = 0; i < kL_inter10; i++) {
            filters.taps[f][kL_inter10 - 1 - i] = T(inter_3l[f + 3 * i] * one);
            filters.taps[f][kL_inter10 + i] = T(inter_3l[3 - f + 3 * i] * one);
        }
    return filters;
}

constexpr ThirdFilters<Vsp16s> inter_3l_taps = filters(Vsp16s(1));
constexpr ThirdFilters<Vsp32f> inter_3l_32f_taps = filters(1.0f / 32768);

static consteval int largestPartialSum() {
    int largest = 0;
    for (const auto& taps : inter_3l_taps.taps) {
        int sum = 0;
        for (const Vsp16s tap : taps) sum += tap < 0 ? -tap : tap;
        largest = sum > largest ? sum : largest;
    }
    return largest;
}
static_assert(largestPartialSum() * kMaxExactSample < 1 << 30);

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
