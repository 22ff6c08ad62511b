// The level control of the voice layer.
#pragma once

#include <cstdint>
#include <span>

#include "audio/voice_object.h"

struct LevelSettings {
    double target = 26.1;   // dB below full scale that active speech is brought to
    double limit = 0;       // dB below full scale that no output sample exceeds
    double maxGain = 11.6;  // dB
    bool twoPass = false;   // learn the level over the whole recording first

    double highestSample() const;  // that the limit allows
};

// One channel at 8000 Hz.
class LevelControl {
  public:
    explicit LevelControl(const LevelSettings& settings);

    // in and out are of one length, a multiple of 160 but for the last block. out may be in.
    void process(std::span<const std::int16_t> in, std::span<std::int16_t> out);

  private:
    VoiceObject<VspvLevelControl> control_{vspvLevelControlGetSize};
};
