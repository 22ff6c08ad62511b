// The full-band filters on frames of 20 ms at 8 kHz; the last part of a name is the number of taps. The bound of the
// floating-point NLMS is its sum: as many additions one after the other.
#include <random>

#include "support/bench.h"

namespace {

constexpr int kFrame = 160, kMaxTaps = 1024;
const std::vector<int> kTaps = {64, 256, 512, kMaxTaps};

// Noise through an echo path that decays.
template <class T, class Step>
struct Signals {
    bench::Aligned<T> ref{kMaxTaps + kFrame}, near{kFrame}, dst{kFrame}, taps{kMaxTaps};
    bench::Aligned<Step> step{kFrame};
    T scaledErr = 0;

    Signals(Vsp32f one, Vsp32f stepSize) {
        std::mt19937 random(1);
        std::uniform_real_distribution<Vsp32f> noise(-0.25f * one, 0.25f * one);
        for (int i = 0; i < kMaxTaps + kFrame; i++) ref[i] = T(noise(random));
        for (int i = 0; i < kMaxTaps; i++) taps[i] = T(noise(random) / (1.0f + 0.05f * Vsp32f(i)));
        for (int i = 0; i < kFrame; i++) {
            near[i] = T(noise(random));
            step[i] = Step(stepSize);
        }
    }
};
using Signals_16s = Signals<Vsp16s, Vsp32s>;
using Signals_32f = Signals<Vsp32f, Vsp32f>;
const auto make_16s = [] { return Signals_16s(32768, 8); };
const auto make_32f = [] { return Signals_32f(1, 0.01f); };

template <class Function>
bool addFir(const char* name, Function vsp::Api::*member, auto makeSignals) {
    return bench::add(name, member, kTaps, [=](auto fir, bench::Buffers&, int numTaps) {
        static auto s = makeSignals();
        benchmark::DoNotOptimize(fir(s.ref.data() + kMaxTaps, s.near.data(), s.dst.data(), kFrame, s.taps.data(), numTaps));
    });
}

template <class Function>
bool addNlms(const char* name, Function vsp::Api::*member, auto makeSignals) {
    return bench::add(name, member, kTaps, [=](auto nlms, bench::Buffers&, int numTaps) {
        static auto s = makeSignals();
        benchmark::DoNotOptimize(nlms(s.ref.data() + kMaxTaps, s.near.data(), s.step.data(), s.dst.data(), kFrame,
                                      s.taps.data(), numTaps, &s.scaledErr));
    });
}

void additions(benchmark::State& state, int numTaps) {
    static Signals_32f s = make_32f();
    Vsp32f y = 0;
    for (auto _ : state) {
        for (int n = 0; n < kFrame; n++) {
            for (int k = 0; k < numTaps; k++) y += s.taps[k];
            benchmark::ClobberMemory();
        }
        benchmark::DoNotOptimize(y);
    }
}

bool addBound() {
    for (const int numTaps : kTaps)
        benchmark::RegisterBenchmark(("vspsNLMS_EC_32f/bound/" + std::to_string(numTaps)).c_str(), additions, numTaps);
    return true;
}

const bool registered[] = {
    addFir("vspsFIR_EC_16s", &vsp::Api::vspsFIR_EC_16s, make_16s),
    addFir("vspsFIR_EC_32f", &vsp::Api::vspsFIR_EC_32f, make_32f),
    addNlms("vspsNLMS_EC_16s", &vsp::Api::vspsNLMS_EC_16s, make_16s),
    addNlms("vspsNLMS_EC_32f", &vsp::Api::vspsNLMS_EC_32f, make_32f),
    addBound(),
};

}  // namespace
