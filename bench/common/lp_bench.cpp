// Linear prediction of G.729 and GSM-AMR on voiced speech.
#include <cmath>
#include <random>

#include "support/bench.h"

namespace {

constexpr int kWindow = 240, kBackward = 145;

// A decaying pulse response every 57 samples and noise; the filters of orders 10 and 30 that predict it.
struct Signals {
    Vsp16s speech[kWindow], windowed[kWindow], lpc[11], lpc30[31], lsp[10],
        previous[30] = {30000, 26000, 21000, 15000, 8000, 0, -8000, -15000, -21000, -26000};
    Vsp32s lags[11], lags30[31];

    Signals() {
        std::mt19937 random(1);
        std::normal_distribution<float> noise(0, 200);
        for (int i = 0; i < kWindow; i++) {
            const float age = static_cast<float>(i % 57);
            speech[i] = static_cast<Vsp16s>(6000 * std::exp(-age / 12) * std::cos(age * 0.4f) + noise(random));
        }
        const vsp::Api& api = vsp::kApi_y8;
        Vsp32s norm, state[31];
        Vsp16s mem[33] = {4096}, rc[30], err;
        api.vspsAnalysisWindow_G729_16s(speech, windowed);
        api.vspsAutoCorr_NormE_16s32s(windowed, kWindow, lags, 11, &norm);
        api.vspsLagWindow_G729_32s_I(lags + 1, 10);
        api.vspsLevinsonDurbin_G729_32s16s(lags, lpc, rc, &err, mem);
        api.vspsLPCToLSP_G729_16s(lpc, previous, lsp);
        api.vspsWinHybridInit_G729E_16s(state);
        for (int i = 0; i < 3; i++) api.vspsWinHybrid_G729E_16s32s(speech + kWindow - kBackward, lags30, state);
        api.vspsLagWindow_G729E_32s_I(lags30);
        api.vspsLevinsonDurbin_G729E_32s16s(lags30, lpc30, rc, &err, mem);
    }
};

Vsp16s words[160], memory[33] = {4096}, word;
Vsp32s results[31], norm, state[31];

template <class Function>
bool add(const char* name, Function vsp::Api::*member, int len, auto call) {
    return bench::add(name, member, {len}, [call](auto f, bench::Buffers&, int length) {
        static const Signals s;
        benchmark::DoNotOptimize(call(f, s, length));
    });
}
#define VSPSC_BENCH(name, len, ...) \
    add(#name, &vsp::Api::name, len, [](auto f, const Signals& s, [[maybe_unused]] int n) { return f(__VA_ARGS__); })

[[maybe_unused]] const bool registered[] = {
    VSPSC_BENCH(vspsAutoCorr_NormE_16s32s, kWindow, s.windowed, n, results, 11, &norm),
    VSPSC_BENCH(vspsAutoCorr_GSMAMR_16s32s, kWindow, s.speech, 0, results, &norm),
    VSPSC_BENCH(vspsLevinsonDurbin_G729_32s16s, 10, s.lags, words, words + 20, &word, memory),
    VSPSC_BENCH(vspsLevinsonDurbin_G729E_32s16s, 30, s.lags30, words, words + 40, &word, memory),
    VSPSC_BENCH(vspsLPCToLSP_G729_16s, 10, s.lpc, s.previous, words),
    VSPSC_BENCH(vspsLPCToLSP_G729A_16s, 10, s.lpc, s.previous, words),
    VSPSC_BENCH(vspsLPCToLSP_GSMAMR_16s, 10, s.lpc, s.previous, words),
    VSPSC_BENCH(vspsLSPToLPC_G729_16s, 10, s.lsp, words),
    VSPSC_BENCH(vspsResidualFilter_G729_16s, 40, s.speech + 30, s.lpc, words, n),
    VSPSC_BENCH(vspsResidualFilter_G729E_16s, 40, s.speech + 30, s.lpc30, words, n, 30),
    VSPSC_BENCH(vspsSynthesisFilter_G729E_16s, 40, s.lpc30, s.speech, words, n, 30, s.previous),
    VSPSC_BENCH(vspsWinHybrid_G729E_16s32s, kBackward, s.speech, results, state),
};

}  // namespace
