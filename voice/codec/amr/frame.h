// The bits of a frame of GSM-AMR (3GPP TS 26.101): parameters, and octets as RFC 4867 orders them.
#pragma once

#include "vspsc/types.h"

namespace vspv::amr {

constexpr Vsp32s kModes = 8, kMaxParameters = 57, kSilenceParameters = 5, kSilenceBytes = 5;

// Modes are numbered 0 .. 7 as in a frame's header, in the order of their bit rates.
extern const Vsp32s kBitRates[kModes];   // bit/s
extern const Vsp32s kRateCodes[kModes];  // as the library numbers the rates
constexpr Vsp32s kSilenceCode = 25;

Vsp32s parametersOf(Vsp32s mode);
Vsp32s bytesOf(Vsp32s mode);

void pack(Vsp32s mode, const Vsp16s* parameters, Vsp8u* bytes);
void unpack(Vsp32s mode, const Vsp8u* bytes, Vsp16s* parameters);

// A silence descriptor says besides whether it is an update, and the mode in force.
void packSilence(const Vsp16s* parameters, bool update, Vsp32s mode, Vsp8u* bytes);
Vsp32s unpackSilence(const Vsp8u* bytes, Vsp16s* parameters);  // the mode

// Whether a frame is, wholly or in its first subframe, the one that resets a decoder (3GPP TS 26.073).
bool isHoming(Vsp32s mode, const Vsp16s* parameters, bool firstSubframeOnly);

}  // namespace vspv::amr
