#include "vad/vad_report.h"

#include <cmath>

#include "audio/active_level.h"
#include "console/report_format.h"
#include "console/standard_streams.h"

namespace {

std::string channelText(const ActivitySummary& s, double seconds) {
    std::string text = format("  speech            %.2f s of %.2f s (%.0f %%), %zu segment%s\n", s.speechSeconds(), seconds,
                              100 * s.speechSeconds() / seconds, s.segments().size(), s.segments().size() == 1 ? "" : "s");
    text += "  mean level        " + decibels(s.speechLevel(), "dBov") + " in speech, " + decibels(s.otherLevel(), "dBov") +
            " elsewhere\n";
    for (const Segment& segment : s.segments()) text += format("  %10.2f s to %10.2f s\n", segment.start, segment.end);
    return text;
}

Json channelJson(const ActivitySummary& s, double seconds) {
    Json segments = Json::array();
    for (const Segment& segment : s.segments())
        segments.append({{"start_s", number(segment.start)}, {"end_s", number(segment.end)}});
    return {{"frames", s.frames()},
            {"speech_s", number(s.speechSeconds())},
            {"speech_share", number(s.speechSeconds() / seconds)},
            {"speech_level_dbov", number(s.speechLevel())},
            {"other_level_dbov", number(s.otherLevel())},
            {"segments", segments}};
}

}  // namespace

void ActivitySummary::add(const VspvSpeechDecision& frame) {
    const double time = kActivityFrameSeconds * double(frames());
    Mean& mean = frame.speech ? speech_ : other_;
    mean.power += frame.power;
    mean.frames++;
    if (frame.speech && !start_) start_ = time;
    if (!frame.speech && start_) {
        segments_.push_back({*start_, time});
        start_.reset();
    }
}

void ActivitySummary::finish(double seconds) {
    if (start_) segments_.push_back({*start_, seconds});
    start_.reset();
}

double ActivitySummary::speechSeconds() const {
    double sum = 0;
    for (const Segment& s : segments_) sum += s.seconds();
    return sum;
}

double ActivitySummary::Mean::level() const { return frames == 0 ? NAN : toDbov(power / double(frames)); }

std::string toText(const VadReport& r) {
    std::string text =
        inputName(r.inFile) + format(": %.2f s, %d Hz, %zu channel%s, %s\n", r.seconds, r.inRate, r.channels.size(),
                                     r.channels.size() == 1 ? "" : "s", detectorName(r.option).c_str());
    for (std::size_t i = 0; i < r.channels.size(); i++) {
        if (r.channels.size() > 1) text += format(" channel %zu\n", i + 1);
        text += channelText(r.channels[i], r.seconds);
    }
    if (!r.outputs.csv.empty()) text += "table: " + outputName(r.outputs.csv) + '\n';
    if (!r.outputs.labels.empty()) text += "labels: " + outputName(r.outputs.labels) + '\n';
    if (!r.outputs.plot.empty()) text += "plot: " + outputName(r.outputs.plot) + '\n';
    return text;
}

Json toJson(const VadReport& r) {
    Json channels = Json::array();
    for (const ActivitySummary& channel : r.channels) channels.append(channelJson(channel, r.seconds));
    return {
        {"input",
         {{"file", r.inFile}, {"rate_hz", r.inRate}, {"channels", r.channels.size()}, {"duration_s", number(r.seconds)}}},
        {"detector", detectorName(r.option)},
        {"csv", nameOrNull(r.outputs.csv)},
        {"labels", nameOrNull(r.outputs.labels)},
        {"plot", nameOrNull(r.outputs.plot)},
        {"channels", channels}};
}
