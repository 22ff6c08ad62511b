#include "echo/convergence.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr std::size_t kSettlingFrames = 10;  // 0.2 s, over which an enhancement counts as reached

}  // namespace

// The enhancement over the last frames with echo alone has to reach the goal.
void Convergence::watch(const EchoFrame& frame) {
    speechFrames_ += frame.status.farActive;
    if (seconds_ || !frame.measuresCancelling()) return;
    last_.push_back({frame.nearPower, frame.leftPower});
    if (last_.size() < kSettlingFrames) return;
    Powers sum{};
    for (const Powers& p : last_) {
        sum.near += p.near;
        sum.left += p.left;
    }
    if (decibelsOf(sum.near, sum.left) >= goal_) seconds_ = speechSeconds();
    last_.pop_front();
}
