// The frames of GSM-AMR: modes, parameters and their bits (3GPP TS 26.101).
#pragma once

#include "codec/rfc4867/frame_type.h"

namespace vspv::amr {

using rfc4867::kSilenceBytes;

constexpr Vsp32s kModes = 8, kMaxParameters = 57, kSilenceParameters = 5;

// Modes are numbered 0 .. 7 as in a frame's header, in the order of their bit rates.
extern const Vsp32s kRateCodes[kModes];  // as the library numbers the rates
constexpr Vsp32s kSilenceCode = 25;

extern const rfc4867::FrameTypes kFrameTypes;

inline Vsp32s modeOf(Vsp32s bitRate) { return rfc4867::modeOf(kFrameTypes, bitRate); }
Vsp32s bytesOf(Vsp32s mode);

void pack(Vsp32s mode, const Vsp16s* parameters, Vsp8u* bytes);
void unpack(Vsp32s mode, const Vsp8u* bytes, Vsp16s* parameters);

// A silence descriptor says besides whether it is an update, and the mode in force.
void packSilence(const Vsp16s* parameters, bool update, Vsp32s mode, Vsp8u* bytes);
Vsp32s unpackSilence(const Vsp8u* bytes, Vsp16s* parameters);  // the mode

// Whether a frame is, wholly or in its first subframe, the one that resets a decoder (3GPP TS 26.073).
bool isHoming(Vsp32s mode, const Vsp16s* parameters, bool firstSubframeOnly);

}  // namespace vspv::amr
