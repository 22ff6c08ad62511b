// The adaptive-codebook vector, the closed-loop searches and the gain against the standard's definition.
#include <array>
#include <set>

#include "g729/signals.h"
#include "support/guarded.h"
#include "support/level_test.h"

// What the searches use inside, at each level.
namespace vsp {
#define VSPSC_INTERNALS(level)                                                                     \
    namespace level {                                                                              \
    void ownNorm_Corr(const Vsp16s*, const Vsp16s*, const Vsp16s*, int t_min, int t_max, Vsp16s*); \
    Vsp32s ownInterpol_3(const Vsp16s*, int);                                                      \
    }
VSPSC_INTERNALS(y8)
VSPSC_INTERNALS(v3)
VSPSC_INTERNALS(v4)
#undef VSPSC_INTERNALS
}  // namespace vsp

namespace vsp::test::g729 {

class AdaptiveCodebook : public LevelTest {};
VSPSC_EVERY_LEVEL(AdaptiveCodebook);

class PitchInternals : public LevelTest {
  protected:
    decltype(&v4::ownNorm_Corr) normCorr = GetParam() == "v4"   ? v4::ownNorm_Corr
                                           : GetParam() == "v3" ? v3::ownNorm_Corr
                                                                : y8::ownNorm_Corr;
    decltype(&v4::ownInterpol_3) interpol3 = GetParam() == "v4"   ? v4::ownInterpol_3
                                             : GetParam() == "v3" ? v3::ownInterpol_3
                                                                  : y8::ownInterpol_3;
};
INSTANTIATE_TEST_SUITE_P(, PitchInternals, ::testing::Values("y8", "v3", "v4"),
                         [](const auto& test) { return test.param; });

TEST_P(PitchInternals, NormCorrMatchesItsVectorsAndTheDefinition) {
    for (const VectorCase& c : readVectorCases("g729/kernel_norm_corr.vec")) {
        const auto input = [&](std::size_t i) { return Guarded<Vsp16s>(c.arguments[i].inputs<Vsp16s>()); };
        const auto excitation = input(0), target = input(1), impulse = input(2);
        const auto expected = c.arguments[5].outputs<Vsp16s>();
        Guarded<Vsp16s> corr(expected.size());
        normCorr(excitation.data() + 154, target.data(), impulse.data(), c.arguments[3].inputs<Vsp32s>()[0],
                 c.arguments[4].inputs<Vsp32s>()[0], corr.data());
        ASSERT_EQ(expected, corr.values()) << c.label;
    }
    const auto excitations = synthetic(194, 8), targets = synthetic(40, 9), impulses = synthetic(40, 10);
    for (std::size_t i = 0; i < excitations.size(); i++) {
        const Signal &x = targets[i * 5 % targets.size()], &h = impulses[i * 11 % impulses.size()];
        const int t_min = 16 + int(i * 13 % 115), t_max = std::min(t_min + 17, 147);
        Guarded<Vsp16s> corr(std::size_t(t_max - t_min + 1));
        normCorr(excitations[i].data() + 154, x.data(), h.data(), t_min, t_max, corr.data());
        ASSERT_EQ(Norm_Corr(api, excitations[i].data() + 154, x.data(), h.data(), t_min, t_max), corr.values()) << i;
    }
}

TEST_P(PitchInternals, Interpol3MatchesItsVectors) {
    for (const VectorCase& c : readVectorCases("g729/kernel_interpol_3.vec")) {
        const Guarded<Vsp16s> corr(c.arguments[0].inputs<Vsp16s>());
        EXPECT_EQ(c.arguments[2].outputs<Vsp32s>()[0], interpol3(corr.data() + 4, c.arguments[1].inputs<Vsp32s>()[0]));
    }
}

// Every delay pair, on silence, quiet and loud signals, the short lags' feedback included.
TEST_P(AdaptiveCodebook, VectorMatchesASampleBySampleDefinition) {
    auto signals = synthetic(194, 11);
    for (const Signal& s : recorded("vspsAdaptiveCodebookSearch_G729_16s", "excitation"))
        if (signals.size() < 100) signals.push_back(s);
    for (const Signal& signal : signals)
        for (Vsp16s lag = 18; lag <= 144; lag++)
            for (Vsp16s fraction = -1; fraction <= 1; fraction++) {
                const Vsp16s delay[2] = {lag, fraction};
                Guarded<Vsp16s> excitation(signal, lag % 2 == 0 ? Guard::begin : Guard::end), vector(40);
                Signal expected = signal;
                Pred_lt_3(expected, lag, fraction);
                ASSERT_EQ(vspStsNoErr, api.vspsDecodeAdaptiveVector_G729_16s(delay, excitation.data(), vector.data()));
                ASSERT_EQ(expected, excitation.values()) << lag << ", " << fraction;
                ASSERT_EQ(Signal(expected.begin() + 154, expected.end()), vector.values());
                std::copy(signal.begin(), signal.end(), excitation.begin());
                ASSERT_EQ(vspStsNoErr, api.vspsDecodeAdaptiveVector_G729_16s_I(delay, excitation.data()));
                ASSERT_EQ(expected, excitation.values()) << lag << ", " << fraction;
            }
}

// The largest partial sums: for one output and `added` of its products the samples have the signs of the taps, then the
// opposite ones. Levels on both sides of where such a sum leaves 32 bits.
TEST_P(AdaptiveCodebook, VectorSaturatesWhereAPartialSumDoes) {
    for (int fraction = -1; fraction <= 1; fraction++)
        for (int added = 1; added <= 20; added++)
            for (const int level : {18000, 18078, 18500, 19500, 20057, 24000, 32767}) {
                const int f = fraction > 0 ? 3 - fraction : -fraction, lag = 100, n = 13;
                Signal signal(194);
                Vsp16s* const middle = &signal[std::size_t(154 - lag - (fraction > 0) + n)];
                for (int k = 0; k < 20; k++) {
                    const int tap = k % 2 == 0 ? kInter3l[f + 3 * (k / 2)] : kInter3l[3 - f + 3 * (k / 2)];
                    const bool positive = (tap >= 0) == (k < added);
                    *(k % 2 == 0 ? middle - k / 2 : middle + 1 + k / 2) = Vsp16s(positive ? level : -level);
                }
                Signal expected = signal;
                Pred_lt_3(expected, lag, fraction);
                const Vsp16s delay[2] = {Vsp16s(lag), Vsp16s(fraction)};
                ASSERT_EQ(vspStsNoErr, api.vspsDecodeAdaptiveVector_G729_16s_I(delay, signal.data()));
                ASSERT_EQ(expected, signal) << fraction << ", " << added << ", " << level;
            }
}

TEST_P(AdaptiveCodebook, FloatVectorFollowsTheFixedPointOne) {
    Signal signal = samples(195, 12);
    for (Vsp16s& s : signal) s = Vsp16s(s >> 2);
    for (Vsp32s lag = 18; lag <= 145; lag++)
        for (Vsp32s fraction = -1; fraction <= 1; fraction++) {
            const Vsp32s delay[2] = {lag, fraction};
            Guarded<Vsp32f> excitation(195, Guard::begin);
            std::copy(signal.begin(), signal.end(), excitation.begin());
            ASSERT_EQ(vspStsNoErr, api.vspsDecodeAdaptiveVector_G729_32f_I(delay, excitation.data() + 155));
            Signal expected(signal.begin() + 1, signal.end());
            if (lag == 145) {  // one sample further back than the 16-bit buffer goes
                expected.insert(expected.begin(), signal[0]);
                expected.pop_back();
            }
            Pred_lt_3(expected, std::min(lag, 144), fraction);
            // Short lags take the rounding of earlier samples along.
            const std::size_t n = lag == 145 ? 39 : 40;
            for (std::size_t i = 0; i < n; i++)
                ASSERT_NEAR(expected[154 + i], excitation[155 + i], 4) << lag << ", " << fraction;
        }
}

// Lags over the whole range, clipped at both ends, all combinations of quiet and extreme signals.
TEST_P(AdaptiveCodebook, SearchesFollowTheDefinition) {
    auto excitations = synthetic(194, 13), targets = synthetic(40, 14), impulses = synthetic(40, 15);
    for (Signal& h : impulses)
        for (Vsp16s& s : h) s = Vsp16s(s >> 2);
    for (const auto& [signals, argument] :
         {std::pair(&excitations, "excitation"), std::pair(&targets, "target"), std::pair(&impulses, "impulse")})
        for (const Signal& s : recorded("vspsAdaptiveCodebookSearch_G729_16s", argument)) signals->push_back(s);
    std::set<Delay> delays;
    for (std::size_t i = 0; i < excitations.size(); i++)
        for (Vsp16s lag = Vsp16s(18 + i % 8); lag <= 145; lag = Vsp16s(lag + 8 + i % 5))
            for (Vsp16s subframe = 0; subframe <= 1; subframe++) {
                const Signal &x = targets[(i + std::size_t(lag)) % targets.size()],
                             &h = impulses[(i + std::size_t(lag)) % impulses.size()];
                SCOPED_TRACE(testing::Message() << "signal " << i << ", lag " << lag << ", subframe " << subframe);
                const Guarded<Vsp16s> target(x), impulse(h), constant(excitations[i], Guard::begin);
                Guarded<Vsp16s> excitation(excitations[i]), vector(40), delay(2);
                const auto found = [&] { return Delay(delay[0], delay[1]); };

                Signal expected = excitations[i];
                const Delay main = Pitch_fr3(api, expected, x, h, lag, subframe, false);
                Pred_lt_3(expected, main.first, main.second);
                ASSERT_EQ(vspStsNoErr,
                          api.vspsAdaptiveCodebookSearch_G729_16s(lag, target.data(), impulse.data(), excitation.data(),
                                                                  delay.data(), vector.data(), subframe));
                ASSERT_EQ(main, found());
                ASSERT_EQ(expected, excitation.values());
                ASSERT_EQ(Signal(expected.begin() + 154, expected.end()), vector.values());
                delays.insert(main);

                ASSERT_EQ(vspStsNoErr, api.vspsAdaptiveCodebookSearch_G729D_16s(lag, target.data(), impulse.data(),
                                                                                constant.data(), subframe, delay.data()));
                ASSERT_EQ(Pitch_fr3(api, excitations[i], x, h, lag, subframe, true), found());

                expected = excitations[i];
                std::copy(expected.begin(), expected.end(), excitation.begin());
                const Delay fast = Pitch_fr3_fast(expected, x, h, lag, subframe);
                ASSERT_EQ(vspStsNoErr,
                          api.vspsAdaptiveCodebookSearch_G729A_16s(lag, target.data(), impulse.data(), excitation.data(),
                                                                   delay.data(), vector.data(), subframe));
                ASSERT_EQ(fast, found());
                ASSERT_EQ(expected, excitation.values());
                ASSERT_EQ(Signal(expected.begin() + 154, expected.end()), vector.values());
            }
    EXPECT_GT(delays.size(), 200u);  // of 125 lags with up to three fractions
}

// Silence makes every lag equal, whatever the target.
TEST_P(AdaptiveCodebook, TiesOfTheSearches) {
    const Signal x = samples(40), h(40, 1000);
    const auto search = [&](auto function, Vsp16s lag, Vsp16s subframe) {
        Signal excitation(194), vector(40);
        Vsp16s delay[2];
        if constexpr (std::is_same_v<decltype(function), decltype(&::vspsAdaptiveCodebookSearch_G729D_16s)>)
            EXPECT_EQ(vspStsNoErr, function(lag, x.data(), h.data(), excitation.data(), subframe, delay));
        else
            EXPECT_EQ(vspStsNoErr, function(lag, x.data(), h.data(), excitation.data(), delay, vector.data(), subframe));
        return Delay(delay[0], delay[1]);
    };
    const auto main = api.vspsAdaptiveCodebookSearch_G729_16s, fast = api.vspsAdaptiveCodebookSearch_G729A_16s;
    const auto annexD = api.vspsAdaptiveCodebookSearch_G729D_16s;
    EXPECT_EQ(Delay(143, 0), search(main, 142, 0));  // clipped to 137 .. 143, the longest; no fraction above 84
    EXPECT_EQ(Delay(137, 0), search(fast, 142, 0));  // the shortest
    EXPECT_EQ(Delay(103, 0), search(main, 100, 0));
    EXPECT_EQ(Delay(83, 1), search(main, 81, 0));  // 84 has fractions, of which the first is -2/3
    EXPECT_EQ(Delay(85, 0), search(main, 82, 0));
    EXPECT_EQ(Delay(142, 1), search(main, 145, 1));
    EXPECT_EQ(Delay(134, 0), search(fast, 145, 1));
    EXPECT_EQ(Delay(20, 0), search(fast, 18, 1));
    EXPECT_EQ(Delay(103, 0), search(annexD, 100, 0));
    EXPECT_EQ(Delay(104, 0), search(annexD, 100, 1));
}

TEST_P(AdaptiveCodebook, GainFollowsTheDefinition) {
    const auto targets = synthetic(40, 16), vectors = synthetic(40, 17);
    auto impulses = synthetic(40, 18);
    for (std::size_t i = 0; i < impulses.size(); i++)
        if (i % 3 != 0) impulses[i] = Signal{4096, Vsp16s(i), Vsp16s(-7 * int(i))}, impulses[i].resize(40);
    std::size_t most = 0, none = 0, total = 0;
    for (std::size_t i = 0; i < targets.size(); i++)
        for (std::size_t j = i % 3; j < vectors.size(); j += 3) {
            const Signal &h = impulses[(i + j) % impulses.size()], y = Convolve(vectors[j].data(), h.data(), 40, 12);
            const Guarded<Vsp16s> target(i % 2 == 0 ? targets[i] : y), impulse(h), vector(vectors[j]);
            Guarded<Vsp16s> filtered(40), gain(1);
            ASSERT_EQ(vspStsNoErr, api.vspsAdaptiveCodebookGain_G729_16s(target.data(), impulse.data(), vector.data(),
                                                                         filtered.data(), gain.data()));
            ASSERT_EQ(y, filtered.values());
            ASSERT_EQ(G_pitch(target.values(), y), gain[0]) << i << ", " << j;

            bool overflow = false;
            const Signal z = Syn_filt(h.data(), vectors[j], Signal(10, 0), 12, overflow);
            ASSERT_EQ(vspStsNoErr, api.vspsAdaptiveCodebookGain_G729A_16s(target.data(), impulse.data(), vector.data(),
                                                                          filtered.data(), gain.data()));
            ASSERT_EQ(z, filtered.values());
            ASSERT_EQ(G_pitch(target.values(), z), gain[0]) << i << ", " << j;
            most += gain[0] == 19661;
            none += gain[0] == 0;
            total++;
        }
    EXPECT_GT(total - most - none, total / 10);
    EXPECT_GT(most, 0u);
}

}  // namespace vsp::test::g729
