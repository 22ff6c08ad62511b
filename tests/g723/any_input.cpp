// The adaptive codebook's contribution on any input against its definition: the kernel takes a short cut where no sum
// saturates.
#include "arithmetic/standard_ops.h"
#include "support/guarded.h"
#include "support/level_test.h"
#include "support/samples.h"

namespace vsp::test {

class AdaptiveContribution : public LevelTest {};
VSPSC_EVERY_LEVEL(AdaptiveContribution);

TEST_P(AdaptiveContribution, IsTheDefinition) {
    constexpr std::size_t kLen = 60;
    for (unsigned seed = 1; seed <= 300; seed++) {
        SCOPED_TRACE(seed);
        auto h = samples(kLen, seed), adaptive = samples(kLen, seed + 1000), target = samples(kLen, seed + 2000);
        for (Vsp16s& x : h) x = Vsp16s(x >> seed % 7);
        for (Vsp16s& x : adaptive) x = Vsp16s(x >> seed / 7 % 7);
        for (Vsp16s& x : target) x = seed % 2 == 0 ? x : x < 0 ? kMin16 : kMax16;
        Guarded<Vsp16s> result(target);
        for (std::size_t n = 0; n < kLen; n++) {
            Vsp32s difference = target[n] * 32768;
            for (std::size_t j = 0; j <= n; j++) difference = msu_32s(difference, adaptive[j], h[n - j]);
            target[n] = round_32s(Mul2_32s(difference));
        }
        ASSERT_EQ(vspStsNoErr, api.vspsAdaptiveCodebookContribution_G723_16s_I(adaptive.data(), h.data(), result.data()));
        ASSERT_EQ(target, result.values());
    }
}

}  // namespace vsp::test
