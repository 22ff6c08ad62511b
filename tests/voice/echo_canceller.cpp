// The echo canceller on recorded speech through echo paths of ITU-T G.168: what it removes and what it leaves alone.
#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <stdexcept>
#include <string>

#include "simulate_echo/g168_paths.h"
#include "support/speech.h"
#include "voice/canceller.h"

namespace vsp::test {

namespace {

constexpr std::size_t kRate = 8000;

Signal speech(double from, double seconds) {
    const std::vector<Vsp16s> all = recordedSpeech();
    if ((from + seconds) * kRate > static_cast<double>(all.size())) throw std::out_of_range("the recording is shorter");
    const auto begin = all.begin() + static_cast<std::ptrdiff_t>(from * kRate);
    return {begin, begin + static_cast<std::ptrdiff_t>(seconds * kRate)};
}

Signal noise(std::size_t length, float level, unsigned seed = 1) {
    std::mt19937 random(seed);
    std::normal_distribution<float> gauss(0, level);
    Signal x(length);
    for (float& v : x) v = gauss(random);
    return x;
}

double power(const Signal& x, std::size_t from = 0, std::size_t to = ~std::size_t{0}) {
    to = std::min(to, x.size());
    double sum = 0;
    for (std::size_t n = from; n < to; n++) sum += double(x[n]) * x[n];
    return sum / static_cast<double>(to - from);
}

double decibels(double ratio) { return 10 * std::log10(ratio); }

Signal sum(const Signal& a, const Signal& b) {
    Signal y(a);
    for (std::size_t n = 0; n < y.size(); n++) y[n] += b[n];
    return y;
}

Signal difference(const Signal& a, const Signal& b) {
    Signal y(a);
    for (std::size_t n = 0; n < y.size(); n++) y[n] -= b[n];
    return y;
}

// The echo `erl` dB below its cause, by the model 2 to 9 of Annex D.
Signal echoOf(const Signal& x, int model, double erl, std::size_t delay = 0) {
    const auto taps = g168Paths()[static_cast<std::size_t>(model - 2)].taps;
    Signal y(x.size());
    for (std::size_t n = delay; n < x.size(); n++)
        for (std::size_t k = 0; k < taps.size() && k + delay <= n; k++)
            y[n] += static_cast<float>(taps[k]) * x[n - delay - k];
    const auto gain = static_cast<float>(std::sqrt(power(x) / power(y) * std::pow(10, -erl / 10)));
    for (float& v : y) v *= gain;
    return y;
}

// The echo in a room whose response decays by 40 dB in the given time.
Signal roomEchoOf(const Signal& x, double seconds, double erl) {
    Signal response = noise(static_cast<std::size_t>(seconds * kRate), 1, 4), y(x.size());
    for (std::size_t k = 0; k < response.size(); k++)
        response[k] *= static_cast<float>(std::pow(0.01, double(k) / double(response.size())));
    for (std::size_t k = 0; k < response.size(); k += 3)  // dense enough, and quick
        for (std::size_t n = k; n < x.size(); n++) y[n] += response[k] * x[n - k];
    const auto gain = static_cast<float>(std::sqrt(power(x) / power(y) * std::pow(10, -erl / 10)));
    for (float& v : y) v *= gain;
    return y;
}

struct Result {
    Signal out;  // aligned with near
    std::vector<VspvEchoStatus> statuses;

    VspvEchoStatus at(double seconds) const { return statuses[static_cast<std::size_t>(seconds * 100)]; }
    template <class Predicate>
    double share(double from, double to, Predicate p) const {
        const auto begin = statuses.begin() + static_cast<std::ptrdiff_t>(from * 100);
        const auto end = statuses.begin() + static_cast<std::ptrdiff_t>(to * 100);
        return static_cast<double>(std::count_if(begin, end, p)) / static_cast<double>(end - begin);
    }
};

Result cancel(const VspvEchoSettings& settings, Signal far, Signal near) {
    Canceller canceller(settings);
    const std::size_t latency = canceller.latency(), block = static_cast<std::size_t>(settings.samplingRate / 100);
    const std::size_t length = near.size();
    far.resize((length + latency + block - 1) / block * block);
    near.resize(far.size());
    Result r{Signal(near.size()), {}};
    for (std::size_t n = 0; n < near.size(); n += block) {
        canceller.process(&far[n], &near[n], &r.out[n], block);
        r.statuses.push_back(canceller.status());
    }
    r.out.erase(r.out.begin(), r.out.begin() + static_cast<std::ptrdiff_t>(latency));
    r.out.resize(length);
    return r;
}

class Engines : public testing::TestWithParam<std::tuple<Vsp32s, Vsp32s>> {
  protected:
    VspvEchoSettings settings(double tailMs = 32, Vsp32s rate = 8000) const {
        return echoSettings(std::get<0>(GetParam()), std::get<1>(GetParam()), tailMs, rate);
    }
    bool subband() const { return std::get<0>(GetParam()) == vspvEchoSubband; }
    bool fixed() const { return std::get<1>(GetParam()) == vspvEchoFixed; }
};

INSTANTIATE_TEST_SUITE_P(, Engines,
                         testing::Combine(testing::Values(vspvEchoSubband, vspvEchoFullband),
                                          testing::Values(vspvEchoFloat, vspvEchoFixed)),
                         [](const auto& engine) {
                             return std::string(std::get<0>(engine.param) == vspvEchoSubband ? "Subband" : "Fullband") +
                                    (std::get<1>(engine.param) == vspvEchoFixed ? "Fixed" : "");
                         });

}  // namespace

TEST_P(Engines, RemoveTheEchoDownToTheNoise) {
    const Signal far = speech(0, 12), echo = echoOf(far, 4, 6), near = sum(echo, noise(far.size(), 10));
    const Result r = cancel(settings(), far, near);
    EXPECT_GT(decibels(power(near, 2 * kRate, 4 * kRate) / power(r.out, 2 * kRate, 4 * kRate)), 20);
    EXPECT_GT(decibels(power(near, 8 * kRate) / power(r.out, 8 * kRate)), fixed() && !subband() ? 24 : 34);
    EXPECT_NEAR(r.at(11).erle, decibels(power(near, 10 * kRate, 11 * kRate) / power(r.out, 10 * kRate, 11 * kRate)), 6);
    EXPECT_LT(r.share(4, 12, [](const auto& s) { return s.doubleTalk; }), 0.1);
}

TEST_P(Engines, KeepCancellingWhileBothTalk) {
    constexpr std::size_t kBoth = 6 * kRate;
    const Signal far = speech(0, 11), echo = echoOf(far, 5, 8);
    Signal talk = speech(10.9, 11);
    std::fill(talk.begin(), talk.begin() + kBoth, 0.0f);
    const Signal hiss = noise(far.size(), 10);
    const Result r = cancel(settings(), far, sum(sum(echo, talk), hiss));
    const Signal left = difference(difference(r.out, talk), hiss);
    EXPECT_GT(decibels(power(echo, kBoth) / power(left, kBoth)), 15);
    EXPECT_GT(decibels(power(talk, kBoth) / power(difference(r.out, talk), kBoth)), 20);
    EXPECT_GT(r.share(6.5, 11, [](const auto& s) { return s.doubleTalk; }), 0.3);
}

TEST_P(Engines, NeverMakeALineWithoutEchoLouder) {
    const Signal far = speech(0, 8);
    const auto hum = [&](float level) {
        Signal x(far.size());
        for (std::size_t n = 0; n < x.size(); n++)
            x[n] = level * static_cast<float>(std::sin(2 * std::numbers::pi * 50 * static_cast<double>(n) / kRate));
        return x;
    };
    Signal dither(far.size()), talk = speech(4, 8);
    std::mt19937 random(8);
    for (float& v : dither) v = static_cast<float>(static_cast<int>(random() % 3) - 1);
    talk.resize(far.size());
    constexpr std::size_t kWindow = kRate / 10;
    constexpr double kRounding = kWindow / 12.0;  // energy
    for (Signal near : {noise(far.size(), 7.6f), noise(far.size(), 100), dither, hum(400),
                        sum(hum(20), noise(far.size(), 5)), talk, Signal(far.size()), sum(talk, dither)}) {
        for (float& v : near) v = std::round(v);
        const Signal out = cancel(settings(), far, near).out;
        double before = kRounding, after = kRounding, worst = 0;
        for (std::size_t n = 0; n < near.size(); n++) {
            const auto add = [&](std::size_t i, double sign) {
                before += sign * double(near[i]) * near[i];
                after += sign * std::round(double(out[i])) * std::round(double(out[i]));
            };
            add(n, 1);
            if (n >= kWindow) add(n - kWindow, -1);
            worst = std::max(worst, after / before);
        }
        EXPECT_LT(decibels(worst), 1) << "near end of " << decibels(power(near));
    }
}

TEST_P(Engines, CallDoubleTalkWhereBothTalkAndNowhereElse) {
    const Signal far = speech(0, 11), silence(far.size());
    for (const double erl : {0.0, 20.0})
        for (const float level : {0.0f, 100.0f}) {
            const Signal echo = echoOf(far, 5, erl, 100), hiss = noise(far.size(), level);
            const auto run = [&](const Signal& talk) {
                Signal near = sum(sum(echo, hiss), talk);
                for (float& v : near) v = std::round(v);
                return cancel(settings(), far, near);
            };
            EXPECT_EQ(run(silence).share(0, 11, [](const auto& s) { return s.doubleTalk; }), 0) << erl << ' ' << level;

            // Speech as loud as the echo, from 6 s on, is told at least once a second. What counts are frames with speech
            // that the noise does not hide and that is at most 10 dB below the echo.
            Signal talk = speech(10.9, 11);
            for (float& v : talk) v *= static_cast<float>(std::pow(10, -erl / 20));
            std::fill(talk.begin(), talk.begin() + 6 * kRate, 0.0f);
            const double faint = std::max(0.03 * power(talk, 6 * kRate), double(level) * level);
            const Result both = run(talk);
            int heard = 0, all = 0;
            // NOLINTNEXTLINE(cert-flp30-c,clang-analyzer-security.FloatLoopCounter): one look more or less is all the same
            for (double t = 6.5; t < 10.5; t += 0.02) {
                const auto at = static_cast<std::size_t>(t * kRate);
                const double talking = power(talk, at, at + 160), echoing = power(echo, at, at + 160);
                if (talking < faint || talking < 0.1 * echoing) continue;
                all++;
                heard += both.share(t - 0.5, t + 0.5, [](const auto& s) { return s.doubleTalk; }) > 0;
            }
            EXPECT_GT(all, 50);
            EXPECT_GE(heard, 0.9 * all) << erl << ' ' << level;
        }
}

TEST_P(Engines, FollowANewEchoPath) {
    constexpr std::size_t kChange = 6 * kRate;
    const Signal far = speech(0, 16), before = echoOf(far, 2, 10), after = echoOf(far, 6, 6);
    Signal near = before;
    std::copy(after.begin() + kChange, after.end(), near.begin() + kChange);
    const Result r = cancel(settings(), far, near);
    EXPECT_GT(decibels(power(near, 12 * kRate) / power(r.out, 12 * kRate)), 20);
}

// Over a loudspeaker that cuts off every peak of the speech, and over another one from 14 s on.
TEST_P(Engines, FollowALoudspeakerThatClips) {
    if (!subband()) GTEST_SKIP() << "the filters of the full band are linear";
    const Signal once = speech(0, 14);
    Signal far = once;
    far.insert(far.end(), once.begin(), once.begin() + 10 * kRate);
    const float limit = 1.3f * static_cast<float>(std::sqrt(power(far)));
    Signal played = far;
    for (std::size_t n = 0; n < 14 * kRate; n++) played[n] = std::clamp(far[n], -limit, limit);
    const Signal near = sum(echoOf(played, 4, 6), noise(far.size(), 8));
    const Result r = cancel(settings(), far, near);
    const auto removed = [&](std::size_t from, std::size_t to) {
        return decibels(power(near, from * kRate, to * kRate) / power(r.out, from * kRate, to * kRate));
    };
    EXPECT_GT(removed(9, 14), 25);
    EXPECT_GT(removed(19, 24), 25);
}

TEST_P(Engines, FindTheBulkDelay) {
    const Signal far = speech(0, 14);
    for (const std::size_t delay : {300, 1000}) {
        const Signal near = echoOf(far, 2, 6, delay * kRate / 1000);
        VspvEchoSettings c = settings();
        const Result found = cancel(c, far, near);
        EXPECT_NEAR(found.at(13).bulkDelayMs, double(delay) - 20, 20);  // with a margin
        EXPECT_TRUE(found.at(13).echoFound);
        EXPECT_GT(decibels(power(near, 10 * kRate) / power(found.out, 10 * kRate)), 20);
        c.maxBulkDelayMs = 0;
        const Result none = cancel(c, far, near);
        EXPECT_LT(decibels(power(near, 10 * kRate) / power(none.out, 10 * kRate)), 6);
        EXPECT_FALSE(none.at(13).echoFound);
    }
}

// As long as the canceller's filter: what is cut off is left.
TEST_P(Engines, FindTheDelayOfARoom) {
    const Signal far = speech(0, 18), room = roomEchoOf(far, 0.2, 10);
    Signal near(far.size());
    constexpr std::size_t kDelay = 150 * kRate / 1000;
    std::copy(room.begin(), room.end() - kDelay, near.begin() + kDelay);
    const Result r = cancel(settings(200), far, near);
    EXPECT_NEAR(r.at(17).bulkDelayMs, 130, 22);
    EXPECT_GT(decibels(power(near, 13 * kRate) / power(r.out, 13 * kRate)), subband() ? 26 : 15);
}

// The near end is 20 dB louder than the far end, and its echo 20 dB below that.
TEST_P(Engines, KeepTheDelayWhileTheNearEndTalks) {
    constexpr std::size_t kBoth = 9 * kRate;
    Signal far = speech(0, 18), talk = speech(3.9, 18);
    for (float& v : far) v *= 0.1f;
    std::fill(talk.begin(), talk.begin() + kBoth, 0.0f);
    const Result r = cancel(settings(200), far, sum(roomEchoOf(far, 0.2, 20), talk));
    EXPECT_EQ(r.share(0, 18, [](const auto& status) { return status.bulkDelayMs > 0; }), 0);
}

TEST_P(Engines, LeaveTheNearEndAloneIfNothingComesFromTheFarEnd) {
    const Signal near = speech(0, 5), silence(near.size());
    const Result r = cancel(settings(), silence, near);
    float worst = 0;
    for (std::size_t n = 0; n < near.size(); n++) worst = std::max(worst, std::abs(r.out[n] - near[n]));
    EXPECT_LT(worst, fixed() ? 12 : 0.1);
    EXPECT_FALSE(r.at(4).farActive);
    EXPECT_FALSE(r.at(4).doubleTalk);
}

TEST_P(Engines, StepAsideForAModem) {
    // 3 s of 2100 Hz that changes its sign every 450 ms, from 5 s on; silence; speech again.
    Signal far = speech(0, 12);
    constexpr std::size_t kTone = 5 * kRate, kEnd = 8 * kRate, kSpeech = 9 * kRate;
    for (std::size_t n = kTone; n < kSpeech; n++) {
        const double sign = (n - kTone) / 3600 % 2 == 0 ? 1 : -1;
        const double t = static_cast<double>(n) / kRate;
        far[n] = n < kEnd ? static_cast<float>(6000 * sign * std::sin(2 * std::numbers::pi * 2100 * t)) : 0.0f;
    }
    Signal near = echoOf(far, 3, 6);
    for (float& v : near) v = std::round(v);
    const Result r = cancel(settings(), far, near);
    EXPECT_FALSE(r.at(4.9).toneDisabled);
    EXPECT_TRUE(r.at(7.5).toneDisabled);
    EXPECT_EQ(Signal(near.begin() + 7 * kRate, near.begin() + kEnd - 1000),
              Signal(r.out.begin() + 7 * kRate, r.out.begin() + kEnd - 1000));
    EXPECT_FALSE(r.at(8.5).toneDisabled);
    EXPECT_GT(decibels(power(near, 10 * kRate) / power(r.out, 10 * kRate)), 20);

    VspvEchoSettings deaf = settings();
    deaf.toneDisabling = 0;
    EXPECT_FALSE(cancel(deaf, far, near).at(7.5).toneDisabled);
}

TEST_P(Engines, WorkAt16kHz) {
    const Signal far = noise(6 * 16000, 2000), near = echoOf(far, 2, 10);
    const Result r = cancel(settings(16, 16000), far, near);
    EXPECT_GT(decibels(power(near, 5 * 16000) / power(r.out, 5 * 16000)), 25);
}

}  // namespace vsp::test
