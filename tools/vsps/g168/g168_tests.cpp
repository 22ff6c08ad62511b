#include "g168/g168_tests.h"

#include <algorithm>
#include <limits>

#include "g168/composite_source.h"

namespace {

constexpr double kAny = std::numeric_limits<double>::infinity();
constexpr double kLevel = -10;        // dBm0, of the far end where nothing else is said
constexpr double kConverging = 11.2;  // s, whole periods of the source
constexpr double kLearned = 10;       // s after which a canceller has converged

// From a fresh start, with the composite source at a level.
TestCall converged(const TestLine& line, bool suppresses = false, double dbm0 = kLevel) {
    TestCall call(line, suppresses);
    call.play(compositeSource(kConverging, dbm0));
    return call;
}

// Level of the far end over that of the echo that is left: of the line and the canceller together.
double combinedLoss(const TestCall& call, double second, double dbm0 = kLevel) { return dbm0 - call.outputLevel(second); }

double returnedLevel(const TestLine& line, double dbm0) {
    TestCall call = converged(line, true, dbm0);
    call.finish();
    return call.outputLevel(kLearned);
}

double lossAfter(const TestLine& line, double second, bool suppresses, double dbm0 = kLevel) {
    TestCall call = converged(line, suppresses, dbm0);
    call.finish();
    return combinedLoss(call, second, dbm0);
}

// Over a period of the source that begins where the call is now.
double lossFromHere(TestCall& call) {
    const double now = call.seconds();
    call.play(compositeSource(kSourceSeconds, kLevel));
    call.finish();
    return combinedLoss(call, now);
}

double lossOnAnotherPath(const TestLine& line) {
    TestCall call = converged(line);
    call.changePath();
    call.play(compositeSource(1.4, kLevel));  // a second, in whole periods
    return lossFromHere(call);
}

// Over what the near end says.
double echoOver(const TestLine& line, const Samples& near, double nearLevel) {
    TestCall call(line, false);
    call.play(compositeSource(kConverging, kLevel), near);
    call.finish();
    return call.echoLeft(kLearned) - nearLevel;
}

double echoOverNoise(const TestLine& line) {
    constexpr double kNoise = -40;
    NoiseSource source({kNoise - kDbm0OverDbov, 3});
    Samples noise = silence(kConverging);
    for (std::int16_t& x : noise) x = std::int16_t(std::lround(source.next()));
    return echoOver(line, noise, kNoise);
}

double echoOverQuietTalk(const TestLine& line) {
    constexpr double kQuiet = kLevel - 15;
    return echoOver(line, doubleTalkSource(kConverging, kQuiet), kQuiet);
}

double lossAfterDoubleTalk(const TestLine& line) {
    TestCall call = converged(line);
    call.play(compositeSource(kConverging, kLevel), doubleTalkSource(kConverging, kLevel));
    return lossFromHere(call);
}

double lossAfterSilence(const TestLine& line) {
    TestCall call = converged(line);
    call.play(silence(120));
    return lossFromHere(call);
}

double levelWithoutEcho(const TestLine& line) {
    TestCall call = converged(line);
    call.openPath();
    call.play(compositeSource(1.4, kLevel));  // a second, in whole periods
    const double now = call.seconds();
    call.play(compositeSource(kSourceSeconds, kLevel));
    call.finish();
    return call.outputLevel(now);
}

double lossAfterTones(const TestLine& line) {
    TestCall call = converged(line);
    for (const double hertz : {697.0, 941.0, 1336.0, 2200.0}) call.play(toneOf(5, kLevel, hertz));
    call.play(toneOf(5, kLevel, 697, 1209));
    call.play(toneOf(5, kLevel, 941, 1477));
    return lossFromHere(call);
}

// The worst of some tones, from a fresh start and later on.
double lossOfTones(const TestLine& line) {
    double worst = kAny;
    for (const double hertz : {300.0, 1000.0, 1900.0, 3000.0}) {
        TestCall call(line, false);
        call.play(toneOf(60, kLevel, hertz));
        call.finish();
        // The level of a period is taken as that of a source with pauses.
        const double overSounds = 10 * std::log10(1 / compositeActivity());
        for (const double second : {kLearned, 30.0, 59.0}) worst = std::min(worst, combinedLoss(call, second) + overSounds);
    }
    return worst;
}

constexpr double kAnswerTone = 2100, kReversal = 0.45;  // Hz, s

double secondsDisabled(const TestCall& call) {
    return kEchoFrameSeconds * double(std::count_if(call.frames().begin(), call.frames().end(),
                                                    [](const EchoFrame& f) { return f.status.toneDisabled; }));
}

// s; the longest over levels and frequencies that have to be recognised.
double timeToDisable(const TestLine& line) {
    double longest = 0;
    for (const double dbm0 : {-31.0, 0.0})
        for (const double hertz : {kAnswerTone - 21, kAnswerTone, kAnswerTone + 21}) {
            TestCall call(line, false);
            call.play(compositeSource(2.8, kLevel));
            const double begin = call.seconds();
            call.play(reversingTone(3.6, dbm0, hertz, kReversal));
            call.finish();
            const auto first = std::find_if(call.frames().begin(), call.frames().end(),
                                            [](const EchoFrame& f) { return f.status.toneDisabled; });
            const double time = double(first - call.frames().begin() + 1) * kEchoFrameSeconds - begin;
            longest = std::max(longest, first == call.frames().end() ? kAny : time);
        }
    return longest;
}

// s, of which there should be none.
double disabledWithoutReversals(const TestLine& line) {
    TestCall call(line, false);
    call.play(compositeSource(2.8, kLevel));
    call.play(toneOf(6, kLevel, kAnswerTone));
    call.finish();
    return secondsDisabled(call);
}

// s of silence, from the end of the echo on
double timeToRelease(const TestLine& line) {
    TestCall call(line, false);
    call.play(reversingTone(3.6, kLevel, kAnswerTone, kReversal));
    const double end = call.seconds();
    call.play(silence(2));
    call.finish();
    const auto last = std::find_if(call.frames().rbegin(), call.frames().rend(),
                                   [](const EchoFrame& f) { return f.status.toneDisabled; });
    return double(call.frames().rend() - last) * kEchoFrameSeconds - end;
}

constexpr Origin quoted = Origin::quoted, ours = Origin::ours;

constexpr G168Test kTests[] = {
    {"2A", "returned level at -10 dBm0, after 10 s", "dBm0", -kAny, -65, quoted, true,
     [](const TestLine& line) { return returnedLevel(line, -10); }},
    {"2A", "returned level at -30 dBm0, after 10 s", "dBm0", -kAny, -65, quoted, true,
     [](const TestLine& line) { return returnedLevel(line, -30); }},
    {"2A", "combined loss after 1 s", "dB", 20, kAny, quoted, true,
     [](const TestLine& line) { return lossAfter(line, 1, true); }},
    {"2B", "combined loss after 1 s", "dB", 20, kAny, quoted, false,
     [](const TestLine& line) { return lossAfter(line, 1, false); }},
    {"2B", "combined loss at 0 dBm0, after 10 s", "dB", 30, kAny, quoted, false,
     [](const TestLine& line) { return lossAfter(line, kLearned, false, 0); }},
    {"2B", "combined loss at -10 dBm0, after 10 s", "dB", 30, kAny, quoted, false,
     [](const TestLine& line) { return lossAfter(line, kLearned, false); }},
    {"2B", "combined loss at -30 dBm0, after 10 s", "dB", 30, kAny, quoted, false,
     [](const TestLine& line) { return lossAfter(line, kLearned, false, -30); }},
    {"2B", "combined loss 1.4 s after another path", "dB", 20, kAny, ours, false, lossOnAnotherPath},
    {"2C", "echo over noise of -40 dBm0", "dB", -kAny, 0, ours, false, echoOverNoise},
    {"3A", "echo over double talk at -15 dB", "dB", -kAny, 0, quoted, false, echoOverQuietTalk},
    {"3B", "combined loss after double talk at 0 dB", "dB", 20, kAny, quoted, false, lossAfterDoubleTalk},
    {"4", "combined loss after 2 min of silence", "dB", 20, kAny, quoted, false, lossAfterSilence},
    {"5", "returned level 1.4 s after the echo ended", "dBm0", -kAny, -37, quoted, false, levelWithoutEcho},
    {"6", "combined loss after narrow-band signals", "dB", 20, kAny, quoted, false, lossAfterTones},
    {"7", "combined loss of tones, 10 s to 60 s", "dB", 30, kAny, ours, false, lossOfTones},
    {"tone", "2100 Hz with reversals disables within", "s", 0, 1, quoted, false, timeToDisable},
    {"tone", "2100 Hz without reversals disables for", "s", 0, 0, quoted, false, disabledWithoutReversals},
    {"tone", "enabled again after a silence of", "s", 0.1, 0.4, quoted, false, timeToRelease},
};

}  // namespace

std::span<const G168Test> g168Tests() { return kTests; }
