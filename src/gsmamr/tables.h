// Constant tables of the GSM-AMR family.
#pragma once

#include "vspsc/types.h"

namespace vsp {

constexpr int kVad2Channels = 16;
constexpr int kVad2SnrIndices = 20;

// First and last bin of each channel. Here and not in tables.cpp: the sums over the bins are unrolled.
constexpr Vsp16s Table16Ch[kVad2Channels][2] = {
    {2, 3},   {4, 5},   {6, 7},   {8, 9},   {10, 11}, {12, 13}, {14, 16}, {17, 19},
    {20, 22}, {23, 26}, {27, 30}, {31, 35}, {36, 41}, {42, 48}, {49, 55}, {56, 63},
};
extern const Vsp16s TableDFTch[kVad2Channels];  // 1 / number of bins of each channel, Q15

// Indexed by the scaling of the channel energies: 0 for soft signals, 1 for loud ones.
extern const Vsp16s tableStateChangeShiftR[2];  // right shift of the energies when the scaling changes to this one
extern const Vsp16s tableEnrgNormShift[2];      // part of the shift from a sum of squares to an energy
extern const Vsp16s tableMinChanEnrg[2];        // smallest energy
extern const Vsp16s tableIneNoise[2];           // energy below which the first noise estimate is 8192
extern const Vsp16s tableFbits[2];              // fraction bits of the energies
extern const Vsp16s tableNoiseFloorChan[2];     // smallest total energy that counts towards a forced update

// Indexed by the long-term signal-to-noise ratio in steps of 3 dB.
extern const Vsp16s TablePeakSNR[kVad2SnrIndices];     // threshold of the voice metric
extern const Vsp16s TableBurstcount[kVad2SnrIndices];  // half-frames of speech that earn a hangover
extern const Vsp16s TableHangover[kVad2SnrIndices];    // its length in half-frames

extern const Vsp16s TableVoiceMetric[90];  // by the signal-to-noise ratio of a channel in steps of 3/8 dB

// Neighbouring entries of Log2Table and tabpow in one word, for lookups of many at once: the entry, and what the next one
// is larger by times 65536.
struct NeighbourPairs {
    Vsp32s words[32];
};
extern const NeighbourPairs log2Pairs, powPairs;

// The factors of the transform, made of C + i*S = exp(-2*pi*i*k/128), k = 0..63, in Q15 (phs_tbl of the reference).
// Products of interleaved complex values with them are sums of products of pairs, with signs that keep every factor within
// 16 bits.
struct FftTwiddles {
    Vsp16s negRe[8][2], im[8][2];  // pairs (-C, S) and (S, C)
};
extern const FftTwiddles fftTwiddles[7];  // of the last three stages: 1 + 2 + 4 groups of eight
extern const FftTwiddles fftEighths[2];   // k = 16 and k = 48, each eight times

struct FftSplitFactors {                                               // k = 8 * i + 0..7
    Vsp16s reSum[8][2], reDiff[8][2], imSum[8][2], imDiff[8][2];       // for word pair k
    Vsp16s mirrorReSum[8][2], mirrorReDiff[8][2], mirrorImDiff[8][2];  // for word pair 64 - k; with imSum
};
extern const FftSplitFactors fftSplitFactors[4];

}  // namespace vsp
