// One second of 8 kHz telephone audio through the level control and through the gain controls of two other libraries, all
// in frames of 10 ms. The fixed digital gain control of WebRTC is called below its AudioProcessing interface, whose
// conversions would count against it.
#include <benchmark/benchmark.h>
#include <speex/speex_preprocess.h>

#include <cstdint>
#include <random>
#include <vector>

#include "vspsc.h"

extern "C" {
// The library exports these but installs no header for them.
void* WebRtcAgc_Create();
void WebRtcAgc_Free(void* agc);
int WebRtcAgc_Init(void* agc, int32_t minLevel, int32_t maxLevel, int16_t mode, uint32_t rate);
int WebRtcAgc_Process(void* agc, const int16_t* const* in, size_t bands, size_t samples, int16_t* const* out,
                      int32_t micLevel, int32_t* newMicLevel, int16_t echo, uint8_t* saturated);
}

namespace {

constexpr int kRate = 8000, kFrame = 80;

// Speech-like: syllables of changing loudness over a noise floor, with a pause in every second.
std::vector<int16_t> oneSecond() {
    std::mt19937 random(1);
    std::normal_distribution<float> noise(0, 1);
    std::vector<int16_t> signal(kRate);
    float formant = 0;
    for (int i = 0; i < kRate; i++) {
        const bool pause = i > 6000;
        const float loudness = pause ? 0.0f : 1500.0f * static_cast<float>((i / 800 % 4 + 1) * (i % 800 < 600));
        formant = 0.9f * formant + noise(random);
        signal[i] = static_cast<int16_t>(std::max(-32768.0f, std::min(32767.0f, loudness * formant + 8 * noise(random))));
    }
    return signal;
}

template <class Process>
void run(benchmark::State& state, Process process) {
    const std::vector<int16_t> in = oneSecond();
    std::vector<int16_t> out(kRate);
    for (auto _ : state) {
        for (int i = 0; i < kRate; i += kFrame) process(in.data() + i, out.data() + i);
        benchmark::ClobberMemory();
    }
}

void library(benchmark::State& state) {
    alignas(4) unsigned char memory[124];
    auto* alc = reinterpret_cast<VspALCState_G169_16s*>(memory);
    vspsALCInit_G169_16s(alc);
    run(state, [alc](const int16_t* in, int16_t* out) { vspsALC_G169_16s(in, out, kFrame, alc); });
}

void webrtc(benchmark::State& state) {
    constexpr int16_t kFixedDigital = 3;
    void* agc = WebRtcAgc_Create();
    if (agc == nullptr || WebRtcAgc_Init(agc, 0, 255, kFixedDigital, kRate) != 0) state.SkipWithError("cannot be set up");
    run(state, [agc, &state](const int16_t* in, int16_t* out) {
        int32_t level = 0;
        uint8_t saturated = 0;
        if (WebRtcAgc_Process(agc, &in, 1, kFrame, &out, 0, &level, 0, &saturated) != 0) state.SkipWithError("failed");
    });
    WebRtcAgc_Free(agc);
}

void speexdsp(benchmark::State& state) {
    SpeexPreprocessState* preprocess = speex_preprocess_state_init(kFrame, kRate);
    int on = 1, off = 0;
    speex_preprocess_ctl(preprocess, SPEEX_PREPROCESS_SET_AGC, &on);
    speex_preprocess_ctl(preprocess, SPEEX_PREPROCESS_SET_DENOISE, &off);
    run(state, [preprocess](const int16_t* in, int16_t* out) {
        std::copy(in, in + kFrame, out);
        speex_preprocess_run(preprocess, out);
    });
    speex_preprocess_state_destroy(preprocess);
}

benchmark::internal::Benchmark* const registered[] = {
    benchmark::RegisterBenchmark("level_control/library/8000", library),
    benchmark::RegisterBenchmark("level_control/webrtc/8000", webrtc),
    benchmark::RegisterBenchmark("level_control/speexdsp/8000", speexdsp),
};

}  // namespace
