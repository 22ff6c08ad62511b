// One second of 8 kHz telephone audio, in frames of 20 ms, through both detectors and through those of two other libraries.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

#include "vspsc.h"

extern "C" {
// Option 1 as the AMR encoder of OpenCORE has it: the static archive exposes it, no header is installed for it.
int16_t vad1_init(void** state);
void vad1_exit(void** state);
int16_t vad1(void* state, int16_t* frame, int32_t* overflow);

// The library exports these but installs no header for them.
void* WebRtcVad_Create();
void WebRtcVad_Free(void* vad);
int WebRtcVad_Init(void* vad);
int WebRtcVad_set_mode(void* vad, int mode);
int WebRtcVad_Process(void* vad, int rate, const int16_t* frame, size_t samples);
}

namespace {

constexpr int kRate = 8000, kFrame = 160, kFrames = kRate / kFrame, kLookahead = 40;

// Speech-like: syllables of changing loudness over a noise floor, with a pause at the end.
std::vector<int16_t> oneSecond() {
    std::mt19937 random(1);
    std::normal_distribution<float> noise(0, 1);
    std::vector<int16_t> signal(kLookahead + kRate);
    float formant = 0;
    for (int i = 0; i < kRate; i++) {
        const float loudness = i > 6000 ? 0.0f : 1500.0f * static_cast<float>((i / 800 % 4 + 1) * (i % 800 < 600));
        formant = 0.9f * formant + noise(random);
        const float sample = loudness * formant + 8 * noise(random);
        signal[kLookahead + i] = static_cast<int16_t>(std::max(-32768.0f, std::min(32767.0f, sample)));
    }
    return signal;
}

// Counts the frames with speech, which a detector that works finds, but not in every frame.
template <class Detect>
void run(benchmark::State& state, Detect detect) {
    std::vector<int16_t> signal = oneSecond();
    int64_t speech = 0;
    for (auto _ : state)
        for (int i = kLookahead; i < kLookahead + kRate; i += kFrame) speech += detect(signal.data() + i);
    state.counters["speech"] =
        benchmark::Counter(static_cast<double>(speech) / kFrames, benchmark::Counter::kAvgIterations);
}

void option1(benchmark::State& state) {
    VspGSMAMRVad1State record = VSP_GSMAMR_VAD1_STATE_INIT;
    run(state, [&record](const int16_t* frame) {
        int16_t flag = 0;
        vspsVAD1_GSMAMR_16s(frame - kLookahead, &record, &flag, 13106, 0);
        return flag;
    });
}

void option2(benchmark::State& state) {
    VspGSMAMRVad2State record = VSP_GSMAMR_VAD2_STATE_INIT;
    run(state, [&record](const int16_t* frame) {
        int16_t flag = 0;
        vspsVAD2_GSMAMR_16s(frame, &record, &flag, 0);
        return flag;
    });
}

void opencore(benchmark::State& state) {
    void* vad = nullptr;
    if (vad1_init(&vad) != 0) state.SkipWithError("cannot be set up");
    run(state, [vad](int16_t* frame) {
        int32_t overflow = 0;
        return vad1(vad, frame, &overflow);
    });
    vad1_exit(&vad);
}

void webrtc(benchmark::State& state) {
    void* vad = WebRtcVad_Create();
    if (vad == nullptr || WebRtcVad_Init(vad) != 0 || WebRtcVad_set_mode(vad, 0) != 0)
        state.SkipWithError("cannot be set up");
    run(state, [vad](const int16_t* frame) { return WebRtcVad_Process(vad, kRate, frame, kFrame); });
    WebRtcVad_Free(vad);
}

benchmark::internal::Benchmark* const registered[] = {
    benchmark::RegisterBenchmark("vad1/library/8000", option1),
    benchmark::RegisterBenchmark("vad1/opencore/8000", opencore),
    benchmark::RegisterBenchmark("vad1/webrtc/8000", webrtc),
    benchmark::RegisterBenchmark("vad2/library/8000", option2),
    benchmark::RegisterBenchmark("vad2/webrtc/8000", webrtc),
};

}  // namespace
