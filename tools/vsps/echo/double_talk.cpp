#include "echo/double_talk.h"

#include <algorithm>

namespace {
constexpr std::size_t kJoin = 25;  // frames, half a second
}

bool DoubleTalkJoiner::take(EchoFrame& frame) {
    if (frames_.empty() || (!ended_ && frames_.size() <= kJoin)) return false;
    frame = frames_.front();
    const auto end = frames_.begin() + std::ptrdiff_t(std::min(frames_.size(), kJoin + 1));
    const bool follows = std::any_of(frames_.begin(), end, [](const EchoFrame& f) { return f.status.doubleTalk; });
    sinceNear_ = frame.status.doubleTalk ? 0 : sinceNear_ + 1;
    frames_.pop_front();
    frame.status.doubleTalk = frame.status.farActive && (follows || sinceNear_ <= kJoin);
    return true;
}
