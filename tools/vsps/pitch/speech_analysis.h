// What a G.729 encoder computes of the speech before its pitch searches, without the quantisation.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "pitch/perceptual_weighting.h"

constexpr std::size_t kPitchFrame = 80;     // samples, 10 ms
constexpr std::size_t kPitchSubframe = 40;  // samples, 5 ms
constexpr std::size_t kPitchLookAhead = 40;

using SubframeSamples = std::array<std::int16_t, kPitchSubframe>;

struct SubframeSignals {
    SubframeSamples residual;                               // of the linear prediction
    SubframeSamples impulse;                                // response of the weighted synthesis filter W(z)/A(z), Q12
    SubframeSamples target;                                 // the residual filtered by W(z)/A(z)
    std::array<std::int16_t, kLpOrder + 1> weightedFilter;  // A(z) with the weighting of the denominator, Q12
};

struct FrameSignals {
    std::array<std::int16_t, kPitchFrame> weighted;  // speech for the open-loop search
    std::array<SubframeSignals, 2> subframes;
};

// Runs over a recording, frame by frame: high-pass filter, which halves the signal (G.729 §3.1), linear prediction with
// 5 ms look-ahead, interpolated between frames by line spectral frequencies (§3.2), perceptual weighting (§3.3), impulse
// response and target (§3.5, §3.6). As nothing is quantised, the synthesis so far equals the speech, so that the filters
// which make the target begin each subframe at rest.
class SpeechAnalysis {
  public:
    enum class Kind { kMain, kAnnexA };  // Annex A: fixed weighting, low-pass filtered speech for the open loop

    explicit SpeechAnalysis(Kind kind);

    // Takes the next samples.
    void read(std::span<const std::int16_t> samples);
    // What there is to know of the frame kPitchLookAhead samples ago; to be called once for each.
    FrameSignals frame();

  private:
    void weigh(const double* speech, const LpFilter& filter, const Weighting& weighting, std::int16_t* out);

    const Kind kind_;
    std::array<double, 2> highPassIn_{}, highPassOut_{};  // the last two samples
    std::array<double, kLpWindow> window_{};
    Lsf lsf_;  // of the last frame, like the next
    std::array<double, 2> ratios_{};
    AdaptiveWeighting adaptive_;
    std::array<double, kLpOrder + kPitchSubframe> weighted_{};  // the last ten samples are the memory
    double lowPassed_ = 0;
};
