// The parity of every delay index, and delays that come back from their codes.
#include "support/level_test.h"
#include "support/vector_case.h"

namespace vsp::test {

class Delays : public LevelTest {};
VSPSC_EVERY_LEVEL(Delays);

TEST_P(Delays, Parity) {
    const auto items = readItemCases("g729/vspsDelayParity_G729_16s.vec").at(0);
    const auto indices = items[0].values<Vsp16s>(), parities = items[1].values<Vsp16s>();
    for (std::size_t i = 0; i < indices.size(); i++) {
        Vsp16s parity = -1;
        EXPECT_EQ(vspStsNoErr, api.vspsDelayParity_G729_16s(indices[i], &parity));
        EXPECT_EQ(parities[i], parity) << indices[i];
    }
}

TEST_P(Delays, EveryCodeComesBack) {
    const auto comeBack = [](auto decode, auto encode, int lag, int subframe, Vsp16s codes) {
        for (Vsp16s code = 0; code < codes; code++) {
            Vsp16s delay[2] = {}, again = -1;
            ASSERT_EQ(vspStsNoErr, decode(code, Vsp16s(lag), Vsp16s(subframe), delay));
            ASSERT_EQ(vspStsNoErr, encode(delay, Vsp16s(lag), Vsp16s(subframe), &again));
            ASSERT_EQ(code, again) << lag;
        }
    };
    comeBack(api.vspsDelayDecode_G729_16s, api.vspsDelayEncode_G729_16s, 20, 0, 256);
    comeBack(api.vspsDelayDecode_G729D_16s, api.vspsDelayEncode_G729D_16s, 20, 0, 256);
    for (int lag = 18; lag <= 145; lag++) {
        comeBack(api.vspsDelayDecode_G729_16s, api.vspsDelayEncode_G729_16s, lag, 1, 32);
        comeBack(api.vspsDelayDecode_G729D_16s, api.vspsDelayEncode_G729D_16s, lag, 1, 16);
    }
}

}  // namespace vsp::test
