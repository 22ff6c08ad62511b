// An echo canceller over whole recordings, and what it did over time.
#pragma once

#include <vector>

#include "audio/audio.h"
#include "echo_canceller/canceller.h"

constexpr std::size_t kEchoFrame = kRate / 50;  // 20 ms

struct EchoFrame {
    double farPower, nearPower, outPower;  // mean squares of 16-bit samples
    EchoCancellerStatus status;

    // Tells what the canceller removes: there is echo and neither near-end speech nor a modem.
    bool measuresCancelling() const { return status.farActive && !status.doubleTalk && !status.toneDisabled; }
};

struct EchoRun {
    Samples out;                    // as long as near, and in time with it
    std::vector<EchoFrame> frames;  // the last one may be short
    double seconds;                 // that the canceller took
};

// far and near are of one length.
EchoRun cancelEcho(const Samples& far, const Samples& near, const EchoCancellerSettings& settings);
