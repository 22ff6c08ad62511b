// vsps g168: the tests of ITU-T G.168 on the voice layer's echo canceller.
#include <algorithm>
#include <iostream>
#include <memory>

#include "commands.h"
#include "console/progress.h"
#include "console/report_format.h"
#include "console/stopwatch.h"
#include "g168/g168_report.h"
#include "simulate_echo/g168_paths.h"

namespace {

struct Options {
    std::vector<std::string> paths, tests;
    std::string engine = "subband";
    VspvEchoSettings canceller = echoSettings(kRate);
    double echoReturnLoss = 6, delay = 0;
    bool fixedPoint = false, json = false;
};

std::vector<std::string> allPaths() {
    std::vector<std::string> names;
    for (const G168Path& path : g168Paths()) names.emplace_back(path.name);
    return names;
}

std::vector<const G168Test*> chosenTests(const Options& o) {
    std::vector<const G168Test*> chosen;
    for (const G168Test& test : g168Tests()) {
        const bool wanted = o.tests.empty() || std::find(o.tests.begin(), o.tests.end(), test.clause) != o.tests.end();
        if (wanted && (!test.suppresses || o.engine == "subband")) chosen.push_back(&test);
    }
    return chosen;
}

std::vector<std::string> clauses() {
    std::vector<std::string> names;
    for (const G168Test& test : g168Tests())
        if (names.empty() || names.back() != test.clause) names.emplace_back(test.clause);
    return names;
}

// The path that one changes to is the next one of the models.
std::string pathAfter(const std::string& name) {
    const std::vector<std::string> all = allPaths();
    const auto found = std::find(all.begin(), all.end(), name);
    return found == all.end() || found + 1 == all.end() ? all.front() : *(found + 1);
}

void runG168(Options& o) {
    const Stopwatch stopwatch;
    o.canceller.engine = o.engine == "subband" ? vspvEchoSubband : vspvEchoFullband;
    o.canceller.arithmetic = o.fixedPoint ? vspvEchoFixed : vspvEchoFloat;
    if (o.paths.empty()) o.paths = allPaths();
    const std::vector<const G168Test*> tests = chosenTests(o);
    G168Report report{o.canceller, o.echoReturnLoss, o.delay, o.paths, {}, 0};
    Progress progress("testing", tests.size() * o.paths.size());
    for (const G168Test* test : tests) {
        G168Result result{test, {}};
        for (const std::string& path : o.paths) {
            result.measured.push_back(test->measure({path, pathAfter(path), o.echoReturnLoss, o.delay, o.canceller}));
            progress.advance(1);
        }
        report.results.push_back(result);
    }
    report.elapsedSeconds = stopwatch.seconds();
    std::cout << (o.json ? toJson(report).text() : toText(report));
}

}  // namespace

void addG168(CommandLine& vsps) {
    Command command = vsps.add("g168", "Tests the echo canceller in the manner of ITU-T G.168.");
    const auto o = std::make_shared<Options>();
    command
        .option("--path", o->paths,
                "Echo paths: models of ITU-T G.168 Annex D, or files as for simulate-echo; else all models")
        .takes("d2..d9|FILE...");
    command.option("--test", o->tests, "Only these tests").takes("TEST...").oneOf(clauses());
    command.option("--erl", o->echoReturnLoss, "Echo return loss").takes("dB").within(0, 30).showDefault();
    command.option("--delay", o->delay, "Delay of the echo besides that of the path")
        .takes("ms")
        .within(0, 900)
        .showDefault();
    command.option("--tail", o->canceller.tailMs, "Longest echo path that can be cancelled")
        .takes("ms")
        .within(1, 500)
        .showDefault();
    command.option("--engine", o->engine, "The canceller's, as for echo")
        .takes("subband|fullband")
        .oneOf({"subband", "fullband"})
        .showDefault();
    command.flag("--fixed", o->fixedPoint, "Use the fixed-point functions of the library");
    command.flag("--json", o->json, "Print a JSON object instead of text");
    command.footer(
        "The numbers are those of the tests in clause 6; tone: the tone disabler, clause 7. 2A has the suppressor on, all\n"
        "others have it off. Combined loss is the level of the far end over that of what comes back. The source is a\n"
        "composite one in the manner of ITU-T P.501 at -10 dBm0 where nothing else is said. This is no test of "
        "conformance:\n"
        "docs/g168.md says in what it deviates from the Recommendation, and where the limits are from.\n\n"
        "Examples:\n"
        "  vsps g168\n"
        "  vsps g168 --path d5 --test 2B 3B --fixed\n"
        "  vsps g168 --path room.wav --tail 256 --erl 10 --json");
    command.run([o] { runG168(*o); });
}
