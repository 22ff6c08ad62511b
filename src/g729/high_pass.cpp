// Filters at the ends of the codec (G.729 3.1 and 4.2.5, Pre_Process and Post_Process).
#include "common/high_pass.h"

#include "core/checks.h"
#include "core/state_size.h"
#include "g729/exports.h"

namespace vsp::VSP_LEVEL {

namespace {

struct State {
    Vsp16s coefficients[6];  // b0 b1 b2 a0 a1 a2; a0 is not used
    HighPassMemory memory;
};
static_assert(sizeof(State) == 24);

}  // namespace

VspStatus vspsHighPassFilterSize_G729(Vsp32s* pSize) { return fixedSize(pSize, sizeof(State)); }

VspStatus vspsHighPassFilterInit_G729(const Vsp16s* pCoeff, void* pState) {
    if (anyNull(pCoeff, pState)) return vspStsNullPtrErr;
    State& state = *static_cast<State*>(pState);
    for (int i = 0; i < 6; i++) state.coefficients[i] = pCoeff[i];
    state.memory = {};
    return vspStsNoErr;
}

VspStatus vspsHighPassFilter_G729_16s_ISfs(Vsp16s* pSrcDst, Vsp32s len, Vsp32s scaleFactor, void* pState) {
    if (anyNull(pSrcDst, pState)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    if (scaleFactor != 12 && scaleFactor != 13) return vspStsScaleRangeErr;
    State& state = *static_cast<State*>(pState);
    const Vsp16s(&c)[6] = state.coefficients;
    const HighPassCoefficients coefficients{c[0], c[1], c[2], c[4], c[5]};
    if (scaleFactor == 12)
        HighPass<12, false>{coefficients}.run(pSrcDst, len, state.memory);
    else
        HighPass<13, true>{coefficients}.run(pSrcDst, len, state.memory);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
