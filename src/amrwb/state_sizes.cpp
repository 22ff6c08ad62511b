// Size queries of states whose other functions are not built yet.
#include "amrwb/exports.h"
#include "core/state_size.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsAdaptiveCodebookDecodeGetSize_AMRWB_16s(Vsp32s* pSize) { return fixedSize(pSize, 24); }

}  // namespace vsp::VSP_LEVEL
