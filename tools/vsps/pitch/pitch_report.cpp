#include "pitch/pitch_report.h"

#include <cmath>

#include "console/report_format.h"
#include "console/standard_streams.h"

namespace {

std::string channelText(const PitchSummary& s) {
    std::string text = format("  frames            %zu of 10 ms\n  voiced            %zu (%.0f %%)\n", s.frames(),
                              s.voicedFrames(), 100 * s.voicedShare());
    if (std::isnan(s.f0(0.5))) return text + "  F0                -\n  prediction gain   -\n";
    text +=
        format("  F0                %.1f Hz (median), 5 to 95 %%: %.1f to %.1f Hz\n", s.f0(0.5), s.f0(0.05), s.f0(0.95));
    return text + "  prediction gain   " + decibels(s.predictionGain(), "dB") + " (mean of what is voiced)\n";
}

Json channelJson(const PitchSummary& s) {
    return {
        {"frames", s.frames()},
        {"voiced_frames", s.voicedFrames()},
        {"voiced_share", number(s.voicedShare())},
        {"f0_hz",
         {{"median", number(s.f0(0.5))}, {"low_5_percent", number(s.f0(0.05))}, {"high_95_percent", number(s.f0(0.95))}}},
        {"prediction_gain_db", number(s.predictionGain())}};
}

}  // namespace

void PitchSummary::add(const VspvPitchPoint& point) {
    const bool voiced = point.voiced != 0;
    voicedFrames_ += points_ % 2 == 1 && lastVoiced_ && voiced;
    lastVoiced_ = voiced;
    points_++;
    if (!voiced) return;
    f0_[point.f0]++;
    gains_ += point.predictionGain;
    voicedPoints_++;
}

double PitchSummary::f0(double part) const {
    if (voicedPoints_ == 0) return NAN;
    auto below = std::size_t(std::lround(part * double(voicedPoints_ - 1)));
    for (const auto& [f0, count] : f0_) {
        if (below < count) return f0;
        below -= count;
    }
    return NAN;
}

double PitchSummary::predictionGain() const { return voicedPoints_ == 0 ? NAN : gains_ / double(voicedPoints_); }

std::string toText(const PitchReport& r) {
    std::string text = inputName(r.inFile) + format(": %.2f s, %d Hz, %zu channel%s, search %s\n", r.seconds, r.inRate,
                                                    r.channels.size(), r.channels.size() == 1 ? "" : "s", r.search.c_str());
    for (std::size_t i = 0; i < r.channels.size(); i++) {
        if (r.channels.size() > 1) text += format(" channel %zu\n", i + 1);
        text += channelText(r.channels[i]);
    }
    text += format("  speed             %.0f x real time\n", r.timesRealTime());
    if (!r.csvFile.empty()) text += "table: " + outputName(r.csvFile) + '\n';
    if (!r.plotFile.empty()) text += "plot: " + outputName(r.plotFile) + '\n';
    return text;
}

Json toJson(const PitchReport& r) {
    Json channels = Json::array();
    for (const PitchSummary& channel : r.channels) channels.append(channelJson(channel));
    return {
        {"input",
         {{"file", r.inFile}, {"rate_hz", r.inRate}, {"channels", r.channels.size()}, {"duration_s", number(r.seconds)}}},
        {"csv", nameOrNull(r.csvFile)},
        {"plot", nameOrNull(r.plotFile)},
        {"search", r.search},
        {"times_real_time", number(r.timesRealTime())},
        {"channels", channels}};
}
