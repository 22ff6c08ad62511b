#include "denoise/noise_removal.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace {

constexpr int kRates[] = {8000, 16000, 22050, 32000};
constexpr Vsp32f kSpeech = 0.1f;  // share of the frequencies

double energyOf(std::span<const std::int16_t> x) {
    return std::accumulate(x.begin(), x.end(), 0.0, [](double sum, double v) { return sum + v * v; });
}

VoiceObject<VspvDenoiser> denoiserFor(const VspvDenoiserSettings& settings) {
    return VoiceObject<VspvDenoiser>(vspvDenoiserGetSize, &settings);
}

}  // namespace

int denoiserRate(int fileRate) {
    int rate = kRates[0];
    for (const int r : kRates)
        if (r <= fileRate) rate = r;
    return rate;
}

NoiseRemoval::NoiseRemoval(int rate, int mode)
    : denoiser_(denoiserFor({rate, mode})), frameLength_(std::size_t(rate / 100)) {
    const VspvDenoiserSettings settings{rate, mode};
    checkVoice(vspvDenoiserInit(denoiser_.get(), &settings));
    checkVoice(vspvDenoiserLatency(denoiser_.get(), &latency_));
}

void NoiseRemoval::process(std::span<const std::int16_t> in, Samples& out) {
    original_.insert(original_.end(), in.begin(), in.end());
    run(in, out);
}

void NoiseRemoval::finish(Samples& out) {
    ended_ = true;
    run(Samples(std::size_t(latency_)), out);
    out.insert(out.end(), result_.begin(), result_.end());
}

void NoiseRemoval::run(std::span<const std::int16_t> in, Samples& out) {
    while (!in.empty()) {
        const std::size_t count = std::min(in.size(), frameLength_ - filled_);
        processed_.resize(count);
        checkVoice(vspvDenoiserProcess_16s(denoiser_.get(), in.data(), processed_.data(), Vsp32s(count)));
        const int late = std::min(int(count), latency_ - skipped_);
        skipped_ += late;
        result_.insert(result_.end(), processed_.begin() + late, processed_.end());
        filled_ += count;
        if (filled_ == frameLength_) endFrame(out);
        in = in.subspan(count);
    }
}

// The windows of the denoiser have the length of its latency: the result is part of as many as begin in that time.
void NoiseRemoval::endFrame(Samples& out) {
    const bool speech = hearSpeech();
    sinceSpeech_ = speech ? 0 : sinceSpeech_ + 1;
    if (!ended_) {
        speech_ += speech;
        frames_++;
    }
    if (sinceSpeech_ > std::size_t(latency_) / frameLength_) {
        inEnergy_ += energyOf(std::span(original_).first(result_.size()));
        outEnergy_ += energyOf(result_);
    }
    out.insert(out.end(), result_.begin(), result_.end());
    original_.erase(original_.begin(), original_.begin() + std::ptrdiff_t(result_.size()));
    result_.clear();
    filled_ = 0;
}

bool NoiseRemoval::hearSpeech() {
    Vsp32f presence = 0;
    checkVoice(vspvDenoiserPresence(denoiser_.get(), &presence));
    return presence > kSpeech;
}

double NoiseRemoval::loweredBy() const { return 10 * std::log10(inEnergy_ / outEnergy_); }
