#include "echo/echo_trace.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <span>

namespace {

template <typename Signal>
double meanSquare(const Signal& x, std::size_t begin, std::size_t end) {
    double sum = 0;
    for (std::size_t i = begin; i < end; i++) sum += double(x[i]) * double(x[i]);
    return sum / double(end - begin);
}

std::vector<float> padded(const Samples& x, std::size_t length) {
    std::vector<float> signal(x.begin(), x.end());
    signal.resize(length);
    return signal;
}

// The canceller tells moments of near-end speech; the syllables between them belong to it.
void joinDoubleTalk(std::vector<EchoFrame>& frames) {
    constexpr std::size_t kJoin = 25;  // frames, half a second
    std::vector<bool> near(frames.size());
    for (std::size_t i = 0; i < frames.size(); i++)
        if (frames[i].status.doubleTalk)
            std::fill(near.begin() + std::ptrdiff_t(i - std::min(i, kJoin)),
                      near.begin() + std::ptrdiff_t(std::min(i + kJoin + 1, frames.size())), true);
    for (std::size_t i = 0; i < frames.size(); i++) frames[i].status.doubleTalk = near[i] && frames[i].status.farActive;
}

}  // namespace

EchoRun cancelEcho(const Samples& far, const Samples& near, const EchoCancellerSettings& settings) {
    const auto canceller = makeEchoCanceller(settings);
    const auto latency = std::size_t(canceller->latency());
    const std::size_t length = near.size() + latency;
    const std::vector<float> farSignal = padded(far, length), nearSignal = padded(near, length);
    std::vector<float> out(length);
    std::vector<EchoCancellerStatus> statuses;

    const auto begin = std::chrono::steady_clock::now();
    for (std::size_t at = 0; at < length; at += kEchoFrame) {
        const std::size_t n = std::min(kEchoFrame, length - at);
        canceller->process(std::span(farSignal).subspan(at, n), std::span(nearSignal).subspan(at, n),
                           std::span(out).subspan(at, n));
        statuses.push_back(canceller->status());
    }
    EchoRun run{{}, {}, std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count()};

    for (std::size_t i = 0; i < near.size(); i++)
        run.out.push_back(std::int16_t(std::lround(std::clamp(out[i + latency], -32768.0f, 32767.0f))));
    for (std::size_t at = 0; at < near.size(); at += kEchoFrame) {
        const std::size_t end = std::min(at + kEchoFrame, near.size());
        run.frames.push_back(
            {meanSquare(far, at, end), meanSquare(near, at, end), meanSquare(run.out, at, end), statuses[at / kEchoFrame]});
    }
    joinDoubleTalk(run.frames);
    return run;
}
