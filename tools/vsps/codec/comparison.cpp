#include "codec/comparison.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::ptrdiff_t kSecondsToAlign = 4;  // from the first sound on
constexpr std::ptrdiff_t kPatience = 60;       // seconds of silence before it
constexpr int kSound = 300;                    // amplitude

bool isSound(int sample) { return sample > kSound || sample < -kSound; }

}  // namespace

Comparison::Comparison(int rate, std::function<void(const FidelityStep&)> onStep)
    : rate_(rate), meter_(rate), onStep_(std::move(onStep)) {}

void Comparison::add(Samples& to, const Samples& samples) {
    to.insert(to.end(), samples.begin(), samples.end());
    while (!delay_ && silence_ < std::ssize(original_) && !isSound(original_[std::size_t(silence_)])) silence_++;
    const std::ptrdiff_t both = std::min(std::ssize(original_), std::ssize(heard_));
    if (!delay_ && both >= std::min(silence_ + kSecondsToAlign * rate_, kPatience * rate_)) align();
    if (delay_) measure();
}

void Comparison::finish() {
    if (!delay_) align();
    measure();
}

void Comparison::align() {
    const auto both = std::size_t(std::min(std::ssize(original_), std::ssize(heard_)));
    const std::size_t begin = std::min(both, std::size_t(std::max<std::ptrdiff_t>(0, silence_ - rate_ / 5)));
    delay_ = delayBetween(std::span(original_).subspan(begin, both - begin), std::span(heard_).subspan(begin, both - begin),
                          rate_);
    Samples& early = *delay_ > 0 ? heard_ : original_;
    early.erase(early.begin(), early.begin() + std::min<std::ptrdiff_t>(std::abs(*delay_), std::ssize(early)));
}

void Comparison::measure() {
    const std::size_t step = meter_.step(), both = std::min(original_.size(), heard_.size()) / step * step;
    if (both == 0) return;
    for (std::size_t i = 0; i < both; i += step)
        onStep_(meter_.process(std::span(original_).subspan(i, step), std::span(heard_).subspan(i, step)));
    for (Samples* samples : {&original_, &heard_})
        samples->erase(samples->begin(), samples->begin() + std::ptrdiff_t(both));
}
