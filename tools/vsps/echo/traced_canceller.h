// An echo canceller whose output is in time with the near end, and what it did in every 20 ms.
#pragma once

#include <deque>
#include <optional>
#include <span>
#include <vector>

#include "audio/audio.h"
#include "echo/owned_canceller.h"

constexpr int kEchoFramesPerSecond = 50;
constexpr double kEchoFrameSeconds = 1.0 / kEchoFramesPerSecond;

struct EchoFrame {
    // Mean squares of 16-bit samples. What the filters leave is the output, unless there is a suppressor.
    double farPower, nearPower, leftPower, outPower;
    VspvEchoStatus status;

    // Tells what the canceller removes: there is echo and neither near-end speech nor a modem.
    bool measuresCancelling() const { return status.farActive && !status.doubleTalk && !status.toneDisabled; }
};

// Of two powers, dB.
double decibelsOf(double numerator, double denominator);

class TracedCanceller {
  public:
    // With suppression a second canceller runs without, as the suppressor hides what the filters remove.
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
    class InTime {  // output that does not lag
      public:
        explicit InTime(const VspvEchoSettings& settings) : canceller_(settings), early_(canceller_.latency()) {}
        void cancel(std::span<const std::int16_t> far, std::span<const std::int16_t> near);
        std::span<const std::int16_t> first(std::size_t count) const { return std::span(late_).first(count); }
        std::size_t length() const { return late_.size(); }
        void remove(std::size_t count) { late_.erase(late_.begin(), late_.begin() + std::ptrdiff_t(count)); }
        VspvEchoStatus status() const { return canceller_.status(); }

      private:
        OwnedCanceller canceller_;
        std::size_t early_;  // samples that the output is still to be ahead of the near end
        Samples late_;       // output of frames that are not complete
    };
    void cancel(std::span<const std::int16_t> far, std::span<const std::int16_t> near);
    void complete();

    InTime canceller_;
    std::optional<InTime> filters_;
    std::size_t frame_;  // samples
    std::deque<Waiting> waiting_;
    Samples out_;
    std::vector<EchoFrame> frames_;
};
