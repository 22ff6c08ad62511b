// The floating-point full-band filter on frames of 20 ms at 8 kHz, and one dot product of VOLK for each of their samples,
// with the taps in reverse order. The last part of a name is the number of taps.
#include <benchmark/benchmark.h>
#include <volk/volk.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "vspsc.h"

namespace {

constexpr int kFrame = 160;

struct Signals {
    std::vector<float> ref, near, taps, reversedTaps, dst;

    explicit Signals(int numTaps) : ref(numTaps + kFrame), near(kFrame), taps(numTaps), dst(kFrame) {
        std::mt19937 random(1);
        std::uniform_real_distribution<float> noise(-0.25f, 0.25f);
        for (auto* signal : {&ref, &near, &taps})
            for (float& x : *signal) x = noise(random);
        reversedTaps.assign(taps.rbegin(), taps.rend());
    }
};

void library(benchmark::State& state, int numTaps) {
    Signals s(numTaps);
    for (auto _ : state) {
        vspsFIR_EC_32f(&s.ref[numTaps - 1], s.near.data(), s.dst.data(), kFrame, s.taps.data(), numTaps);
        benchmark::ClobberMemory();
    }
}

void volk(benchmark::State& state, int numTaps) {
    Signals s(numTaps);
    for (auto _ : state) {
        for (int n = 0; n < kFrame; n++) {
            float y = 0;
            volk_32f_x2_dot_prod_32f(&y, &s.ref[n], s.reversedTaps.data(), static_cast<unsigned>(numTaps));
            s.dst[n] = s.near[n] - y;
        }
        benchmark::ClobberMemory();
    }
}

bool registerAll() {
    for (const int numTaps : {64, 256, 512, 1024}) {
        benchmark::RegisterBenchmark(("fir_32f/library/" + std::to_string(numTaps)).c_str(), library, numTaps);
        benchmark::RegisterBenchmark(("fir_32f/volk/" + std::to_string(numTaps)).c_str(), volk, numTaps);
    }
    return true;
}

const bool registered = registerAll();

}  // namespace
