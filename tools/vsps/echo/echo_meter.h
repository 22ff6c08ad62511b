// What an echo canceller achieves, measured while it runs.
#pragma once

#include <optional>
#include <vector>

#include "audio/active_level.h"
#include "audio/bounded_trace.h"
#include "echo/convergence.h"
#include "echo/double_talk.h"
#include "echo/swap_trial.h"

// Frames of 20 ms, added up.
struct EchoPoint {
    double frames = 0;
    double farPower = 0, nearPower = 0, outPower = 0;               // sums over the frames
    double echoNearPower = 0, echoLeftPower = 0, echoOutPower = 0;  // over those with echo alone
    double echo = 0, doubleTalk = 0;                                // so many frames

    EchoPoint& operator+=(const EchoPoint& next);
    // Echo return loss enhancement: power of the near end over that of what the filters leave, or of the output, dB,
    // where there is echo alone.
    std::optional<double> erle() const;
    std::optional<double> erleOfOutput() const;
};

using EchoTrace = BoundedTrace<EchoPoint>;  // in frames

struct ErlePoint {
    double seconds;                            // middle of the stretch
    std::optional<double> erle, erleOfOutput;  // dB; empty without echo alone
};

// In stretches of so many seconds, or longer ones if the recording is long.
std::vector<ErlePoint> erleOverTime(const EchoTrace& trace, double stretchSeconds);

struct EchoMeasures {
    std::optional<ActiveLevel> farLevel, nearLevel, outLevel;
    std::optional<double> bulkDelayMs;                     // of the echo; empty without one
    std::optional<double> steadyErle, steadyErleOfOutput;  // dB, over the second half
    std::optional<double> convergence;                     // s of far-end speech until 20 dB are reached for the first time
    double doubleTalkSeconds = 0;
    std::optional<double> doubleTalkChange;  // dB, output over near end in double talk
    double toneSeconds = 0;                  // disabled by a modem's tone
    std::vector<ErlePoint> erle;             // in half seconds, longer ones after some minutes
};

constexpr double kConvergedErle = 20;  // dB

class EchoMeter {
  public:
    explicit EchoMeter(int rate) : far_(rate), near_(rate), out_(rate) {}

    void addInput(std::span<const std::int16_t> far, std::span<const std::int16_t> near);
    void addOutput(std::span<const std::int16_t> out, std::span<const EchoFrame> frames);
    // When there are no more.
    EchoMeasures finish();

    const EchoTrace& trace() const { return trace_; }
    const Convergence& learned() const { return learned_; }

  private:
    void measureFrames();

    static constexpr std::size_t kCapacity = 1 << 12;  // 80 s in full detail

    LevelMeter far_, near_, out_;
    DoubleTalkJoiner joiner_;
    EchoTrace trace_{kCapacity};
    EchoPoint inDoubleTalk_;
    std::optional<double> bulkDelayMs_;
    double toneFrames_ = 0;
    Convergence convergence_{kConvergedErle}, learned_{SwapTrial::kLearned};
};
