// The shared kernels.
#include "compare_levels.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vsp::fuzz;
    using vsp::Api;
    Input in(data, size);
    while (!in.empty()) switch (in.take<std::uint8_t>() % 18) {
            case 0: VSPSC_COMPARE(in, vspsMulC_NR_16s_Sfs, array, value, array, length, value); break;
            case 1: VSPSC_COMPARE(in, vspsMulC_NR_16s_ISfs, value, array, length, value); break;
            case 2: VSPSC_COMPARE(in, vspsMul_NR_16s_Sfs, array, array, array, length, value); break;
            case 3: VSPSC_COMPARE(in, vspsMul_NR_16s_ISfs, array, array, length, value); break;
            case 4: VSPSC_COMPARE(in, vspsMulPowerC_NR_16s_Sfs, array, value, array, length, value); break;
            case 5: VSPSC_COMPARE(in, vspsInterpolate_G729_16s, array, array, array, length); break;
            case 6:
                VSPSC_COMPARE(in, vspsInterpolateC_G729_16s_Sfs, array, value, array, value, array, length, value);
                break;
            case 7:
                VSPSC_COMPARE(in, vspsInterpolateC_NR_G729_16s_Sfs, array, value, array, value, array, length, value);
                break;
            case 8:
                VSPSC_COMPARE(in, vspsInterpolateC_NR_16s, array, value, value, array, value, value, array, length);
                break;
            case 9: VSPSC_COMPARE(in, vspsAutoScale_16s, array, array, length, one); break;
            case 10: VSPSC_COMPARE(in, vspsAutoScale_16s_I, array, length, one); break;
            case 11: VSPSC_COMPARE(in, vspsDotProd_G729A_16s32s, array, array, length, one); break;
            case 12: VSPSC_COMPARE(in, vspsDotProdAutoScale_16s32s_Sfs, array, array, length, one, one); break;
            case 13: VSPSC_COMPARE(in, vspsInvSqrt_32s_I, array, length); break;
            case 14: VSPSC_COMPARE(in, vspsLagWindow_G729_32s_I, array, length); break;
            case 15: VSPSC_COMPARE(in, vspsRandomNoiseExcitation_G729B_16s, one, array, length); break;
            case 16: VSPSC_COMPARE(in, vspsConvPartial_16s_Sfs, array, array, array, length, value); break;
            case 17: VSPSC_COMPARE(in, vspsCrossCorr_NormM_16s, array, array, length, array); break;
        }
    return 0;
}
