// The open-loop searches, and the lag scan below them, against the standard's definition.
#include <cmath>

#include "g729/signals.h"
#include "support/guarded.h"
#include "support/level_test.h"

namespace vsp::test::g729 {

class OpenLoop : public LevelTest {
  protected:
    int search(const Signal& signal, VspStatus (*function)(const Vsp16s*, Vsp16s*)) {
        const Guarded<Vsp16s> guarded(signal);
        Vsp16s lag = -1;
        EXPECT_EQ(vspStsNoErr, function(guarded.data() + 143, &lag));
        return lag;
    }
    void expectReferenceLags(const Signal& signal) {
        EXPECT_EQ(Pitch_ol(api, signal), search(signal, api.vspsOpenLoopPitchSearch_G729_16s));
        EXPECT_EQ(Pitch_ol_fast(api, signal), search(signal, api.vspsOpenLoopPitchSearch_G729A_16s));
    }
};
VSPSC_EVERY_LEVEL(OpenLoop);

TEST_P(OpenLoop, FollowsTheDefinitionFromSilenceToFullScale) {
    for (unsigned seed = 1; seed <= 4; seed++)
        for (const Signal& signal : synthetic(223, seed)) ASSERT_NO_FATAL_FAILURE(expectReferenceLags(signal));
    for (int shift = 0; shift <= 8; shift += 4)
        for (const Signal& signal : recorded("vspsOpenLoopPitchSearch_G729_16s", "wsp", shift))
            ASSERT_NO_FATAL_FAILURE(expectReferenceLags(signal));
}

// Noise whose energy, that of all samples and that of every second one, is one less than, exactly, and one more than the
// smallest that is not scaled up. Scaling changes the rounding of the normalised correlations, and so some of the lags.
TEST_P(OpenLoop, SignalsAreScaledUpBelowTheThresholdOnly) {
    std::mt19937 random(1);
    const auto fill = [&random](std::size_t step, int amplitude, int energy, Signal& signal) {
        const std::size_t corrected = 8 * step;  // the first samples take what the others leave
        for (std::size_t i = corrected; i < signal.size(); i += step) {
            const int x = int(random() % unsigned(2 * amplitude + 1)) - amplitude;
            if (x * x > energy) break;
            signal[i] = Vsp16s(x);
            energy -= x * x;
        }
        for (std::size_t i = 0; i < corrected; i += step) {
            signal[i] = Vsp16s(std::sqrt(energy));
            energy -= signal[i] * signal[i];
        }
        ASSERT_EQ(0, energy);
    };
    for (int i = 0; i < 100; i++)
        for (const int beside : {-1, 0, 1}) {
            Signal signal(223), decimated(223);
            fill(1, 85, (1 << 19) + beside, signal);
            fill(2, 123, (1 << 19) + beside, decimated);
            for (std::size_t odd = 1; odd < 223; odd += 2) decimated[odd] = Vsp16s(signal[odd] / 4);
            expectReferenceLags(signal);
            expectReferenceLags(decimated);
        }
}

// Only odd samples are loud, which the decimated energy does not see: what is shifted left saturates, so do correlations.
TEST_P(OpenLoop, AnnexASaturatesWhatItsEnergyMisses) {
    for (const int amplitude : {4000, 20000, 32767}) {
        Signal signal(223, 1);
        for (std::size_t i = 1; i < signal.size(); i += 2) signal[i] = Vsp16s(i % 3 == 0 ? amplitude : -amplitude);
        expectReferenceLags(signal);
    }
}

// Exactly periodic: all multiples of the period correlate alike.
TEST_P(OpenLoop, TiesGoToTheShorterLag) {
    for (const std::size_t period : {20u, 25u, 31u, 39u, 41u, 47u, 71u}) {
        const Signal cycle = samples(period, unsigned(period));
        Signal signal;
        for (std::size_t i = 0; i < 223; i++) signal.push_back(Vsp16s(cycle[i % period] >> 4));
        EXPECT_EQ(int(period), search(signal, api.vspsOpenLoopPitchSearch_G729_16s));
        EXPECT_EQ(int(period), search(signal, api.vspsOpenLoopPitchSearch_G729A_16s));
        Vsp32s max = 0, lag = 0;
        ASSERT_EQ(vspStsNoErr, api.vspsAutoCorrLagMax_Inv_16s(&signal[143], 80, 20, 143, &max, &lag));
        EXPECT_EQ(int(period), lag);
    }
}

TEST_P(OpenLoop, FloatFindsTheLagOfTheFixedPointSearch) {
    std::size_t agreed = 0, total = 0;
    for (const Signal& signal : recorded("vspsOpenLoopPitchSearch_G729A_16s", "wsp")) {
        const std::vector<Vsp32f> values(signal.begin(), signal.end());
        const Guarded<Vsp32f> guarded(values);
        Vsp32s lag = 0;
        ASSERT_EQ(vspStsNoErr, api.vspsOpenLoopPitchSearch_G729A_32f(guarded.data() + 143, &lag));
        agreed += lag == search(signal, api.vspsOpenLoopPitchSearch_G729A_16s);
        total++;
    }
    EXPECT_GT(agreed * 100, total * 95);  // they differ where rounding or saturation decides
}

}  // namespace vsp::test::g729
