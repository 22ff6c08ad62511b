// Whole calls of 60 s, in several languages, over lines and rooms: how often which canceller is ahead.
//
//     vspsc_bench_echo_calls FOLDER FOLDER...
//
// Each FOLDER holds the telephone prompts of one language, as in Debian's packages asterisk-core-sounds-es-wav, -fr-wav,
// -it-wav and -ru-wav; in a call two languages meet. Eight paths, four lines and four dense rooms, each as it is, 150 ms
// late, with another path from 10 s on (20 ms later, echo 6 dB louder) and over a loudspeaker that clips (5 % distortion,
// hard). Nobody talks at the near end until 30 s, then both: the ERLE is that from 20 s to 30 s. Who searches the delay is
// given the length of the path, who does not its delay as well; webrtc's length is fixed.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <map>

#include "echo_adapters.h"
#include "echo_measures.h"

namespace {

using namespace echo;

constexpr double kSeconds = 60, kPathMs = 320, kLateMs = 150;
constexpr std::size_t kChange = 10 * kRate, kSteady = 20 * kRate, kTalk = 30 * kRate;
constexpr double kMuchBetter = 10;  // dB

enum Condition { asItIs, late, changing, clipping };
constexpr const char* kConditions[] = {"", "late", "changing", "clipping"};

std::vector<Path> paths() {
    return {{"d2", 0, 16, 6},   {"d4", 16, 48, 10},   {"d6", 30, 80, 12},  {"d9", 70, 128, 16},
            {"room", 0, 64, 6}, {"room", 0, 128, 10}, {"room", 0, 200, 6}, {"room", 0, 300, 10}};
}

// From another place in the recordings in each call.
Signal speech(const std::string& folder, const std::vector<std::string>& names, std::size_t call) {
    std::vector<std::string> files;
    for (const std::string& name : names) files.push_back(folder + "/" + name + ".wav");
    const auto skipped = static_cast<std::ptrdiff_t>(call * kRate);
    const Signal all = recordedSpeech(files, kSeconds + double(call));
    Signal x(all.begin() + skipped, all.end());
    scale(x, -20 - activeDbov(x));
    for (float& v : x) v = std::clamp(std::rint(v), -32768.0f, 32767.0f);
    return x;
}

Scenario makeCall(Path path, Condition condition, const Signal& far, const Signal& talker) {
    if (condition == late) path.delayMs += kLateMs, path.lengthMs += kLateMs;
    const auto through = [&](const Path& p) {
        return makeScenario(p, condition == clipping ? played(far, Clipping::hard, 5) : far, talker, double(kTalk) / kRate);
    };
    Scenario call = through(path);
    if (condition == changing) {
        path.delayMs += 20, path.lengthMs += 20, path.erl -= 6;
        const Scenario changed = through(path);
        for (auto part : {&Scenario::near, &Scenario::echo, &Scenario::noise})
            std::copy((changed.*part).begin() + kChange, (changed.*part).end(), (call.*part).begin() + kChange);
    }
    call.far = far;
    return call;
}

struct Quality {
    double erle, snr;  // dB, in double talk
    Residue left;      // of the echo alone
    double segmental;  // dB, SNR in double talk
};

Quality measure(const std::string& name, const Scenario& call, double pathMs) {
    const Signal out = makeAdapter(name, pathMs)->process(call.far, call.near);
    const double before = power(call.near.data() + kSteady, kTalk - kSteady);
    const double talk = power(call.nearSpeech.data() + kTalk, out.size() - kTalk);
    return {decibels(before / residual(out, call.nearSpeech, kSteady, kTalk)),
            decibels(talk / residual(out, call.nearSpeech, kTalk, out.size())),
            residueOf(out, call.far, power(call.noise.data() + kSteady, kTalk - kSteady), kSteady, kTalk),
            segmentalSnr(out, call.far, call.nearSpeech, kTalk)};
}

struct Count {
    int first = 0, second = 0, both = 0;
    void add(bool a, bool b) { first += a, second += b, both += a && b; }
};

void print(const char* name, const Quality& q) {
    std::printf("  %-18s %6.1f %6.1f %10.1f %10.1f %10.1f\n", name, q.erle, q.snr, q.left.inaudible, q.left.overNoise,
                q.segmental);
    std::fflush(stdout);
}

int run(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: %s FOLDER FOLDER...\n", argv[0]);
        return 2;
    }
    const std::vector<std::string> folders(argv + 1, argv + argc), linear{"speexdsp", "webrtc"},
        suppressed{"speexdsp-suppress", "webrtc", "webrtc-high"};
    const std::vector<std::string> all{"subband",           "subband-suppress", "speexdsp",
                                       "speexdsp-suppress", "webrtc",           "webrtc-high"};
    std::map<std::string, Count> aheadLinear, aheadSuppressed;
    std::map<std::string, Quality> sum;
    std::printf("  %-18s %6s %6s %10s %10s %10s\n", "", "ERLE", "SNR", "inaudible", "over noise", "segmental");
    std::size_t calls = 0;
    for (const Path& path : paths())
        for (const Condition condition : {asItIs, late, changing, clipping}) {
            // Every language comes in every condition.
            const std::size_t language = (calls + calls / 4) % folders.size();
            const std::size_t other = (language + 1 + calls / 4 % (folders.size() - 1)) % folders.size();
            const Signal far = speech(folders[language], {"demo-congrats", "conf-adminmenu", "demo-moreinfo"}, calls);
            const Signal talker = speech(folders[other], {"demo-instruct"}, calls);
            const Scenario call = makeCall(path, condition, far, talker);
            std::printf("call %zu: %s %.0f ms, ERL %.0f dB, %s\n", calls + 1, path.hybrid.c_str(), path.lengthMs, path.erl,
                        kConditions[condition]);
            std::map<std::string, Quality> q;
            for (const std::string& name : all) {
                q[name] = measure(name, call, kPathMs + (name.starts_with("speex") && condition == late ? kLateMs : 0));
                print(name.c_str(), q[name]);
                Quality& s = sum[name];
                s.erle += q[name].erle, s.snr += q[name].snr, s.left.inaudible += q[name].left.inaudible;
                s.left.overNoise += q[name].left.overNoise, s.segmental += q[name].segmental;
            }
            const Quality &ours = q["subband"], &quiet = q["subband-suppress"];
            for (const std::string& peer : linear) aheadLinear[peer].add(ours.erle > q[peer].erle, ours.snr > q[peer].snr);
            for (const std::string& peer : suppressed)
                aheadSuppressed[peer].add(quiet.left.inaudible >= q[peer].left.inaudible,
                                          quiet.segmental >= q[peer].segmental + kMuchBetter);
            calls++;
        }
    std::printf("means of %zu calls\n", calls);
    for (const std::string& name : all) {
        const Quality& s = sum[name];
        const double n = double(calls);
        print(name.c_str(), {s.erle / n, s.snr / n, {s.left.inaudible / n, s.left.overNoise / n}, s.segmental / n});
    }
    for (const auto& [peer, count] : aheadLinear)
        std::printf("without suppression ahead of %s: ERLE in %d calls, SNR in %d, both in %d\n", peer.c_str(), count.first,
                    count.second, count.both);
    for (const auto& [peer, count] : aheadSuppressed)
        std::printf(
            "with suppression against %s: at least as inaudible in %d calls, segmental SNR 10 dB better in %d, both in "
            "%d\n",
            peer.c_str(), count.first, count.second, count.both);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s\n", e.what());
        return 1;
    }
}
