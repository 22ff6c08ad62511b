// What is left of the echo after suppression, and what of near-end speech, over loudspeakers that distort and that do not.
//
//     vspsc_bench_echo_suppression FOLDER [CANCELLER...]
//
// FOLDER and CANCELLER as for vspsc_bench_echo_cancellers. A frame of 20 ms with far-end speech alone is inaudible if the
// output is at most 3 dB above the noise of the near end; at first: in the first ten seconds, else in the second half. In
// double talk, from 30 s on, the segmental SNR of the near-end speech is taken over the frames in which both talk, each
// limited to -10 .. 35 dB. The distorting loudspeaker clips softly, y = a tanh(x / a): 5 % of harmonics for a sine of the
// far end's active level; the third one does so behind a high-pass of first order at 300 Hz.
#include <cstdio>

#include "echo_adapters.h"
#include "echo_measures.h"
#include "echo_scenario.h"
#include "program.h"

namespace {

using namespace echo;

constexpr double kSeconds = 60, kTail = 256, kStartOfNear = 30;
constexpr std::size_t kAtFirst = 10 * kRate;

struct Quality {
    double atFirst, inaudible, above, segmental;  // %, %, dB above the noise on the average of frames, dB
};

Quality measure(Adapter& canceller, const Path& path, const Signal& far, const Signal& loudspeaker,
                const Signal& nearSpeech) {
    const std::size_t half = far.size() / 2;
    Quality q{};
    Scenario s = makeScenario(path, loudspeaker, nearSpeech, kSeconds);
    const Signal alone = canceller.process(far, s.near);
    const double noise = power(s.noise.data() + half, half);
    q.atFirst = residueOf(alone, far, noise, 0, kAtFirst).inaudible;
    const Residue left = residueOf(alone, far, noise, half, far.size());
    q.inaudible = left.inaudible;
    q.above = left.overNoise;

    s = makeScenario(path, loudspeaker, nearSpeech, kStartOfNear);
    q.segmental = segmentalSnr(canceller.process(far, s.near), far, s.nearSpeech, half);
    return q;
}

int run(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s FOLDER [CANCELLER...]\n", argv[0]);
        return 2;
    }
    std::vector<std::string> names(argv + 2, argv + argc);
    if (names.empty())
        names = {"subband", "subband-suppress", "subband-fixed-suppress", "speexdsp-suppress", "webrtc", "webrtc-high"};
    const auto recording = [&](const std::vector<std::string>& files) {
        std::vector<std::string> paths;
        for (const std::string& file : files) paths.push_back(std::string(argv[1]) + "/" + file + ".wav");
        return recordedSpeech(paths, kSeconds);
    };
    const Signal far = recording({"demo-congrats", "demo-moreinfo", "demo-abouttotry"});
    const Signal nearSpeech = recording({"demo-instruct"});
    const struct {
        const char* name;
        Signal sound;
    } loudspeakers[] = {
        {"linear", far}, {"5 %", played(far, Clipping::soft, 5)}, {"5 %, behind", played(far, Clipping::soft, 5, 300)}};
    std::printf("%-23s %-22s %-11s %10s %11s %13s %16s\n", "canceller", "path", "loudspeaker", "at first/%", "inaudible/%",
                "over noise/dB", "double talk/dB");
    for (const std::string& name : names)
        for (const auto& loudspeaker : loudspeakers) {
            Quality mean{};
            const auto print = [&](const std::string& where, const Quality& q) {
                std::printf("%-23s %-22s %-11s %10.1f %11.1f %13.1f %16.1f\n", name.c_str(), where.c_str(),
                            loudspeaker.name, q.atFirst, q.inaudible, q.above, q.segmental);
                std::fflush(stdout);
            };
            for (const Path& path : eightPaths()) {
                const Quality q = measure(*makeAdapter(name, kTail), path, far, loudspeaker.sound, nearSpeech);
                char where[40];
                std::snprintf(where, sizeof where, "%s %3.0f ms, ERL %2.0f dB", path.hybrid.c_str(), path.lengthMs,
                              path.erl);
                print(where, q);
                mean.atFirst += q.atFirst / 8;
                mean.inaudible += q.inaudible / 8, mean.above += q.above / 8, mean.segmental += q.segmental / 8;
            }
            print("mean", mean);
        }
    return 0;
}

}  // namespace

int main(int argc, char** argv) { return runProgram(run, argc, argv); }
