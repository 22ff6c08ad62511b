// The post-filter of a frame against that of its subframes, for signals from silence to full scale.
#include <random>
#include <vector>

#include "support/level_test.h"

namespace vsp::test {

namespace {

using State = std::vector<Vsp16s>;
VspPostFilterState_G729A_16s* of(State& state) { return reinterpret_cast<VspPostFilterState_G729A_16s*>(state.data()); }

}  // namespace

class FramePostFilter : public LevelTest {};
VSPSC_EVERY_LEVEL(FramePostFilter);

TEST_P(FramePostFilter, IsThatOfTwoSubframes) {
    std::mt19937 random(1);
    const auto upTo = [&](int largest) { return Vsp16s(int(random() % unsigned(2 * largest + 1)) - largest); };
    State byFrame(156), bySubframe(156);
    for (int trial = 0; trial < 3000; trial++) {
        if (trial % 20 == 0) {
            ASSERT_EQ(vspStsNoErr, api.vspsPostFilterInit_G729A_16s(of(byFrame)));
            ASSERT_EQ(vspStsNoErr, api.vspsPostFilterInit_G729A_16s(of(bySubframe)));
        }
        const int loudness = 1 << trial % 20 * 15 / 19, sharpness = 1 << trial % 13;
        std::vector<Vsp16s> speech(90), lpc(22), frame(80), subframes(80);
        for (std::size_t n = 0; n < 90; n++)
            speech[n] = Vsp16s(trial % 7 == 0 ? 0
                               : n % 37 == 0  ? upTo(loudness)
                                              : speech[n - 1] * 7 / 8 + upTo(loudness / 8));
        for (std::size_t j = 0; j < 22; j++) lpc[j] = j % 11 == 0 ? Vsp16s(4096) : upTo(sharpness);
        const std::vector<Vsp16s> lags = {Vsp16s(18 + random() % 128), Vsp16s(18 + random() % 128)};
        const Vsp16s type = Vsp16s(trial % 5 == 0 ? trial % 3 : 1);
        ASSERT_EQ(vspStsNoErr, api.vspsPostFilterFrame_G729A_16s(speech.data() + 10, lpc.data(), lags.data(), type,
                                                                 frame.data(), of(byFrame)));
        for (std::size_t i = 0; i < 2; i++)
            ASSERT_EQ(vspStsNoErr, api.vspsPostFilter_G729A_16s(speech.data() + 10 + 40 * i, lpc.data() + 11 * i, lags[i],
                                                                type, subframes.data() + 40 * i, of(bySubframe)));
        ASSERT_EQ(subframes, frame) << "frame " << trial;
        ASSERT_EQ(bySubframe, byFrame) << "frame " << trial;
    }
}

}  // namespace vsp::test
