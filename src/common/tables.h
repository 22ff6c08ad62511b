// Constant tables of the shared kernels, under the names of the standards' reference tables.
#pragma once

#include "vspsc/types.h"

namespace vsp {

// Here and not in tables.cpp: ownLog2 and ownPow2 are evaluated at compile time.

// 32767 * log2(1 + i/32)
constexpr Vsp16s Log2Table[33] = {
    0,     1455,  2866,  4236,  5568,  6863,  8124,  9352,  10549, 11716, 12855, 13967, 15054, 16117, 17156, 18172, 19167,
    20142, 21097, 22033, 22951, 23852, 24735, 25603, 26455, 27291, 28113, 28922, 29716, 30497, 31266, 32023, 32767,
};

// 16384 * 2^(i/32), at most 32767
constexpr Vsp16s tabpow[33] = {
    16384, 16743, 17109, 17484, 17867, 18258, 18658, 19066, 19484, 19911, 20347, 20792, 21247, 21713, 22188, 22674, 23170,
    23678, 24196, 24726, 25268, 25821, 26386, 26964, 27554, 28158, 28774, 29405, 30048, 30706, 31379, 32066, 32767,
};

extern const Vsp32s tabsqr[49];    // G.729 tabsqr times 65536
extern const Vsp16s tabsqr_d[48];  // (tabsqr[k] - tabsqr[k+1]) / 32768
extern const Vsp32s wlag[12];      // G.729 lag window of lags 1..12, Q31

}  // namespace vsp
