#pragma once

#include "vspsc/types.h"

namespace vsp {

// Powers 1 .. 10 of the factors of the post-filter, Q15: 0.55 and 0.7, at 10.2 and 12.2 kbit/s 0.7 and 0.75.
constexpr Vsp16s gamma3[10] = {18022, 9912, 5451, 2998, 1649, 907, 499, 274, 151, 83};
constexpr Vsp16s gamma4[10] = {22938, 16057, 11240, 7868, 5508, 3856, 2699, 1889, 1322, 925};
constexpr Vsp16s gamma4_high[10] = {24576, 18432, 13824, 10368, 7776, 5832, 4374, 3281, 2461, 1846};

}  // namespace vsp
