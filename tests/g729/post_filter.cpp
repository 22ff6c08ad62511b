// The end of decoding a frame against its steps, for signals from silence to full scale.
#include <random>
#include <vector>

#include "support/level_test.h"

namespace vsp::test {

namespace {

using Samples = std::vector<Vsp16s>;
using State = Samples;
VspPostFilterState_G729A_16s* of(State& state) { return reinterpret_cast<VspPostFilterState_G729A_16s*>(state.data()); }

}  // namespace

class EndOfFrame : public LevelTest {};
VSPSC_EVERY_LEVEL(EndOfFrame);

TEST_P(EndOfFrame, IsSynthesisPostFilterAndHighPassFilter) {
    std::mt19937 random(1);
    const auto upTo = [&](int largest) { return Vsp16s(int(random() % unsigned(2 * largest + 1)) - largest); };
    const Vsp16s coefficients[] = {7699, -15398, 7699, 8192, 15836, -7667};
    State byFrame(156), bySteps(156), output(12), outputBySteps(12);
    int saturated = 0;
    for (int trial = 0; trial < 3000; trial++) {
        if (trial % 20 == 0) {
            ASSERT_EQ(vspStsNoErr, api.vspsPostFilterInit_G729A_16s(of(byFrame)));
            ASSERT_EQ(vspStsNoErr, api.vspsPostFilterInit_G729A_16s(of(bySteps)));
            ASSERT_EQ(vspStsNoErr, api.vspsHighPassFilterInit_G729(coefficients, output.data()));
            ASSERT_EQ(vspStsNoErr, api.vspsHighPassFilterInit_G729(coefficients, outputBySteps.data()));
        }
        const int loudness = 1 << trial % 20 * 15 / 19, sharpness = 1 << trial % 13;
        Samples speech(90), excitation(40), lpc(22), frame(80), steps(80);
        for (std::size_t n = 0; n < 50; n++)
            speech[n] = Vsp16s(trial % 7 == 0 ? 0
                               : n % 37 == 0  ? upTo(loudness)
                                              : speech[n - 1] * 7 / 8 + upTo(loudness / 8));
        for (Vsp16s& x : excitation) x = trial % 7 == 0 ? Vsp16s(0) : upTo(loudness / 2);
        for (std::size_t j = 0; j < 22; j++) lpc[j] = j % 11 == 0 ? Vsp16s(4096) : upTo(sharpness);
        const Samples lags = {Vsp16s(18 + random() % 128), Vsp16s(18 + random() % 128)};
        const Vsp16s type = Vsp16s(trial % 5 == 0 ? trial % 3 : 1);

        Samples speechBySteps = speech;
        Vsp16s* const now = speechBySteps.data() + 10;
        const VspStatus status =
            api.vspsSynthesisFilter_NR_16s_Sfs(lpc.data() + 11, excitation.data(), now + 40, 40, 12, now + 30);
        const Samples frameBefore = frame, speechBefore = speech;
        ASSERT_EQ(status,
                  api.vspsSynthesisPostFilter_G729A_16s(excitation.data(), lpc.data(), lags.data(), type,
                                                        speech.data() + 10, frame.data(), of(byFrame), output.data()));
        if (status == vspStsOverflow) {
            saturated++;
            ASSERT_EQ(speechBefore, speech);
            ASSERT_EQ(frameBefore, frame);
        } else {
            for (std::size_t i = 0; i < 2; i++)
                ASSERT_EQ(vspStsNoErr, api.vspsPostFilter_G729A_16s(now + 40 * i, lpc.data() + 11 * i, lags[i], type,
                                                                    steps.data() + 40 * i, of(bySteps)));
            ASSERT_EQ(vspStsNoErr, api.vspsHighPassFilter_G729_16s_ISfs(steps.data(), 80, 13, outputBySteps.data()));
            ASSERT_EQ(steps, frame) << "frame " << trial;
            ASSERT_EQ(speechBySteps, speech) << "frame " << trial;
        }
        ASSERT_EQ(bySteps, byFrame) << "frame " << trial;
        ASSERT_EQ(outputBySteps, output) << "frame " << trial;
    }
    EXPECT_GT(saturated, 100);
    EXPECT_LT(saturated, 2000);
}

}  // namespace vsp::test
