// Filters at the ends of the codec (3GPP TS 26.090 5.1 and 6.2.2, Pre_Process and Post_Process).
#include "common/high_pass.h"

#include "core/checks.h"
#include "core/state_size.h"
#include "gsmamr/exports.h"

namespace vsp::VSP_LEVEL {

namespace {

struct State {
    HighPassMemory memory;
    Vsp16s filter;  // 0 encoder input, anything else decoder output
    Vsp16s unused;
};
static_assert(sizeof(State) == 16);

}  // namespace

VspStatus vspsHighPassFilterGetSize_GSMAMR_16s(Vsp32s* pSize) { return fixedSize(pSize, sizeof(State)); }

VspStatus vspsHighPassFilterInit_GSMAMR_16s(Vsp32s filter, void* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    if (filter != 0 && filter != 1) return vspStsRangeErr;
    *static_cast<State*>(pState) = {{}, Vsp16s(filter), 0};
    return vspStsNoErr;
}

VspStatus vspsHighPassFilter_GSMAMR_16s_I(Vsp16s* pSrcDst, Vsp32s len, void* pState) {
    if (anyNull(pSrcDst, pState)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    State& state = *static_cast<State*>(pState);
    if (state.filter == 0)
        HighPass<12, false>{{1899, -3798, 1899, 7807, -3733}}.run(pSrcDst, len, state.memory);
    else
        HighPass<13, true>{{7699, -15398, 7699, 15836, -7667}}.run(pSrcDst, len, state.memory);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
