#include "tone/tone_report.h"

#include "audio/active_level.h"
#include "console/report_format.h"
#include "console/standard_streams.h"

namespace {

std::string channelText(const std::vector<AnswerTone>& tones) {
    if (tones.empty()) return "  no answer tone with phase reversals\n";
    std::string text;
    for (const AnswerTone& t : tones)
        text += format("  %10.2f s to %10.2f s, ", t.start, t.end) + decibels(toDbov(t.power), "dBov") +
                format(", detected at %.3f s, %zu reversal%s up to %.3f s\n", t.reversals.front(), t.reversals.size(),
                       t.reversals.size() == 1 ? "" : "s", t.reversals.back());
    return text;
}

Json toneJson(const AnswerTone& t) {
    Json reversals = Json::array();
    for (const double time : t.reversals) reversals.append(number(time));
    return {{"start_s", number(t.start)},
            {"end_s", number(t.end)},
            {"level_dbov", number(toDbov(t.power))},
            {"detected_s", number(t.reversals.front())},
            {"reversals_s", reversals}};
}

}  // namespace

std::string toText(const ToneReport& r) {
    std::string text = inputName(r.inFile) + format(": %.2f s, %d Hz, %zu channel%s\n", r.seconds, r.inRate,
                                                    r.channels.size(), r.channels.size() == 1 ? "" : "s");
    for (std::size_t i = 0; i < r.channels.size(); i++) {
        if (r.channels.size() > 1) text += format(" channel %zu\n", i + 1);
        text += channelText(r.channels[i]);
    }
    return text;
}

Json toJson(const ToneReport& r) {
    Json channels = Json::array();
    for (const std::vector<AnswerTone>& tones : r.channels) {
        Json list = Json::array();
        for (const AnswerTone& t : tones) list.append(toneJson(t));
        channels.append({{"tones", list}});
    }
    return {
        {"input",
         {{"file", r.inFile}, {"rate_hz", r.inRate}, {"channels", r.channels.size()}, {"duration_s", number(r.seconds)}}},
        {"detection_rate_hz", r.rate},
        {"channels", channels}};
}
