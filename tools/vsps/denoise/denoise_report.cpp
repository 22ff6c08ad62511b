#include "denoise/denoise_report.h"

#include <cmath>

#include "console/report_format.h"
#include "console/standard_streams.h"

namespace {

std::string channelText(const NoiseRemoval& c) {
    const double share = c.speechShare();
    return "  speech            " + (std::isfinite(share) ? format("%.0f %% of the time", 100 * share) : "-") +
           "\n  quiet parts       lowered by " + decibels(c.loweredBy(), "dB") + '\n';
}

}  // namespace

std::string toText(const DenoiseReport& r, const std::vector<NoiseRemoval>& channels) {
    std::string text = inputName(r.inFile) + format(": %.2f s, %d Hz, %zu channel%s, mode %s\n", r.seconds(), r.inRate,
                                                    channels.size(), channels.size() == 1 ? "" : "s", r.mode.c_str());
    for (std::size_t i = 0; i < channels.size(); i++) {
        if (channels.size() > 1) text += format(" channel %zu\n", i + 1);
        text += channelText(channels[i]);
    }
    const int latency = channels.front().latency();
    text += format("  delay removed     %.0f ms (%d samples)\n", 1000.0 * latency / r.rate, latency);
    text += format("  speed             %.0f x real time\n", r.timesRealTime());
    text += "written: " + outputName(r.outFile) + format(" (%d Hz, %zu samples)\n", r.rate, r.samples);
    if (!r.plotFile.empty()) text += "plot: " + r.plotFile + '\n';
    return text;
}

Json toJson(const DenoiseReport& r, const std::vector<NoiseRemoval>& channels) {
    Json each = Json::array();
    for (const NoiseRemoval& c : channels)
        each.append({{"speech_share", number(c.speechShare())}, {"quiet_lowered_db", number(c.loweredBy())}});
    return {
        {"input", {{"file", r.inFile}, {"rate_hz", r.inRate}, {"channels", channels.size()}}},
        {"output", {{"file", r.outFile}, {"rate_hz", r.rate}, {"samples", r.samples}, {"duration_s", number(r.seconds())}}},
        {"plot", nameOrNull(r.plotFile)},
        {"mode", r.mode},
        {"delay_removed_samples", channels.front().latency()},
        {"times_real_time", number(r.timesRealTime())},
        {"channels", each}};
}
