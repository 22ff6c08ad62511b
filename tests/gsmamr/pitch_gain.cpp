// The gain of the adaptive codebook at its limits.
#include "support/guarded.h"
#include "support/level_test.h"

namespace vsp::test {

class PitchGain : public LevelTest {};
VSPSC_EVERY_LEVEL(PitchGain);

// 1 and twice the energy fill 32 bits exactly, or need one more; then samples are divided by four first.
TEST_P(PitchGain, LargestEnergyThatIsNotScaled) {
    for (const bool fits : {true, false}) {
        std::vector<Vsp16s> samples{32767, 255, 22, 5, Vsp16s(fits ? 0 : 1)};  // 0x3FFFFFFF in all, or 1 more
        samples.resize(40);
        Guarded<Vsp16s> target(std::vector<Vsp16s>(40)), y(samples), gain(1), coefficients(4);
        ASSERT_EQ(vspStsNoErr,
                  api.vspsAdaptiveCodebookGain_GSMAMR_16s(target.data(), y.data(), 0, gain.data(), coefficients.data()));
        EXPECT_EQ(fits ? 32767 : 32762, coefficients[0]);
        EXPECT_EQ(15, coefficients[1]);
    }
}

// Products that fill 32 bits: their sum starts from 1, and samples are divided by four (rounded down) where a step
// saturates.
TEST_P(PitchGain, LoudProducts) {
    const struct {
        Vsp16s target[2], y[2], mantissa, exponent;
    } cases[] = {{{30000, 30000}, {30000, -30000}, 16384, -15}, {{8000, -32768}, {-1001, -32768}, 32523, 15}};
    for (const auto& c : cases) {
        Guarded<Vsp16s> target(std::vector<Vsp16s>(40)), y(std::vector<Vsp16s>(40)), gain(1), coefficients(4);
        std::copy_n(c.target, 2, target.data());
        std::copy_n(c.y, 2, y.data());
        ASSERT_EQ(vspStsNoErr,
                  api.vspsAdaptiveCodebookGain_GSMAMR_16s(target.data(), y.data(), 0, gain.data(), coefficients.data()));
        EXPECT_EQ(c.mantissa, coefficients[2]);
        EXPECT_EQ(c.exponent, coefficients[3]);
    }
}

// Above 0.95, and with a mean of 0.95 over eight subframes, of which this is one.
TEST_P(PitchGain, ResonanceLimitsIt) {
    constexpr Vsp16s kClip = 15565, kUnlimited = 32767;
    for (int above = 0; above <= 1; above++)
        for (const int excess : {0, 8}) {
            Guarded<Vsp16s> history(7), gain(1), limit(1);
            gain[0] = Vsp16s(kClip + excess);
            for (std::size_t i = 0; i < 7; i++) history[i] = 1945;
            history[6] = Vsp16s(kClip + above - gain[0] / 8 - 6 * 1945);
            const bool clipped = above == 1 && excess > 0;
            ASSERT_EQ(vspStsNoErr, api.vspsPitchGainLimit_GSMAMR_16s(history.data(), 3, 1, gain.data(), limit.data()));
            EXPECT_EQ(clipped ? kClip : kUnlimited, limit[0]);
            EXPECT_EQ(clipped ? kClip : kClip + excess, gain[0]);
        }
}

}  // namespace vsp::test
