// Answer tones with phase reversals (2100 Hz, ITU-T V.25), with which modems and fax machines switch echo
// cancellers off.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "tone/reversal_detector.h"
#include "tone/tone_extent.h"

struct AnswerTone {
    double start, end;              // s, as far as 2100 Hz prevails
    double power;                   // mean square from start to end
    std::vector<double> reversals;  // s, when the detector reported a phase reversal: the second and later ones
};

class AnswerToneFinder {
  public:
    // With the library's detector, in floating or in fixed point; the rate is 8000 or 16000 Hz.
    AnswerToneFinder(int rate, bool fixedPoint);

    // Takes any number of samples and appends the tones that have ended.
    void process(std::span<const std::int16_t> samples, std::vector<AnswerTone>& tones);
    // At the end: appends the tone that is still there.
    void finish(std::vector<AnswerTone>& tones);

  private:
    void addReversal();
    void append(const ToneStretch& stretch, std::vector<AnswerTone>& tones);

    int rate_;
    ReversalDetector detector_;
    ToneExtent extent_;
    std::vector<std::int16_t> block_;  // the samples so far of a block of 10 ms
    std::size_t heard_ = 0;            // of them by the detector
    std::uint64_t position_ = 0;       // samples
    std::vector<double> reversals_;    // s, in the current stretch of tone
};
