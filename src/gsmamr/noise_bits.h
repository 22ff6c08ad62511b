#pragma once

#include "core/level.h"

namespace vsp::VSP_LEVEL {

// Pseudo-random bits from a shift register of 31 bits, the first one most significant (`pseudonoise`).
VSP_INLINE int ownNoiseBits(Vsp32s* shiftRegister, int count) {
    Vsp32u reg = Vsp32u(*shiftRegister);
    int bits = 0;
    for (int i = 0; i < count; i++) {
        const Vsp32u feedback = (reg ^ (reg >> 28)) & 1;
        bits = bits << 1 | int(reg & 1);
        reg = Vsp32u(Vsp32s(reg) >> 1);
        if (feedback != 0) reg |= 0x40000000;
    }
    *shiftRegister = Vsp32s(reg);
    return bits;
}

}  // namespace vsp::VSP_LEVEL
