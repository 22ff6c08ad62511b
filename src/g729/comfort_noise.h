// What the two ends of discontinuous transmission share (G.729 B.4).
#pragma once

#include "core/level.h"
#include "g729/silence_tables.h"

namespace vsp::VSP_LEVEL {

// The level of noise: index of tab_Sidgain and decibels.
struct NoiseLevel {
    int index;
    Vsp16s decibels;
};

// Qua_Sidgain: from the energies of `count` frames, 1 or 2; with count 0 from one energy of a decoder's excitation.
NoiseLevel ownNoiseLevel(const Vsp16s* energies, const Vsp16s* shifts, int count);

// The gain of noise that follows that of the last silence descriptor.
Vsp16s ownSmoothedNoiseGain(Vsp16s gain, Vsp16s sidGain);

// Calc_exc_rand: 80 samples of excitation after a history of 154. errors: the taming memory of an encoder, or null.
// gains: for each subframe those of the adaptive and of the fixed codebook, or null.
void ownNoiseExcitation(Vsp16s gain, Vsp16s* excitation, Vsp16s* seed, Vsp32s* errors, Vsp16s* gains);

// Filters of both subframes between the line spectral pairs of the last frame and those of the noise, which take the place
// of the former.
void ownNoiseFilters(Vsp16s* lspOld, const Vsp16s* lspNoise, Vsp16s* lpc);

// lsfq_noise: quantises line spectral pairs with 1 + 5 + 4 bits.
void ownQuantiseNoiseLSP(const Vsp16s* lsp, Vsp16s* quantised, Vsp16s* previous, Vsp16s* index);

// sid_lsfq_decode
void ownDecodeNoiseLSP(const Vsp16s* index, Vsp16s* previous, Vsp16s* lsp);

}  // namespace vsp::VSP_LEVEL
