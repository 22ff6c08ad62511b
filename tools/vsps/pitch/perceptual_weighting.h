// The perceptual weighting filter of a speech coder, G.729 §3.3.
#pragma once

#include "analysis/linear_prediction.h"

struct Weighting {  // W(z) = A(z/numerator) / A(z/denominator)
    double numerator, denominator;
};

// Always the same weighting, G.729 A.3.3.
constexpr Weighting kFixedWeighting{1, 0.75};

// Chooses the weighting by the shape of the spectrum, with hysteresis: strong for flat spectra, and for tilted ones the
// weaker the sharper their peaks.
class AdaptiveWeighting {
  public:
    // One subframe after the other; log area ratios of the first two reflection coefficients.
    Weighting choose(const std::array<double, 2>& logAreaRatios, const Lsf& lsf);

  private:
    bool flat_ = true;
};

std::array<double, 2> logAreaRatios(const std::array<double, 2>& reflection);
