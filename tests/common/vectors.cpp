// The shared kernels against recorded calls.
#include "support/level_test.h"
#include "support/run_vectors.h"

namespace vsp::test {

class CommonVectors : public LevelTest {};
VSPSC_EVERY_LEVEL(CommonVectors);

#define VSPSC_VECTORS(function) \
    TEST_P(CommonVectors, function) { runVectors("common/" #function ".vec", api.function); }
VSPSC_VECTORS(vspsMulC_NR_16s_Sfs)
VSPSC_VECTORS(vspsMulC_NR_16s_ISfs)
VSPSC_VECTORS(vspsMul_NR_16s_Sfs)
VSPSC_VECTORS(vspsMul_NR_16s_ISfs)
VSPSC_VECTORS(vspsMulPowerC_NR_16s_Sfs)
VSPSC_VECTORS(vspsInterpolate_G729_16s)
VSPSC_VECTORS(vspsInterpolateC_G729_16s_Sfs)
VSPSC_VECTORS(vspsInterpolateC_NR_G729_16s_Sfs)
VSPSC_VECTORS(vspsInterpolateC_NR_16s)
VSPSC_VECTORS(vspsAutoScale_16s)
VSPSC_VECTORS(vspsAutoScale_16s_I)
VSPSC_VECTORS(vspsDotProd_G729A_16s32s)
VSPSC_VECTORS(vspsDotProdAutoScale_16s32s_Sfs)
VSPSC_VECTORS(vspsInvSqrt_32s_I)
VSPSC_VECTORS(vspsLagWindow_G729_32s_I)
VSPSC_VECTORS(vspsRandomNoiseExcitation_G729B_16s)

}  // namespace vsp::test
