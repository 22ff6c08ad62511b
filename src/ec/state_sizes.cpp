// Size queries of states whose other functions are not built yet.
#include "core/state_size.h"
#include "ec/exports.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsFullbandControllerGetSize_EC_16s(Vsp32s* pSize) { return fixedSize(pSize, 96); }
VspStatus vspsFullbandControllerGetSize_EC_32f(Vsp32s* pSize) { return fixedSize(pSize, 72); }

}  // namespace vsp::VSP_LEVEL
