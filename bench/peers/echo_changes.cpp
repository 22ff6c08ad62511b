// How fast an echo canceller follows a path that changes in mid-call, 20 s after its beginning.
//
//     vspsc_bench_echo_changes FOLDER [CANCELLER...]
//
// FOLDER and CANCELLER as for vspsc_bench_echo_cancellers. Three changes: the same path 20 ms later and 6 dB louder, that
// path back to the first one, and an echo by another hybrid with a tenth of the echo's power that comes to it. Given are
// the seconds after which 20 dB are removed again over a quarter of a second of speech: of the third change, a tenth is
// left then.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

#include "echo_adapters.h"
#include "echo_scenario.h"
#include "program.h"

namespace {

using namespace echo;

constexpr double kSeconds = 45, kTail = 256;
constexpr std::size_t kChange = 20 * kRate;

Signal with(const Signal& before, const Signal& after) {
    Signal x = before;
    std::copy(after.begin() + kChange, after.end(), x.begin() + kChange);
    return x;
}

double timeTo20dB(const Signal& far, const Signal& echo, const Signal& left) {
    constexpr std::size_t kWindow = kRate / 4, kStep = kRate / 100;
    const double quiet = 0.1 * power(far.data(), far.size());
    for (std::size_t start = kChange; start + kWindow <= left.size(); start += kStep) {
        if (power(far.data() + start, kWindow) < quiet) continue;
        if (power(echo.data() + start, kWindow) >= 100 * power(left.data() + start, kWindow))
            return static_cast<double>(start + kWindow - kChange) / kRate;
    }
    return std::numeric_limits<double>::quiet_NaN();
}

Signal sum(const Signal& a, const Signal& b, float gain) {
    Signal y(a);
    for (std::size_t n = 0; n < y.size(); n++) y[n] += gain * b[n];
    return y;
}

Signal rounded(Signal x) {
    for (float& v : x) v = std::clamp(std::rint(v), -32768.0f, 32767.0f);
    return x;
}

int run(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s FOLDER [CANCELLER...]\n", argv[0]);
        return 2;
    }
    std::vector<std::string> names(argv + 2, argv + argc);
    if (names.empty()) names = {"subband", "subband-fixed", "speexdsp", "webrtc"};
    const std::string folder = std::string(argv[1]) + "/";
    const Signal far = recordedSpeech({folder + "demo-congrats.wav", folder + "demo-moreinfo.wav"}, kSeconds);
    const Signal silence(far.size()), noise = whiteNoise(far.size(), kNoiseDbov);
    std::printf("%-16s %-22s %12s %8s %10s\n", "canceller", "path", "later, louder", "back", "a tenth");
    const std::vector<Path> paths = eightPaths();
    for (std::size_t i = 0; i < paths.size(); i++) {
        Path later = paths[i], other = paths[i];
        later.delayMs += 20, later.lengthMs += 20, later.erl -= 6;
        other.hybrid = paths[(i + 1) % paths.size()].hybrid;
        const auto echoBy = [&](const Path& path) { return makeScenario(path, far, silence, kSeconds).echo; };
        const Signal before = echoBy(paths[i]), moved = echoBy(later), more = echoBy(other);
        const float tenth = std::sqrt(0.1f);
        for (const std::string& name : names) {
            const auto canceller = makeAdapter(name, kTail);
            const auto left = [&](const Signal& echo) { return canceller->process(far, rounded(sum(echo, noise, 1))); };
            const Signal there = with(before, moved), back = with(moved, before);
            Signal added = with(silence, more);
            for (float& v : added) v *= tenth;
            const Signal grown = sum(before, added, 1);
            std::printf("%-16s %s %3.0f ms, ERL %2.0f dB %12.2f %8.2f %10.2f\n", name.c_str(), paths[i].hybrid.c_str(),
                        paths[i].lengthMs, paths[i].erl, timeTo20dB(far, there, left(there)),
                        timeTo20dB(far, back, left(back)), timeTo20dB(far, grown, left(grown)));
            std::fflush(stdout);
        }
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) { return runProgram(run, argc, argv); }
