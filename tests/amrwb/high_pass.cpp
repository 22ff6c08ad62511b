// What the description of the high-pass filter leaves open.
#include "support/level_test.h"

namespace vsp::test {

class HighPass : public LevelTest {};
VSPSC_EVERY_LEVEL(HighPass);

TEST_P(HighPass, TakesCoefficientsInTwoFormats) {
    const Vsp16s b[3] = {915, -1830, 915};
    for (const int one : {8191, 8192, 8193, 16383, 16384, 16385, 0, -8192, -16384}) {
        const Vsp16s a[3] = {Vsp16s(one), 29280, -14160};
        char state[40];
        EXPECT_EQ(one == 8192 || one == 16384 ? vspStsNoErr : vspStsRangeErr,
                  api.vspsHighPassFilterInit_AMRWB_16s(a, b, 2, state))
            << one;
    }
}

}  // namespace vsp::test
