#include "pitch/pitch_report.h"

#include <algorithm>

#include "console/report_format.h"

namespace {

struct Summary {
    std::size_t frames, voicedFrames;                  // a voiced frame has two voiced subframes
    double lowF0 = NAN, medianF0 = NAN, highF0 = NAN;  // Hz, 5, 50 and 95 % of the voiced subframes; NaN if there are none
    double predictionGain = NAN;                       // dB, mean of the voiced subframes

    double voiced() const { return double(voicedFrames) / double(frames); }
};

Summary summarise(const PitchTrack& track) {
    Summary s{track.size() / 2, 0};
    for (std::size_t i = 0; i < track.size(); i += 2) s.voicedFrames += track[i].voiced() && track[i + 1].voiced();
    std::vector<double> f0;
    double gains = 0;
    for (const PitchPoint& p : track) {
        if (!p.voiced()) continue;
        f0.push_back(p.f0());
        gains += p.predictionGain;
    }
    if (f0.empty()) return s;
    std::sort(f0.begin(), f0.end());
    const auto quantile = [&](double part) { return f0[std::size_t(std::lround(part * double(f0.size() - 1)))]; };
    s.lowF0 = quantile(0.05);
    s.medianF0 = quantile(0.5);
    s.highF0 = quantile(0.95);
    s.predictionGain = gains / double(f0.size());
    return s;
}

std::string channelText(const Summary& s) {
    std::string text = format("  frames            %zu of 10 ms\n  voiced            %zu (%.0f %%)\n", s.frames,
                              s.voicedFrames, 100 * s.voiced());
    if (std::isnan(s.medianF0)) return text + "  F0                -\n  prediction gain   -\n";
    text += format("  F0                %.1f Hz (median), 5 to 95 %%: %.1f to %.1f Hz\n", s.medianF0, s.lowF0, s.highF0);
    return text + "  prediction gain   " + decibels(s.predictionGain, "dB") + " (mean of what is voiced)\n";
}

Json channelJson(const Summary& s) {
    return {{"frames", s.frames},
            {"voiced_frames", s.voicedFrames},
            {"voiced_share", number(s.voiced())},
            {"f0_hz",
             {{"median", number(s.medianF0)}, {"low_5_percent", number(s.lowF0)}, {"high_95_percent", number(s.highF0)}}},
            {"prediction_gain_db", number(s.predictionGain)}};
}

}  // namespace

std::string toText(const PitchReport& r) {
    std::string text = r.inFile + format(": %.2f s, %d Hz, %zu channel%s, search %s\n", r.seconds(), r.inRate,
                                         r.channels.size(), r.channels.size() == 1 ? "" : "s", r.search.c_str());
    for (std::size_t i = 0; i < r.channels.size(); i++) {
        if (r.channels.size() > 1) text += format(" channel %zu\n", i + 1);
        text += channelText(summarise(r.channels[i]));
    }
    text += format("  speed             %.0f x real time\n", r.timesRealTime());
    if (!r.csvFile.empty()) text += "table: " + r.csvFile + '\n';
    if (!r.plotFile.empty()) text += "plot: " + r.plotFile + '\n';
    return text;
}

Json toJson(const PitchReport& r) {
    Json channels = Json::array();
    for (const PitchTrack& track : r.channels) channels.append(channelJson(summarise(track)));
    return {
        {"input",
         {{"file", r.inFile}, {"rate_hz", r.inRate}, {"channels", r.channels.size()}, {"duration_s", number(r.seconds())}}},
        {"csv", nameOrNull(r.csvFile)},
        {"plot", nameOrNull(r.plotFile)},
        {"search", r.search},
        {"times_real_time", number(r.timesRealTime())},
        {"channels", channels}};
}

std::string toCsv(const std::vector<PitchTrack>& channels) {
    std::string table = "channel,time_s,open_loop_lag,lag,fraction,f0_hz,gain,prediction_gain_db,level_dbov,voiced\n";
    for (std::size_t c = 0; c < channels.size(); c++)
        for (std::size_t i = 0; i < channels[c].size(); i++) {
            const PitchPoint& p = channels[c][i];
            table += format("%zu,%.3f,%d,%d,%d,%.2f,%.4f,%.2f,%.1f,%d\n", c + 1, 0.005 * double(i), p.openLoopLag, p.lag,
                            p.fraction, p.f0(), double(p.gain), double(p.predictionGain), double(p.level), p.voiced());
        }
    return table;
}
