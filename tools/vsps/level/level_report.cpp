#include "level/level_report.h"

#include <algorithm>
#include <cmath>

#include "console/report_format.h"
#include "console/standard_streams.h"

namespace {

double toDb(double gain) { return 20 * std::log10(gain); }

std::string row(const char* label, const std::string& in, const std::string& out) {
    return format("  %-17s %12s %12s\n", label, in.c_str(), out.c_str());
}

std::string levelText(const std::optional<ActiveLevel>& level) { return level ? decibels(level->dbov, "dBov") : "-"; }

std::string activityText(const std::optional<ActiveLevel>& level) {
    return level ? format("%.0f %%", 100 * level->activity) : "-";
}

std::string channelText(const ChannelReport& c, const LevelReport& r) {
    std::string text = row("", "input", "output");
    text += row("active level", levelText(c.inLevel), levelText(c.outLevel));
    text += row("speech activity", activityText(c.inLevel), activityText(c.outLevel));
    text += row("peak", decibels(c.inPeak, "dBov"), decibels(c.outPeak, "dBov"));
    text += "  gain              " + decibels(c.firstGain, "dB") + " at the start, " + decibels(c.lastGain, "dB") +
            " at the end, highest " + decibels(c.highestGain, "dB") + '\n';
    text += format("  samples limited   %zu (%.2f %%)\n", c.limited, 100.0 * double(c.limited) / double(r.samples));
    if (c.attenuatedUntil)
        text += format(
            "  start attenuated  until %.2f s%s: the control begins at -30 dB and rises with the first speech;\n"
            "                    --two-pass learns the level first\n",
            *c.attenuatedUntil, *c.attenuatedUntil < r.seconds() ? "" : " (all of it)");
    return text;
}

Json signalJson(const std::optional<ActiveLevel>& level, double peak) {
    return {{"active_level_dbov", level ? number(level->dbov) : Json(nullptr)},
            {"speech_activity", level ? number(level->activity) : Json(nullptr)},
            {"peak_dbov", number(peak)}};
}

Json channelJson(const ChannelReport& c) {
    return {{"input", signalJson(c.inLevel, c.inPeak)},
            {"output", signalJson(c.outLevel, c.outPeak)},
            {"gain_db", {{"first", number(c.firstGain)}, {"last", number(c.lastGain)}, {"highest", number(c.highestGain)}}},
            {"samples_limited", c.limited},
            {"attenuated_until_s", c.attenuatedUntil ? number(*c.attenuatedUntil) : Json(nullptr)}};
}

}  // namespace

// The limit acts on the gain and the product is truncated: a limited sample is at the limit or one unit below.
void ChannelMeter::process(std::span<const std::int16_t> in, std::span<const std::int16_t> out) {
    const double limited = settings_.highestSample() - 1;
    for (std::size_t i = 0; i < out.size(); i++) limited_ += in[i] != 0 && std::abs(double(out[i])) >= limited;
    samples_ += in.size();
    in_.process(in);
    out_.process(out);
    gain_.process(in, out);
}

ChannelReport ChannelMeter::finish() {
    gain_.finish();
    const auto inLevel = in_.activeLevel();
    auto attenuated = settings_.twoPass ? std::nullopt : gain_.attenuatedUntil(inLevel);
    if (attenuated) attenuated = std::min(*attenuated, double(samples_) / kRate);
    return {inLevel,
            out_.activeLevel(),
            in_.peakDbov(),
            out_.peakDbov(),
            toDb(gain_.firstGain()),
            toDb(gain_.lastGain()),
            toDb(gain_.highestGain()),
            limited_,
            attenuated};
}

std::string toText(const LevelReport& r) {
    std::string text =
        inputName(r.inFile) + format(": %.2f s, %d Hz, %zu channel%s, %s\n", r.seconds(), r.inRate, r.channels.size(),
                                     r.channels.size() == 1 ? "" : "s", r.settings.twoPass ? "two passes" : "one pass");
    for (std::size_t i = 0; i < r.channels.size(); i++) {
        if (r.channels.size() > 1) text += format(" channel %zu\n", i + 1);
        text += channelText(r.channels[i], r);
    }
    text += format("  speed             %.0f x real time\n", r.timesRealTime());
    text += "written: " + outputName(r.outFile) + format(" (%d Hz, %zu samples)\n", kRate, r.samples);
    if (!r.plotFile.empty()) text += "plot: " + r.plotFile + '\n';
    return text;
}

Json toJson(const LevelReport& r) {
    Json channels = Json::array();
    for (const ChannelReport& c : r.channels) channels.append(channelJson(c));
    return {
        {"input", {{"file", r.inFile}, {"rate_hz", r.inRate}, {"channels", r.channels.size()}}},
        {"output", {{"file", r.outFile}, {"rate_hz", kRate}, {"samples", r.samples}, {"duration_s", number(r.seconds())}}},
        {"plot", nameOrNull(r.plotFile)},
        {"settings",
         {{"target_db", r.settings.target},
          {"limit_db", r.settings.limit},
          {"max_gain_db", r.settings.maxGain},
          {"two_pass", r.settings.twoPass}}},
        {"times_real_time", number(r.timesRealTime())},
        {"channels", channels}};
}
