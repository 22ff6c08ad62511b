#include "audio/resampler.h"

#include <stdexcept>

Resampler::Resampler(int from, int to, int channels)
    : channels_(static_cast<std::size_t>(channels)), ratio_(static_cast<double>(to) / from) {
    soxr_error_t error = nullptr;
    const soxr_io_spec_t io = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_HQ, 0);
    soxr_.reset(soxr_create(from, to, static_cast<unsigned>(channels), &error, &io, &quality, nullptr));
    if (error != nullptr) throw std::runtime_error(std::string("sample-rate conversion: ") + error);
}

const std::vector<float>& Resampler::process(std::span<const float> in) {
    return convert(in.data(), in.size() / channels_);
}

const std::vector<float>& Resampler::finish() { return convert(nullptr, 0); }

const std::vector<float>& Resampler::convert(const float* in, std::size_t frames) {
    constexpr std::size_t kRoom = 4096;  // more than the converter holds back
    std::size_t made = 0;
    out_.clear();
    do {
        const std::size_t room = kRoom + static_cast<std::size_t>(static_cast<double>(frames) * ratio_);
        const std::size_t before = out_.size();
        out_.resize(before + room * channels_);
        std::size_t used = 0;
        const soxr_error_t error = soxr_process(soxr_.get(), in, frames, &used, out_.data() + before, room, &made);
        if (error != nullptr) throw std::runtime_error(std::string("sample-rate conversion: ") + error);
        out_.resize(before + made * channels_);
        if (in != nullptr) in += used * channels_;
        frames -= used;
    } while (frames > 0 || made > 0);
    return out_;
}
