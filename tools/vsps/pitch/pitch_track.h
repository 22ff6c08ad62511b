// The pitch of a recording as a G.729 encoder finds it.
#pragma once

#include <vector>

#include "audio/audio.h"

enum class PitchSearch { kMain, kAnnexA, kAnnexD };  // G.729, Annex A (reduced complexity), Annex D (6.4 kbit/s)

struct PitchPoint {              // a subframe, 5 ms
    std::int16_t openLoopLag;    // samples, of the frame
    std::int16_t lag, fraction;  // closed loop: lag + fraction / 3 samples
    float gain;                  // of the adaptive codebook
    float predictionGain;        // dB that the adaptive codebook removes from the target
    float level;                 // dBov

    double f0() const { return kRate / (lag + fraction / 3.0); }  // Hz
    // The past predicts at least half of the energy, with at least half its own amplitude.
    bool voiced() const { return gain >= 0.5f && predictionGain >= 3; }
};

using PitchTrack = std::vector<PitchPoint>;

// Two points for each whole frame of 80 samples.
PitchTrack trackPitch(const Samples& speech, PitchSearch search);
