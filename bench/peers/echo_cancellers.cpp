// Echo cancellers on recorded speech: how much echo they remove, how they bear double talk, and what they cost.
//
//     vspsc_bench_echo_cancellers [--cost] FOLDER [CANCELLER...]
//
// FOLDER holds the telephone prompts of Debian's package asterisk-core-sounds-en-wav. The limit is the ERLE of a canceller
// that knows the echo path and leaves nothing but the noise; only webrtc's passes it, which also suppresses what is left,
// near-end speech included. --cost: only what they cost.
#include <time.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <map>

#include "echo_adapters.h"
#include "echo_measures.h"
#include "echo_scenario.h"
#include "program.h"

namespace {

using namespace echo;

constexpr double kSeconds = 60, kTail = 256;  // of the recording; ms
constexpr double kStartOfNear = 30;           // s, in the double-talk run

// s from the first far-end speech until the ERLE over a quarter of a second of speech is 20 dB; NaN if it never is.
double timeTo20dB(const Scenario& s, const Signal& out) {
    constexpr std::size_t kWindow = kRate / 4, kStep = kRate / 100;
    const double far = power(s.far.data(), s.far.size());
    std::size_t begin = 0;
    while (power(s.far.data() + begin, kStep) < 0.01 * far) begin += kStep;
    for (std::size_t start = begin; start + kWindow <= out.size(); start += kStep) {
        if (power(s.far.data() + start, kWindow) < 0.1 * far) continue;
        if (power(s.near.data() + start, kWindow) >= 100 * power(out.data() + start, kWindow))
            return static_cast<double>(start + kWindow - begin) / kRate;
    }
    return std::numeric_limits<double>::quiet_NaN();
}

struct Quality {
    double limit, steady, timeTo20, removed, snr;  // dB, dB, s, dB, dB
};

Quality measure(Adapter& canceller, const Path& path, const Signal& far, const Signal& nearSpeech) {
    const std::size_t half = far.size() / 2;
    Quality q;
    const Scenario single = makeScenario(path, far, nearSpeech, kSeconds);
    const Signal alone = canceller.process(single.far, single.near);
    q.limit = decibels(power(single.near.data() + half, half) / power(single.noise.data() + half, half));
    q.steady = decibels(power(single.near.data() + half, half) / residual(alone, single.nearSpeech, half, far.size()));
    q.timeTo20 = timeTo20dB(single, alone);

    const Scenario both = makeScenario(path, far, nearSpeech, kStartOfNear);
    const Signal out = canceller.process(both.far, both.near);
    Signal kept(out.size());
    for (std::size_t n = 0; n < kept.size(); n++) kept[n] = both.nearSpeech[n] + both.noise[n];
    q.removed = decibels(power(both.echo.data() + half, half) / residual(out, kept, half, far.size()));
    q.snr = decibels(power(both.nearSpeech.data() + half, half) / residual(out, both.nearSpeech, half, far.size()));
    return q;
}

void compareQuality(const std::vector<std::string>& names, const Signal& far, const Signal& nearSpeech) {
    std::printf("%77s\n%-16s %-22s %7s %8s %8s %9s %8s\n", "in double talk", "canceller", "path", "limit", "ERLE/dB",
                "20 dB/s", "echo/dB", "SNR/dB");
    for (const Path& path : eightPaths())
        for (const std::string& name : names) {
            const Quality q = measure(*makeAdapter(name, kTail), path, far, nearSpeech);
            std::printf("%-16s %s %3.0f ms, ERL %2.0f dB  %7.2f %8.2f %8.2f %9.1f %8.1f\n", name.c_str(),
                        path.hybrid.c_str(), path.lengthMs, path.erl, q.limit, q.steady, q.timeTo20, q.removed, q.snr);
            std::fflush(stdout);
        }
}

double cpuSeconds() {
    timespec t;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return double(t.tv_sec) + 1e-9 * double(t.tv_nsec);
}

void compareSpeed(const std::vector<std::string>& names, const Scenario& s) {
    constexpr int kRounds = 7;
    std::map<std::string, double> best;
    for (int round = 0; round < kRounds; round++)
        for (const std::string& name : names) {
            const auto canceller = makeAdapter(name, kTail);
            const double start = cpuSeconds();
            canceller->process(s.far, s.near);
            const double took = cpuSeconds() - start;
            best[name] = round == 0 ? took : std::min(best[name], took);
        }
    std::printf("\nCPU time per second of audio, tail %.0f ms (webrtc: its own, 128 ms), best of %d interleaved rounds\n",
                kTail, kRounds);
    for (const std::string& name : names)
        std::printf("%-16s %8.3f ms   %6.2f x %s\n", name.c_str(), 1000 * best[name] / (double(s.far.size()) / kRate),
                    best[name] / best[names[0]], names[0].c_str());
}

std::vector<std::string> inFolder(const std::string& folder, std::vector<std::string> names) {
    for (std::string& name : names) name = folder + "/" + name + ".wav";
    return names;
}

int run(int argc, char** argv) {
    const bool onlyCost = argc > 1 && std::string(argv[1]) == "--cost";
    if (onlyCost) argc--, argv++;
    if (argc < 2) {
        std::fprintf(stderr, "usage: vspsc_bench_echo_cancellers [--cost] FOLDER [CANCELLER...]\n");
        return 2;
    }
    std::vector<std::string> names(argv + 2, argv + argc);
    if (names.empty())
        names = {"subband", "subband-bare", "subband-fixed", "fullband", "fullband-fixed", "speexdsp", "webrtc"};
    const Signal far = recordedSpeech(inFolder(argv[1], {"demo-congrats", "demo-moreinfo", "demo-abouttotry"}), kSeconds);
    const Signal nearSpeech = recordedSpeech(inFolder(argv[1], {"demo-instruct"}), kSeconds);

    if (!onlyCost) compareQuality(names, far, nearSpeech);
    compareSpeed(names, makeScenario(eightPaths()[3], far, nearSpeech, kStartOfNear));
    return 0;
}

}  // namespace

int main(int argc, char** argv) { return runProgram(run, argc, argv); }
