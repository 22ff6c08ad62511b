// The pitch of speech, as the voice layer finds it.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "audio/voice_object.h"

constexpr double kPitchPointSeconds = 0.005;

class PitchTracker {
  public:
    // vspvPitchMain ...
    explicit PitchTracker(Vsp32s search);

    // Takes any number of samples at 8000 Hz and appends two points for each frame of 80 samples that they and the 40
    // samples behind it complete.
    void process(std::span<const std::int16_t> samples, std::vector<VspvPitchPoint>& points);
    // At the end: appends the points of the last whole frame, if they are still missing; silence follows it.
    void finish(std::vector<VspvPitchPoint>& points);

  private:
    VoiceObject<VspvPitchTracker> tracker_{vspvPitchTrackerGetSize};
};
