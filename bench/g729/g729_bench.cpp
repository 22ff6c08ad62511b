#include <cmath>
#include <cstring>
#include <random>

#include "support/bench.h"

namespace {

// Voiced speech with a pitch of 57 samples: a decaying pulse response, and noise.
struct Signals {
    Vsp16s weighted[223], excitation[194], target[40], impulse[40], vector[40], lpc[11] = {4096, -5000, 2500, -600},
                                                                                memory[10] = {};

    Signals() {
        std::mt19937 random(1);
        std::normal_distribution<float> noise(0, 300);
        const auto voiced = [&](int i) {
            const float age = static_cast<float>(i % 57);
            return static_cast<Vsp16s>(6000 * std::exp(-age / 12) * std::cos(age * 0.4f) + noise(random));
        };
        for (int i = 0; i < 223; i++) weighted[i] = voiced(i);
        for (int i = 0; i < 194; i++) excitation[i] = voiced(i);
        for (int i = 0; i < 40; i++) {
            const float age = static_cast<float>(i);
            target[i] = vector[i] = voiced(i + 194);
            impulse[i] = static_cast<Vsp16s>(4096 * std::exp(-age / 6) * std::cos(0.5f * age));
        }
    }
};

const Signals kSignals;

struct FloatSignals {
    Vsp32f weighted[223], excitation[223], a[40], b[40];
    FloatSignals() {
        for (int i = 0; i < 223; i++) weighted[i] = excitation[i] = kSignals.weighted[i];
        for (int i = 0; i < 40; i++) {
            a[i] = kSignals.target[i];
            b[i] = kSignals.impulse[i];
        }
    }
};

template <class Function>
bool add(const char* name, Function vsp::Api::*member, const std::vector<int>& lengths, auto call) {
    return bench::add(name, member, lengths, [call](auto f, bench::Buffers&, int len) {
        static Signals s = kSignals;
        benchmark::DoNotOptimize(call(f, s, len));
    });
}

template <class Function>
bool addFloat(const char* name, Function vsp::Api::*member, const std::vector<int>& lengths, auto call) {
    return bench::add(name, member, lengths, [call](auto f, bench::Buffers&, int len) {
        static FloatSignals s;
        benchmark::DoNotOptimize(call(f, s, len));
    });
}

#define VSPSC_BENCH(name, lengths, ...) \
    add(#name, &vsp::Api::name, lengths, [](auto f, [[maybe_unused]] Signals& s, [[maybe_unused]] int len) __VA_ARGS__)
#define VSPSC_BENCH_32F(name, lengths, ...) \
    addFloat(#name, &vsp::Api::name, lengths, [](auto f, FloatSignals& s, [[maybe_unused]] int len) __VA_ARGS__)

using Lengths = std::vector<int>;
Vsp16s result[40], filtered[40], delay[2], index[5], scalar, lpc30[31] = {4096, -5000, 2500, -600};
const Vsp16s gamma729E[3] = {22938, 21300, 8192};
Vsp32s word, lag;
Vsp32s words[2];
Vsp32f floats[40], floats2[40], real;
const Vsp32f lpcFloats[11] = {1, -1.2f, 0.6f, -0.15f};

// A state of zeros, which is a legal one.
template <class State>
State* stateOf() {
    alignas(16) static char bytes[1024];
    return reinterpret_cast<State*>(bytes);
}

[[maybe_unused]] const bool registered[] = {
    VSPSC_BENCH(vspsAutoCorrLagMax_Inv_16s, Lengths{80}, { return f(s.weighted + 143, len, 20, 143, &word, &lag); }),
    VSPSC_BENCH(vspsCrossCorr_NormM_16s, Lengths{40}, { return f(s.target, s.impulse, len, result); }),
    VSPSC_BENCH(vspsConvPartial_16s_Sfs, Lengths{40}, { return f(s.vector, s.impulse, result, len, 12); }),
    VSPSC_BENCH(vspsSynthesisFilter_NR_16s_Sfs, Lengths{40}, { return f(s.lpc, s.vector, result, len, 12, s.memory); }),
    VSPSC_BENCH(vspsOpenLoopPitchSearch_G729_16s, Lengths{80}, { return f(s.weighted + 143, &scalar); }),
    VSPSC_BENCH(vspsOpenLoopPitchSearch_G729A_16s, Lengths{80}, { return f(s.weighted + 143, &scalar); }),
    VSPSC_BENCH(vspsAdaptiveCodebookSearch_G729_16s, Lengths{40},
                { return f(57, s.target, s.impulse, s.excitation, delay, result, 0); }),
    VSPSC_BENCH(vspsAdaptiveCodebookSearch_G729A_16s, Lengths{40},
                { return f(57, s.target, s.impulse, s.excitation, delay, result, 0); }),
    VSPSC_BENCH(vspsAdaptiveCodebookSearch_G729D_16s, Lengths{40},
                { return f(57, s.target, s.impulse, s.excitation, 1, delay); }),
    add("vspsDecodeAdaptiveVector_G729_16s_I_by_lag", &vsp::Api::vspsDecodeAdaptiveVector_G729_16s_I,
        Lengths{20, 25, 30, 35, 60, 143},
        [](auto f, Signals& s, int len) {
            const Vsp16s pair[2] = {static_cast<Vsp16s>(len), 1};
            return f(pair, s.excitation);
        }),
    VSPSC_BENCH(vspsAdaptiveCodebookGain_G729_16s, Lengths{40},
                { return f(s.target, s.impulse, s.vector, result, &scalar); }),
    VSPSC_BENCH(vspsAdaptiveCodebookGain_G729A_16s, Lengths{40}, { return f(s.target, s.lpc, s.vector, result, &scalar); }),
    VSPSC_BENCH(vspsFixedCodebookSearch_G729_16s, Lengths{40},
                { return f(s.target, s.impulse, 57, 8000, 0, &scalar, result, filtered, index); }),
    VSPSC_BENCH(vspsFixedCodebookSearch_G729A_16s, Lengths{40},
                { return f(s.target, s.impulse, 57, 8000, result, filtered, index); }),
    VSPSC_BENCH(vspsFixedCodebookSearch_G729D_16s, Lengths{40},
                { return f(s.target, s.impulse, 57, 8000, result, filtered, index); }),
    add("vspsFixedCodebookSearch_G729E_16s_by_pulses", &vsp::Api::vspsFixedCodebookSearch_G729E_16s, Lengths{10, 12},
        [](auto f, Signals& s, int pulses) {
            return f(pulses == 12, s.target, s.vector, s.impulse, 57, 8000, result, filtered, index);
        }),
    VSPSC_BENCH(vspsFixedCodebookDecode_G729_16s, Lengths{40}, { return f(delay, 57, 8000, result); }),
    VSPSC_BENCH(vspsPostFilter_G729_16s, Lengths{40},
                { return f(s.excitation + 10, s.lpc, 57, 1, result, &scalar, stateOf<VspPostFilterState_G729_16s>()); }),
    VSPSC_BENCH(vspsPostFilter_G729A_16s, Lengths{40},
                { return f(s.excitation + 10, s.lpc, 57, 1, result, stateOf<VspPostFilterState_G729A_16s>()); }),
    add("vspsPostFilter_G729E_16s_by_order", &vsp::Api::vspsPostFilter_G729E_16s, Lengths{10, 30},
        [](auto f, Signals& s, int order) {
            return f(s.excitation + 30, lpc30, order, 57, 1, gamma729E, 32, result, &scalar,
                     stateOf<VspPostFilterState_G729E_16s>());
        }),
    VSPSC_BENCH(vspsPhaseDispersion_G729D_16s, Lengths{40},
                {
                    static const Vsp16s code[40] = {0, 0, 8191, 0, 0, 0, 0, -8192};
                    return f(s.excitation, delay, code, result, stateOf<VspPhaseDispersionState_G729D_16s>());
                }),
    VSPSC_BENCH(vspsAdaptiveCodebookContribution_G729_16s, Lengths{40}, { return f(12000, s.vector, s.target, result); }),
    VSPSC_BENCH_32F(vspsAdaptiveCodebookContribution_G729_32f, Lengths{40}, { return f(s.a, s.b, floats, 0.7f); }),
    VSPSC_BENCH_32F(vspsDecodeAdaptiveVector_G729_32f_I, Lengths{40},
                    {
                        const Vsp32s pair[2] = {60, 1};
                        return f(pair, s.excitation + 160);
                    }),
    VSPSC_BENCH_32F(vspsOpenLoopPitchSearch_G729A_32f, Lengths{80}, { return f(s.weighted + 143, &lag); }),
    VSPSC_BENCH_32F(vspsFixedCodebookSearch_G729_32f, Lengths{40},
                    { return f(s.a, s.b, 57, 0.5f, 0, &word, floats, floats2, words); }),
    VSPSC_BENCH_32F(vspsFixedCodebookSearch_G729A_32f, Lengths{40},
                    { return f(s.a, s.b, 57, 0.5f, floats, floats2, words); }),
    VSPSC_BENCH_32F(
        vspsPostFilter_G729_32f, Lengths{40},
        { return f(s.excitation + 10, lpcFloats, 57, 1, floats, &word, stateOf<VspPostFilterState_G729_32f>()); }),
    VSPSC_BENCH_32F(vspsPostFilter_G729A_32f, Lengths{40},
                    { return f(s.excitation + 10, lpcFloats, 57, 1, floats, stateOf<VspPostFilterState_G729A_32f>()); }),
    VSPSC_BENCH_32F(vspsFilteredExcitation_G729_32f, Lengths{40}, { return f(s.b, s.a, len, 3.0f); }),
    VSPSC_BENCH_32F(vspsDotProd_G729A_32f, Lengths{40}, { return f(s.a, s.b, len, &real); }),
    VSPSC_BENCH_32F(vspsInterpolateC_G729_32f, Lengths{40}, { return f(s.a, s.b, floats, len, 0.3f, 0.7f); }),
};

}  // namespace
