#include "g168/test_call.h"

#include <algorithm>
#include <cmath>

#include "audio/active_level.h"
#include "g168/composite_source.h"
#include "simulate_echo/echo_path.h"

namespace {

LineSimulation over(const TestLine& line, const std::string& path) {
    return {EchoFilter(loadEchoPath(path, line.echoReturnLoss, kRate).response,
                       std::size_t(std::lround(line.delay * kRate / 1000))),
            {}};
}

VspvEchoSettings withSuppression(VspvEchoSettings settings, bool suppresses) {
    settings.suppression = suppresses ? 1 : 0;
    return settings;
}

}  // namespace

TestCall::TestCall(const TestLine& line, bool suppresses)
    : line_(line), simulation_(over(line, line.path)), canceller_(withSuppression(line.canceller, suppresses)) {}

void TestCall::play(const Samples& far, const Samples& near) {
    Samples nearEnd = near;
    nearEnd.resize(far.size());
    simulation_.process(far, nearEnd);
    canceller_.process(far, simulation_.out());
    near_.insert(near_.end(), nearEnd.begin(), nearEnd.end());
    keep();
}

void TestCall::changePath() { simulation_ = over(line_, line_.otherPath); }

void TestCall::openPath() { simulation_ = {EchoFilter({0.0}, 0), {}}; }

void TestCall::finish() {
    canceller_.finish();
    keep();
}

void TestCall::keep() {
    out_.insert(out_.end(), canceller_.out().begin(), canceller_.out().end());
    frames_.insert(frames_.end(), canceller_.frames().begin(), canceller_.frames().end());
}

double TestCall::outputLevel(double second) const { return level(out_, second); }

double TestCall::echoLeft(double second) const {
    Samples left(out_.size());
    for (std::size_t n = 0; n < left.size(); n++) left[n] = std::int16_t(std::clamp(out_[n] - near_[n], -32768, 32767));
    return level(left, second);
}

double TestCall::level(const Samples& samples, double second) {
    const auto begin = std::size_t(std::lround(second * kRate)), count = std::size_t(std::lround(kSourceSeconds * kRate));
    LevelMeter meter;
    meter.process(std::span(samples).subspan(begin, count));
    return std::max(kNothing, meter.meanDbov() + kDbm0OverDbov - 10 * std::log10(compositeActivity()));
}
