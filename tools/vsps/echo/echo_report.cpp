#include "echo/echo_report.h"

#include <algorithm>
#include <cmath>

#include "console/report_format.h"

namespace {

using Frames = std::vector<EchoFrame>;

constexpr double kFrameSeconds = double(kEchoFrame) / kRate;
constexpr double kConverged = 20;         // dB
constexpr double kSettlingSeconds = 0.2;  // over which an enhancement counts as reached

double decibelsOf(double numerator, double denominator) {
    return 10 * std::log10(std::max(numerator, 1.0) / std::max(denominator, 1.0));
}

// Over the frames of a range that measure it.
template <typename Iterator>
std::optional<double> erleOf(Iterator begin, Iterator end) {
    double near = 0, out = 0;
    bool any = false;
    for (; begin != end; ++begin)
        if (begin->measuresCancelling()) {
            near += begin->nearPower;
            out += begin->outPower;
            any = true;
        }
    return any ? std::optional(decibelsOf(near, out)) : std::nullopt;
}

// Seconds of far-end speech until the enhancement over the last frames with echo alone reaches the goal.
std::optional<double> timeToConverge(const Frames& frames) {
    constexpr std::size_t kWindow = std::size_t(kSettlingSeconds / kFrameSeconds);
    Frames echo;
    int speech = 0;
    for (const EchoFrame& f : frames) {
        speech += f.status.farActive;
        if (!f.measuresCancelling()) continue;
        echo.push_back(f);
        if (echo.size() >= kWindow && *erleOf(echo.end() - std::ptrdiff_t(kWindow), echo.end()) >= kConverged)
            return speech * kFrameSeconds;
    }
    return {};
}

template <typename Condition>
double secondsWith(const Frames& frames, Condition condition) {
    return kFrameSeconds * double(std::count_if(frames.begin(), frames.end(), condition));
}

std::string levelText(const std::optional<ActiveLevel>& level) { return level ? decibels(level->dbov, "dBov") : "-"; }
Json levelJson(const std::optional<ActiveLevel>& level) { return level ? number(level->dbov) : Json(nullptr); }
Json numberOrNull(const std::optional<double>& value) { return value ? number(*value) : Json(nullptr); }

const char* engineName(EchoEngine engine) { return engine == EchoEngine::subband ? "subband" : "fullband"; }

// The enhancement at up to so many times, spread over the recording.
std::string overTimeText(const EchoReport& r) {
    constexpr std::size_t kColumns = 8;
    const std::size_t step = (r.erle.size() + kColumns - 1) / kColumns;
    std::string times, values;
    for (std::size_t i = 0; i < r.erle.size(); i += step) {
        const auto last = r.erle.begin() + std::ptrdiff_t(std::min(i + step, r.erle.size()));
        double sum = 0;
        int count = 0;
        for (auto point = r.erle.begin() + std::ptrdiff_t(i); point != last; ++point)
            if (point->erle) {
                sum += *point->erle;
                count++;
            }
        times += format(" %7.1f", (r.erle[i].seconds + (last - 1)->seconds) / 2);
        values += count > 0 ? format(" %7.1f", sum / count) : format(" %7s", "-");
    }
    return "  at second         " + times + "\n  ERLE, dB          " + values + '\n';
}

}  // namespace

std::vector<ErlePoint> erleOverTime(const Frames& frames, double stretchSeconds) {
    const auto stretch = std::max(std::ptrdiff_t(1), std::ptrdiff_t(std::lround(stretchSeconds / kFrameSeconds)));
    std::vector<ErlePoint> points;
    for (auto begin = frames.begin(); begin != frames.end();) {
        const auto end = begin + std::min(stretch, frames.end() - begin);
        points.push_back({double(begin - frames.begin() + (end - frames.begin())) / 2 * kFrameSeconds, erleOf(begin, end)});
        begin = end;
    }
    return points;
}

void measureEcho(const Samples& far, const Samples& near, const EchoRun& run, EchoReport& r) {
    r.samples = near.size();
    r.cancelSeconds = run.seconds;
    r.farLevel = activeLevel(far);
    r.nearLevel = activeLevel(near);
    r.outLevel = activeLevel(run.out);
    r.bulkDelayMs = run.frames.back().status.bulkDelayMs;
    r.steadyErle = erleOf(run.frames.begin() + std::ptrdiff_t(run.frames.size() / 2), run.frames.end());
    r.convergence = timeToConverge(run.frames);
    r.erle = erleOverTime(run.frames, 0.5);
    r.doubleTalkSeconds = secondsWith(run.frames, [](const EchoFrame& f) { return f.status.doubleTalk; });
    r.toneSeconds = secondsWith(run.frames, [](const EchoFrame& f) { return f.status.toneDisabled; });
    double nearPower = 0, outPower = 0;
    for (const EchoFrame& f : run.frames)
        if (f.status.doubleTalk) {
            nearPower += f.nearPower;
            outPower += f.outPower;
        }
    if (r.doubleTalkSeconds > 0) r.doubleTalkChange = decibelsOf(outPower, nearPower);
}

std::string toText(const EchoReport& r) {
    std::string text =
        r.nearFile + format(": %.2f s, %s engine, %s, tail %g ms\n", r.seconds(), engineName(r.settings.engine),
                            r.settings.fixedPoint ? "fixed point" : "floating point", r.settings.tailMs);
    text += "  active levels     far " + levelText(r.farLevel) + ", near " + levelText(r.nearLevel) + ", output " +
            levelText(r.outLevel) + '\n';
    text += format("  bulk delay        %.1f ms\n", r.bulkDelayMs);
    text += "  ERLE              " + (r.steadyErle ? decibels(*r.steadyErle, "dB") : std::string("-")) +
            " over the second half, where there is echo alone\n";
    text += r.convergence
                ? format("  convergence       %.0f dB after %.2f s of far-end speech\n", kConverged, *r.convergence)
                : format("  convergence       %.0f dB not reached\n", kConverged);
    text += overTimeText(r);
    text += format("  double talk       %.1f s", r.doubleTalkSeconds);
    if (r.doubleTalkChange) text += ", there the output is " + format("%+.1f dB", *r.doubleTalkChange) + " to the near end";
    text += '\n';
    if (r.toneSeconds > 0) text += format("  modem             off for %.1f s after its answer tone\n", r.toneSeconds);
    text += format("  speed             %.0f x real time\n", r.timesRealTime());
    text += "written: " + r.outFile + format(" (%d Hz, %zu samples)\n", kRate, r.samples);
    if (!r.plotFile.empty()) text += "plot: " + r.plotFile + '\n';
    return text;
}

Json toJson(const EchoReport& r) {
    Json erle = Json::array();
    for (const ErlePoint& point : r.erle)
        erle.append({{"time_s", number(point.seconds)}, {"erle_db", numberOrNull(point.erle)}});
    return {
        {"far", {{"file", r.farFile}, {"active_level_dbov", levelJson(r.farLevel)}}},
        {"near", {{"file", r.nearFile}, {"active_level_dbov", levelJson(r.nearLevel)}}},
        {"output",
         {{"file", r.outFile},
          {"rate_hz", kRate},
          {"samples", r.samples},
          {"duration_s", number(r.seconds())},
          {"active_level_dbov", levelJson(r.outLevel)}}},
        {"plot", nameOrNull(r.plotFile)},
        {"settings",
         {{"engine", engineName(r.settings.engine)},
          {"fixed_point", r.settings.fixedPoint},
          {"tail_ms", r.settings.tailMs}}},
        {"bulk_delay_ms", number(r.bulkDelayMs)},
        {"erle_db", numberOrNull(r.steadyErle)},
        {"convergence_to_20_db_s", numberOrNull(r.convergence)},
        {"double_talk", {{"seconds", number(r.doubleTalkSeconds)}, {"level_change_db", numberOrNull(r.doubleTalkChange)}}},
        {"tone_disabled_s", number(r.toneSeconds)},
        {"times_real_time", number(r.timesRealTime())},
        {"erle_over_time", erle}};
}
