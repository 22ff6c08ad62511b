#include "tone/tone_extent.h"

#include <numbers>

namespace {
constexpr std::uint64_t kLongestGap = 3;  // blocks
}  // namespace

ToneExtent::ToneExtent(int rate) {
    for (int n = 0; n < rate / 100; n++) turns_.push_back(std::polar(1.0, -2 * std::numbers::pi * 2100 * n / rate));
}

// True if most of the power is at 2100 Hz.
bool ToneExtent::isTone(std::span<const std::int16_t> block, double energy) const {
    std::complex<double> sum = 0;
    for (std::size_t n = 0; n < block.size(); n++) sum += double(block[n]) * turns_[n];
    return 2 * std::norm(sum) > 0.5 * energy * double(block.size());
}

std::optional<ToneStretch> ToneExtent::process(std::span<const std::int16_t> block) {
    double energy = 0;
    for (const std::int16_t x : block) energy += double(x) * x;
    gapEnergy_ += energy;
    position_++;
    if (isTone(block, energy)) {
        if (!current_) {
            current_ = ToneStretch{position_ - 1, position_ - 1, 0};
            gapEnergy_ = energy;
        }
        current_->last = position_;
        current_->energy += gapEnergy_;
        gapEnergy_ = 0;
    }
    std::optional<ToneStretch> ended;
    if (current_ && position_ - current_->last > kLongestGap) current_.swap(ended);
    return ended;
}

void ToneExtent::claim() {
    if (!current_) {
        current_ = ToneStretch{position_, position_, 0};
        gapEnergy_ = 0;
    }
    current_->last = position_;
    current_->energy += gapEnergy_;
    gapEnergy_ = 0;
}
