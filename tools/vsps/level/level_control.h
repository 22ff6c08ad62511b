// The level control of the library, run over a recording.
#pragma once

#include "audio/audio.h"

struct LevelSettings {
    double target = 26.1;   // dB below full scale that active speech is brought to
    double limit = 0;       // dB below full scale that no output sample exceeds
    double maxGain = 11.6;  // dB
    bool twoPass = false;   // learn the level over the whole recording first
};

// One channel at 8000 Hz, block by block; the result has as many samples.
Samples controlLevel(const Samples& in, const LevelSettings& settings);
