#include "g168/composite_source.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "simulate_echo/simulation.h"

namespace {

using Signal = std::vector<double>;

constexpr std::size_t kNoise = 1600;                           // samples, 200 ms
constexpr std::size_t kVoiced = 389, kPause = 811;             // of the far end
constexpr std::size_t kNearVoiced = 582, kNearPause = 1018;    // of the near end
constexpr double kLowest = 200, kHighest = 3600;               // Hz
constexpr double kFarPitch = 44100.0 / 134, kNearPitch = 250;  // Hz
constexpr double kTilt = -5;                                   // dB per octave, of voiced sounds

std::size_t samplesOf(double seconds) { return std::size_t(std::lround(seconds * kRate)); }

void scaleToUnity(Signal& x) {
    double energy = 0;
    for (const double v : x) energy += v * v;
    const double gain = 1 / std::sqrt(energy / double(x.size()));
    for (double& v : x) v *= gain;
}

// Harmonics whose phases keep the peaks low.
Signal voiced(std::size_t length, double pitch) {
    Signal x(length);
    for (int k = 1; k * pitch < kHighest; k++) {
        const double amplitude = std::pow(10, kTilt / 20 * std::log2(k)), phase = std::numbers::pi * k * k / 10;
        for (std::size_t n = 0; n < length; n++)
            x[n] += amplitude * std::cos(2 * std::numbers::pi * pitch * k * double(n) / kRate + phase);
    }
    scaleToUnity(x);
    return x;
}

// Lines every 5 Hz between the limits of the band; line() gives the amplitudes of cosine and sine.
template <typename Line>
Signal bandNoise(Line line) {
    constexpr double kSpacing = double(kRate) / kNoise;
    std::array<double, kNoise> cosine;
    for (std::size_t n = 0; n < kNoise; n++) cosine[n] = std::cos(2 * std::numbers::pi * double(n) / kNoise);
    Signal x(kNoise);
    for (auto k = std::size_t(kLowest / kSpacing); double(k) * kSpacing <= kHighest; k++) {
        const auto [a, b] = line();
        for (std::size_t n = 0; n < kNoise; n++)
            x[n] += a * cosine[k * n % kNoise] + b * cosine[(k * n + 3 * kNoise / 4) % kNoise];
    }
    scaleToUnity(x);
    return x;
}

Samples scaled(const Signal& x, double dbm0) {
    const double gain = 32768 * std::pow(10, (dbm0 - kDbm0OverDbov) / 20);
    Samples y(x.size());
    std::transform(x.begin(), x.end(), y.begin(),
                   [gain](double v) { return std::int16_t(std::clamp(std::nearbyint(gain * v), -32768.0, 32767.0)); });
    return y;
}

}  // namespace

// Pseudo-noise: all lines are as strong, of random sign.
Samples compositeSource(double seconds, double dbm0) {
    NoiseSource random({0, 1});
    const Signal voice = voiced(kVoiced, kFarPitch);
    const Signal noise = bandNoise([&] { return std::pair(random.next() < 0 ? -1.0 : 1.0, 0.0); });
    Signal x;
    double sign = 1;
    while (x.size() < samplesOf(seconds)) {
        for (const Signal* part : {&voice, &noise})
            for (const double v : *part) x.push_back(sign * v);
        x.resize(x.size() + kPause);
        sign = -sign;
    }
    x.resize(samplesOf(seconds));
    return scaled(x, dbm0);
}

double compositeActivity() { return double(kVoiced + kNoise) / double(kVoiced + kNoise + kPause); }

Samples doubleTalkSource(double seconds, double dbm0) {
    NoiseSource random({0, 2});
    const Signal voice = voiced(kNearVoiced, kNearPitch);
    Signal x;
    while (x.size() < samplesOf(seconds)) {
        const Signal noise = bandNoise([&] { return std::pair(random.next(), random.next()); });
        for (const Signal* part : {&voice, &noise}) x.insert(x.end(), part->begin(), part->end());
        x.resize(x.size() + kNearPause);
    }
    x.resize(samplesOf(seconds));
    return scaled(x, dbm0);
}

Samples toneOf(double seconds, double dbm0, double hertz, double otherHertz) {
    const auto sine = [](double frequency, std::size_t n) {
        return std::numbers::sqrt2 * std::sin(2 * std::numbers::pi * frequency * double(n) / kRate);
    };
    Signal x(samplesOf(seconds));
    for (std::size_t n = 0; n < x.size(); n++)
        x[n] = otherHertz == 0 ? sine(hertz, n) : (sine(hertz, n) + sine(otherHertz, n)) / std::numbers::sqrt2;
    return scaled(x, dbm0);
}

Samples reversingTone(double seconds, double dbm0, double hertz, double reversalSeconds) {
    Samples x = toneOf(seconds, dbm0, hertz);
    for (std::size_t n = 0; n < x.size(); n++)
        if (n / samplesOf(reversalSeconds) % 2 != 0) x[n] = std::int16_t(-x[n]);
    return x;
}

Samples silence(double seconds) { return Samples(samplesOf(seconds)); }
