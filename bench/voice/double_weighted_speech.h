// What a GSM-AMR encoder makes of the speech before its open-loop pitch search.
#pragma once

#include <array>
#include <cstdint>

#include "voice/double_linear_prediction.h"

constexpr std::size_t kAmrFrame = 160;     // samples, 20 ms
constexpr std::size_t kAmrLookAhead = 40;  // samples after the frame that the linear prediction sees

using AmrFrame = std::array<std::int16_t, kAmrFrame>;

// Clears the lowest three bits, removes what is below 80 Hz and halves the signal (3GPP TS 26.090 5.1).
class AmrPreProcessing {
  public:
    AmrFrame process(const AmrFrame& speech);

  private:
    std::array<double, 2> in_{}, out_{};  // the last two samples
};

// Linear prediction once a frame, interpolated between frames by line spectral pairs, and the perceptual weighting
// A(z/0.94)/A(z/0.6): 3GPP TS 26.090 5.2 and 5.3 as at 5.9 to 7.95 kbit/s. In floating point.
class AmrWeighting {
  public:
    AmrWeighting();

    // Takes a pre-processed frame; returns the weighted speech of as many samples, kAmrLookAhead before it.
    AmrFrame process(const AmrFrame& speech);

  private:
    std::array<double, kLpWindow> window_{};      // 40 samples of the past, the frame, 40 of look-ahead
    Lsf lsp_;                                     // of the last frame: cosines of the line spectral frequencies
    std::array<double, kLpOrder + 40> weighted_;  // of a subframe, after the last ten samples before it
};
