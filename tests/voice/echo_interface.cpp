// What holds for every echo canceller: blocks of any length, memory of the caller, checks, any sample, threads.
#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <thread>

#include "support/hostile_signals.h"
#include "support/samples.h"
#include "support/speech.h"
#include "support/status_order.h"
#include "voice/canceller.h"

namespace vsp::test {

namespace {

// Every engine, arithmetic and rate, with and without what can be left out.
std::vector<VspvEchoSettings> allSettings() {
    std::vector<VspvEchoSettings> all;
    for (const Vsp32s engine : {vspvEchoSubband, vspvEchoFullband})
        for (const Vsp32s arithmetic : {vspvEchoFloat, vspvEchoFixed})
            for (const Vsp32s rate : {8000, 16000}) {
                VspvEchoSettings c = echoSettings(engine, arithmetic, 20, rate);
                all.push_back(c);
                c.toneDisabling = 0;
                c.maxBulkDelayMs = 0;
                c.suppression = engine == vspvEchoSubband ? 1 : 0;
                all.push_back(c);
            }
    return all;
}

std::string nameOf(const VspvEchoSettings& c) {
    return std::to_string(c.engine) + std::to_string(c.arithmetic) + ' ' + std::to_string(c.samplingRate) + ' ' +
           std::to_string(c.maxBulkDelayMs);
}

// A second of speech and a simple echo of it.
struct Call {
    Signal far, near;
};
Call call(std::size_t count = 8000) {
    const std::vector<Vsp16s> speech = recordedSpeech();
    Call c{{speech.begin() + 4000, speech.begin() + 4000 + std::ptrdiff_t(count)}, Signal(count)};
    for (std::size_t n = 60; n < count; n++) c.near[n] = std::round(0.4f * c.far[n - 50] - 0.3f * c.far[n - 60]);
    return c;
}

std::vector<Vsp16s> rounded(const Signal& x) {
    std::vector<Vsp16s> y;
    for (const float v : x) y.push_back(Vsp16s(std::lround(std::min(v, 32767.0f))));
    return y;
}

}  // namespace

TEST(EchoCanceller, GivesTheSameInAnyBlocksOfEitherType) {
    const Call c = call();
    const std::vector<Vsp16s> far = rounded(c.far), near = rounded(c.near);
    for (const VspvEchoSettings& settings : allSettings()) {
        SCOPED_TRACE(nameOf(settings));
        const Signal expected = Canceller(settings).process(c.far, c.near);
        Canceller parts(settings), overFar(settings), shorts(settings);
        std::mt19937 random(3);
        for (std::size_t n = 0, count = 0; n < c.near.size(); n += count) {
            count = std::min<std::size_t>(n < 500 ? 1 : 1 + random() % 400, c.near.size() - n);
            const auto part = [&](const auto& x) { return std::vector(x.begin() + n, x.begin() + n + count); };
            const Signal wanted = part(expected);
            // In place, at the end of memory.
            const Guarded<float> f(part(c.far));
            Guarded<float> inNear(part(c.near)), inFar(part(c.far));
            parts.process(f.data(), inNear.data(), inNear.data(), count);
            overFar.process(inFar.data(), &c.near[n], inFar.data(), count);
            ASSERT_EQ(wanted, inNear.values());
            ASSERT_EQ(wanted, inFar.values());

            const Guarded<Vsp16s> farShorts(part(far)), nearShorts(part(near));
            Guarded<Vsp16s> out(count);
            ASSERT_EQ(vspStsNoErr, vspvEchoCancellerProcess_16s(shorts.get(), farShorts.data(), nearShorts.data(),
                                                                out.data(), Vsp32s(count)));
            ASSERT_EQ(rounded(wanted), out.values());
        }
    }
}

TEST(EchoCanceller, StartsAgainAndDependsOnNothingOutside) {
    const Call c = call();
    for (const VspvEchoSettings& settings : allSettings()) {
        SCOPED_TRACE(nameOf(settings));
        Canceller one(settings);
        const Signal expected = one.process(c.far, c.near);
        EXPECT_EQ(vspStsNoErr, vspvEchoCancellerInit(one.get(), &settings));
        EXPECT_EQ(expected, one.process(c.far, c.near));
        EXPECT_FALSE(one.memory().changedOutside());
        // Memory that begins anywhere.
        const std::size_t words = one.memory().size();
        for (std::size_t shift = 0; shift < 8; shift++) {
            Guarded<Vsp64s> memory(words, Guard::begin, shift);
            const auto object = reinterpret_cast<VspvEchoCanceller*>(memory.data());
            ASSERT_EQ(vspStsNoErr, vspvEchoCancellerInit(object, &settings));
            Signal out(1000);
            ASSERT_EQ(vspStsNoErr, vspvEchoCancellerProcess_32f(object, c.far.data(), c.near.data(), out.data(), 1000));
            EXPECT_TRUE(std::equal(out.begin(), out.end(), expected.begin()));
        }
    }
}

TEST(EchoCanceller, IsTheSameOnSeveralThreads) {
    const Call c = call();
    for (const VspvEchoSettings& settings : allSettings()) {
        const Signal expected = Canceller(settings).process(c.far, c.near);
        Signal out[2];
        {
            std::jthread first([&] { out[0] = Canceller(settings).process(c.far, c.near); });
            std::jthread second([&] { out[1] = Canceller(settings).process(c.far, c.near); });
        }
        EXPECT_EQ(expected, out[0]) << nameOf(settings);
        EXPECT_EQ(expected, out[1]) << nameOf(settings);
    }
}

// NaN is as silence, and nothing is louder than twice full scale.
TEST(EchoCanceller, SurvivesAnyValue) {
    constexpr float kMost = 65536, kInfinite = std::numeric_limits<float>::infinity();
    const float values[] = {std::nanf(""), -std::nanf(""), kInfinite, -kInfinite, 3e38f, -3e38f, 66e3f, -66e3f, 1e-40f, 0};
    for (const VspvEchoSettings& settings : allSettings()) {
        SCOPED_TRACE(nameOf(settings));
        Call bad = call(24000);
        std::mt19937 random(5);
        for (std::size_t n = 8000; n < 12000; n++) {
            const bool noise = n < 9000, nan = n >= 11000;
            bad.far[n] = noise ? values[random() % 10] : nan ? values[0] : values[n / 40 % 2 + 2];
            bad.near[n] = noise ? values[random() % 10] : bad.far[n];
        }
        Call clean = bad;
        for (Signal* signal : {&clean.far, &clean.near})
            for (float& v : *signal) v = std::isnan(v) ? 0 : std::clamp(v, -kMost, kMost);
        Canceller first(settings), second(settings);
        const Signal out = first.process(bad.far, bad.near);
        EXPECT_EQ(second.process(clean.far, clean.near), out);
        EXPECT_TRUE(std::all_of(out.begin(), out.end(), [](float v) { return std::abs(v) < 8 * kMost; }));
        const VspvEchoStatus s = first.status();
        EXPECT_TRUE(std::isfinite(s.erle) && s.stepSize >= 0 && s.stepSize <= 1 && s.bulkDelayMs >= 0);
    }
}

TEST(EchoCanceller, HostileSignalsGetLouderByOneDecibelAtMost) {
    const HostileCall call = hostileCall(22);
    for (const VspvEchoSettings& settings : allSettings()) {
        if (settings.samplingRate != kHostileRate) continue;
        SCOPED_TRACE(nameOf(settings));
        Canceller canceller(settings);
        Signal out = canceller.process(call.far, call.near);
        out.erase(out.begin(), out.begin() + static_cast<std::ptrdiff_t>(canceller.latency()));
        out.resize(call.near.size());
        for (const HostileKind& kind : call.kinds) EXPECT_LT(mostLouder(call, out, kind), 1) << kind.name;
    }
}

TEST(EchoCanceller, ChecksComeInOrderAndTouchNothing) {
    const double nan = std::nan("");
    const VspvEchoSettings good = echoSettings(vspvEchoSubband, vspvEchoFloat);
    std::vector<VspvEchoSettings> bad;
    std::vector<VspStatus> status;
    const auto add = [&](VspStatus s, auto field, std::initializer_list<double> values) {
        for (const double v : values) {
            bad.push_back(good);
            bad.back().*field = std::remove_reference_t<decltype(bad.back().*field)>(v);
            status.push_back(s);
        }
    };
    add(vspStsRangeErr, &VspvEchoSettings::samplingRate, {0, -8000, 11025, 48000, kLowest});
    add(vspStsBadArgErr, &VspvEchoSettings::engine, {-1, 2, kLowest});
    add(vspStsBadArgErr, &VspvEchoSettings::arithmetic, {-1, 2, kLowest});
    add(vspStsBadArgErr, &VspvEchoSettings::toneDisabling, {-1, 2, kLowest});
    add(vspStsBadArgErr, &VspvEchoSettings::suppression, {-1, 2, kLowest});
    add(vspStsRangeErr, &VspvEchoSettings::tailMs, {0, 0.99, 500.5, -32, 1e300, nan});
    add(vspStsRangeErr, &VspvEchoSettings::maxBulkDelayMs, {-0.5, 1000.5, 1e300, nan});
    bad.push_back(good);
    bad.back().engine = vspvEchoFullband;
    bad.back().suppression = 1;
    status.push_back(vspStsBadArgErr);
    bad.push_back(bad[0]);  // the range before the modes
    bad.back().engine = 2;
    status.push_back(vspStsRangeErr);

    Choices<const VspvEchoSettings*> choices{&good, {{nullptr, vspStsNullPtrErr}}};
    for (std::size_t i = 0; i < bad.size(); i++) choices.bad.emplace_back(&bad[i], status[i]);
    const std::vector<VspStatus> order{vspStsNullPtrErr, vspStsRangeErr, vspStsBadArgErr};
    expectStatusOrder(vspvEchoCancellerGetSize, order, choices, pointer);
    expectStatusOrder(vspvEchoCancellerInit, order, pointer, choices);
    const Choices<Vsp32s> rate{8000, {{0, vspStsRangeErr}, {44100, vspStsRangeErr}, {kLowest, vspStsRangeErr}}};
    expectStatusOrder(vspvEchoCancellerDefaults, {vspStsNullPtrErr, vspStsRangeErr}, rate, pointer);
    const std::vector<VspStatus> lengthLast{vspStsNullPtrErr, vspStsSizeErr};
    expectStatusOrder(vspvEchoCancellerProcess_16s, lengthLast, pointer, pointer, pointer, pointer, length);
    expectStatusOrder(vspvEchoCancellerProcess_32f, lengthLast, pointer, pointer, pointer, pointer, length);
    expectStatusOrder(vspvEchoCancellerLatency, {vspStsNullPtrErr}, pointer, pointer);
    expectStatusOrder(vspvEchoCancellerStatus, {vspStsNullPtrErr}, pointer, pointer);
}

TEST(EchoCanceller, WorksAtTheEndsOfItsRanges) {
    const Call c = call(16000);
    for (VspvEchoSettings settings : allSettings())
        for (const double tail : {1.0, 500.0}) {
            settings.tailMs = tail;
            SCOPED_TRACE(nameOf(settings) + ' ' + std::to_string(tail));
            Canceller canceller(settings);
            const Signal out = canceller.process(c.far, c.near);
            EXPECT_TRUE(std::all_of(out.begin(), out.end(), [](float v) { return std::abs(v) < 32768; }));
            EXPECT_LE(canceller.latency(), std::size_t(settings.samplingRate / 8));
        }
}

}  // namespace vsp::test
