#include "echo/traced_canceller.h"

#include <algorithm>

namespace {

double meanSquare(std::span<const std::int16_t> x) {
    double sum = 0;
    for (const std::int16_t sample : x) sum += double(sample) * sample;
    return sum / double(x.size());
}

}  // namespace

TracedCanceller::TracedCanceller(const VspvEchoSettings& settings)
    : canceller_(settings),
      frame_(std::size_t(settings.samplingRate / kEchoFramesPerSecond)),
      early_(canceller_.latency()) {}

void TracedCanceller::process(std::span<const std::int16_t> far, std::span<const std::int16_t> near) {
    out_.clear();
    frames_.clear();
    for (std::size_t at = 0; at < near.size(); at += frame_) {
        const std::size_t n = std::min(frame_, near.size() - at);
        const auto farFrame = far.subspan(at, n), nearFrame = near.subspan(at, n);
        cancel(farFrame, nearFrame);
        waiting_.push_back({{meanSquare(farFrame), meanSquare(nearFrame), 0, canceller_.status()}, n});
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
    const std::size_t before = late_.size();
    late_.resize(before + near.size());
    canceller_.process(far, near, std::span(late_).subspan(before));
    const std::size_t skipped = std::min(early_, near.size());
    early_ -= skipped;
    const auto first = late_.begin() + std::ptrdiff_t(before);
    late_.erase(first, first + std::ptrdiff_t(skipped));
}

void TracedCanceller::complete() {
    while (!waiting_.empty() && late_.size() >= waiting_.front().length) {
        const auto end = late_.begin() + std::ptrdiff_t(waiting_.front().length);
        EchoFrame frame = waiting_.front().frame;
        frame.outPower = meanSquare({late_.begin(), end});
        frames_.push_back(frame);
        out_.insert(out_.end(), late_.begin(), end);
        late_.erase(late_.begin(), end);
        waiting_.pop_front();
    }
}
