#include "vad/vad_report.h"

#include "audio/active_level.h"
#include "console/report_format.h"

namespace {

struct Summary {
    std::vector<Segment> segments;
    double speech = 0;                           // s
    double speechLevel = NAN, otherLevel = NAN;  // dBov; NaN if there is no such frame
};

double meanLevel(const ActivityTrack& track, bool speech) {
    double power = 0;
    std::size_t count = 0;
    for (const ActivityFrame& f : track)
        if (f.speech == speech) {
            power += f.power;
            count++;
        }
    return count == 0 ? NAN : toDbov(power / double(count));
}

Summary summarise(const VadReport& r, std::size_t channel) {
    Summary s{r.segments(channel)};
    for (const Segment& segment : s.segments) s.speech += segment.seconds();
    s.speechLevel = meanLevel(r.channels[channel], true);
    s.otherLevel = meanLevel(r.channels[channel], false);
    return s;
}

std::string channelText(const Summary& s, double seconds) {
    std::string text = format("  speech            %.2f s of %.2f s (%.0f %%), %zu segment%s\n", s.speech, seconds,
                              100 * s.speech / seconds, s.segments.size(), s.segments.size() == 1 ? "" : "s");
    text += "  mean level        " + decibels(s.speechLevel, "dBov") + " in speech, " + decibels(s.otherLevel, "dBov") +
            " elsewhere\n";
    for (const Segment& segment : s.segments) text += format("  %10.2f s to %10.2f s\n", segment.start, segment.end);
    return text;
}

Json channelJson(const ActivityTrack& track, const Summary& s, double seconds) {
    Json segments = Json::array();
    for (const Segment& segment : s.segments)
        segments.append({{"start_s", number(segment.start)}, {"end_s", number(segment.end)}});
    return {{"frames", track.size()},
            {"speech_s", number(s.speech)},
            {"speech_share", number(s.speech / seconds)},
            {"speech_level_dbov", number(s.speechLevel)},
            {"other_level_dbov", number(s.otherLevel)},
            {"segments", segments}};
}

}  // namespace

std::string toText(const VadReport& r) {
    std::string text = r.inFile + format(": %.2f s, %d Hz, %zu channel%s, option %d\n", r.seconds(), r.inRate,
                                         r.channels.size(), r.channels.size() == 1 ? "" : "s", r.option);
    for (std::size_t i = 0; i < r.channels.size(); i++) {
        if (r.channels.size() > 1) text += format(" channel %zu\n", i + 1);
        text += channelText(summarise(r, i), r.seconds());
    }
    if (!r.outputs.csv.empty()) text += "table: " + r.outputs.csv + '\n';
    if (!r.outputs.labels.empty()) text += "labels: " + r.outputs.labels + '\n';
    if (!r.outputs.plot.empty()) text += "plot: " + r.outputs.plot + '\n';
    return text;
}

Json toJson(const VadReport& r) {
    Json channels = Json::array();
    for (std::size_t i = 0; i < r.channels.size(); i++)
        channels.append(channelJson(r.channels[i], summarise(r, i), r.seconds()));
    return {
        {"input",
         {{"file", r.inFile}, {"rate_hz", r.inRate}, {"channels", r.channels.size()}, {"duration_s", number(r.seconds())}}},
        {"csv", nameOrNull(r.outputs.csv)},
        {"labels", nameOrNull(r.outputs.labels)},
        {"plot", nameOrNull(r.outputs.plot)},
        {"channels", channels}};
}

std::string toCsv(const VadReport& r) {
    std::string table = "channel,time_s,speech,level_dbov,snr_db,";
    table += r.option == 1 ? "threshold_db\n" : "long_term_snr_db\n";
    for (std::size_t c = 0; c < r.channels.size(); c++)
        for (std::size_t i = 0; i < r.channels[c].size(); i++) {
            const ActivityFrame& f = r.channels[c][i];
            table += format("%zu,%.2f,%d,%.1f,%.2f,%.2f\n", c + 1, 0.02 * double(i), f.speech, toDbov(f.power), f.snr,
                            f.reference);
        }
    return table;
}

std::string toLabels(const VadReport& r) {
    std::string labels;
    for (std::size_t i = 0; i < r.channels.size(); i++) {
        const std::string text = r.channels.size() == 1 ? "speech" : "speech " + std::to_string(i + 1);
        for (const Segment& s : r.segments(i)) labels += format("%.6f\t%.6f\t%s\n", s.start, s.end, text.c_str());
    }
    return labels;
}
