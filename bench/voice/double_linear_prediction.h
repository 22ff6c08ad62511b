// Linear prediction of speech in floating point, as G.729 §3.2 does it.
#pragma once

#include <array>
#include <optional>
#include <span>

constexpr std::size_t kLpOrder = 10;
constexpr std::size_t kLpWindow = 240;  // samples at 8 kHz

// A(z) = a[0] + a[1] z^-1 + ... + a[10] z^-10, a[0] = 1.
using LpFilter = std::array<double, kLpOrder + 1>;
// Line spectral frequencies, ascending, radians between 0 and pi.
using Lsf = std::array<double, kLpOrder>;

struct Prediction {
    LpFilter filter;
    std::array<double, 2> reflection;  // the first two coefficients; the first is near -1 for a low-pass spectrum
};

// Window of 240 samples (30 ms, 5 ms of them ahead of the frame), autocorrelation, lag window, Levinson-Durbin recursion.
Prediction predict(std::span<const double, kLpWindow> speech);

// Empty if the filter is so close to instability that not all frequencies are found.
std::optional<Lsf> toLsf(const LpFilter& filter);
LpFilter toFilter(const Lsf& lsf);

// A(z/gamma)
LpFilter expandBandwidth(const LpFilter& filter, double gamma);
