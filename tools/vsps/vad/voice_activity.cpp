#include "vad/voice_activity.h"

#include <algorithm>

VoiceActivity::VoiceActivity(int option) : detector_(makeVadDetector(option)) {}

void VoiceActivity::process(std::span<const std::int16_t> samples, std::vector<ActivityFrame>& frames) {
    while (!samples.empty()) {
        const std::size_t count = std::min(kAmrFrame - filled_, samples.size());
        std::copy_n(samples.begin(), count, frame_.begin() + std::ptrdiff_t(filled_));
        samples = samples.subspan(count);
        filled_ += count;
        if (filled_ == kAmrFrame) frames.push_back(detect());
    }
}

void VoiceActivity::finish(std::vector<ActivityFrame>& frames) {
    if (filled_ == 0) return;
    std::fill(frame_.begin() + std::ptrdiff_t(filled_), frame_.end(), 0);
    frames.push_back(detect());
}

ActivityFrame VoiceActivity::detect() {
    double energy = 0;
    for (const std::int16_t x : frame_) energy += double(x) * x;

    const AmrFrame processed = preProcessing_.process(frame_);
    std::shift_left(speech_.begin(), speech_.end(), kAmrFrame);
    std::copy(processed.begin(), processed.end(), speech_.end() - kAmrFrame);
    const bool flag = detector_->detect(speech_.data(), openLoop_.result());
    openLoop_.process(weighting_.process(processed));
    const double power = energy / double(filled_);
    filled_ = 0;
    return {flag, power, detector_->snr(), detector_->reference()};
}
