// The detectors of the answer tone with phase reversals against their definition.
#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <set>

#include "ec/align.h"
#include "ec/tone_detect_definitions.h"
#include "ec/tone_detect_state.h"
#include "support/guarded.h"
#include "support/level_test.h"
#include "support/samples.h"
#include "support/upper_halves.h"

namespace vsp::test {

namespace {

using Signal = std::vector<double>;

constexpr double kAmplitude = 8000;

// Stretches of the tone of the given lengths, each with the phase reversed.
Signal tone(Vsp32s rate, const std::vector<int>& stretches, double amplitude = kAmplitude) {
    Signal signal;
    double sign = 1;
    for (const int stretch : stretches) {
        for (int i = 0; i < stretch; i++)
            signal.push_back(sign * amplitude * std::sin(2 * 3.14159265358979 * 2100 / rate * double(signal.size())));
        sign = -sign;
    }
    return signal;
}

Signal noise(std::size_t n, double amplitude) {
    std::mt19937 random(unsigned(n) + unsigned(amplitude));
    Signal signal(n);
    for (double& x : signal) x = amplitude * (double(random()) * 0x1p-31 - 1);
    return signal;
}

Signal operator+(Signal a, const Signal& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// Mixed with soft noise.
Signal noisy(Signal signal, double amplitude) {
    const Signal disturbance = noise(signal.size(), amplitude);
    for (std::size_t i = 0; i < signal.size(); i++) signal[i] += disturbance[i];
    return signal;
}

// Full scale both ways in steps, so that the output of the fixed-point resonator saturates.
Signal square(Vsp32s rate, int length) {
    Signal signal = tone(rate, {length});
    for (double& x : signal) x = x < 0 ? -32768 : 32767;
    return signal;
}

template <class T>
std::vector<T> converted(const Signal& signal) {
    std::vector<T> x(signal.size());
    for (std::size_t i = 0; i < x.size(); i++)
        x[i] = std::is_integral_v<T> ? T(std::lround(std::min(32767.0, std::max(-32768.0, signal[i])))) : T(signal[i]);
    return x;
}

}  // namespace

class ToneDetector : public LevelTest {
  protected:
    // A detector in memory that ends at an unmapped page, at any address.
    class Fixed {
      public:
        using Sample = Vsp16s;
        using Plain = plain::ToneDetector_16s;

        Fixed(const Api& functions, Vsp32s rate, std::size_t gap = 0)
            : api_(functions), memory_(72, Guard::end, gap), state_(reinterpret_cast<State*>(memory_.data())) {
            EXPECT_EQ(vspStsNoErr, api_.vspsToneDetectInit_EC_16s(state_, rate));
        }
        VspStatus detect(const Vsp16s* src, Vsp32s n, Vsp32s* flag) {
            return api_.vspsToneDetect_EC_16s(src, n, flag, state_);
        }
        ToneDetectState_16s& state() { return *aligned<ToneDetectState_16s>(state_); }
        ToneCounts& counts() { return state().counts; }

      private:
        using State = VspToneDetectState_EC_16s;
        const Api& api_;
        Guarded<Vsp8u> memory_;
        State* state_;
    };

    class Floating {
      public:
        using Sample = Vsp32f;
        using Plain = plain::ToneDetector_32f;

        Floating(const Api& functions, Vsp32s rate, std::size_t gap = 0)
            : api_(functions), memory_(80, Guard::end, gap), state_(reinterpret_cast<State*>(memory_.data())) {
            EXPECT_EQ(vspStsNoErr, api_.vspsToneDetectInit_EC_32f(state_, rate));
        }
        VspStatus detect(const Vsp32f* src, Vsp32s n, Vsp32s* flag) {
            return api_.vspsToneDetect_EC_32f(src, n, flag, state_);
        }
        ToneCounts& counts() { return aligned<ToneDetectState_32f>(state_)->counts; }

      private:
        using State = VspToneDetectState_EC_32f;
        const Api& api_;
        Guarded<Vsp8u> memory_;
        State* state_;
    };

    static void expectCounts(const plain::ToneRuns& expected, const ToneCounts& c) {
        EXPECT_EQ((std::array{expected.run, expected.dip, expected.reversals}), (std::array{c.run, c.dip, c.reversals}));
    }

    // Compares flags and counters of calls whose lengths are taken in turn. Returns the samples behind each call with a
    // flag.
    template <class Detector>
    std::vector<std::size_t> expectAsDefined(const std::vector<typename Detector::Sample>& x, Vsp32s rate,
                                             const std::vector<std::size_t>& parts) {
        Detector detector(api, rate, parts.front() % 7);
        typename Detector::Plain reference(rate);
        std::vector<std::size_t> found;
        for (std::size_t at = 0, call = 0; at < x.size(); call++) {
            const std::size_t n = std::min(x.size() - at, parts[call % parts.size()]);
            bool expected = false;
            for (std::size_t i = at; i < at + n; i++) expected |= reference.sample(x[i]);
            Vsp32s flag = -1;
            EXPECT_EQ(vspStsNoErr, detector.detect(&x[at], Vsp32s(n), &flag));
            EXPECT_EQ(expected ? 1 : 0, flag) << "in the call from sample " << at;
            expectCounts(reference.runs, detector.counts());
            at += n;
            if (flag != 0) found.push_back(at);
        }
        EXPECT_FALSE(upperHalvesInUse());
        return found;
    }

    // Both detectors with every split.
    void expectAsDefined(const Signal& signal, Vsp32s rate) {
        for (const std::vector<std::size_t>& parts : std::vector<std::vector<std::size_t>>{
                 {1}, {3, 1, 5}, {31}, {32}, {33, 64, 2}, {80}, {1000}, {signal.size()}}) {
            expectAsDefined<Fixed>(converted<Vsp16s>(signal), rate, parts);
            expectAsDefined<Floating>(converted<Vsp32f>(signal), rate, parts);
            ASSERT_FALSE(HasFailure()) << "calls of " << parts.front();
        }
    }

    // Calls without a flag, then one with a flag for every reversal of the stretches from the given one on.
    void expectFlags(const std::vector<int>& stretches, Vsp32s rate, std::size_t first) {
        const Signal signal = noisy(tone(rate, stretches), 1);
        std::vector<std::size_t> ends;
        std::size_t end = 0;
        for (std::size_t i = 0; i + 1 < stretches.size(); i++) {
            end += std::size_t(stretches[i]);
            if (i + 1 >= first) ends.push_back(end);
        }
        const auto check = [&](const std::vector<std::size_t>& found) {
            ASSERT_EQ(ends.size(), found.size());
            for (std::size_t i = 0; i < ends.size(); i++) {
                EXPECT_LT(ends[i], found[i]);
                EXPECT_GT(ends[i] + std::size_t(rate) / 50, found[i]);
            }
        };
        check(expectAsDefined<Fixed>(converted<Vsp16s>(signal), rate, {40}));
        check(expectAsDefined<Floating>(converted<Vsp32f>(signal), rate, {40}));
    }
};
VSPSC_EVERY_LEVEL(ToneDetector);

TEST_P(ToneDetector, SignalsOfAllKindsGiveTheDefinedFlagsForEverySplit) {
    for (const Vsp32s rate : {8000, 16000}) {
        const int ms = rate / 1000;
        std::vector<int> intervals;
        for (const int duration : {200, 450, 450, 410, 420, 460, 470, 225, 225, 900, 450, 440, 430})
            intervals.push_back(duration * ms);
        const Signal reversals = tone(rate, intervals), silence(std::size_t(rate), 0.0);
        expectAsDefined(reversals + noise(2000, 3000) + noisy(reversals, 1500), rate);
        for (const double amplitude : {2, 3, 4, 5, 6, 20})
            expectAsDefined(silence + noisy(tone(rate, intervals, amplitude), 1) + noisy(silence, 2), rate);
        expectAsDefined(square(rate, 4000) + noise(3000, 32768) + tone(rate, intervals, 40000) + square(rate, 300), rate);
        Signal extremes;
        for (const Vsp16s x : samples<Vsp16s>(6000)) extremes.push_back(x);
        expectAsDefined(extremes, rate);
    }
}

TEST_P(ToneDetector, FlagsTheSecondAndLaterReversalsAndNothingElse) {
    for (const Vsp32s rate : {8000, 16000}) {
        const int ms = rate / 1000;
        expectFlags({5000 * ms}, rate, 2);
        expectFlags({450 * ms, 450 * ms, 450 * ms, 450 * ms, 2000 * ms}, rate, 2);
        expectFlags({440 * ms, 450 * ms, 600 * ms}, rate, 2);
        expectFlags({440 * ms, 600 * ms}, rate, 2);
    }
}

// Stretches about as long as a limit, so that runs of exactly the limit and of one sample more and less occur.
TEST_P(ToneDetector, RunsAreComparedStrictly) {
    const auto check = [&]<class Detector>(Vsp32s rate, int limit, std::type_identity<Detector>) {
        using Sample = typename Detector::Sample;
        // Whether the signal brings the flag, and the longest run of tone at a dip of its second half.
        const auto reference = [rate](const std::vector<Sample>& x) {
            typename Detector::Plain plain(rate);
            std::pair<bool, Vsp32s> result(false, 0);
            for (std::size_t i = 0; i < x.size(); i++) {
                const Vsp32s run = plain.runs.run;
                result.first |= plain.sample(x[i]);
                if (i > x.size() / 2 && plain.runs.dip == 1) result.second = std::max(result.second, run);
            }
            return result;
        };
        const auto signal = [rate](int before, int run) {
            return converted<Sample>(noisy(tone(rate, {rate * 45 / 100 + before, run, rate / 10}), 400));
        };
        const int lost = rate * 45 / 100 - reference(signal(0, rate * 45 / 100)).second;  // at the beginning of a stretch
        std::set<std::pair<bool, Vsp32s>> seen;
        for (int before = 0; before < 8; before++)
            for (int run = limit + lost - 5; run <= limit + lost + 5; run++) {
                const auto x = signal(before, run);
                seen.insert(reference(x));
                expectAsDefined<Detector>(x, rate, {x.size()});
            }
        const bool lower = limit < rate * 45 / 100;
        EXPECT_TRUE(seen.contains({!lower, limit - 1}));
        EXPECT_TRUE(seen.contains({false, limit}));
        EXPECT_TRUE(seen.contains({lower, limit + 1}));
    };
    for (const Vsp32s rate : {8000, 16000})
        for (const int limit : {rate / 1000 * 413, rate / 1000 * 466}) {
            check(rate, limit, std::type_identity<Fixed>());
            check(rate, limit, std::type_identity<Floating>());
        }
}

// A disturbance grows until the tone is low, and further until that counts as a reversal. It must do so within 20 ms, which
// it does not if it grows slowly.
TEST_P(ToneDetector, ADipOfMoreThanTwentyMillisecondsStartsAnew) {
    std::size_t fixedFlags = 0, floatingFlags = 0;
    constexpr int kSlopes = 160;
    for (int i = 0; i < kSlopes; i++) {
        Signal signal = tone(8000, {3600, 3840});
        const double samples = 186 + 0.4 * i;  // from 0.8 to 0.48 of the power
        for (int n = 6960; n < 7440; n++)
            signal[std::size_t(n)] += kAmplitude * 0.54 / samples * (n - 6960) * std::sin(0.8 * n + 0.3 * i);  // any phase
        fixedFlags += expectAsDefined<Fixed>(converted<Vsp16s>(signal), 8000, {signal.size()}).size();
        floatingFlags += expectAsDefined<Floating>(converted<Vsp32f>(signal), 8000, {signal.size()}).size();
    }
    EXPECT_TRUE(0 < fixedFlags && fixedFlags < kSlopes) << fixedFlags;
    EXPECT_TRUE(0 < floatingFlags && floatingFlags < kSlopes) << floatingFlags;
}

// Powers beside those at which a sample is tone, low or a reversal, the equal ones included: a zero sample makes them of
// powers that are a little larger.
TEST_P(ToneDetector, PowersOfTheFixedPointDetectorAreComparedStrictly) {
    const auto before = [](Vsp64s power) { return Vsp32s((power * 16384 + 15727) / 15728); };
    for (const Vsp64s in : {0, 1, 2, 2047, 2048, 2049, 16383, 16384, 16385, 49152, 0x10000000, 0x3FFFF800, 0x3FFFFFFF})
        for (const Vsp64s limit : {in * 7864 >> 14, in * 13107 >> 14})
            for (Vsp64s out = limit > 2 ? limit - 2 : 0; out <= limit + 2; out++) {
                Fixed detector(api, 8000);
                plain::ToneDetector_16s reference(8000);
                reference.in = detector.state().powerIn = before(in);
                reference.out = detector.state().powerOut = before(out);
                reference.runs.run = detector.counts().run = 3600;
                reference.runs.reversals = detector.counts().reversals = 1;
                const Vsp16s zero = 0;
                const bool expected = reference.sample(zero);
                ASSERT_EQ((std::array{in, out}), (std::array{reference.in, reference.out}));
                Vsp32s flag = -1;
                ASSERT_EQ(vspStsNoErr, detector.detect(&zero, 1, &flag));
                ASSERT_EQ(expected ? 1 : 0, flag) << in << ", " << out;
                expectCounts(reference.runs, detector.counts());
            }
}

// Loud noise after the first reversal. With some tone in it, it is a dip too long; with less of it there is no tone, and
// the reversal stays counted.
TEST_P(ToneDetector, FloatingPointDetectorKnowsWhenThereIsNoTone) {
    for (const Vsp32s rate : {8000, 16000}) {
        const int ms = rate / 1000;
        std::size_t flags = 0;
        constexpr int kLevels = 100;
        for (int i = 0; i < kLevels; i++) {
            Signal gap = tone(rate, {60 * ms}, 6 * i);
            for (std::size_t n = 0; n < gap.size(); n++) gap[n] += 10000 * std::sin(0.1 * double(n) * 8000 / rate);
            const Signal signal = tone(rate, {450 * ms, 15 * ms}, 1000) + gap + tone(rate, {450 * ms, 20 * ms}, 1000);
            flags += expectAsDefined<Floating>(converted<Vsp32f>(signal), rate, {signal.size()}).size();
        }
        EXPECT_TRUE(0 < flags && flags < kLevels) << flags;
    }
    // After a tone the resonator for 16 kHz fades more slowly than the power of the input; far above it there is no tone.
    std::size_t flags = 0;
    constexpr std::size_t kLengths = 60;
    for (std::size_t silence = 180; silence < 180 + kLengths; silence++) {
        const Signal stretch = tone(16000, {3520}), signal = tone(16000, {7200}) + tone(16000, {0, 3520}) +
                                                             Signal(silence, 0.0) + stretch + tone(16000, {0, 320});
        flags += expectAsDefined<Floating>(converted<Vsp32f>(signal), 16000, {signal.size()}).size();
    }
    EXPECT_TRUE(0 < flags && flags < kLengths) << flags;
}

TEST_P(ToneDetector, PowersFadeThroughDenormalNumbers) {
    for (const Vsp32s rate : {8000, 16000}) {
        const int ms = rate / 1000;
        const Signal silence(std::size_t(rate), 0.0);
        for (const double amplitude : {8000.0, 1e-3, 1e-15, 1e-20, 1e-22}) {
            const Signal part = tone(rate, {450 * ms, 450 * ms, 450 * ms}, amplitude);
            const auto x = converted<Vsp32f>(part + silence + part + silence);
            for (const std::size_t split : {std::size_t(1), std::size_t(160), x.size()})
                expectAsDefined<Floating>(x, rate, {split});
        }
    }
}

TEST_P(ToneDetector, InfiniteAndUndefinedSamplesSilenceTheFloatingPointDetector) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity(), kNan = std::numeric_limits<float>::quiet_NaN();
    for (const float bad : {kInfinity, -kInfinity, kNan, 1e30f, 3e38f}) {
        auto x = converted<Vsp32f>(tone(8000, {3600, 3600, 3600, 3600}));
        x[8000] = bad;
        for (const std::size_t split : {std::size_t(7), x.size()}) expectAsDefined<Floating>(x, 8000, {split});
    }
}

// A tone of any length stays too long, and any number of reversals enough. The counters are set while the tone is there.
TEST_P(ToneDetector, CountersStayAtTheLargestValue) {
    constexpr Vsp32s kMost = plain::ToneRuns::kMost;
    const auto check = [&]<class Detector>(Vsp32s run, Vsp32s reversals, std::type_identity<Detector>) {
        const auto x = converted<typename Detector::Sample>(tone(8000, {3600, 3600, 3600, 400}));
        Detector detector(api, 8000);
        typename Detector::Plain reference(8000);
        Vsp32s mostReversals = 0, flags = 0;
        for (std::size_t at = 0; at < x.size(); at += 100) {
            if (at == 3000) {
                if (run != 0) reference.runs.run = detector.counts().run = run;
                reference.runs.reversals = detector.counts().reversals = reversals;
            }
            bool expected = false;
            for (std::size_t i = at; i < at + 100; i++) expected |= reference.sample(x[i]);
            Vsp32s flag = -1;
            EXPECT_EQ(vspStsNoErr, detector.detect(&x[at], 100, &flag));
            EXPECT_EQ(expected ? 1 : 0, flag);
            flags += flag;
            expectCounts(reference.runs, detector.counts());
            mostReversals = std::max(mostReversals, detector.counts().reversals);
        }
        EXPECT_EQ(run != 0 ? 0 : 3, flags);
        EXPECT_EQ(kMost, run != 0 ? detector.counts().run : mostReversals);
    };
    const auto both = [&](Vsp32s run, Vsp32s reversals) {
        check(run, reversals, std::type_identity<Fixed>());
        check(run, reversals, std::type_identity<Floating>());
    };
    for (const Vsp32s left : {0, 1, 31, 1000}) both(kMost - left, 0);
    for (const Vsp32s left : {0, 1, 2}) both(0, kMost - left);
}

}  // namespace vsp::test
