#include "noise_measures.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <numbers>

namespace noise {

namespace {

constexpr double kPi = std::numbers::pi;

// Of 2^n values, in place.
void transform(std::vector<std::complex<double>>& x) {
    const std::size_t length = x.size();
    for (std::size_t i = 1, j = 0; i < length; i++) {
        std::size_t bit = length / 2;
        for (; (j & bit) != 0; bit /= 2) j ^= bit;
        j |= bit;
        if (i < j) std::swap(x[i], x[j]);
    }
    for (std::size_t half = 1; half < length; half *= 2) {
        const std::complex<double> step = std::polar(1.0, -kPi / double(half));
        std::complex<double> turn = 1;
        for (std::size_t k = 0; k < half; k++, turn *= step)
            for (std::size_t i = k; i < length; i += 2 * half) {
                const std::complex<double> odd = x[i + half] * turn;
                x[i + half] = x[i] - odd;
                x[i] += odd;
            }
    }
}

std::vector<double> hann(std::size_t length) {
    std::vector<double> w(length);
    for (std::size_t i = 0; i < length; i++) w[i] = 0.5 - 0.5 * std::cos(2 * kPi * double(i + 1) / double(length + 1));
    return w;
}

// The power spectra of overlapping frames.
using Spectra = std::vector<std::vector<double>>;
Spectra powerSpectra(const std::vector<double>& x, std::size_t frame, std::size_t step, std::size_t length) {
    const std::vector<double> window = hann(frame);
    Spectra all;
    std::vector<std::complex<double>> bins(length);
    for (std::size_t at = 0; at + frame <= x.size(); at += step) {
        std::fill(bins.begin(), bins.end(), 0);
        for (std::size_t i = 0; i < frame; i++) bins[i] = x[at + i] * window[i];
        transform(bins);
        std::vector<double> power(length / 2 + 1);
        for (std::size_t k = 0; k < power.size(); k++) power[k] = std::norm(bins[k]);
        all.push_back(std::move(power));
    }
    return all;
}

std::vector<double> asDouble(const Signal& x) { return {x.begin(), x.end()}; }

double energy(const float* x, std::size_t count) { return echo::power(x, count) * double(count); }

constexpr std::size_t kFrame = 256;  // 32 ms

// From 8 kHz to 10 kHz, by the filters of a windowed sinc for each of five phases.
std::vector<double> resampled(const Signal& x) {
    constexpr std::size_t kUp = 5, kDown = 4;
    constexpr long kReach = 32;
    std::array<std::array<double, 2 * kReach>, kUp> filters;
    for (std::size_t phase = 0; phase < kUp; phase++)
        for (long k = 0; k < 2 * kReach; k++) {
            const double t = double(k - kReach + 1) - double(phase) / kUp;
            const double sinc = t == 0 ? 1 : std::sin(kPi * t) / (kPi * t);
            filters[phase][std::size_t(k)] = sinc * (0.5 + 0.5 * std::cos(kPi * t / kReach));
        }
    std::vector<double> padded(x.size() + 2 * kReach), y(x.size() * kUp / kDown);
    std::copy(x.begin(), x.end(), padded.begin() + kReach - 1);
    for (std::size_t n = 0; n < y.size(); n++)
        for (std::size_t k = 0; k < 2 * kReach; k++) y[n] += padded[n * kDown / kUp + k] * filters[n * kDown % kUp][k];
    return y;
}

constexpr std::size_t kStoiFrame = 256, kStoiStep = 128, kStoiLength = 512, kBands = 15, kSegment = 30;

// Both without the frames in which the clean signal is more than 40 dB below its loudest one, joined by overlap-add.
void removeSilence(std::vector<double>& clean, std::vector<double>& processed) {
    const std::vector<double> window = hann(kStoiFrame);
    std::vector<double> levels;
    for (std::size_t at = 0; at + kStoiFrame <= clean.size(); at += kStoiStep) {
        double sum = 0;
        for (std::size_t i = 0; i < kStoiFrame; i++) sum += std::pow(clean[at + i] * window[i], 2);
        levels.push_back(10 * std::log10(sum + 1e-20));
    }
    const double loudest = levels.empty() ? 0 : *std::max_element(levels.begin(), levels.end());
    std::vector<double> c(clean.size()), p(clean.size());
    std::size_t to = 0;
    for (std::size_t f = 0; f < levels.size(); f++) {
        if (levels[f] < loudest - 40) continue;
        for (std::size_t i = 0; i < kStoiFrame; i++) {
            c[to + i] += clean[f * kStoiStep + i] * window[i];
            p[to + i] += processed[f * kStoiStep + i] * window[i];
        }
        to += kStoiStep;
    }
    c.resize(to + kStoiStep);
    p.resize(to + kStoiStep);
    clean = c;
    processed = p;
}

using Bands = std::array<double, kBands>;  // amplitudes

std::vector<Bands> thirdOctaves(const std::vector<double>& x) {
    std::vector<Bands> all;
    for (const std::vector<double>& power : powerSpectra(x, kStoiFrame, kStoiStep, kStoiLength)) {
        Bands bands{};
        for (std::size_t b = 0; b < kBands; b++) {
            const double centre = 150 * std::pow(2, double(b) / 3) * double(kStoiLength) / 10000;
            const auto from = std::size_t(std::lround(centre * std::pow(2, -1.0 / 6)));
            const auto to = std::size_t(std::lround(centre * std::pow(2, 1.0 / 6)));
            double sum = 0;
            for (std::size_t k = from; k < to; k++) sum += power[k];
            bands[b] = std::sqrt(sum);
        }
        all.push_back(bands);
    }
    return all;
}

using Envelope = std::array<double, kSegment>;

double correlation(Envelope x, Envelope y) {
    for (Envelope* e : {&x, &y}) {
        double mean = 0;
        for (const double v : *e) mean += v / kSegment;
        for (double& v : *e) v -= mean;
    }
    double xy = 0, xx = 1e-20, yy = 1e-20;
    for (std::size_t i = 0; i < kSegment; i++) xy += x[i] * y[i], xx += x[i] * x[i], yy += y[i] * y[i];
    return xy / std::sqrt(xx * yy);
}

}  // namespace

double segmentalSnr(const Signal& clean, const Signal& processed) {
    const double speech = echo::power(clean.data(), clean.size());
    double sum = 0;
    int frames = 0;
    for (std::size_t at = 0; at + kFrame <= clean.size(); at += kFrame) {
        if (echo::power(&clean[at], kFrame) < 0.003 * speech) continue;
        Signal error(kFrame);
        for (std::size_t i = 0; i < kFrame; i++) error[i] = processed[at + i] - clean[at + i];
        const double ratio = energy(&clean[at], kFrame) / (energy(error.data(), kFrame) + 1e-9);
        sum += std::clamp(echo::decibels(ratio), -10.0, 35.0);
        frames++;
    }
    return sum / frames;
}

double logSpectralDistance(const Signal& clean, const Signal& processed) {
    const Spectra c = powerSpectra(asDouble(clean), kFrame, kFrame / 2, kFrame);
    const Spectra p = powerSpectra(asDouble(processed), kFrame, kFrame / 2, kFrame);
    double largest = 0;
    for (const auto& frame : c)
        for (const double v : frame) largest = std::max(largest, v);
    const double least = 1e-5 * largest;
    double sum = 0;
    for (std::size_t f = 0; f < c.size(); f++) {
        double squares = 0;
        for (std::size_t k = 0; k < c[f].size(); k++)
            squares += std::pow(echo::decibels(std::max(c[f][k], least) / std::max(p[f][k], least)), 2);
        sum += std::sqrt(squares / double(c[f].size()));
    }
    return sum / double(c.size());
}

double peakiness(const Signal& noise) {
    const Spectra spectra = powerSpectra(asDouble(noise), kFrame, kFrame / 2, kFrame);
    double sum = 0;
    const std::size_t first = kFrame / 16, last = kFrame / 2 - 8;  // 250 to 3750 Hz
    for (std::size_t k = first; k < last; k++) {
        double power = 1e-9, square = 0;
        for (const auto& frame : spectra) power += frame[k] / double(spectra.size());
        for (const auto& frame : spectra) square += std::pow(frame[k] / power, 2) / double(spectra.size());
        sum += square;
    }
    return sum / double(last - first);
}

double intelligibility(const Signal& clean, const Signal& processed) {
    constexpr double kClip = 6.623413251903491;  // 1 + 10^(15 / 20)
    std::vector<double> c = resampled(clean), p = resampled(processed);
    removeSilence(c, p);
    const std::vector<Bands> x = thirdOctaves(c), y = thirdOctaves(p);
    double sum = 0;
    int count = 0;
    for (std::size_t end = kSegment; end <= x.size(); end++)
        for (std::size_t b = 0; b < kBands; b++) {
            Envelope ex, ey;
            double xx = 0, yy = 1e-20;
            for (std::size_t i = 0; i < kSegment; i++) {
                ex[i] = x[end - kSegment + i][b];
                ey[i] = y[end - kSegment + i][b];
                xx += ex[i] * ex[i];
                yy += ey[i] * ey[i];
            }
            for (std::size_t i = 0; i < kSegment; i++) ey[i] = std::min(ey[i] * std::sqrt(xx / yy), kClip * ex[i]);
            sum += correlation(ex, ey);
            count++;
        }
    return sum / count;
}

}  // namespace noise
