#include "simulate_echo/simulation.h"

#include <cmath>
#include <numbers>
#include <random>

namespace {

// White and Gaussian (Box and Muller), the same on every system.
std::vector<double> makeNoise(std::size_t count, const NoiseSettings& settings) {
    std::mt19937_64 source(settings.seed);
    const auto uniform = [&] { return (double(source() >> 11) + 0.5) * 0x1p-53; };
    const double amplitude = 32768 * std::pow(10, settings.level / 20);
    std::vector<double> noise(count);
    for (double& x : noise) {
        const double radius = std::sqrt(-2 * std::log(uniform()));
        x = amplitude * radius * std::cos(2 * std::numbers::pi * uniform());
    }
    return noise;
}

std::int16_t toPcm(double x, std::size_t& clipped) {
    const double rounded = std::nearbyint(x);
    if (rounded >= -32768 && rounded <= 32767) return static_cast<std::int16_t>(rounded);
    clipped++;
    return rounded < 0 ? -32768 : 32767;
}

Samples toPcm(const std::vector<double>& x) {
    std::size_t ignored = 0;
    Samples samples;
    samples.reserve(x.size());
    for (const double value : x) samples.push_back(toPcm(value, ignored));
    return samples;
}

double power(const std::vector<double>& x) {
    double sum = 0;
    for (const double value : x) sum += value * value;
    return sum / double(x.size());
}

}  // namespace

LineSignals simulateLine(const Samples& far, const Samples& near, const EchoPath& path, std::size_t delay,
                         const std::optional<NoiseSettings>& noise) {
    const std::vector<double> farEnd(far.begin(), far.end());
    const std::vector<double> echo = echoOf(farEnd, path, delay);
    const std::vector<double> noiseOnLine = noise ? makeNoise(far.size(), *noise) : std::vector<double>(far.size());
    LineSignals line{toPcm(echo), toPcm(noiseOnLine), {}, power(farEnd), power(echo), 0};
    line.out.reserve(far.size());
    for (std::size_t i = 0; i < far.size(); i++)
        line.out.push_back(toPcm(near[i] + echo[i] + noiseOnLine[i], line.clipped));
    return line;
}
