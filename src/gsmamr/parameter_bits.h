#pragma once

#include "vspsc/types.h"

namespace vsp {

// The parameters of a frame of speech and the bits of each.
struct ParameterBits {
    int count;
    Vsp8u bits[57];
};
extern const ParameterBits parameterBits[8];  // from the lowest bit rate to the highest

}  // namespace vsp
