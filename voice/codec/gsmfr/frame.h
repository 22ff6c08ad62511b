// The parameters of a frame of GSM full rate and the octets that carry them.
#pragma once

#include "vspsc/types.h"

namespace vspv::gsmfr {

constexpr Vsp32s kSamples = 160, kBytes = 33;

struct SubFrame {
    Vsp16s lag, gain, grid, max, pulses[13];
};

struct Frame {
    Vsp16s lar[8];  // codes of the log-area ratios
    SubFrame subFrames[4];
};

void pack(const Frame& frame, Vsp8u* bytes);
void unpack(const Vsp8u* bytes, Frame& frame);
bool hasSignature(const Vsp8u* bytes);

}  // namespace vspv::gsmfr
