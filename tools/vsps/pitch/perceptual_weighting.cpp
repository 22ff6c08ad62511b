#include "pitch/perceptual_weighting.h"

#include <algorithm>
#include <cmath>

Weighting AdaptiveWeighting::choose(const std::array<double, 2>& ratios, const Lsf& lsf) {
    if (flat_)
        flat_ = !(ratios[0] < -1.74 && ratios[1] > 0.65);
    else
        flat_ = ratios[0] > -1.52 || ratios[1] < 0.43;
    if (flat_) return {0.94, 0.6};
    double distance = lsf[1] - lsf[0];
    for (std::size_t i = 2; i < kLpOrder; i++) distance = std::min(distance, lsf[i] - lsf[i - 1]);
    return {0.98, std::clamp(1 - 6 * distance, 0.4, 0.7)};
}

std::array<double, 2> logAreaRatios(const std::array<double, 2>& reflection) {
    std::array<double, 2> ratios;
    for (std::size_t i = 0; i < 2; i++) ratios[i] = std::log((1 + reflection[i]) / (1 - reflection[i]));
    return ratios;
}
