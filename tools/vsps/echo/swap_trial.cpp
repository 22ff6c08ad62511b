#include "echo/swap_trial.h"

namespace {

constexpr double kSoon = 1.5;  // s of speech in which an echo is learned that is one
constexpr double kLonger = 3;  // times, that the wrong way round takes

}  // namespace

SwapTrial::SwapTrial(VspvEchoSettings settings) : canceller_(withoutSuppression(settings)) {}

void SwapTrial::process(std::span<const std::int16_t> far, std::span<const std::int16_t> near, const Convergence& asGiven) {
    if (asGiven.seconds().value_or(kSoon + 1) <= kSoon) canceller_.reset();
    if (!canceller_) return;
    canceller_->process(near, far);
    for (const EchoFrame& frame : canceller_->frames()) swapped_.watch(frame);
    if (swapped_.seconds()) canceller_.reset();
}

bool SwapTrial::seemSwapped(const Convergence& asGiven) const {
    if (!swapped_.seconds()) return false;
    const double given = asGiven.seconds().value_or(asGiven.speechSeconds());
    return given > kSoon && given > kLonger * *swapped_.seconds();
}
