// Pitch search and adaptive codebook.
#include "support/described.h"

namespace vsp::test {

static const std::vector<Limits> kDelay16s = {{18, 144}, {-1, 1}}, kDelay32f = {{18, 145}, {-1, 1}};

static const Described functions(
    "g729",
    {
        VSPSC_FUNCTION(vspsOpenLoopPitchSearch_G729_16s, in(80).after(143), out(1)).recordedWithNames(),
        VSPSC_FUNCTION(vspsOpenLoopPitchSearch_G729A_16s, in(80).after(143), out(1)).recordedWithNames(),
        VSPSC_FUNCTION(vspsOpenLoopPitchSearch_G729A_32f, in(80).after(143), out(1)).recordedWithNames(),
        VSPSC_FUNCTION(vspsAdaptiveCodebookSearch_G729_16s, range(18, 145), in(40), in(40), io(194), out(2), out(40),
                       range(0, 1))
            .recordedWithNames(),
        VSPSC_FUNCTION(vspsAdaptiveCodebookSearch_G729A_16s, range(18, 145), in(40), in(40), io(194), out(2), out(40),
                       range(0, 1))
            .recordedWithNames(),
        VSPSC_FUNCTION(vspsAdaptiveCodebookSearch_G729D_16s, range(18, 145), in(40), in(40), in(194), range(0, 1), out(2))
            .recordedWithNames(),
        VSPSC_FUNCTION(vspsDecodeAdaptiveVector_G729_16s, in(2).holding(vspStsCodeRangeErr, kDelay16s), io(194), out(40))
            .recordedWithNames(),
        VSPSC_FUNCTION(vspsDecodeAdaptiveVector_G729_16s_I, in(2).holding(vspStsCodeRangeErr, kDelay16s), io(194))
            .recordedWithNames(),
        VSPSC_FUNCTION(vspsDecodeAdaptiveVector_G729_32f_I, in(2).holding(vspStsCodeRangeErr, kDelay32f), io(40).after(155))
            .recordedWithNames(),
        VSPSC_FUNCTION(vspsAdaptiveCodebookGain_G729_16s, in(40), in(40), in(40), out(40), out(1)).recordedWithNames(),
        VSPSC_FUNCTION(vspsAdaptiveCodebookGain_G729A_16s, in(40), in(11), in(40), out(40), out(1)).recordedWithNames(),
        VSPSC_FUNCTION(vspsAdaptiveCodebookContribution_G729_16s, value(), in(40), in(40), out(40).mayBe({1, 2}))
            .recordedWithNames(),
        VSPSC_FUNCTION(vspsAdaptiveCodebookContribution_G729_32f, in(40), in(40), out(40).mayBe({0, 1}), value())
            .recordedWithNames(),
        VSPSC_FUNCTION(vspsFilteredExcitation_G729_32f, in(len), io(len), length(), value()).recordedWithNames(),
        VSPSC_FUNCTION(vspsDotProd_G729A_32f, in(len), in(len).mayBe(0), length(), out(1)).recordedWithNames(),
        VSPSC_FUNCTION(vspsInterpolateC_G729_32f, in(len), in(len), out(len).mayBe({0, 1}), length(), value(), value())
            .recordedWithNames(),
    });

}  // namespace vsp::test
