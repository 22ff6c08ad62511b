#include "echo/echo_report.h"

#include <algorithm>
#include <cmath>

#include "console/report_format.h"
#include "console/standard_streams.h"

namespace {

std::string levelText(const std::optional<ActiveLevel>& level) { return level ? decibels(level->dbov, "dBov") : "-"; }
Json levelJson(const std::optional<ActiveLevel>& level) { return level ? number(level->dbov) : Json(nullptr); }
Json numberOrNull(const std::optional<double>& value) { return value ? number(*value) : Json(nullptr); }

const char* engineName(const VspvEchoSettings& c) { return c.engine == vspvEchoSubband ? "subband" : "fullband"; }
bool isFixedPoint(const VspvEchoSettings& c) { return c.arithmetic == vspvEchoFixed; }
bool suppresses(const VspvEchoSettings& c) { return c.suppression != 0; }

// The enhancement at up to so many times, spread over the recording.
std::string overTimeText(const std::vector<ErlePoint>& erle) {
    constexpr std::size_t kColumns = 8;
    const std::size_t step = (erle.size() + kColumns - 1) / kColumns;
    std::string times, values;
    for (std::size_t i = 0; i < erle.size(); i += step) {
        const auto last = erle.begin() + std::ptrdiff_t(std::min(i + step, erle.size()));
        double sum = 0;
        int count = 0;
        for (auto point = erle.begin() + std::ptrdiff_t(i); point != last; ++point)
            if (point->erle) {
                sum += *point->erle;
                count++;
            }
        times += format(" %7.1f", (erle[i].seconds + (last - 1)->seconds) / 2);
        values += count > 0 ? format(" %7.1f", sum / count) : format(" %7s", "-");
    }
    return "  at second         " + times + "\n  ERLE, dB          " + values + '\n';
}

}  // namespace

std::string toText(const EchoReport& r) {
    const EchoMeasures& m = r.measures;
    std::string text =
        inputName(r.nearFile) + format(": %.2f s, %d Hz, %s engine, %s, tail %g ms\n", r.seconds(), r.nearRate,
                                       engineName(r.settings), isFixedPoint(r.settings) ? "fixed point" : "floating point",
                                       r.settings.tailMs);
    text += "  active levels     far " + levelText(m.farLevel) + ", near " + levelText(m.nearLevel) + ", output " +
            levelText(m.outLevel) + '\n';
    text += m.bulkDelayMs
                ? format("  bulk delay        %.1f ms\n", *m.bulkDelayMs)
                : format("  bulk delay        no echo found that begins within %.0f ms\n", r.settings.maxBulkDelayMs);
    text += "  ERLE              " + (m.steadyErle ? decibels(*m.steadyErle, "dB") : std::string("-")) +
            " over the second half, where there is echo alone\n";
    if (suppresses(r.settings))
        text += "  with suppressor   " + (m.steadyErleOfOutput ? decibels(*m.steadyErleOfOutput, "dB") : std::string("-")) +
                ", of the output\n";
    text += m.convergence
                ? format("  convergence       %.0f dB after %.2f s of far-end speech\n", kConvergedErle, *m.convergence)
                : format("  convergence       %.0f dB not reached\n", kConvergedErle);
    text += overTimeText(m.erle);
    text += format("  double talk       %.1f s", m.doubleTalkSeconds);
    if (m.doubleTalkChange) text += ", there the output is " + format("%+.1f dB", *m.doubleTalkChange) + " to the near end";
    text += '\n';
    if (m.toneSeconds > 0) text += format("  modem             off for %.1f s after its answer tone\n", m.toneSeconds);
    text += format("  speed             %.0f x real time\n", r.timesRealTime());
    text += "written: " + outputName(r.outFile) +
            format(" (%d Hz, %zu samples)\n", r.settings.samplingRate, std::size_t(r.samples));
    if (!r.plotFile.empty()) text += "plot: " + r.plotFile + '\n';
    return text;
}

Json toJson(const EchoReport& r) {
    const EchoMeasures& m = r.measures;
    Json erle = Json::array();
    for (const ErlePoint& point : m.erle)
        erle.append({{"time_s", number(point.seconds)}, {"erle_db", numberOrNull(point.erle)}});
    return {
        {"far", {{"file", r.farFile}, {"active_level_dbov", levelJson(m.farLevel)}}},
        {"near", {{"file", r.nearFile}, {"active_level_dbov", levelJson(m.nearLevel)}}},
        {"output",
         {{"file", r.outFile},
          {"rate_hz", r.settings.samplingRate},
          {"samples", std::size_t(r.samples)},
          {"duration_s", number(r.seconds())},
          {"active_level_dbov", levelJson(m.outLevel)}}},
        {"plot", nameOrNull(r.plotFile)},
        {"settings",
         {{"engine", engineName(r.settings)},
          {"fixed_point", isFixedPoint(r.settings)},
          {"suppression", suppresses(r.settings)},
          {"tail_ms", r.settings.tailMs},
          {"max_bulk_delay_ms", r.settings.maxBulkDelayMs}}},
        {"bulk_delay_ms", numberOrNull(m.bulkDelayMs)},
        {"erle_db", numberOrNull(m.steadyErle)},
        {"erle_of_output_db", numberOrNull(m.steadyErleOfOutput)},
        {"convergence_to_20_db_s", numberOrNull(m.convergence)},
        {"double_talk", {{"seconds", number(m.doubleTalkSeconds)}, {"level_change_db", numberOrNull(m.doubleTalkChange)}}},
        {"tone_disabled_s", number(m.toneSeconds)},
        {"times_real_time", number(r.timesRealTime())},
        {"erle_over_time", erle}};
}
