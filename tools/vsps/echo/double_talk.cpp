#include "echo/double_talk.h"

namespace {
constexpr long kJoin = 25;  // frames, half a second
}

void DoubleTalkJoiner::add(const EchoFrame& frame) {
    if (frame.status.doubleTalk) latest_ = taken_ + long(frames_.size());
    frames_.push_back(frame);
}

bool DoubleTalkJoiner::take(EchoFrame& frame) {
    if (frames_.empty() || (!ended_ && long(frames_.size()) <= kJoin)) return false;
    frame = frames_.front();
    frames_.pop_front();
    frame.status.doubleTalk = latest_ >= taken_ - kJoin && frame.status.farActive;
    taken_++;
    return true;
}
