// The bits of a frame of G.729 (Table 8, Annexes B, D and E), in octets as RFC 3551 4.5.6 orders them.
#pragma once

#include "vspsc/types.h"

namespace vspv::g729 {

// Bit rates, numbered as in Annex I.
enum Rate : Vsp16s { k6k4 = 0, k8k = 1, k11k8 = 2 };

constexpr Vsp32s kSilenceBytes = 2;
constexpr Vsp32s bytesOf(Rate rate) { return rate == k6k4 ? 8 : rate == k8k ? 10 : 15; }

struct SubframeCodes {
    Vsp16s delay, pulses[5], gain;
};

struct Frame {
    Rate rate;
    Vsp16s mode, modeAgain;  // 11.8 kbit/s: 1 backward, 0 forward, sent twice
    Vsp16s lsp[2], parity;
    SubframeCodes subframes[2];
};

void pack(const Frame& frame, Vsp8u* bytes);
void unpack(const Vsp8u* bytes, Rate rate, Frame& frame);
void packSilence(const Vsp16s* index, Vsp8u* bytes);
void unpackSilence(const Vsp8u* bytes, Vsp16s* index);

// The parity of the first delay as it is sent at this rate.
Vsp16s parityOf(Vsp16s delay, Rate rate);

}  // namespace vspv::g729
