// Noise suppressors on recorded speech with noise: what they gain, and what they cost.
//
//     vspsc_bench_noise_suppressors [-s SECONDS] [-n NAME]... FOLDER...
//
// Each FOLDER holds telephone prompts of one voice, as Debian's packages asterisk-core-sounds-*-wav do. SECONDS of each are
// mixed with each noise at 0, 5, 10 and 15 dB; NAME chooses suppressors.
#include <speex/speex_preprocess.h>
#include <time.h>
#include <webrtc/modules/audio_processing/include/audio_processing.h>
#include <webrtc/modules/interface/module_common_types.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>

#include "noise_measures.h"
#include "noise_scenario.h"
#include "program.h"
#include "vspsc.h"

namespace {

using namespace noise;
using echo::kRate;

Signal untreated(const Signal& x) { return x; }

// Frames of 10 ms and spectra of 32 ms.
Signal filtered(Vsp32s mode, const Signal& x) {
    constexpr Vsp32s kFrame = 80, kOrder = 8;
    Vsp32s size = 0;
    vspsFilterNoiseGetStateSize_EC_32f(kRate, kFrame, kOrder, &size);
    std::vector<std::byte> memory(static_cast<std::size_t>(size));
    auto* const state = reinterpret_cast<VspFilterNoiseState_EC_32f*>(memory.data());
    vspsFilterNoiseInit_EC_32f(state, kRate, kFrame, kOrder);
    vspsFilterNoiseSetMode_EC_32f(state, mode);
    Signal out = x;
    Vsp32f presence;
    for (std::size_t at = 0; at + kFrame <= x.size(); at += kFrame) vspsFilterNoise_EC_32f_I(&out[at], state, &presence);
    for (float& v : out) v = std::rint(v);
    return out;
}

Signal speex(const Signal& x) {
    constexpr std::size_t kFrame = 160;
    SpeexPreprocessState* state = speex_preprocess_state_init(kFrame, kRate);
    Signal out(x.size());
    spx_int16_t frame[kFrame];
    for (std::size_t at = 0; at + kFrame <= x.size(); at += kFrame) {
        for (std::size_t i = 0; i < kFrame; i++) frame[i] = static_cast<spx_int16_t>(x[at + i]);
        speex_preprocess_run(state, frame);
        std::copy(frame, frame + kFrame, out.begin() + static_cast<std::ptrdiff_t>(at));
    }
    speex_preprocess_state_destroy(state);
    return out;
}

Signal webrtcAt(webrtc::NoiseSuppression::Level level, const Signal& x) {
    constexpr std::size_t kFrame = 80;
    const std::unique_ptr<webrtc::AudioProcessing> apm(webrtc::AudioProcessing::Create());
    apm->noise_suppression()->Enable(true);
    apm->noise_suppression()->set_level(level);
    webrtc::AudioFrame frame;
    frame.sample_rate_hz_ = kRate;
    frame.num_channels_ = 1;
    frame.samples_per_channel_ = kFrame;
    Signal out(x.size());
    for (std::size_t at = 0; at + kFrame <= x.size(); at += kFrame) {
        for (std::size_t i = 0; i < kFrame; i++) frame.data_[i] = static_cast<int16_t>(x[at + i]);
        if (apm->ProcessStream(&frame) != 0) throw std::runtime_error("webrtc: failed");
        std::copy(frame.data_, frame.data_ + kFrame, out.begin() + static_cast<std::ptrdiff_t>(at));
    }
    return out;
}

struct Suppressor {
    std::string name;
    std::function<Signal(const Signal&)> process;
};

std::vector<Suppressor> suppressors() {
    const auto webrtc = [](webrtc::NoiseSuppression::Level level) {
        return [level](const Signal& x) { return webrtcAt(level, x); };
    };
    const auto library = [](Vsp32s mode) { return [mode](const Signal& x) { return filtered(mode, x); }; };
    return {{"untreated", untreated},
            {"low", library(vspFilterNoiseLow)},
            {"normal", library(vspFilterNoiseNormal)},
            {"high", library(vspFilterNoiseHigh)},
            {"automatic", library(vspFilterNoiseAuto)},
            {"speexdsp", speex},
            {"webrtc", webrtc(webrtc::NoiseSuppression::kModerate)},
            {"webrtc-high", webrtc(webrtc::NoiseSuppression::kHigh)}};
}

// By how many samples the output lags, found on clean speech.
std::size_t delayOf(const Suppressor& s, const Signal& speech) {
    constexpr std::size_t kMost = 512;
    const Signal out = s.process(speech);
    std::size_t best = 0;
    double most = 0;
    for (std::size_t delay = 0; delay < kMost; delay++) {
        double sum = 0;
        for (std::size_t n = 0; n + kMost < speech.size(); n++) sum += double(speech[n]) * out[n + delay];
        if (sum > most) most = sum, best = delay;
    }
    return best;
}

Signal inStep(const Suppressor& s, Signal x, std::size_t delay) {
    constexpr std::size_t kMore = 1000;
    const std::size_t length = x.size();
    x.resize(length + kMore);
    const Signal out = s.process(x);
    return {out.begin() + static_cast<std::ptrdiff_t>(delay), out.begin() + static_cast<std::ptrdiff_t>(delay + length)};
}

struct Quality {
    double snr = 0, distance = 0, stoi = 0;
    void add(const Quality& q, double weight) {
        snr += weight * q.snr;
        distance += weight * q.distance;
        stoi += weight * q.stoi;
    }
};

Quality measure(const Signal& clean, const Signal& out) {
    return {segmentalSnr(clean, out), logSpectralDistance(clean, out), intelligibility(clean, out)};
}

double cpuSeconds() {
    timespec t;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return double(t.tv_sec) + 1e-9 * double(t.tv_nsec);
}

void compareSpeed(const std::vector<Suppressor>& all, const Signal& x) {
    constexpr int kRounds = 7;
    std::map<std::string, double> best;
    for (int round = 0; round < kRounds; round++)
        for (const Suppressor& s : all) {
            const double start = cpuSeconds();
            s.process(x);
            const double took = cpuSeconds() - start;
            best[s.name] = round == 0 ? took : std::min(best[s.name], took);
        }
    std::printf("\nCPU time per second of audio, best of %d interleaved rounds\n", kRounds);
    for (const Suppressor& s : all)
        std::printf("%-14s %8.3f ms\n", s.name.c_str(), 1000 * best[s.name] / (double(x.size()) / kRate));
}

void compare(const std::vector<Suppressor>& all, const Voices& voices, std::size_t length) {
    constexpr double kLevels[] = {0, 5, 10, 15};
    std::vector<std::size_t> delays;
    for (const Suppressor& s : all) {
        delays.push_back(delayOf(s, voices.talkers[0]));
        std::printf("%s: %zu samples late\n", s.name.c_str(), delays.back());
    }
    std::printf("\n%-10s %-4s %-14s %10s %10s %8s %8s\n", "noise", "SNR", "suppressor", "segSNR +dB", "LSD dB", "STOI",
                "change");
    std::map<std::string, Quality> means;
    const double weight = 1.0 / double(voices.talkers.size()), each = 1.0 / double(kNoises.size() * std::size(kLevels));
    for (const std::string& kind : kNoises) {
        const Signal noise = makeNoise(kind, length, voices);
        for (const double snr : kLevels) {
            std::vector<Quality> qualities(all.size());
            for (const Signal& speech : voices.talkers) {
                const Signal noisy = mix(speech, noise, snr);
                for (std::size_t i = 0; i < all.size(); i++)
                    qualities[i].add(measure(speech, inStep(all[i], noisy, delays[i])), weight);
            }
            const Quality before = qualities[0];
            for (std::size_t i = 0; i < all.size(); i++) {
                qualities[i].snr -= before.snr;
                const Quality& q = qualities[i];
                means[all[i].name].add(q, each);
                std::printf("%-10s %-4.0f %-14s %10.2f %10.2f %8.3f %+8.4f\n", kind.c_str(), snr, all[i].name.c_str(),
                            q.snr, q.distance, q.stoi, q.stoi - before.stoi);
            }
            std::fflush(stdout);
        }
    }
    std::printf("\n");
    for (const Suppressor& s : all) {
        const Quality& q = means[s.name];
        std::printf("%-15s %-14s %10.2f %10.2f %8.4f %+8.4f\n", "mean", s.name.c_str(), q.snr, q.distance, q.stoi,
                    q.stoi - means["untreated"].stoi);
    }
}

// What is left of noise alone, after two seconds.
void compareNoise(const std::vector<Suppressor>& all, std::size_t length, const Voices& voices) {
    constexpr std::size_t kSkip = 2 * kRate;
    const auto rest = [](const Signal& x) { return Signal(x.begin() + kSkip, x.end()); };
    std::printf("\n%-10s %-14s %12s %12s\n", "noise", "suppressor", "removed dB", "peakiness");
    for (const char* kind : {"white", "pink"}) {
        Signal noise = makeNoise(kind, length, voices);
        for (float& v : noise) v = std::rint(300 * v);
        const double before = echo::power(&noise[kSkip], length - kSkip);
        for (const Suppressor& s : all) {
            const Signal left = rest(s.process(noise));
            std::printf("%-10s %-14s %12.1f %12.2f\n", kind, s.name.c_str(),
                        echo::decibels(before / echo::power(left.data(), left.size())), peakiness(left));
        }
    }
}

int run(int argc, char** argv) {
    std::vector<Suppressor> all = suppressors(), chosen{all[0]};
    std::vector<std::string> folders;
    double seconds = 20;
    for (int i = 1; i < argc; i++) {
        const std::string option = argv[i];
        if (option == "-s" && i + 1 < argc)
            seconds = std::stod(argv[++i]);
        else if (option == "-n" && i + 1 < argc) {
            i++;
            for (const Suppressor& s : all)
                if (s.name == argv[i]) chosen.push_back(s);
        } else {
            folders.push_back(option);
        }
    }
    if (folders.empty()) {
        std::fprintf(stderr, "usage: %s [-s SECONDS] [-n NAME]... FOLDER...\n", argv[0]);
        return 2;
    }
    if (chosen.size() > 1) all = chosen;
    const Voices voices = recordedVoices(folders, seconds);
    const auto length = voices.talkers[0].size();
    compare(all, voices, length);
    compareNoise(all, length, voices);
    compareSpeed(all, mix(voices.talkers[0], makeNoise("white", length, voices), 10));
    return 0;
}

}  // namespace

int main(int argc, char** argv) { return runProgram(run, argc, argv); }
