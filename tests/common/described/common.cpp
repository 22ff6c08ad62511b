// The shared kernels.
#include "support/described.h"

namespace vsp::test {

static const std::initializer_list<VspStatus> kScaleFirst = {vspStsNullPtrErr, vspStsScaleRangeErr, vspStsSizeErr};

static const Described functions(
    "common",
    {
        VSPSC_FUNCTION(vspsMulC_NR_16s_Sfs, in(len), value(), out(len).mayBe(0), length(), scale()).recordedWithNames(),
        VSPSC_FUNCTION(vspsMulC_NR_16s_ISfs, value(), io(len), length(), scale()).recordedWithNames(),
        VSPSC_FUNCTION(vspsMul_NR_16s_Sfs, in(len), in(len), out(len).mayBe({0, 1}), length(), scale()).recordedWithNames(),
        VSPSC_FUNCTION(vspsMul_NR_16s_ISfs, in(len).mayBe(1), io(len), length(), scale()).recordedWithNames(),
        VSPSC_FUNCTION(vspsMulPowerC_NR_16s_Sfs, in(len), value(), out(len).mayBe(0), length(), scale())
            .checks(kScaleFirst)
            .recordedWithNames(),
        VSPSC_FUNCTION(vspsInterpolate_G729_16s, in(len), in(len), out(len).mayBe({0, 1}), length()).recordedWithNames(),
        VSPSC_FUNCTION(vspsInterpolateC_G729_16s_Sfs, in(len), value(), in(len), value(), out(len).mayBe({0, 2}), length(),
                       scale())
            .checks(kScaleFirst)
            .recordedWithNames(),
        VSPSC_FUNCTION(vspsInterpolateC_NR_G729_16s_Sfs, in(len), value(), in(len), value(), out(len).mayBe({0, 2}),
                       length(), scale())
            .checks(kScaleFirst)
            .recordedWithNames(),
        VSPSC_FUNCTION(vspsInterpolateC_NR_16s, in(len), value(), scale(), in(len), value(), scale(),
                       out(len).mayBe({0, 3}), length())
            .recordedWithNames(),
        VSPSC_FUNCTION(vspsAutoScale_16s, in(len), out(len).mayBe(0), length(),
                       io(1).holding(vspStsScaleRangeErr, 0, 0x7FFFFFFF))
            .recordedWithNames(),
        VSPSC_FUNCTION(vspsAutoScale_16s_I, io(len), length(), io(1).holding(vspStsScaleRangeErr, 0, 0x7FFFFFFF))
            .recordedWithNames(),
        VSPSC_FUNCTION(vspsDotProd_G729A_16s32s, in(len), in(len).mayBe(0), length(), out(1)).recordedWithNames(),
        VSPSC_FUNCTION(vspsDotProdAutoScale_16s32s_Sfs, in(len), in(len).mayBe(0), length(), out(1), out(1))
            .recordedWithNames(),
        VSPSC_FUNCTION(vspsInvSqrt_32s_I, io(len), length()).recordedWithNames(),
        VSPSC_FUNCTION(vspsLagWindow_G729_32s_I, io(len), length(1, 12).above(vspStsRangeErr)).recordedWithNames(),
        VSPSC_FUNCTION(vspsRandomNoiseExcitation_G729B_16s, io(1), out(len), length()).recordedWithNames(),
        VSPSC_FUNCTION(vspsAutoCorrLagMax_Inv_16s, in(len).after(argument(3)), length(), range(1, 0x7FFFFFFF).upTo(200),
                       limited(vspStsRangeErr,
                               [](const Values& v) {
                                   return Limits{v[2] < 1 ? 1 : v[2], 0x7FFFFFFF};
                               })
                           .upTo(300),
                       out(1), out(1))
            .notRecorded(),
        VSPSC_FUNCTION(vspsCrossCorr_NormM_16s, in(len), in(len), length(), out(len).mayBe(0)).notRecorded(),
        VSPSC_FUNCTION(vspsConvPartial_16s_Sfs, in(len), in(len), out(len).mayBe({0, 1}), length(),
                       limited(vspStsBadArgErr, 0, 0x7FFFFFFF))
            .checks({vspStsNullPtrErr, vspStsBadArgErr, vspStsSizeErr})
            .notRecorded(),
        VSPSC_FUNCTION(vspsSynthesisFilter_NR_16s_Sfs, in(11), in(len), out(len).mayBe(1), length(), scale(0, 15), in(10))
            .notRecorded(),
    });

}  // namespace vsp::test
