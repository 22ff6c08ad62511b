// What the codecs of the comparisons code: one second of voiced sounds with noise, in bursts.
#pragma once

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

inline std::vector<int16_t> speechLike(int rate) {
    std::mt19937 random(1);
    std::normal_distribution<double> noise;
    std::vector<int16_t> x(static_cast<std::size_t>(rate));
    const int pitch = rate / 120;
    double y[2] = {};
    for (int i = 0; i < rate; i++) {
        const double loudness = i / (rate / 8) % 4 == 3 ? 0.02 : 1;
        const double sample = loudness * (i % pitch == 0 ? 6000 : 300 * noise(random)) + 1.5 * y[0] - 0.8 * y[1];
        y[1] = y[0];
        y[0] = sample;
        x[static_cast<std::size_t>(i)] = static_cast<int16_t>(std::lround(std::fmin(std::fmax(sample, -32768), 32767)));
    }
    return x;
}
