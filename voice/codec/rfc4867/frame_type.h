// How frames are told apart where they are stored and sent: 3GPP TS 26.101 Table 1a, TS 26.201 Table 1a.
#pragma once

#include "codec/codec.h"
#include "codec/rfc4867/parameter_bits.h"

namespace vspv::rfc4867 {

// The frame types of a codec: its modes, behind them the silence descriptor, at last those without octets.
struct FrameTypes {
    Vsp32s modes;
    const Vsp32s* bitRates;     // of each mode, ascending
    const ModeLayout* layouts;  // of each mode
    Vsp32s silenceBits;         // with the bits of the mode in force, at the end
    bool highestModeBitFirst;   // there
    bool tellsLost;             // whether there is a type for speech that was lost; it is sent as no data otherwise
    bool hasOnset;              // vspvFrameOnset
};

constexpr Vsp32s kTypeLost = 14, kTypeNoData = 15;

// The number of a bit rate, or -1.
Vsp32s modeOf(const FrameTypes& types, Vsp32s bitRate);

// The mode in force in a silence descriptor; the highest one for a number that has none.
Vsp32s silenceMode(const FrameTypes& types, const Vsp8u* bytes);
void putSilenceMode(const FrameTypes& types, Vsp32s mode, Vsp8u* bytes);

// What vspvDecode says of a frame.
VspStatus checkFrame(const FrameTypes& types, const VspvFrame& frame);

// The same of a frame that is to be sent; a lost one needs no more than to be called lost.
VspStatus checkSent(const FrameTypes& types, const VspvFrame& frame);

struct TypedFrame {
    Vsp32s type, bits;
    bool good;
};
TypedFrame typed(const FrameTypes& types, const VspvFrame& frame);

// Bits of a frame of a type, -1 for none of this codec's.
Vsp32s bitsOf(const FrameTypes& types, Vsp32s type);
// A frame of a type that the codec has, by its octets.
VspvFrame frameOf(const FrameTypes& types, Vsp32s type, bool good, const Vsp8u* bytes);

}  // namespace vspv::rfc4867
