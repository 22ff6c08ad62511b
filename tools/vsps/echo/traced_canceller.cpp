#include "echo/traced_canceller.h"

#include <algorithm>
#include <cmath>

namespace {

double meanSquare(std::span<const std::int16_t> x) {
    double sum = 0;
    for (const std::int16_t sample : x) sum += double(sample) * sample;
    return sum / double(x.size());
}

}  // namespace

double decibelsOf(double numerator, double denominator) {
    return 10 * std::log10(std::max(numerator, 1.0) / std::max(denominator, 1.0));
}

TracedCanceller::TracedCanceller(const VspvEchoSettings& settings)
    : canceller_(settings), frame_(std::size_t(settings.samplingRate / kEchoFramesPerSecond)) {
    if (settings.suppression != 0) filters_.emplace(withoutSuppression(settings));
}

void TracedCanceller::process(std::span<const std::int16_t> far, std::span<const std::int16_t> near) {
    out_.clear();
    frames_.clear();
    for (std::size_t at = 0; at < near.size(); at += frame_) {
        const std::size_t n = std::min(frame_, near.size() - at);
        const auto farFrame = far.subspan(at, n), nearFrame = near.subspan(at, n);
        cancel(farFrame, nearFrame);
        waiting_.push_back({{meanSquare(farFrame), meanSquare(nearFrame), 0, 0, canceller_.status()}, n});
        complete();
    }
}

// Silence drives out what is left.
void TracedCanceller::finish() {
    out_.clear();
    frames_.clear();
    const Samples silence(frame_);
    while (!waiting_.empty()) {
        cancel(silence, silence);
        complete();
    }
}

void TracedCanceller::cancel(std::span<const std::int16_t> far, std::span<const std::int16_t> near) {
    canceller_.cancel(far, near);
    if (filters_) filters_->cancel(far, near);
}

void TracedCanceller::complete() {
    while (!waiting_.empty() && canceller_.length() >= waiting_.front().length) {
        const std::size_t length = waiting_.front().length;
        const auto out = canceller_.first(length);
        EchoFrame frame = waiting_.front().frame;
        frame.outPower = meanSquare(out);
        frame.leftPower = filters_ ? meanSquare(filters_->first(length)) : frame.outPower;
        frames_.push_back(frame);
        out_.insert(out_.end(), out.begin(), out.end());
        canceller_.remove(length);
        if (filters_) filters_->remove(length);
        waiting_.pop_front();
    }
}

void TracedCanceller::InTime::cancel(std::span<const std::int16_t> far, std::span<const std::int16_t> near) {
    const std::size_t before = late_.size();
    late_.resize(before + near.size());
    canceller_.process(far, near, std::span(late_).subspan(before));
    const std::size_t skipped = std::min(early_, near.size());
    early_ -= skipped;
    const auto first = late_.begin() + std::ptrdiff_t(before);
    late_.erase(first, first + std::ptrdiff_t(skipped));
}
