// The positions and codes of the pulses of the algebraic codebooks.
#pragma once

#include "vspsc/types.h"

namespace vsp {

// First positions of the two pulses of the 9-bit codebook: by which half of it, subframe and pulse.
constexpr Vsp16s startPos[2][4][2] = {{{0, 2}, {0, 3}, {0, 2}, {0, 3}}, {{1, 3}, {2, 4}, {1, 4}, {1, 4}}};

// Gray codes of the eight places of a track, and back.
constexpr Vsp16s gray[8] = {0, 1, 3, 2, 6, 4, 5, 7};
constexpr Vsp16s dgray[8] = {0, 1, 3, 2, 5, 6, 4, 7};

static consteval bool grayIsInverted() {
    for (int i = 0; i < 8; i++)
        if (dgray[gray[i]] != i) return false;
    return true;
}
static_assert(grayIsInverted());

}  // namespace vsp
