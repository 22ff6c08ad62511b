#include "gsmamr/pitch_tables.h"

namespace vsp {

constexpr Vsp16s inter_6_search[25] = {29519, 28316, 24906, 19838, 13896, 7945, 2755, -1127, -3459,
                                       -4304, -3969, -2899, -1561, -336,  534,  970,  1023,  823,
                                       516,   220,   0,     -131,  -194,  -215, 0};

static constexpr Vsp16s inter_6_vector[61] = {
    29443, 28346, 25207, 20449, 14701, 8693,  3143,  -1352, -4402, -5865, -5850, -4673, -2783, -672, 1211, 2536,
    3130,  2991,  2259,  1170,  0,     -1001, -1652, -1868, -1666, -1147, -464,  218,   756,   1060, 1099, 904,
    550,   135,   -245,  -514,  -634,  -602,  -451,  -231,  0,     191,   308,   340,   296,   198,  78,   -36,
    -120,  -163,  -165,  -132,  -79,   -19,   34,    73,    91,    89,    70,    38,    0};

static consteval int sumOf(const Vsp16s* table, int n) {
    int sum = 0;
    for (int i = 0; i < n; i++) sum += table[i];
    return sum;
}
static_assert(sumOf(inter_6_search, 25) == 113066 && sumOf(inter_6_vector, 61) == 113021);

constexpr FractionFilters<Vsp16s, kSixths> inter_6_taps = FractionFilters<Vsp16s, kSixths>::from(inter_6_vector, 1);
static_assert(inter_6_taps.keepsSamplesExact());

constexpr Vsp16s qua_gain_pitch[16] = {0,     3277,  6556,  8192,  9830,  11469, 12288, 13107,
                                       13926, 14746, 15565, 16384, 17203, 18022, 18842, 19661};
static_assert(sumOf(qua_gain_pitch, 16) == 199068);

}  // namespace vsp
