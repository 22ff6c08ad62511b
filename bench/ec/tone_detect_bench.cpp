// The tone detectors on one second of an answer tone with phase reversals and one of noise, in blocks; the last part of a
// name is the length of the blocks.
#include <cmath>
#include <random>

#include "support/bench.h"

namespace {

constexpr int kRate = 8000;

template <class T>
std::vector<T> signal() {
    std::mt19937 random(1);
    std::normal_distribution<double> noise;
    std::vector<T> x(2 * kRate);
    for (int i = 0; i < kRate; i++) {
        const double phase = 2 * 3.14159265358979 * 2100 / kRate * i;
        x[std::size_t(i)] = T((i / 3600 % 2 == 0 ? 8000 : -8000) * std::sin(phase) + 30 * noise(random));
        x[std::size_t(kRate + i)] = T(2000 * noise(random));
    }
    return x;
}

template <class T, class State, class Init, class Detect>
bool add(const std::string& name, Init vsp::Api::*init, Detect vsp::Api::*detect) {
    for (const bench::Implementation& implementation : bench::implementations()) {
        const Init initFunction = implementation.api->*init;
        const Detect detectFunction = implementation.api->*detect;
        if (detectFunction == nullptr) continue;
        for (const int len : {80, 160, 1600}) {
            const std::string full = name + "/" + implementation.name + "/" + std::to_string(len);
            benchmark::RegisterBenchmark(full.c_str(), [=](benchmark::State& state) {
                static const std::vector<T> x = signal<T>();
                alignas(16) Vsp8u memory[96];
                auto* const detector = reinterpret_cast<State*>(memory);
                initFunction(detector, kRate);
                Vsp32s flag = 0;
                for (auto _ : state)
                    for (std::size_t i = 0; i < x.size(); i += std::size_t(len)) {
                        detectFunction(&x[i], len, &flag, detector);
                        benchmark::DoNotOptimize(flag);
                    }
            });
        }
    }
    return true;
}

const bool registered[] = {
    add<Vsp16s, VspToneDetectState_EC_16s>("vspsToneDetect_EC_16s", &vsp::Api::vspsToneDetectInit_EC_16s,
                                           &vsp::Api::vspsToneDetect_EC_16s),
    add<Vsp32f, VspToneDetectState_EC_32f>("vspsToneDetect_EC_32f", &vsp::Api::vspsToneDetectInit_EC_32f,
                                           &vsp::Api::vspsToneDetect_EC_32f),
};

}  // namespace
