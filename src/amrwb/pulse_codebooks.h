// The algebraic codebooks of AMR-WB and of the core of AMR-WB+ by bit rate (3GPP TS 26.190, 5.8).
#pragma once

#include "core/inline.h"
#include "vspsc/types.h"

namespace vsp {

constexpr int kPulseTracks = 4, kMaxTrackPulses = 6, kMaxIndices = 8;

struct PulseCodebook {
    int bits;                   // 0: no such bit rate
    int pulses[kPulseTracks];   // of each track; 12 bits: one on each of two tracks
    int indices;                // words
    int lowBits[kPulseTracks];  // with eight words: how many bits of a track's code its second word has

    constexpr bool isSplit() const { return indices == kMaxIndices; }
    // Bits of a track's code.
    constexpr int trackBits(int track) const {
        constexpr int kBits[kMaxTrackPulses + 1] = {0, 5, 9, 13, 16, 20, 22};
        return kBits[pulses[track]];
    }
    constexpr int wordBits(int word) const {
        if (bits == 12) return 12;
        const int track = word % kPulseTracks;
        if (!isSplit()) return trackBits(track);
        return word < kPulseTracks ? trackBits(track) - lowBits[track] : lowBits[track];
    }
};

VSP_INLINE constexpr PulseCodebook pulseCodebook(Vsp32s mode) {
    switch (mode) {
        case 5:
        case 25: return {12, {1, 1, 0, 0}, 1, {}};
        case 9:
        case 26: return {20, {1, 1, 1, 1}, 4, {}};
        case 27: return {28, {2, 2, 1, 1}, 4, {}};
        case 13:
        case 28: return {36, {2, 2, 2, 2}, 4, {}};
        case 15:
        case 29: return {44, {3, 3, 2, 2}, 4, {}};
        case 16:
        case 30: return {52, {3, 3, 3, 3}, 4, {}};
        case 18:
        case 31: return {64, {4, 4, 4, 4}, 8, {14, 14, 14, 14}};
        case 19:
        case 32: return {72, {5, 5, 4, 4}, 8, {10, 10, 14, 14}};
        case 20:
        case 21:
        case 22: return {88, {6, 6, 6, 6}, 8, {11, 11, 11, 11}};
        default: return {};
    }
}

static consteval bool bitsAddUp() {
    for (int mode = 0; mode < 40; mode++) {
        const PulseCodebook codebook = pulseCodebook(mode);
        int bits = 0;
        for (int i = 0; i < codebook.indices; i++) bits += codebook.wordBits(i);
        if (bits != codebook.bits) return false;
    }
    return true;
}
static_assert(bitsAddUp());

}  // namespace vsp
