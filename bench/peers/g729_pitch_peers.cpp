// The pitch search and the adaptive codebook beside the same steps inside two other codec libraries, whose static archives
// give access to them.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <string>

#include "vspsc.h"

extern "C" {
// bcg729
uint16_t findOpenLoopPitchDelay(int16_t* weighted);
void adaptativeCodebookSearch(int16_t* excitation, int16_t* delayMin, int16_t* delayMax, int16_t* impulse, int16_t* target,
                              int16_t* delay, int16_t* fraction, uint16_t* codeword, uint16_t subframe);
void computeAdaptativeCodebookVector(int16_t* excitation, int16_t fraction, int16_t delay);
void synthesisFilter(int16_t* input, int16_t* lpc, int16_t* output);
int16_t computeAdaptativeCodebookGain(int16_t* target, int16_t* filtered, int64_t* xy, int64_t* yy);
// opencore-amrnb
int16_t Pitch_ol(int mode, void* vad, int16_t* signal, int16_t lagMin, int16_t lagMax, int16_t frame, int16_t index,
                 int dtx, int* overflow);
}

namespace {

// Voiced speech with a pitch of 57 samples: a decaying pulse response, and noise.
struct Signals {
    int16_t weighted[223], excitation[10 + 194], target[40], impulse[40], lpc[11] = {4096, -5000, 2500, -600},
                                                                          vector[10 + 40];
    int16_t* const current = excitation + 10 + 154;  // the synthesis filters want ten samples before what they filter

    Signals() {
        std::mt19937 random(1);
        std::normal_distribution<float> noise(0, 300);
        const auto voiced = [&](int i) {
            const float age = float(i % 57);
            return static_cast<int16_t>(6000 * std::exp(-age / 12) * std::cos(age * 0.4f) + noise(random));
        };
        for (int i = 0; i < 223; i++) weighted[i] = voiced(i);
        for (int i = 0; i < 204; i++) excitation[i] = voiced(i);
        for (int i = 0; i < 40; i++) target[i] = voiced(i + 204);
        for (int i = 0; i < 40; i++)
            impulse[i] = static_cast<int16_t>(4096 * std::exp(-float(i) / 6) * std::cos(0.5f * float(i)));
        for (int i = 0; i < 50; i++) vector[i] = i < 10 ? int16_t(0) : voiced(i);
    }
};

template <class Call>
void add(const std::string& name, Call call) {
    benchmark::RegisterBenchmark(name.c_str(), [call](benchmark::State& state) {
        Signals signals;
        for (auto _ : state) {
            call(signals);
            benchmark::ClobberMemory();
        }
    });
}

bool addAll() {
    add("open_loop_G729A/library/80", [](Signals& s) {
        int16_t lag;
        vspsOpenLoopPitchSearch_G729A_16s(s.weighted + 143, &lag);
        benchmark::DoNotOptimize(lag);
    });
    add("open_loop_G729A/bcg729/80",
        [](Signals& s) { benchmark::DoNotOptimize(findOpenLoopPitchDelay(s.weighted + 143)); });

    add("open_loop_G729/library/80", [](Signals& s) {
        int16_t lag;
        vspsOpenLoopPitchSearch_G729_16s(s.weighted + 143, &lag);
        benchmark::DoNotOptimize(lag);
    });
    add("open_loop_G729/opencore/80", [](Signals& s) {
        int overflow = 0;
        benchmark::DoNotOptimize(Pitch_ol(0, nullptr, s.weighted + 143, 20, 143, 80, 1, 0, &overflow));
    });

    add("closed_loop_G729A/library/40", [](Signals& s) {
        int16_t delay[2], vector[40];
        vspsAdaptiveCodebookSearch_G729A_16s(57, s.target, s.impulse, s.excitation + 10, delay, vector, 0);
        benchmark::DoNotOptimize(vector);
    });
    add("closed_loop_G729A/bcg729/40", [](Signals& s) {
        int16_t low = 54, high = 60, delay, fraction;
        uint16_t code;
        adaptativeCodebookSearch(s.current, &low, &high, s.impulse, s.target, &delay, &fraction, &code, 0);
        benchmark::DoNotOptimize(delay);
    });

    for (const int lag : {20, 25, 30, 35, 60, 100, 143}) {
        const std::string length = std::to_string(lag);
        add("adaptive_vector_by_lag/library/" + length, [lag](Signals& s) {
            const int16_t delay[2] = {static_cast<int16_t>(lag), 1};
            vspsDecodeAdaptiveVector_G729_16s_I(delay, s.excitation + 10);
        });
        add("adaptive_vector_by_lag/bcg729/" + length,
            [lag](Signals& s) { computeAdaptativeCodebookVector(s.current, 1, static_cast<int16_t>(lag)); });
    }

    add("gain_G729A/library/40", [](Signals& s) {
        int16_t filtered[40], gain;
        vspsAdaptiveCodebookGain_G729A_16s(s.target, s.lpc, s.vector + 10, filtered, &gain);
        benchmark::DoNotOptimize(gain);
    });
    add("gain_G729A/bcg729/40", [](Signals& s) {
        int16_t filtered[10 + 40] = {};
        int64_t xy, yy;
        synthesisFilter(s.vector + 10, s.lpc + 1, filtered + 10);
        benchmark::DoNotOptimize(computeAdaptativeCodebookGain(s.target, filtered + 10, &xy, &yy));
    });
    return true;
}

[[maybe_unused]] const bool registered = addAll();

}  // namespace
