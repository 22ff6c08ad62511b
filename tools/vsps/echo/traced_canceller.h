// An echo canceller whose output is in time with the near end, and what it did in every 20 ms.
#pragma once

#include <deque>
#include <span>
#include <vector>

#include "audio/audio.h"
#include "echo/owned_canceller.h"

constexpr int kEchoFramesPerSecond = 50;
constexpr double kEchoFrameSeconds = 1.0 / kEchoFramesPerSecond;

struct EchoFrame {
    double farPower, nearPower, outPower;  // mean squares of 16-bit samples
    VspvEchoStatus status;

    // Tells what the canceller removes: there is echo and neither near-end speech nor a modem.
    bool measuresCancelling() const { return status.farActive && !status.doubleTalk && !status.toneDisabled; }
};

class TracedCanceller {
  public:
    explicit TracedCanceller(const VspvEchoSettings& settings);

    // far and near are of one length, whole frames but for the last block.
    void process(std::span<const std::int16_t> far, std::span<const std::int16_t> near);
    // When there are no more.
    void finish();

    // What the last call has completed. All in all there are as many samples as near had, and a frame for every 20 ms
    // begun.
    const Samples& out() const { return out_; }
    const std::vector<EchoFrame>& frames() const { return frames_; }

  private:
    struct Waiting {  // for its output
        EchoFrame frame;
        std::size_t length;  // samples
    };
    void cancel(std::span<const std::int16_t> far, std::span<const std::int16_t> near);
    void complete();

    OwnedCanceller canceller_;
    std::size_t frame_, early_;  // samples: of a frame; that the output is still to be ahead of the near end
    std::deque<Waiting> waiting_;
    Samples late_, out_;  // output of frames that are not complete, and of those that are
    std::vector<EchoFrame> frames_;
};
