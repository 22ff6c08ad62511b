// Answer tones with phase reversals (2100 Hz, ITU-T V.25), as the voice layer detects them.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "audio/voice_object.h"

struct AnswerTone {
    double start, end;              // s, as far as 2100 Hz prevails
    double power;                   // mean square from start to end
    std::vector<double> reversals;  // s, when the detector reported a phase reversal: the second and later ones
};

class AnswerToneFinder {
  public:
    // With the detector in floating or in fixed point; the rate is 8000 or 16000 Hz.
    AnswerToneFinder(int rate, bool fixedPoint);

    // Takes any number of samples and appends the tones that have ended.
    void process(std::span<const std::int16_t> samples, std::vector<AnswerTone>& tones);
    // At the end: appends the tone that is still there.
    void finish(std::vector<AnswerTone>& tones);

  private:
    void add(const VspvToneEvent& event, std::vector<AnswerTone>& tones);
    double seconds(Vsp64s samples) const { return double(samples) / rate_; }

    int rate_;
    VoiceObject<VspvToneDetector> detector_;
    std::vector<double> reversals_;  // s, in the current tone
};
