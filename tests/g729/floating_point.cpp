// The floating-point members give the same bits at every level.
#include "core/api.h"
#include "support/guarded.h"
#include "support/level_test.h"
#include "support/samples.h"

namespace vsp::test {

class FloatingPoint : public LevelTest {
  protected:
    // call(api, out): runs a function at a level and at the baseline, on equal contents of out.
    template <class Call>
    void expectSameBits(std::size_t n, Call call) {
        const auto contents = samples<Vsp32f>(n, unsigned(n));
        Guarded<Vsp32f> here(contents), baseline(contents);
        ASSERT_EQ(vspStsNoErr, call(api, here));
        ASSERT_EQ(vspStsNoErr, call(kApi_y8, baseline));
        ASSERT_EQ(0, std::memcmp(baseline.data(), here.data(), n * sizeof(Vsp32f))) << n;
    }
};
VSPSC_EVERY_LEVEL(FloatingPoint);

TEST_P(FloatingPoint, SameBitsAtEveryLevel) {
    const auto a = samples<Vsp32f>(400, 1), b = samples<Vsp32f>(400, 2);
    for (int len = 1; len <= 100; len++) {
        const std::size_t n = std::size_t(len);
        expectSameBits(1, [&](const Api& f, auto& out) { return f.vspsDotProd_G729A_32f(&a[0], &b[n], len, out.data()); });
        expectSameBits(n, [&](const Api& f, auto& out) {
            return f.vspsInterpolateC_G729_32f(&a[n], &b[0], out.data(), len, 0.3f, 0.7f);
        });
        expectSameBits(n, [&](const Api& f, auto& out) {
            return f.vspsFilteredExcitation_G729_32f(&a[n], out.data(), len, 0.1f * Vsp32f(len));
        });
        expectSameBits(40, [&](const Api& f, auto& out) {
            return f.vspsAdaptiveCodebookContribution_G729_32f(&a[n], &b[n], out.data(), 0.01f * Vsp32f(len));
        });
        Vsp32s here = 0, baseline = 0;
        ASSERT_EQ(vspStsNoErr, api.vspsOpenLoopPitchSearch_G729A_32f(&a[143 + n], &here));
        ASSERT_EQ(vspStsNoErr, kApi_y8.vspsOpenLoopPitchSearch_G729A_32f(&a[143 + n], &baseline));
        ASSERT_EQ(baseline, here);
    }
    for (Vsp32s lag = 18; lag <= 145; lag++)
        for (Vsp32s fraction = -1; fraction <= 1; fraction++)
            expectSameBits(195, [&](const Api& f, auto& out) {
                const Vsp32s delay[2] = {lag, fraction};
                return f.vspsDecodeAdaptiveVector_G729_32f_I(delay, out.data() + 155);
            });
}

}  // namespace vsp::test
