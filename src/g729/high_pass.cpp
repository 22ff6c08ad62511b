// Filters at the ends of the codec (G.729 3.1 and 4.2.5, Pre_Process and Post_Process).
#include "g729/high_pass.h"

#include "core/checks.h"
#include "core/state_size.h"
#include "g729/exports.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsHighPassFilterSize_G729(Vsp32s* pSize) { return fixedSize(pSize, sizeof(HighPassState)); }

VspStatus vspsHighPassFilterInit_G729(const Vsp16s* pCoeff, void* pState) {
    if (anyNull(pCoeff, pState)) return vspStsNullPtrErr;
    HighPassState& state = *static_cast<HighPassState*>(pState);
    for (int i = 0; i < 6; i++) state.coefficients[i] = pCoeff[i];
    state.memory = {};
    return vspStsNoErr;
}

VspStatus vspsHighPassFilter_G729_16s_ISfs(Vsp16s* pSrcDst, Vsp32s len, Vsp32s scaleFactor, void* pState) {
    if (anyNull(pSrcDst, pState)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    if (scaleFactor != 12 && scaleFactor != 13) return vspStsScaleRangeErr;
    HighPassState& state = *static_cast<HighPassState*>(pState);
    if (scaleFactor == 12)
        state.filter<InputFilter>().run(pSrcDst, len, state.memory);
    else
        state.filter<OutputFilter>().run(pSrcDst, len, state.memory);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
