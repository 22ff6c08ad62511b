// Size queries of states whose other functions are not built yet.
#include "amrwb/exports.h"
#include "core/checks.h"
#include "core/state_size.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsHighPassFilterGetSize_AMRWB_16s(Vsp32s mode, Vsp32s* pSize) {
    if (anyNull(pSize)) return vspStsNullPtrErr;
    if (mode != 2 && mode != 3) return vspStsRangeErr;
    *pSize = 40;
    return vspStsNoErr;
}

VspStatus vspsAdaptiveCodebookDecodeGetSize_AMRWB_16s(Vsp32s* pSize) { return fixedSize(pSize, 24); }
VspStatus vspsVADGetSize_AMRWB_16s(Vsp32s* pSize) { return fixedSize(pSize, 172); }

}  // namespace vsp::VSP_LEVEL
