#include "simulate_echo/simulate_report.h"

#include <cmath>

#include "console/report_format.h"
#include "console/standard_streams.h"

namespace {

std::string row(const char* label, const SignalLevel& s) {
    return format("  %-17s %12s %12s\n", label, s.active ? decibels(s.active->dbov, "dBov").c_str() : "-",
                  decibels(s.level, "dBov").c_str());
}

Json levelJson(const SignalLevel& s) {
    return {{"level_dbov", number(s.level)}, {"active_level_dbov", s.active ? number(s.active->dbov) : Json(nullptr)}};
}

const char* clippingName(Clipping c) { return c == Clipping::soft ? "soft" : "hard"; }

Json loudspeakerJson(const SimulateSettings& s) {
    if (!s.distortion) return nullptr;
    return {{"distortion_percent", number(*s.distortion)}, {"clipping", clippingName(s.clipping)}};
}

}  // namespace

SignalLevel measured(const LevelMeter& meter) { return {meter.meanDbov(), meter.activeLevel()}; }

std::string toText(const SimulateReport& r) {
    const SimulateSettings& s = r.settings;
    std::string text = inputName(r.farFile) + format(": %.2f s, echo path ", r.seconds()) + s.path +
                       format(" of %zu taps (%.1f ms), %g ms late\n", r.taps, 1000.0 * double(r.taps) / r.rate, s.delay);
    text += format("  %-17s %12s %12s\n", "", "active level", "level");
    text += row("far end", r.far);
    text += row("echo", r.echo);
    if (!r.nearFile.empty()) text += row("near end", r.near);
    if (s.noise) text += row("noise", r.noise);
    text += row("output", r.out);
    text += format("  echo return loss  %.1f dB as set, ", s.echoReturnLoss) + decibels(r.measuredLoss, "dB") +
            " for this far end\n";
    if (s.distortion)
        text += format("  loudspeaker       %g %% distortion, %s clipping\n", *s.distortion, clippingName(s.clipping));
    text += format("  samples clipped   %zu (%.2f %%)\n", r.clipped, 100.0 * double(r.clipped) / double(r.samples));
    text += "written: " + outputName(r.outFile) + format(" (%d Hz, %zu samples)\n", r.rate, r.samples);
    return text;
}

Json toJson(const SimulateReport& r) {
    const SimulateSettings& s = r.settings;
    return {
        {"far", {{"file", r.farFile}, {"level", levelJson(r.far)}}},
        {"near", r.nearFile.empty()
                     ? Json(nullptr)
                     : Json{{"file", r.nearFile}, {"begins_s", number(s.nearAt)}, {"level", levelJson(r.near)}}},
        {"output",
         {{"file", r.outFile},
          {"rate_hz", r.rate},
          {"samples", r.samples},
          {"duration_s", number(r.seconds())},
          {"level", levelJson(r.out)},
          {"samples_clipped", r.clipped}}},
        {"path", {{"name", s.path}, {"taps", r.taps}, {"delay_ms", number(s.delay)}, {"erl_db", number(s.echoReturnLoss)}}},
        {"echo", {{"level", levelJson(r.echo)}, {"measured_erl_db", number(r.measuredLoss)}}},
        {"loudspeaker", loudspeakerJson(s)},
        {"noise", s.noise ? Json{{"seed", s.seed}, {"level", levelJson(r.noise)}} : Json(nullptr)}};
}
