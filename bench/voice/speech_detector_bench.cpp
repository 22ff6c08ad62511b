// The speech detector of the voice layer, and the same with a front end in double precision: the definitions of the
// standard's clauses, sample by sample. One second of signal per iteration.
#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "support/bench.h"
#include "voice/double_open_loop.h"
#include "vspsvoice.h"

namespace {

// Two seconds that sound like a voice: pulses of 110 to 150 Hz through a resonance, in bursts, over noise.
const std::vector<Vsp16s>& signal() {
    static const std::vector<Vsp16s> samples = [] {
        std::vector<Vsp16s> made(16000);
        std::mt19937 random(1);
        double y1 = 0, y2 = 0, phase = 0;
        for (std::size_t i = 0; i < made.size(); i++) {
            phase += (110 + 40 * std::sin(double(i) / 3000)) / 8000;
            const bool pulse = phase >= 1;
            if (pulse) phase -= 1;
            const double x = (pulse && i / 3000 % 2 == 1 ? 6000 : 0) + double(random() % 200) - 100;
            const double y = x + 1.6 * y1 - 0.8 * y2;
            y2 = y1;
            y1 = y;
            made[i] = Vsp16s(std::clamp(y, -32768.0, 32767.0));
        }
        return made;
    }();
    return samples;
}

void detectorOfTheVoiceLayer(benchmark::State& state, Vsp32s option) {
    Vsp32s bytes = 0, count = 0;
    vspvSpeechDetectorGetSize(option, &bytes);
    std::vector<Vsp64s> memory(std::size_t(bytes) / 8);
    const auto detector = reinterpret_cast<VspvSpeechDetector*>(memory.data());
    vspvSpeechDetectorInit(detector, option);
    std::vector<VspvSpeechDecision> decisions(100);
    for (auto _ : state) {
        vspvSpeechDetectorProcess(detector, signal().data(), Vsp32s(signal().size()), decisions.data(), &count);
        benchmark::DoNotOptimize(decisions.data());
    }
    const double seconds = option == vspvSpeechWide ? 1 : 2;
    state.counters["seconds"] = benchmark::Counter(seconds, benchmark::Counter::kIsIterationInvariantRate);
}

void doublePrecision(benchmark::State& state, Vsp32s option) {
    AmrPreProcessing preProcessing;
    AmrWeighting weighting;
    AmrOpenLoop openLoop;
    VspGSMAMRVad1State state1 = VSP_GSMAMR_VAD1_STATE_INIT;
    VspGSMAMRVad2State state2 = VSP_GSMAMR_VAD2_STATE_INIT;
    std::array<Vsp16s, kAmrLookAhead + kAmrFrame> speech{};
    for (auto _ : state) {
        for (std::size_t i = 0; i < signal().size(); i += kAmrFrame) {
            AmrFrame frame;
            std::copy_n(signal().begin() + std::ptrdiff_t(i), kAmrFrame, frame.begin());
            const AmrFrame processed = preProcessing.process(frame);
            std::shift_left(speech.begin(), speech.end(), kAmrFrame);
            std::copy(processed.begin(), processed.end(), speech.end() - kAmrFrame);
            const OpenLoopResult& found = openLoop.result();
            Vsp16s flag = 0;
            if (option == 1) {
                state1.pitchFlags = Vsp16s(state1.pitchFlags >> 1 | (found.steadyPitch ? 0x4000 : 0));
                vspsVAD1_GSMAMR_16s(speech.data(), &state1, &flag, found.bestCorrHp, found.toneFlags);
            } else {
                vspsVAD2_GSMAMR_16s(speech.data() + kAmrLookAhead, &state2, &flag, found.ltpFlag);
            }
            benchmark::DoNotOptimize(flag);
            openLoop.process(weighting.process(processed));
        }
    }
    state.counters["seconds"] = benchmark::Counter(2, benchmark::Counter::kIsIterationInvariantRate);
}

const bool registered = [] {
    for (const int option : {1, 2}) {
        const std::string name = "SpeechDetector" + std::to_string(option);
        benchmark::RegisterBenchmark((name + "/voice").c_str(), detectorOfTheVoiceLayer, option);
        benchmark::RegisterBenchmark((name + "/double").c_str(), doublePrecision, option);
    }
    benchmark::RegisterBenchmark("SpeechDetectorWide/voice", detectorOfTheVoiceLayer, vspvSpeechWide);
    return true;
}();

}  // namespace
