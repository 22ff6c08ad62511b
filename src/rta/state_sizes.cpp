// Size queries of states whose other functions are not built yet.
#include "core/state_size.h"
#include "rta/exports.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsPostFilterGetStateSize_RTA_32f(Vsp32s* pSize) { return fixedSize(pSize, 32); }
VspStatus vspsQMFGetStateSize_RTA_32f(Vsp32s* pSize) { return fixedSize(pSize, 208); }

}  // namespace vsp::VSP_LEVEL
