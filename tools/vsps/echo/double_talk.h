// The stretches of double talk in what the canceller told of its frames.
#pragma once

#include <deque>
#include <limits>

#include "echo/traced_canceller.h"

// The canceller tells moments of near-end speech; the syllables between them belong to it.
class DoubleTalkJoiner {
  public:
    void add(const EchoFrame& frame) { frames_.push_back(frame); }
    void finish() { ended_ = true; }  // when there are no more

    // Takes the next frame out, with the double talk that there is; false as long as the frames after it may change that.
    bool take(EchoFrame& frame);

  private:
    std::deque<EchoFrame> frames_;
    std::size_t sinceNear_ = std::numeric_limits<std::size_t>::max() / 2;  // frames, since near-end speech
    bool ended_ = false;
};
