// The bits of a frame of G.723.1 (clause 4), lowest first.
#pragma once

#include "vspsc/types.h"

namespace vspv::g723 {

constexpr Vsp32s kOrder = 10, kSubframes = 4, kSubframe = 60, kFrame = 240, kPast = 145;
constexpr Vsp32s kSilenceBytes = 4;

// As the library numbers them.
enum Rate : Vsp32s { k5k3 = 2, k6k3 = 4 };
enum Type : Vsp32s { kUntransmitted = 0, kActive = 1, kSilence = 2 };

// What the two lowest bits of the first octet tell.
enum Kind : Vsp32u { kKind6k3 = 0, kKind5k3 = 1, kKindSilence = 2, kKindUntransmitted = 3 };
inline Vsp32u kindOf(const Vsp8u* bytes) { return bytes[0] & 3u; }

inline Rate rateOf(Vsp32s bitRate) { return bitRate == 5300 ? k5k3 : k6k3; }
inline Vsp32s bytesOf(Rate rate) { return rate == k5k3 ? 20 : 24; }

struct Subframe {
    Vsp16s offset, adaptive;  // the delay is lag - 1 + offset; index of the adaptive codebook's gains
    Vsp16s fixed[4];          // gain, grid, train, signs
    Vsp32s position;          // number of the pulses' positions
};

struct Frame {
    Rate rate;
    Vsp16s lsf[3];
    Vsp16s lag[2];  // of the pairs of subframes
    Subframe subframes[kSubframes];
};

void pack(const Frame& frame, Vsp8u* bytes);
// False for a frame with codes that do not exist, which counts as erased.
bool unpack(const Vsp8u* bytes, Frame& frame);

// Three indices of the LSFs and that of the gain.
void packSilence(const Vsp16s* index, Vsp8u* bytes);
void unpackSilence(const Vsp8u* bytes, Vsp16s* index);

}  // namespace vspv::g723
