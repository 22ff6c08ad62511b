// Where there is speech, as the voice layer detects it.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "audio/voice_object.h"

constexpr double kActivityFrameSeconds = 0.02;
constexpr int kWideActivityRate = 16000;  // Hz, of the option vspvSpeechWide; the others hear 8000 Hz

std::string detectorName(int option);

class VoiceActivity {
  public:
    // Option 1 or 2 of GSM-AMR, or vspvSpeechWide.
    explicit VoiceActivity(int option);

    // Takes any number of samples and appends the frames that they complete.
    void process(std::span<const std::int16_t> samples, std::vector<VspvSpeechDecision>& frames);
    // At the end: appends the frame that has begun, if there is one; silence fills it up.
    void finish(std::vector<VspvSpeechDecision>& frames);

  private:
    VoiceObject<VspvSpeechDetector> detector_;
};
