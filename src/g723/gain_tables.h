// Codebooks of gains, and what belongs to their entries.
#pragma once

#include "vspsc/types.h"

namespace vsp::g723 {

// Entries of the two codebooks of adaptive gains, and with the zeros that fill the last vector.
constexpr int kShortCodebook = 85, kLongCodebook = 170, kShortEntries = 96, kLongEntries = 192;

// Five gains, Q14, and the factors of five energies and ten cross-correlations, by pairs of them.
template <int kEntries>
struct PitchGains {
    Vsp16s factors[10][kEntries][2];
};
extern const PitchGains<kShortEntries> pitchGains85;
extern const PitchGains<kLongEntries> pitchGains170;
extern const Vsp16s largestPitchGains[20];  // the largest magnitudes over all entries

// How much an entry amplifies an error of the excitation, for the taming, Q14.
extern const Vsp16s tameGains85[kShortCodebook], tameGains170[kLongCodebook];

// The pitch sharpening of the ACELP code by the entries of the long codebook: what is added to the lag, and the gain, Q15.
extern const Vsp16s sharpLags[kLongCodebook], sharpGains[kLongCodebook];

constexpr int kCodeGains = 24;
extern const Vsp16s codeGains[kCodeGains];

}  // namespace vsp::g723
