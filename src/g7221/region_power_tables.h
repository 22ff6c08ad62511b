// Constant tables of the region powers.
#pragma once

#include "g7221/layout.h"
#include "g7221/prefix_code.h"

namespace vsp {

constexpr int kPowerSteps = 24;  // differences of neighbouring indices, from -12 to 11

// By the region and the difference. The first region is not coded by them.
extern const Vsp16s differential_region_power_bits[kMaxRegions][kPowerSteps];
extern const Vsp16u differential_region_power_codes[kMaxRegions][kPowerSteps];

using PowerDecoder = PrefixDecoder<kPowerSteps - 1, 6>;
extern const PowerDecoder regionPowerDecoder[kMaxRegions];

// By the index + 24.
constexpr int kDeviations = 64;
extern const Vsp16s int_region_standard_deviation_table[kDeviations];
extern const Vsp16s standard_deviation_inverse_table[kDeviations];

}  // namespace vsp
