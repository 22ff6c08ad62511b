// The fixed-point voice activity detector of Annex B, whose energy the music detector takes too.
#pragma once

#include "arithmetic/scaled_log2.h"
#include "g729/vad_shape.h"

namespace vsp {

constexpr Vsp16s kVadQuiet = 3072;  // energies below are silence

// Energy of a frame in the units of the detector: decibels times 2048 / 10, from a value of the autocorrelation and its
// exponent.
VSP_INLINE Vsp16s vadEnergy(Vsp32s value, Vsp16s exponent) {
    const Vsp32s level = mac_32s(scaledLog2(value, 9864), 9864, Sub_16s(exponent, 2));
    return Sub_16s(high_32s(shl_32s(level, 11)), 4875);
}

}  // namespace vsp
