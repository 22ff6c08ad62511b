#include "echo/echo_meter.h"

#include <algorithm>
#include <cmath>

namespace {

EchoPoint toPoint(const EchoFrame& f) {
    EchoPoint p{1, f.farPower, f.nearPower, f.outPower, 0, 0, 0, 0, double(f.status.doubleTalk)};
    if (f.measuresCancelling()) {
        p.echoNearPower = f.nearPower;
        p.echoLeftPower = f.leftPower;
        p.echoOutPower = f.outPower;
        p.echo = 1;
    }
    return p;
}

template <typename Iterator>
EchoPoint sumOf(Iterator begin, Iterator end) {
    EchoPoint sum;
    for (; begin != end; ++begin) sum += *begin;
    return sum;
}

}  // namespace

EchoPoint& EchoPoint::operator+=(const EchoPoint& next) {
    frames += next.frames;
    farPower += next.farPower;
    nearPower += next.nearPower;
    outPower += next.outPower;
    echoNearPower += next.echoNearPower;
    echoLeftPower += next.echoLeftPower;
    echoOutPower += next.echoOutPower;
    echo += next.echo;
    doubleTalk += next.doubleTalk;
    return *this;
}

std::optional<double> EchoPoint::erle() const {
    return echo > 0 ? std::optional(decibelsOf(echoNearPower, echoLeftPower)) : std::nullopt;
}

std::optional<double> EchoPoint::erleOfOutput() const {
    return echo > 0 ? std::optional(decibelsOf(echoNearPower, echoOutPower)) : std::nullopt;
}

std::vector<ErlePoint> erleOverTime(const EchoTrace& trace, double stretchSeconds) {
    const double pointSeconds = kEchoFrameSeconds * double(trace.unitsPerPoint());
    const auto stretch = std::max(std::ptrdiff_t(1), std::ptrdiff_t(std::lround(stretchSeconds / pointSeconds)));
    const auto& all = trace.points();
    std::vector<ErlePoint> points;
    double seconds = 0;
    for (auto begin = all.begin(); begin != all.end();) {
        const auto end = begin + std::min(stretch, all.end() - begin);
        const EchoPoint sum = sumOf(begin, end);
        points.push_back({seconds + sum.frames / 2 * kEchoFrameSeconds, sum.erle(), sum.erleOfOutput()});
        seconds += sum.frames * kEchoFrameSeconds;
        begin = end;
    }
    return points;
}

void EchoMeter::addInput(std::span<const std::int16_t> far, std::span<const std::int16_t> near) {
    far_.process(far);
    near_.process(near);
}

void EchoMeter::addOutput(std::span<const std::int16_t> out, std::span<const EchoFrame> frames) {
    out_.process(out);
    for (const EchoFrame& frame : frames) joiner_.add(frame);
    measureFrames();
}

void EchoMeter::measureFrames() {
    for (EchoFrame frame; joiner_.take(frame);) {
        const EchoPoint point = toPoint(frame);
        trace_.add(point);
        if (frame.status.doubleTalk) inDoubleTalk_ += point;
        toneFrames_ += frame.status.toneDisabled;
        if (frame.status.echoFound) bulkDelayMs_ = frame.status.bulkDelayMs;
        convergence_.watch(frame);
        learned_.watch(frame);
    }
}

EchoMeasures EchoMeter::finish() {
    joiner_.finish();
    measureFrames();
    EchoMeasures m;
    m.farLevel = far_.activeLevel();
    m.nearLevel = near_.activeLevel();
    m.outLevel = out_.activeLevel();
    m.bulkDelayMs = bulkDelayMs_;
    const auto& points = trace_.points();
    const EchoPoint secondHalf = sumOf(points.begin() + std::ptrdiff_t(points.size() / 2), points.end());
    m.steadyErle = secondHalf.erle();
    m.steadyErleOfOutput = secondHalf.erleOfOutput();
    m.convergence = convergence_.seconds();
    m.doubleTalkSeconds = inDoubleTalk_.frames * kEchoFrameSeconds;
    if (inDoubleTalk_.frames > 0) m.doubleTalkChange = decibelsOf(inDoubleTalk_.outPower, inDoubleTalk_.nearPower);
    m.toneSeconds = toneFrames_ * kEchoFrameSeconds;
    m.erle = erleOverTime(trace_, 0.5);
    return m;
}
