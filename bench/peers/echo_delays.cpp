// The search of the bulk delay: calls with a delay against the same calls with the delay taken out beforehand.
//
//     vspsc_bench_echo_delays ENGINE FOLDER...
//
// ENGINE is subband or fullband, with -fixed or as it is. Each FOLDER holds the telephone prompts of one of Debian's
// packages asterisk-core-sounds-{en,es,fr,it,ru}-wav; the calls take them in turn. The reference canceller knows the delay
// and does not search. Given are the enhancement of a stretch with echo alone and that of one in which both talk, each with
// the loss against the reference, and by how much the output is louder than the near end at most, over 100 ms.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "echo/owned_canceller.h"
#include "echo_scenario.h"
#include "program.h"

namespace {

using namespace echo;

constexpr double kSeconds = 60;            // of a call
constexpr double kAlone = 26, kBoth = 42;  // s where the measured stretches begin; the first ends where the second begins
constexpr float kGain = 0.4f;              // of the prompts, so that louder near-end speech is not clipped
constexpr double kLoss = 1;                // dB that the search may cost

struct Call {
    Path path;
    double tailMs;  // of the canceller
    double delayMs;
    double nearFrom, nearTo, nearDb;  // near-end speech: s, s, dB relative to the far end
    double noiseDbov;
};

std::vector<Call> allCalls() {
    const std::vector<std::pair<Path, double>> paths = {{{"d2", 0, 16, 0}, 32},     {{"d5", 0, 64, 0}, 64},
                                                        {{"d7", 0, 96, 0}, 128},    {{"d9", 20, 128, 0}, 128},
                                                        {{"room", 0, 200, 0}, 200}, {{"room", 0, 300, 0}, 300}};
    std::vector<Call> calls;
    for (const auto& [path, tail] : paths)
        for (const double delay : {0.0, 40.0, 150.0, 410.0, 700.0, 1000.0})
            for (const double erl : {0.0, 8.0, 20.0})
                for (const int talk : {0, 1, 2}) {
                    Path p = path;
                    p.erl = erl;
                    const double from[] = {kBoth, kBoth, 0}, to[] = {kSeconds, kSeconds, 10}, level[] = {0, 12, 0};
                    calls.push_back({p, tail, delay, from[talk], to[talk], level[talk], talk == 0 ? -50.0 : -68.0});
                }
    return calls;
}

struct Run {
    Signal out;
    VspvEchoStatus status;
};

Run run(const VspvEchoSettings& settings, const Signal& far, const Signal& near) {
    OwnedCanceller canceller(settings);
    const std::size_t latency = canceller.latency();
    Signal f = far, n = near;
    f.resize(far.size() + latency);
    n.resize(f.size());
    Run r{Signal(n.size()), {}};
    canceller.process(f, n, r.out);
    r.out.erase(r.out.begin(), r.out.begin() + static_cast<std::ptrdiff_t>(latency));
    r.status = canceller.status();
    return r;
}

std::size_t samples(double seconds) { return static_cast<std::size_t>(seconds * kRate); }

struct Quality {
    double alone, both, louder;  // dB
};

Quality measure(const Scenario& s, const Signal& out) {
    const auto removed = [&](double from, double to) {
        const std::size_t begin = samples(from), count = samples(to) - begin;
        Signal left(count);
        for (std::size_t n = 0; n < count; n++) left[n] = out[begin + n] - s.nearSpeech[begin + n];
        return decibels(power(s.echo.data() + begin, count) / power(left.data(), count));
    };
    constexpr std::size_t kWindow = kRate / 10, kStep = kRate / 50;
    constexpr double kInaudible = 100;  // power below which nothing is loud
    Quality q{removed(kAlone, kBoth), removed(kBoth, kSeconds), 0};
    for (std::size_t n = 0; n + kWindow <= out.size(); n += kStep)
        q.louder = std::max(q.louder, decibels((power(out.data() + n, kWindow) + kInaudible) /
                                               (power(s.near.data() + n, kWindow) + kInaudible)));
    return q;
}

int compare(const std::string& engine, const std::vector<std::string>& folders, int every) {
    VspvEchoSettings settings = echoSettings(kRate);
    settings.engine = engine.starts_with("full") ? vspvEchoFullband : vspvEchoSubband;
    settings.arithmetic = engine.ends_with("-fixed") ? vspvEchoFixed : vspvEchoFloat;
    std::vector<Signal> far, nearSpeech;
    const auto recording = [](const std::string& folder, const std::vector<std::string>& names) {
        std::vector<std::string> files;
        for (const std::string& name : names) files.push_back(folder + "/" + name + ".wav");
        Signal x = recordedSpeech(files, kSeconds);
        for (float& v : x) v *= kGain;
        return x;
    };
    for (const std::string& folder : folders) {
        far.push_back(recording(folder, {"demo-congrats", "demo-moreinfo"}));
        nearSpeech.push_back(recording(folder, {"demo-instruct"}));
    }
    std::printf("%-9s %4s %6s %7s %14s | %6s %6s %6s | %6s %6s | %6s %6s\n", "path", "ERL", "delay", "found",
                "near, from s", "alone", "loss", "", "both", "loss", "louder", "");
    int count = 0, within = 0, number = 0;
    double worstAlone = 0, worstBoth = 0, loudest = 0;
    for (const Call& c : allCalls()) {
        if (number++ % every != 0) continue;
        const std::size_t who = static_cast<std::size_t>(number) % far.size();
        const auto delay = samples(c.delayMs / 1000);
        Signal delayed(far[who]);
        std::rotate(delayed.begin(), delayed.end() - static_cast<std::ptrdiff_t>(delay), delayed.end());
        const Scenario s = makeScenario(c.path, delayed, nearSpeech[who], c.nearFrom, c.nearTo, c.nearDb, c.noiseDbov);
        settings.tailMs = c.tailMs;
        settings.maxBulkDelayMs = echoSettings(kRate).maxBulkDelayMs;
        const Run searched = run(settings, far[who], s.near);
        settings.maxBulkDelayMs = 0;
        const Quality q = measure(s, searched.out), known = measure(s, run(settings, s.far, s.near).out);
        const double alone = known.alone - q.alone, both = known.both - q.both;
        const bool good = alone < kLoss && both < kLoss;
        std::printf("%-4s %3.0f  %4.0f %6.0f %7.1f %+6.0f dB %4.0f | %6.1f %6.1f %6s | %6.1f %6.1f | %6.1f %6.1f%s\n",
                    c.path.hybrid.c_str(), c.path.lengthMs, c.path.erl, c.delayMs, searched.status.bulkDelayMs, c.nearDb,
                    c.nearFrom, q.alone, alone, "", q.both, both, q.louder, known.louder, good ? "" : "  <--");
        std::fflush(stdout);
        count++;
        within += good;
        worstAlone = std::max(worstAlone, alone);
        worstBoth = std::max(worstBoth, both);
        loudest = std::max(loudest, q.louder);
    }
    std::printf(
        "%d of %d calls within %.0f dB; worst loss %.1f dB alone, %.1f dB in double talk; output at most %.1f dB louder\n",
        within, count, kLoss, worstAlone, worstBoth, loudest);
    return 0;
}

int run(int argc, char** argv) {
    int every = 1, first = 1;
    if (argc > 3 && std::string(argv[1]).starts_with("every=")) every = std::stoi(std::string(argv[first++]).substr(6));
    if (argc < first + 2) {
        std::fprintf(stderr, "usage: %s [every=N] ENGINE FOLDER...\n", argv[0]);
        return 2;
    }
    return compare(argv[first], {argv + first + 1, argv + argc}, every);
}

}  // namespace

int main(int argc, char** argv) { return runProgram(run, argc, argv); }
