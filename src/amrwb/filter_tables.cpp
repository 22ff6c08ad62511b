#include "amrwb/filter_tables.h"

namespace vsp {

constexpr Vsp16s fir_down[4][kPhaseTaps] = {
    {-5,   24,    -50,  54,   0, -128, 294,  -408, 344,  0, -647, 1505, -2379, 3034, 13107,
     3034, -2379, 1505, -647, 0, 344,  -408, 294,  -128, 0, 54,   -50,  24,    -5,   0},
    {-6,   19,    -26,  0, 77,   -188, 270,  -233, 0, 434, -964, 1366, -1293, 0, 12254,
     6575, -2746, 1030, 0, -507, 601,  -441, 198,  0, -95, 99,   -58,  18,    0, -1},
    {-3,   9,     0, -41, 111,  -170, 153,  0, -295, 649,  -888, 770, 0, -1997, 9894,
     9894, -1997, 0, 770, -888, 649,  -295, 0, 153,  -170, 111,  -41, 0, 9,     -3},
    {-1,    0, 18,    -58,  99,   -95, 0, 198,  -441, 601,  -507, 0, 1030, -2746, 6575,
     12254, 0, -1293, 1366, -964, 434, 0, -233, 270,  -188, 77,   0, -26,  19,    -6},
};

constexpr Vsp16s fir_up[5][kPhaseTaps] = {
    {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 16384, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
    {-6,   23,    -52, 96,   -160, 247,  -369, 542,  -809, 1288, -2496, 15317,
     3792, -1616, 963, -634, 430,  -291, 191,  -119, 68,   -33,  12,    -1},
    {-7,   30,    -73,  139,   -235, 368,  -552, 812,  -1204, 1881, -3432, 12368,
     8219, -2974, 1708, -1111, 752,  -510, 338,  -213, 124,   -62,  24,    -4},
    {-4,    24,    -62,  124,   -213, 338,  -510, 752,  -1111, 1708, -2974, 8219,
     12368, -3432, 1881, -1204, 812,  -552, 368,  -235, 139,   -73,  30,    -7},
    {-1,    12,    -33,  68,   -119, 191,  -291, 430,  -634, 963, -1616, 3792,
     15317, -2496, 1288, -809, 542,  -369, 247,  -160, 96,   -52, 23,    -6},
};

constexpr Vsp16s fir_6k_7k[kBandTaps] = {
    -32,    47,   32,   -27,    -369,  1122,  -1421, 0, 3798,  -8880, 12349, -10984, 3548, 7766, -18001, 22118,
    -18001, 7766, 3548, -10984, 12349, -8880, 3798,  0, -1421, 1122,  -369,  -27,    32,   47,   -32,
};

constexpr Vsp16s fir_7k[kBandTaps] = {
    -21,  47,    -89,  146,   -203, 229,  -177, 0, 335,  -839, 1485, -2211, 2931, -3542, 3953, 28682,
    3953, -3542, 2931, -2211, 1485, -839, 335,  0, -177, 229,  -203, 146,   -89,  47,    -21,
};

// Every phase passes a constant signal; phases as far before and behind an input mirror each other.
template <int kPhases>
static consteval bool passesConstants(const Vsp16s (&phases)[kPhases][kPhaseTaps], int taps, int magnitude) {
    int largest = 0;
    for (const auto& phase : phases) {
        int sum = 0, absolute = 0;
        for (int t = 0; t < kPhaseTaps; t++) {
            sum += phase[t];
            absolute += phase[t] < 0 ? -phase[t] : phase[t];
            if (t >= taps && phase[t] != 0) return false;
        }
        if (sum < 16383 || sum > 16386) return false;
        largest = absolute > largest ? absolute : largest;
    }
    for (int p = 1; p < kPhases; p++)
        for (int t = 0; t < taps; t++)
            if (phases[p][t] != phases[kPhases - p][taps - 1 - t]) return false;
    return largest == magnitude;
}
static_assert(passesConstants(fir_down, kDownTaps, kDownMagnitude) && passesConstants(fir_up, kUpTaps, kUpMagnitude));

static consteval bool isSymmetric(const Vsp16s (&taps)[kBandTaps], int sum) {
    for (int t = 0; t < kBandTaps; t++) {
        if (taps[t] != taps[kBandTaps - 1 - t]) return false;
        sum -= taps[t];
    }
    return sum == 0;
}
static_assert(isSymmetric(fir_6k_7k, 14) && isSymmetric(fir_7k, 32770));

}  // namespace vsp
