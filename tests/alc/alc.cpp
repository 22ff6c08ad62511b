// The level control against recorded results and against its plain form, the state after every call included.
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <random>

#include "alc/alc_reference.h"
#include "support/guarded.h"
#include "support/level_test.h"
#include "support/samples.h"
#include "support/speech.h"
#include "support/vector_case.h"

namespace vsp::test {

namespace {

using Signal = std::vector<Vsp16s>;
using State = VspALCState_G169_16s;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

Signal noise(std::size_t n, double amplitude) {
    std::mt19937 random(unsigned(n) + unsigned(amplitude));
    Signal signal(n);
    for (Vsp16s& x : signal) x = Vsp16s(amplitude * (double(random()) * 0x1p-31 - 1));
    return signal;
}

void append(Signal& to, const Signal& more) { to.insert(to.end(), more.begin(), more.end()); }

// Five minutes: the prompt again and again, from very soft to clipped.
Signal longRecording() {
    const Signal prompt = recordedSpeech();
    Signal signal;
    for (const double gain : {1.0, 0.03, 4.0, 0.3, 20.0, 0.001, 0.1, 1.5, 0.01, 8.0, 0.5, 2.0, 0.2, 1.0})
        for (const Vsp16s x : prompt) signal.push_back(Vsp16s(std::lround(std::clamp(gain * x, -32768.0, 32767.0))));
    signal.resize(signal.size() / 8 * 8);
    return signal;
}

// Speech-like bursts over soft noise, some too short to count, with pauses on both sides of the hangover.
Signal bursts() {
    Signal signal = noise(4000, 10);
    for (const int blocks : {3, 30, 49, 50, 51, 600, 9, 10, 11, 2000, 1})
        for (const double amplitude : {300.0, 4000.0, 30000.0}) {
            append(signal, noise(std::size_t(blocks) * 8, amplitude));
            append(signal, noise(std::size_t(blocks) % 2 == 0 ? 8000 : 2400, 10));
        }
    return signal;
}

Signal extremes() {
    Signal signal(8000, 0);
    append(signal, Signal(4000, -32768));
    append(signal, Signal(8000, 32767));
    append(signal, samples(16000));
    append(signal, Signal(80000, 0));
    append(signal, Signal(8, -32768));
    append(signal, Signal(16000, 1));
    append(signal, noise(200000, 32767));
    return signal;
}

}  // namespace

class LevelControl : public LevelTest {
  protected:
    void SetUp() override {
        LevelTest::SetUp();
        if (!IsSkipped()) api.vspsALCInit_G169_16s(state);
    }

    AlcReference stateNow() const {
        AlcReference copy;
        std::memcpy(static_cast<void*>(&copy), memory.data(), sizeof copy);
        return copy;
    }
    // NOLINTNEXTLINE(bugprone-*,cert-*): every bit counts, and there is no padding
    bool stateIs(const AlcReference& expected) const { return std::memcmp(&expected, memory.data(), sizeof expected) == 0; }

    // Runs the signal through the library and the plain form. Calls take turns to have the given numbers of blocks.
    void expectAsReference(AlcReference reference, const Signal& signal, const std::vector<int>& blocks, bool inPlace) {
        Signal expected;
        for (std::size_t at = 0, call = 0; at < signal.size(); at += expected.size(), call++) {
            expected.resize(std::min(signal.size() - at, 8 * std::size_t(blocks[call % blocks.size()])));
            for (std::size_t i = 0; i < expected.size(); i += 8) reference.block(&signal[at + i], &expected[i]);
            const auto begin = signal.begin() + std::ptrdiff_t(at), end = begin + std::ptrdiff_t(expected.size());
            Guarded<Vsp16s> src(Signal(begin, end), Guard::end, call % 3), dst(expected.size(), Guard::begin, call % 5);
            Guarded<Vsp16s>& result = inPlace ? src : dst;
            ASSERT_EQ(vspStsNoErr, api.vspsALC_G169_16s(src.data(), result.data(), Vsp32s(expected.size()), state));
            ASSERT_EQ(expected, result.values()) << "from sample " << at;
            ASSERT_TRUE(inPlace || std::equal(begin, end, src.begin())) << "source changed";
            ASSERT_TRUE(stateIs(reference)) << "state after sample " << at + expected.size();
        }
    }

    Guarded<Vsp32u> memory{31};
    State* const state = reinterpret_cast<State*>(memory.data());
};
VSPSC_EVERY_LEVEL(LevelControl);

TEST_P(LevelControl, RecordedResultsHoldForEverySplitIntoCalls) {
    const auto cases = readItemCases("alc/alc_16s.vec");
    for (std::size_t number = 0; number < cases.size(); number++) {
        const auto settings = cases[number][0].values<Vsp32f>();
        const Signal input = cases[number][1].values<Vsp16s>(), expected = cases[number][2].values<Vsp16s>();
        for (const std::size_t part : {input.size(), std::size_t(8), std::size_t(240)}) {
            ASSERT_EQ(vspStsNoErr, api.vspsALCInit_G169_16s(state));
            if (settings[0] >= 0) {
                ASSERT_EQ(vspStsNoErr, api.vspsALCSetLevel_G169_16s(state, settings[0], settings[1]));
            }
            if (settings[2] >= 0) {
                ASSERT_EQ(vspStsNoErr, api.vspsALCSetGain_G169_16s(state, settings[2]));
            }
            Signal output(input.size());
            for (std::size_t i = 0; i < input.size(); i += part)
                ASSERT_EQ(vspStsNoErr,
                          api.vspsALC_G169_16s(&input[i], &output[i], Vsp32s(std::min(part, input.size() - i)), state));
            ASSERT_EQ(expected, output) << "case " << number << " in parts of " << part;
        }
    }
}

TEST_P(LevelControl, FollowsTheMethodOnALongRecording) {
    expectAsReference(AlcReference(), longRecording(), {1, 20, 3, 101, 10, 8, 15}, false);
}

TEST_P(LevelControl, FollowsTheMethodOnBurstsSilenceAndExtremes) {
    for (const Signal& signal : {bursts(), extremes(), Signal(40000, 0)})
        for (const bool inPlace : {false, true}) {
            ASSERT_EQ(vspStsNoErr, api.vspsALCInit_G169_16s(state));
            expectAsReference(AlcReference(), signal, {1, 7, 30}, inPlace);
            if (HasFatalFailure()) return;
        }
}

// States that a signal reaches late or hardly ever: counters at their limits, levels of every size.
TEST_P(LevelControl, FollowsTheMethodFromAnyState) {
    std::mt19937 random(1);
    const auto oneOf = [&](const auto&... x) {
        const std::array<Vsp16s, sizeof...(x)> choices{Vsp16s(x)...};
        return choices[random() % choices.size()];
    };
    const auto upTo = [&](float most) { return most * std::exp2(-float(random() % 1000) / 70); };
    for (int run = 0; run < 5000; run++) {
        AlcReference state0;
        state0.h = oneOf(0, 50, 198, 199, 200, 16382, 16383);
        state0.c = oneOf(0, 1, 2, 3, 16382, 16383);
        state0.k = oneOf(0, 8, 9, 19, 20, 48, 49, 50, 498, 499, 500, 501, 16382, 16383);
        state0.A = oneOf(0, 1);
        for (float* level : {&state0.E, &state0.Pk, &state0.S, &state0.V, &state0.Lambda}) *level = upTo(32767);
        if (run % 3 == 0) state0.Lambda = upTo(0.06f);
        state0.N = upTo(65.38f);
        state0.theta = 4 * state0.N;
        state0.P = state0.Lambda * state0.Lambda;
        state0.savedP = upTo(1e9f);
        for (float* ratio : {&state0.r, &state0.lambda, &state0.G, &state0.g, &state0.a, &state0.savedG, &state0.savedR})
            *ratio = upTo(1);
        std::memcpy(memory.data(), &state0, sizeof state0);
        expectAsReference(state0, noise(8 * std::size_t(1 + run % 20), double(upTo(32767))), {1, 2, 9}, false);
        ASSERT_FALSE(HasFatalFailure()) << "run " << run;
    }
}

TEST_P(LevelControl, AnySettingsGiveFiniteStates) {
    const float levels[] = {0.0f, 26.1f, 96.0f, 1e4f, std::numeric_limits<float>::max(), kInfinity};
    Signal signal = bursts();
    signal.resize(40000);
    append(signal, extremes());
    int combination = 0;
    for (const float target : levels)
        for (const float limit : levels)
            for (const float gain : levels) {
                if (combination++ % 3 != 0) continue;
                ASSERT_EQ(vspStsNoErr, api.vspsALCInit_G169_16s(state));
                ASSERT_EQ(vspStsNoErr, api.vspsALCSetLevel_G169_16s(state, target, limit));
                ASSERT_EQ(vspStsNoErr, api.vspsALCSetGain_G169_16s(state, gain));
                AlcReference reference;
                reference.setLevel(target, limit);
                reference.setGain(gain);
                expectAsReference(reference, signal, {300}, true);
                const AlcReference now = stateNow();
                for (const float x : {now.E, now.Pk, now.S, now.P, now.r, now.Lambda, now.G, now.g, now.a})
                    ASSERT_TRUE(std::isfinite(x)) << target << ", " << limit << ", " << gain;
            }
}

TEST_P(LevelControl, AttenuatesAtFirstAndKeepsTheLimit) {
    const Signal first(8, 3200);
    Signal output(8);
    ASSERT_EQ(vspStsNoErr, api.vspsALC_G169_16s(first.data(), output.data(), 8, state));
    EXPECT_EQ(Signal(8, 100), output);  // 1/32

    ASSERT_EQ(vspStsNoErr, api.vspsALCInit_G169_16s(state));
    ASSERT_EQ(vspStsNoErr, api.vspsALCSetLevel_G169_16s(state, 0.0f, 20.0f));
    Signal signal = longRecording();
    ASSERT_EQ(vspStsNoErr, api.vspsALC_G169_16s(signal.data(), signal.data(), Vsp32s(signal.size()), state));
    const auto [lowest, highest] = std::minmax_element(signal.begin(), signal.end());
    EXPECT_LE(std::max(-*lowest, +*highest), 3276);  // 20 dB below 32768
    EXPECT_GT(std::max(-*lowest, +*highest), 3200);
}

TEST_P(LevelControl, SettersStoreLinearValues) {
    EXPECT_TRUE(stateIs(AlcReference()));  // as initialised
    for (const float x : {0.0f, -0.0f, 1.0f, 6.0f, 26.1f, 700.0f, 1e6f, std::numeric_limits<float>::max(), kInfinity}) {
        AlcReference expected = stateNow();
        expected.setLevel(x, x / 2);
        expected.setGain(x);
        EXPECT_EQ(vspStsNoErr, api.vspsALCSetLevel_G169_16s(state, x, x / 2));
        EXPECT_EQ(vspStsNoErr, api.vspsALCSetGain_G169_16s(state, x));
        EXPECT_TRUE(stateIs(expected)) << x;
        if (x == 0) {
            EXPECT_TRUE(expected.T == 32768 && expected.L == 32768 && expected.Gmax == 1);
        }
    }
}

}  // namespace vsp::test
