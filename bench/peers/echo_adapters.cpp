#include "echo_adapters.h"

#include <speex/speex_echo.h>
#include <speex/speex_preprocess.h>
#include <webrtc/modules/audio_processing/include/audio_processing.h>
#include <webrtc/modules/interface/module_common_types.h>

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace echo {

namespace {

VspvEchoSettings settingsOf(const std::string& name, double tailMs) {
    VspvEchoSettings c = echoSettings(kRate);
    c.tailMs = tailMs;
    c.engine = name.starts_with("fullband") ? vspvEchoFullband : vspvEchoSubband;
    c.arithmetic = name.find("-fixed") != std::string::npos ? vspvEchoFixed : vspvEchoFloat;
    c.suppression = name.ends_with("-suppress") ? 1 : 0;
    if (name.ends_with("-bare")) {
        c.maxBulkDelayMs = 0;
        c.toneDisabling = 0;
    }
    return c;
}

class Library : public Adapter {
  public:
    Library(const std::string& name, double tailMs) : settings_(settingsOf(name, tailMs)) {}

    Signal process(const Signal& far, const Signal& near) override {
        constexpr std::size_t kBlock = 160;
        OwnedCanceller canceller(settings_);
        const std::size_t latency = canceller.latency();
        Signal out(near.size());
        float padded[2][kBlock], made[kBlock];
        for (std::size_t i = 0; i < out.size() + latency; i += kBlock) {
            const auto block = [i](const Signal& x, float* otherwise) -> const float* {
                if (i + kBlock <= x.size()) return x.data() + i;
                std::fill(std::copy(x.begin() + std::min(i, x.size()), x.end(), otherwise), otherwise + kBlock, 0.0f);
                return otherwise;
            };
            canceller.process(std::span{block(far, padded[0]), kBlock}, {block(near, padded[1]), kBlock}, made);
            const std::size_t first = std::max(i, latency), last = std::min(i + kBlock, out.size() + latency);
            if (first < last) std::copy(made + (first - i), made + (last - i), out.data() + (first - latency));
        }
        return out;
    }

  private:
    VspvEchoSettings settings_;
};

class Speex : public Adapter {
  public:
    Speex(double tailMs, bool suppresses) : tail_(static_cast<int>(tailMs * kRate / 1000)), suppresses_(suppresses) {}

    Signal process(const Signal& far, const Signal& near) override {
        constexpr std::size_t kFrame = 160;
        SpeexEchoState* state = speex_echo_state_init(kFrame, tail_);
        int rate = kRate;
        speex_echo_ctl(state, SPEEX_ECHO_SET_SAMPLING_RATE, &rate);
        SpeexPreprocessState* suppressor = speex_preprocess_state_init(kFrame, rate);
        int off = 0;
        speex_preprocess_ctl(suppressor, SPEEX_PREPROCESS_SET_DENOISE, &off);
        speex_preprocess_ctl(suppressor, SPEEX_PREPROCESS_SET_ECHO_STATE, state);
        Signal result(near.size());
        spx_int16_t f[kFrame], n[kFrame], out[kFrame];
        for (std::size_t i = 0; i + kFrame <= near.size(); i += kFrame) {
            for (std::size_t k = 0; k < kFrame; k++) {
                f[k] = static_cast<spx_int16_t>(far[i + k]);
                n[k] = static_cast<spx_int16_t>(near[i + k]);
            }
            speex_echo_cancellation(state, n, f, out);
            if (suppresses_) speex_preprocess_run(suppressor, out);
            std::copy(out, out + kFrame, result.begin() + static_cast<std::ptrdiff_t>(i));
        }
        speex_preprocess_state_destroy(suppressor);
        speex_echo_state_destroy(state);
        return result;
    }

  private:
    int tail_;
    bool suppresses_;
};

class Webrtc : public Adapter {
  public:
    explicit Webrtc(webrtc::EchoCancellation::SuppressionLevel level) : level_(level) {}

    Signal process(const Signal& far, const Signal& near) override {
        constexpr std::size_t kFrame = 80;
        webrtc::Config config;
        config.Set<webrtc::ExtendedFilter>(new webrtc::ExtendedFilter(true));  // 128 ms instead of 48
        config.Set<webrtc::DelayAgnostic>(new webrtc::DelayAgnostic(true));
        const std::unique_ptr<webrtc::AudioProcessing> apm(webrtc::AudioProcessing::Create(config));
        apm->echo_cancellation()->Enable(true);
        apm->echo_cancellation()->set_suppression_level(level_);
        webrtc::AudioFrame reverse, frame;
        for (webrtc::AudioFrame* f : {&reverse, &frame}) {
            f->sample_rate_hz_ = kRate;
            f->num_channels_ = 1;
            f->samples_per_channel_ = kFrame;
        }
        Signal result(near.size());
        for (std::size_t i = 0; i + kFrame <= near.size(); i += kFrame) {
            for (std::size_t k = 0; k < kFrame; k++) {
                reverse.data_[k] = static_cast<int16_t>(far[i + k]);
                frame.data_[k] = static_cast<int16_t>(near[i + k]);
            }
            apm->ProcessReverseStream(&reverse);
            apm->set_stream_delay_ms(0);
            if (apm->ProcessStream(&frame) != 0) throw std::runtime_error("webrtc: failed");
            std::copy(frame.data_, frame.data_ + kFrame, result.begin() + static_cast<std::ptrdiff_t>(i));
        }
        return result;
    }

  private:
    webrtc::EchoCancellation::SuppressionLevel level_;
};

// A program that reads and writes files of 16-bit samples.
class Program : public Adapter {
  public:
    explicit Program(std::string name) : name_(std::move(name)) {}

    Signal process(const Signal& far, const Signal& near) override {
        constexpr std::size_t kLatency = 104;  // of examples/subband_filter.c
        const std::filesystem::path folder = std::filesystem::temp_directory_path();
        const std::string stem = (folder / ("echo_" + std::to_string(getpid()))).string();
        const std::string files[] = {stem + ".far", stem + ".near", stem + ".out"};
        write(files[0], far, kLatency);
        write(files[1], near, kLatency);
        if (std::system((name_ + ' ' + files[0] + ' ' + files[1] + ' ' + files[2]).c_str()) != 0)
            throw std::runtime_error(name_ + ": failed");
        std::vector<std::int16_t> samples(near.size() + kLatency);
        const auto bytes = static_cast<std::streamsize>(samples.size() * sizeof(std::int16_t));
        if (!std::ifstream(files[2], std::ios::binary).read(reinterpret_cast<char*>(samples.data()), bytes))
            throw std::runtime_error(name_ + ": its output is short");
        for (const std::string& file : files) std::filesystem::remove(file);
        return {samples.begin() + kLatency, samples.end()};
    }

  private:
    static void write(const std::string& name, const Signal& x, std::size_t more) {
        std::vector<std::int16_t> samples(x.begin(), x.end());
        samples.resize(x.size() + more);
        std::ofstream(name, std::ios::binary)
            .write(reinterpret_cast<const char*>(samples.data()), std::streamsize(samples.size() * sizeof(std::int16_t)));
    }

    std::string name_;
};

}  // namespace

std::unique_ptr<Adapter> makeAdapter(const std::string& name, double tailMs) {
    if (name.starts_with("speexdsp")) return std::make_unique<Speex>(tailMs, name.ends_with("-suppress"));
    if (name == "webrtc") return std::make_unique<Webrtc>(webrtc::EchoCancellation::kLowSuppression);
    if (name == "webrtc-high") return std::make_unique<Webrtc>(webrtc::EchoCancellation::kHighSuppression);
    if (name.find('/') != std::string::npos) return std::make_unique<Program>(name);
    return std::make_unique<Library>(name, tailMs);
}

OwnedCanceller makeCanceller(const std::string& name, double tailMs) { return OwnedCanceller(settingsOf(name, tailMs)); }

}  // namespace echo
