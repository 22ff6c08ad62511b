#include <algorithm>

#include "support/bench.h"

namespace {

// Two seconds, speech-like: bursts of a quarter of a second.
const std::vector<Vsp16s>& signal() {
    static const std::vector<Vsp16s> bursts = [] {
        bench::Buffers noise(16000);
        std::vector<Vsp16s> samples(16000);
        for (int i = 0; i < 16000; i++) samples[i] = Vsp16s(noise.a[i] / (i / 2000 % 2 == 1 ? 256 : 1));
        return samples;
    }();
    return bursts;
}

// One call per frame of the signal, over and over, on one record.
template <class Function, class Detect>
bool addDetector(const char* name, Function vsp::Api::*member, Detect detect) {
    return bench::add(name, member, {160}, [detect](auto function, bench::Buffers&, int) {
        thread_local std::size_t position = 0;
        position = position + 480 > signal().size() ? 0 : position + 160;
        benchmark::DoNotOptimize(detect(function, signal().data() + position));
    });
}

const bool registered[] = {
    addDetector("vspsVAD1_GSMAMR_16s", &vsp::Api::vspsVAD1_GSMAMR_16s,
                [](auto function, const Vsp16s* src) {
                    thread_local VspGSMAMRVad1State state = VSP_GSMAMR_VAD1_STATE_INIT;
                    Vsp16s flag;
                    function(src, &state, &flag, 13106, 0);
                    return flag;
                }),
    addDetector("vspsVAD2_GSMAMR_16s", &vsp::Api::vspsVAD2_GSMAMR_16s,
                [](auto function, const Vsp16s* src) {
                    thread_local VspGSMAMRVad2State state = VSP_GSMAMR_VAD2_STATE_INIT;
                    Vsp16s flag;
                    function(src, &state, &flag, 0);
                    return flag;
                }),
    addDetector("vspsOpenLoopPitchSearch_GSMAMR_16s", &vsp::Api::vspsOpenLoopPitchSearch_GSMAMR_16s,
                [](auto function, const Vsp16s* src) {
                    thread_local Vsp16s mem[10] = {40, 40, 40, 40, 40, 0, 0, 40, 0, 0}, vadMem[5] = {0, 13106, 0, 0, 0};
                    Vsp16s pitchFlags = 0, lags[2];
                    constexpr Vsp32s k74 = 7, kOption1 = 1;
                    function(src + 143, k74, kOption1, mem, vadMem, &pitchFlags, lags);
                    return lags[1];
                }),
    bench::add("vspsFFTFwd_RToPerm_GSMAMR_16s_I", &vsp::Api::vspsFFTFwd_RToPerm_GSMAMR_16s_I, {128},
               [](auto function, bench::Buffers& x, int) { benchmark::DoNotOptimize(function(x.inPlace())); }),
};

}  // namespace
