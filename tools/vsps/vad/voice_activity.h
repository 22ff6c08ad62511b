// Where there is speech, as the voice layer detects it.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "audio/voice_object.h"

constexpr double kActivityFrameSeconds = 0.02;

class VoiceActivity {
  public:
    // Option 1 or 2 of the standard.
    explicit VoiceActivity(int option);

    // Takes any number of samples at 8000 Hz and appends the frames that they complete.
    void process(std::span<const std::int16_t> samples, std::vector<VspvSpeechDecision>& frames);
    // At the end: appends the frame that has begun, if there is one; silence fills it up.
    void finish(std::vector<VspvSpeechDecision>& frames);

  private:
    VoiceObject<VspvSpeechDetector> detector_;
};
