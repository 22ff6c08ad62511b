#include "g168/g168_report.h"

#include <cmath>
#include <numeric>

#include "console/report_format.h"

namespace {

const char* engineName(const VspvEchoSettings& c) { return c.engine == vspvEchoSubband ? "subband" : "fullband"; }

std::string limitText(const G168Test& t) {
    if (!std::isfinite(t.most)) return format(">= %g %s", t.least, t.unit);
    if (!std::isfinite(t.least) || t.least == t.most || t.least == 0) return format("<= %g %s", t.most, t.unit);
    return format("%g to %g %s", t.least, t.most, t.unit);
}

std::string row(const G168Result& r) {
    const G168Test& t = *r.test;
    std::string text =
        format("%-4s  %-42s %-12s%c", t.clause, t.what, limitText(t).c_str(), t.origin == Origin::ours ? '*' : ' ');
    for (const double value : r.measured)
        text += format("  %s %6.*f", t.passes(value) ? "PASS" : "FAIL", t.unit[0] == 's' ? 2 : 1, value);
    return text + '\n';
}

int countPassed(const G168Result& r) {
    return std::accumulate(r.measured.begin(), r.measured.end(), 0, [&](int n, double v) { return n + r.test->passes(v); });
}

}  // namespace

std::string toText(const G168Report& r) {
    std::string text =
        format("%s engine, %s, tail %g ms, echo return loss %g dB, delay %g ms, 8000 Hz\n", engineName(r.canceller),
               r.canceller.arithmetic == vspvEchoFixed ? "fixed point" : "floating point", r.canceller.tailMs,
               r.echoReturnLoss, r.delay);
    text += format("%-4s  %-42s %-13s", "test", "", "limit");
    for (const std::string& path : r.paths) text += format("  %11s", path.c_str());
    text += '\n';
    std::size_t passed = 0, all = 0;
    for (const G168Result& result : r.results) {
        text += row(result);
        passed += std::size_t(countPassed(result));
        all += result.measured.size();
    }
    text += format("%zu of %zu passed in %.1f s; *: a limit of our own\n", passed, all, r.elapsedSeconds);
    return text;
}

Json toJson(const G168Report& r) {
    Json results = Json::array();
    for (const G168Result& result : r.results) {
        const G168Test& t = *result.test;
        Json paths = Json::array();
        for (std::size_t i = 0; i < r.paths.size(); i++)
            paths.append(
                {{"path", r.paths[i]}, {"measured", number(result.measured[i])}, {"passed", t.passes(result.measured[i])}});
        results.append({{"test", t.clause},
                        {"what", t.what},
                        {"unit", t.unit},
                        {"least", number(t.least)},
                        {"most", number(t.most)},
                        {"limit_of_our_own", t.origin == Origin::ours},
                        {"suppression", t.suppresses},
                        {"paths", paths}});
    }
    return {{"settings",
             {{"engine", engineName(r.canceller)},
              {"fixed_point", r.canceller.arithmetic == vspvEchoFixed},
              {"tail_ms", number(r.canceller.tailMs)},
              {"erl_db", number(r.echoReturnLoss)},
              {"delay_ms", number(r.delay)}}},
            {"results", results}};
}
