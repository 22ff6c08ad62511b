// The two promises of an echo canceller besides removing echo, over many lines: no line without echo gets louder, and
// double talk is called where both talk and nowhere else.
//
//     vspsc_bench_echo_sweep FOLDER [louder|talk] [CANCELLER...]
//
// FOLDER and CANCELLER as for vspsc_bench_echo_cancellers; a CANCELLER with a slash in it is a program that is called as
// examples/subband_filter is.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <numbers>
#include <random>

#include "echo/double_talk.h"
#include "echo_adapters.h"
#include "echo_scenario.h"
#include "program.h"

namespace {

using namespace echo;
using echo::kRate;

constexpr std::size_t kEchoFrame = kRate / kEchoFramesPerSecond;
constexpr double kNone = -std::numeric_limits<double>::infinity();

struct Named {
    std::string name;
    Signal signal;
};

Signal inLoudness(Signal x, double dbov) {
    scale(x, dbov - activeDbov(x));
    return x;
}

Signal rounded(Signal x) {
    for (float& v : x) v = std::clamp(std::rint(v), -32768.0f, 32767.0f);
    return x;
}

Signal sine(std::size_t length, double hertz, double dbov, int harmonics = 1) {
    Signal x(length);
    const double amplitude = 32768 * std::pow(10, dbov / 20) * std::numbers::sqrt2;
    for (std::size_t n = 0; n < length; n++)
        for (int h = 1; h <= harmonics; h++)
            x[n] += static_cast<float>(amplitude / h * std::sin(2 * std::numbers::pi * hertz * h * double(n) / kRate));
    return x;
}

Signal plus(Signal x, const Signal& y) {
    for (std::size_t n = 0; n < x.size(); n++) x[n] += y[n];
    return x;
}

Signal dither(std::size_t length, int from, int to) {
    std::mt19937 random(9);
    Signal x(length);
    for (float& v : x) v = static_cast<float>(from + static_cast<int>(random() % static_cast<unsigned>(to - from + 1)));
    return x;
}

std::vector<Named> farEnds(const Signal& speech) {
    const std::size_t n = speech.size();
    return {{"speech -20", rounded(inLoudness(speech, -20))},
            {"speech -9", rounded(inLoudness(speech, -9))},
            {"speech -40", rounded(inLoudness(speech, -40))},
            {"noise -25", rounded(whiteNoise(n, -25, 6))},
            {"hum -30", rounded(sine(n, 50, -30, 3))}};
}

std::vector<Named> linesWithoutEcho(const Signal& talker) {
    const std::size_t n = talker.size();
    Signal click(n), pauses = inLoudness(talker, -26);
    for (std::size_t i = kRate; i < n; i += 2 * kRate) click[i] = 20000;
    for (std::size_t i = 0; i < n; i++)
        if (i / kRate % 4 < 2) pauses[i] = 0;
    return {{"silence", Signal(n)},
            {"dither 0..1", dither(n, 0, 1)},
            {"dither +-1", dither(n, -1, 1)},
            {"noise -85", rounded(whiteNoise(n, -85))},
            {"noise -72.7", rounded(whiteNoise(n, -72.7))},
            {"noise -50", rounded(whiteNoise(n, -50))},
            {"noise -30", rounded(plus(whiteNoise(n, -30), dither(n, -1, 1)))},
            {"constant 100", Signal(n, 100.0f)},
            {"hum -40", rounded(sine(n, 50, -40, 5))},
            {"hum -65, noise -75", rounded(plus(sine(n, 60, -65, 3), whiteNoise(n, -75)))},
            {"clicks", plus(click, rounded(whiteNoise(n, -75)))},
            {"talker -26", rounded(inLoudness(talker, -26))},
            {"talker -9", rounded(inLoudness(talker, -9))},
            {"talker -45, noise -70", rounded(plus(inLoudness(talker, -45), whiteNoise(n, -70)))},
            {"talker -26, dither", plus(rounded(inLoudness(talker, -26)), dither(n, -1, 1))},
            {"talker with pauses", rounded(pauses)}};
}

struct Louder {
    double decibels, seconds;  // at most, over a window that ends then
};

// How much the output is above the near end over a tenth of a second, at most; both with the noise of rounding besides.
Louder louder(const Signal& near, const Signal& out) {
    constexpr std::size_t kWindow = kRate / 10;
    constexpr double kRounding = 1.0 / 12;  // power
    double before = 0, after = 0;
    Louder worst{kNone, 0};
    for (std::size_t n = 0; n < near.size(); n++) {
        const double o = std::rint(out[n]);
        before += double(near[n]) * near[n];
        after += o * o;
        if (n >= kWindow) {
            const double old = std::rint(out[n - kWindow]);
            before -= double(near[n - kWindow]) * near[n - kWindow];
            after -= old * old;
        }
        if (n + 1 < kWindow) continue;
        const double now = decibels((after + kRounding * kWindow) / (before + kRounding * kWindow));
        if (now > worst.decibels) worst = {now, double(n) / kRate};
    }
    return worst;
}

void lookForLouder(const std::vector<std::string>& names, const Signal& speech, const Signal& talker) {
    std::printf("the output over the near end, dB over the worst 100 ms (at second)\n%-24s %-12s", "near end", "far end");
    for (const std::string& name : names) std::printf(" %20.20s", name.c_str());
    const auto row = [&](const std::string& near, const std::string& far, const Signal& nearSignal,
                         const Signal& farSignal) {
        std::printf("\n%-24s %-12s", near.c_str(), far.c_str());
        for (const std::string& name : names) {
            const Louder l = louder(nearSignal, makeAdapter(name, 128)->process(farSignal, nearSignal));
            std::printf("     %+7.2f (%5.2f)%s", l.decibels, l.seconds, l.decibels > 1 ? "*" : " ");
            std::fflush(stdout);
        }
    };
    for (const Named& near : linesWithoutEcho(talker))
        for (const Named& far : farEnds(speech)) row(near.name, far.name, near.signal, far.signal);
    for (const Path& path : eightPaths())
        for (const double noise : {kNone, -68.0, -50.0}) {
            const Scenario s = makeScenario(path, inLoudness(speech, -20), talker, 1e9, 1e9, 0, noise);
            char name[40];
            std::snprintf(name, sizeof name, "echo %s, noise %.0f", path.hybrid.c_str(), noise);
            row(name, "speech -20", s.near, s.far);
        }
    std::printf("\n");
}

using Talk = std::vector<EchoFrame>;

Talk talk(const std::string& name, const Signal& far, const Signal& near) {
    OwnedCanceller canceller = makeCanceller(name, 128);
    DoubleTalkJoiner joiner;
    Signal out(kEchoFrame);
    for (std::size_t at = 0; at + kEchoFrame <= near.size(); at += kEchoFrame) {
        canceller.process(std::span{far.data() + at, kEchoFrame}, {near.data() + at, kEchoFrame}, out);
        joiner.add({power(far.data() + at, kEchoFrame), power(near.data() + at, kEchoFrame), 0, 0, canceller.status()});
    }
    joiner.finish();
    Talk frames;
    for (EchoFrame frame; joiner.take(frame);) frames.push_back(frame);
    return frames;
}

double share(std::size_t some, std::size_t all) { return all > 0 ? 100 * double(some) / double(all) : 0; }

// The share of the frames with far-end speech that are called double talk although nobody talks at the near end.
double calledWrongly(const Talk& t) {
    std::size_t called = 0, all = 0;
    for (const EchoFrame& f : t) {
        called += f.status.doubleTalk;
        all += f.status.farActive;
    }
    return share(called, all);
}

// The share that is called of the frames in which both are heard at comparable levels: each within 15 dB of its own active
// level, and the near-end speech at most 10 dB below the echo and not below the noise.
double found(const Talk& t, const Signal& nearSpeech, const Signal& echo, double noise) {
    const double quietest = std::pow(10, -1.5) * 32768 * 32768;
    const double quietTalk = quietest * std::pow(10, activeDbov(nearSpeech) / 10);
    const double quietEcho = quietest * std::pow(10, activeDbov(echo) / 10);
    std::size_t called = 0, all = 0;
    for (std::size_t i = 0; i < t.size(); i++) {
        const double talking = power(nearSpeech.data() + i * kEchoFrame, kEchoFrame);
        const double echoing = power(echo.data() + i * kEchoFrame, kEchoFrame);
        if (talking < quietTalk || echoing < quietEcho || talking < 0.1 * echoing || talking < noise) continue;
        called += t[i].status.doubleTalk;
        all++;
    }
    return share(called, all);
}

void lookForDoubleTalk(const std::vector<std::string>& names, const Signal& speech, const Signal& talker) {
    std::printf("%-16s %4s %8s %10s   %s\n", "canceller", "path", "ERL", "noise",
                "% wrong; % found with the talker at -6, 0, +10 dB to the echo, from 8 s on; 0 dB from the start");
    const Signal far = rounded(inLoudness(speech, -20));
    for (const std::string& name : names) {
        double mostWrong = 0, leastFound = 100;
        for (Path path : eightPaths())
            for (const double erl : {0.0, 6.0, 12.0, 20.0})
                for (const double noise : {kNone, -68.0, -50.0}) {
                    path.erl = erl;
                    const Scenario s = makeScenario(path, far, talker, 1e9, 1e9, 0, noise);
                    const double wrong = calledWrongly(talk(name, far, s.near));
                    mostWrong = std::max(mostWrong, wrong);
                    std::printf("%-16s %4s %5.0f dB %5.0f dBov   %5.1f%s;", name.c_str(), path.hybrid.c_str(), erl, noise,
                                wrong, wrong > 2 ? "*" : " ");
                    struct {
                        double level, start;
                    } const cases[] = {{-6, 8}, {0, 8}, {10, 8}, {0, 0}};
                    for (const auto& c : cases) {
                        Signal near = inLoudness(talker, activeDbov(s.echo) + c.level);
                        std::fill_n(near.begin(), static_cast<std::size_t>(c.start * kRate), 0.0f);
                        const double f = found(talk(name, far, rounded(plus(s.near, near))), near, s.echo,
                                               power(s.noise.data(), s.noise.size()));
                        leastFound = std::min(leastFound, f);
                        std::printf(" %5.1f%s", f, f < 90 ? "*" : " ");
                    }
                    std::printf("\n");
                    std::fflush(stdout);
                }
        std::printf("%-16s at most %.1f %% called wrongly, at least %.1f %% found\n", name.c_str(), mostWrong, leastFound);
    }
}

int run(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s FOLDER [louder|talk] [CANCELLER...]\n", argv[0]);
        return 2;
    }
    std::vector<std::string> names(argv + 2, argv + argc);
    const std::string part = names.empty() || (names[0] != "louder" && names[0] != "talk") ? "" : names[0];
    if (!part.empty()) names.erase(names.begin());
    const std::string folder = std::string(argv[1]) + "/";
    constexpr double kSeconds = 20;
    const Signal speech = recordedSpeech({folder + "demo-congrats.wav"}, kSeconds);
    const Signal talker = recordedSpeech({folder + "demo-instruct.wav"}, kSeconds);
    const std::vector<std::string> all = {"subband", "subband-fixed", "fullband", "fullband-fixed"};
    if (part != "talk") lookForLouder(names.empty() ? all : names, speech, talker);
    if (part != "louder") lookForDoubleTalk(names.empty() ? all : names, speech, talker);
    return 0;
}

}  // namespace

int main(int argc, char** argv) { return runProgram(run, argc, argv); }
