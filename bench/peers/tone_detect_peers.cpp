// Two seconds of 8 kHz audio, an answer tone with phase reversals and noise, in frames of 20 ms, through the tone detectors
// and through the receiver of connect tones of spandsp.
#include <benchmark/benchmark.h>
#include <spandsp.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "vspsc.h"

namespace {

constexpr int kRate = 8000, kFrame = 160, kLength = 2 * kRate;

template <class T>
std::vector<T> signal() {
    std::mt19937 random(1);
    std::normal_distribution<double> noise;
    std::vector<T> x(kLength);
    for (int i = 0; i < kRate; i++) {
        const double phase = 2 * 3.14159265358979 * 2100 / kRate * i, sign = i / 3600 % 2 == 0 ? 1 : -1;
        x[static_cast<std::size_t>(i)] = static_cast<T>(std::lround(8000 * sign * std::sin(phase) + 30 * noise(random)));
        x[static_cast<std::size_t>(kRate + i)] = static_cast<T>(std::lround(2000 * noise(random)));
    }
    return x;
}

// Counts the detections, which a detector that works makes once or a few times in the two seconds.
template <class T, class Detect>
void run(benchmark::State& state, Detect detect) {
    const std::vector<T> x = signal<T>();
    int64_t found = 0;
    for (auto _ : state)
        for (std::size_t i = 0; i < kLength; i += kFrame) found += detect(&x[i]);
    state.counters["found"] = benchmark::Counter(static_cast<double>(found), benchmark::Counter::kAvgIterations);
}

void fixedPoint(benchmark::State& state) {
    unsigned char memory[72];
    auto* const detector = reinterpret_cast<VspToneDetectState_EC_16s*>(memory);
    vspsToneDetectInit_EC_16s(detector, kRate);
    run<int16_t>(state, [detector](const int16_t* frame) {
        int flag = 0;
        vspsToneDetect_EC_16s(frame, kFrame, &flag, detector);
        return flag;
    });
}

void floatingPoint(benchmark::State& state) {
    unsigned char memory[80];
    auto* const detector = reinterpret_cast<VspToneDetectState_EC_32f*>(memory);
    vspsToneDetectInit_EC_32f(detector, kRate);
    run<float>(state, [detector](const float* frame) {
        int flag = 0;
        vspsToneDetect_EC_32f(frame, kFrame, &flag, detector);
        return flag;
    });
}

void spandsp(benchmark::State& state) {
    modem_connect_tones_rx_state_t* const detector =
        modem_connect_tones_rx_init(nullptr, MODEM_CONNECT_TONES_ANS_PR, nullptr, nullptr);
    run<int16_t>(state, [detector](const int16_t* frame) {
        modem_connect_tones_rx(detector, frame, kFrame);
        return modem_connect_tones_rx_get(detector) == MODEM_CONNECT_TONES_ANS_PR ? 1 : 0;
    });
    modem_connect_tones_rx_free(detector);
}

benchmark::internal::Benchmark* const registered[] = {
    benchmark::RegisterBenchmark("tone_detect/library/16000", fixedPoint),
    benchmark::RegisterBenchmark("tone_detect/library_32f/16000", floatingPoint),
    benchmark::RegisterBenchmark("tone_detect/spandsp/16000", spandsp),
};

}  // namespace
