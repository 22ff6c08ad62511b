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
#include <map>

#include "echo_adapters.h"
#include "echo_measures.h"
#include "program.h"

namespace {

using namespace echo;

constexpr double kSeconds = 60, kPathMs = 320, kLateMs = 150;
constexpr std::size_t kChange = 10 * kRate, kSteady = 20 * kRate, kTalk = 30 * kRate;
constexpr double kMuchBetter = 10;  // dB

enum Condition { steady, late, changing, clipping };
constexpr const char* kConditions[] = {"steady", "late", "changing", "clipping"};

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

void print(const std::string& name, const Quality& q) {
    std::printf("  %-18s %6.1f %6.1f %10.1f %10.1f %10.1f\n", name.c_str(), q.erle, q.snr, q.left.inaudible,
                q.left.overNoise, q.segmental);
    std::fflush(stdout);
}

struct Call {
    Condition condition;
    std::map<std::string, Quality> quality;  // of each canceller
};

const std::vector<std::string> kCancellers{"subband",           "subband-suppress", "speexdsp",
                                           "speexdsp-suppress", "webrtc",           "webrtc-high"};

Call tryCall(std::size_t number, const Path& path, Condition condition, const std::vector<std::string>& folders) {
    // Every language comes in every condition.
    const std::size_t language = (number + number / 4) % folders.size();
    const std::size_t other = (language + 1 + number / 4 % (folders.size() - 1)) % folders.size();
    const Signal far = speech(folders[language], {"demo-congrats", "conf-adminmenu", "demo-moreinfo"}, number);
    const Signal talker = speech(folders[other], {"demo-instruct"}, number);
    const Scenario scenario = makeCall(path, condition, far, talker);
    std::printf("call %zu: %s %.0f ms, ERL %.0f dB, %s\n", number + 1, path.hybrid.c_str(), path.lengthMs, path.erl,
                kConditions[condition]);
    Call call{condition, {}};
    for (const std::string& name : kCancellers) {
        const bool searches = !name.starts_with("speex");
        call.quality[name] = measure(name, scenario, kPathMs + (searches || condition != late ? 0 : kLateMs));
        print(name, call.quality[name]);
    }
    return call;
}

void printMeans(const std::vector<Call>& calls, Condition condition) {
    std::printf("means %s\n", kConditions[condition]);
    for (const std::string& name : kCancellers) {
        Quality sum{};
        double n = 0;
        for (const Call& call : calls) {
            if (call.condition != condition) continue;
            const Quality& q = call.quality.at(name);
            sum.erle += q.erle, sum.snr += q.snr, sum.segmental += q.segmental;
            sum.left.inaudible += q.left.inaudible, sum.left.overNoise += q.left.overNoise;
            n++;
        }
        print(name, {sum.erle / n, sum.snr / n, {sum.left.inaudible / n, sum.left.overNoise / n}, sum.segmental / n});
    }
}

using Better = bool (*)(const Quality& ours, const Quality& theirs);

void printCount(const std::vector<Call>& calls, const std::string& ours, const std::string& theirs, const char* what,
                Better better) {
    std::map<Condition, int> count;
    int all = 0;
    for (const Call& call : calls) {
        const bool ahead = better(call.quality.at(ours), call.quality.at(theirs));
        count[call.condition] += ahead;
        all += ahead;
    }
    std::printf("%-17s against %-18s %-32s %2d of %zu calls:", ours.c_str(), theirs.c_str(), what, all, calls.size());
    for (const auto& [condition, n] : count)
        std::printf(" %d %s%s", n, kConditions[condition], condition == clipping ? "\n" : ",");
}

int run(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: %s FOLDER FOLDER...\n", argv[0]);
        return 2;
    }
    const std::vector<std::string> folders(argv + 1, argv + argc);
    std::vector<Call> calls;
    std::printf("  %-18s %6s %6s %10s %10s %10s\n", "", "ERLE", "SNR", "inaudible", "over noise", "segmental");
    for (const Path& path : paths())
        for (const Condition condition : {steady, late, changing, clipping})
            calls.push_back(tryCall(calls.size(), path, condition, folders));
    for (const Condition condition : {steady, late, changing, clipping}) printMeans(calls, condition);
    for (const char* peer : {"speexdsp", "webrtc"}) {
        printCount(calls, "subband", peer, "ERLE", [](const Quality& a, const Quality& b) { return a.erle > b.erle; });
        printCount(calls, "subband", peer, "SNR in double talk",
                   [](const Quality& a, const Quality& b) { return a.snr > b.snr; });
    }
    for (const char* peer : {"speexdsp-suppress", "webrtc", "webrtc-high"}) {
        printCount(calls, "subband-suppress", peer, "inaudible as often or more often",
                   [](const Quality& a, const Quality& b) { return a.left.inaudible >= b.left.inaudible; });
        printCount(calls, "subband-suppress", peer, "segmental SNR better by 10 dB",
                   [](const Quality& a, const Quality& b) { return a.segmental >= b.segmental + kMuchBetter; });
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) { return runProgram(run, argc, argv); }
