#include "pitch/speech_analysis.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr std::size_t kFrameBegin = kLpWindow - kPitchLookAhead - kPitchFrame;
constexpr double kLowPass = 0.7;  // G.729 A.3.4
constexpr double kQ12 = 4096;

using Subframe = std::array<double, kPitchSubframe>;
using WithHistory = std::array<double, kLpOrder + kPitchSubframe>;  // ten samples of the past before the subframe

std::int16_t toInt16(double x) { return static_cast<std::int16_t>(std::clamp(std::nearbyint(x), -32768.0, 32767.0)); }

template <std::size_t N>
std::array<std::int16_t, N> toInt16(const std::array<double, N>& x, double scale) {
    std::array<std::int16_t, N> result;
    std::transform(x.begin(), x.end(), result.begin(), [&](double v) { return toInt16(scale * v); });
    return result;
}

// Reads ten samples before x.
Subframe filterZeros(const LpFilter& a, const double* x) {
    Subframe y;
    for (std::size_t n = 0; n < y.size(); n++) {
        y[n] = x[n];
        for (std::size_t j = 1; j <= kLpOrder; j++) y[n] += a[j] * (x + n)[-std::ptrdiff_t(j)];
    }
    return y;
}

// Continues y after its first ten samples.
void filterPoles(const LpFilter& a, const Subframe& x, WithHistory& y) {
    for (std::size_t n = 0; n < x.size(); n++) {
        double sum = x[n];
        for (std::size_t j = 1; j <= kLpOrder; j++) sum -= a[j] * y[kLpOrder + n - j];
        y[kLpOrder + n] = sum;
    }
}

// W(z)/A(z) from rest.
Subframe synthesiseWeighted(const LpFilter& a, const Weighting& w, const Subframe& x) {
    WithHistory synthesis{}, weighted{};
    filterPoles(a, x, synthesis);
    const Subframe zeros = filterZeros(expandBandwidth(a, w.numerator), synthesis.data() + kLpOrder);
    filterPoles(expandBandwidth(a, w.denominator), zeros, weighted);
    Subframe y;
    std::copy(weighted.begin() + kLpOrder, weighted.end(), y.begin());
    return y;
}

SubframeSignals analyse(const double* speech, const LpFilter& filter, const Weighting& weighting) {
    const Subframe residual = filterZeros(filter, speech);
    return {toInt16(residual, 1), toInt16(synthesiseWeighted(filter, weighting, Subframe{1}), kQ12),
            toInt16(synthesiseWeighted(filter, weighting, residual), 1),
            toInt16(expandBandwidth(filter, weighting.denominator), kQ12)};
}

Lsf flatSpectrum() {
    Lsf lsf;
    for (std::size_t i = 0; i < kLpOrder; i++) lsf[i] = std::numbers::pi * double(i + 1) / double(kLpOrder + 1);
    return lsf;
}

template <std::size_t N>
std::array<double, N> mean(const std::array<double, N>& a, const std::array<double, N>& b) {
    std::array<double, N> result;
    for (std::size_t i = 0; i < N; i++) result[i] = (a[i] + b[i]) / 2;
    return result;
}

}  // namespace

SpeechAnalysis::SpeechAnalysis(Kind kind) : kind_(kind), lsf_(flatSpectrum()) {}

FrameSignals SpeechAnalysis::frame() {
    const Prediction prediction = predict(window_);
    const Lsf lsf = toLsf(prediction.filter).value_or(lsf_);
    const auto ratios = logAreaRatios(prediction.reflection);
    const std::array lsfs{mean(lsf_, lsf), lsf};
    const std::array allRatios{mean(ratios_, ratios), ratios};
    lsf_ = lsf;
    ratios_ = ratios;

    FrameSignals frame;
    for (std::size_t i = 0; i < frame.subframes.size(); i++) {
        const double* speech = window_.data() + kFrameBegin + i * kPitchSubframe;
        const LpFilter filter = toFilter(lsfs[i]);
        const Weighting weighting = kind_ == Kind::kMain ? adaptive_.choose(allRatios[i], lsfs[i]) : kFixedWeighting;
        weigh(speech, filter, weighting, frame.weighted.data() + i * kPitchSubframe);
        frame.subframes[i] = analyse(speech, filter, weighting);
    }
    return frame;
}

// Moves the window on, with high-pass filtered samples: 140 Hz, divided by 2 (G.729 §3.1).
void SpeechAnalysis::read(std::span<const std::int16_t> samples) {
    std::shift_left(window_.begin(), window_.end(), std::ptrdiff_t(samples.size()));
    double* next = window_.data() + kLpWindow - samples.size();
    for (const std::int16_t sample : samples) {
        const double x = sample;
        const double y = 0.46363718 * x - 0.92724705 * highPassIn_[0] + 0.46363718 * highPassIn_[1] +
                         1.9059465 * highPassOut_[0] - 0.9114024 * highPassOut_[1];
        highPassIn_ = {x, highPassIn_[0]};
        highPassOut_ = {y, highPassOut_[0]};
        *next++ = y;
    }
}

// The speech through W(z), and in Annex A through the low-pass filter.
void SpeechAnalysis::weigh(const double* speech, const LpFilter& filter, const Weighting& weighting, std::int16_t* out) {
    std::shift_left(weighted_.begin(), weighted_.end(), kPitchSubframe);
    filterPoles(expandBandwidth(filter, weighting.denominator),
                filterZeros(expandBandwidth(filter, weighting.numerator), speech), weighted_);
    for (std::size_t n = 0; n < kPitchSubframe; n++) {
        lowPassed_ = weighted_[kLpOrder + n] + kLowPass * lowPassed_;
        out[n] = toInt16(kind_ == Kind::kAnnexA ? lowPassed_ : weighted_[kLpOrder + n]);
    }
}
