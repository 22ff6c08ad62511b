// How frames are told apart where they are stored and sent: 3GPP TS 26.101 Table 1a.
#pragma once

#include "codec/amr/frame.h"
#include "codec/codec.h"

namespace vspv::amr {

constexpr Vsp32s kTypeSilence = 8, kTypeNoData = 15;

// The number of a bit rate, or -1.
Vsp32s modeOf(Vsp32s bitRate);

// What vspvDecode says of a frame.
VspStatus checkFrame(const VspvFrame& frame);

// The same of a frame that is to be sent; a lost one needs no more than to be called lost.
VspStatus checkSent(const VspvFrame& frame);

struct TypedFrame {
    Vsp32s type, bits;
    bool good;
};
TypedFrame typed(const VspvFrame& frame);

// Bits of a frame of a type, -1 for none of this codec's.
Vsp32s bitsOf(Vsp32s type);
// A frame of a type that the codec has, by its octets.
VspvFrame frameOf(Vsp32s type, bool good, const Vsp8u* bytes);

}  // namespace vspv::amr
