// Where the long-term post-processing begins.
#include <vector>

#include "support/level_test.h"

namespace vsp::test {

class PitchPostProcess : public LevelTest {};
VSPSC_EVERY_LEVEL(PitchPostProcess);

TEST_P(PitchPostProcess, BeginsAboveAGainOfOneHalf) {
    std::vector<Vsp16s> vector(64), excitation(64);
    for (int i = 0; i < 64; i++) {
        vector[std::size_t(i)] = Vsp16s(i % 8 * 1000);
        excitation[std::size_t(i)] = Vsp16s(4000 - i % 5 * 900);
    }
    for (const int gain : {8191, 8192, 8193}) {
        std::vector<Vsp16s> processed = excitation;
        ASSERT_EQ(vspStsNoErr, api.vspsPitchPostProcess_AMRWB_16s_I(vector.data(), Vsp16s(gain), processed.data()));
        EXPECT_EQ(gain <= 8192, processed == excitation) << gain;
    }
}

}  // namespace vsp::test
