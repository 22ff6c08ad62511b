// Size queries of states whose other functions are not built yet.
#include "core/state_size.h"
#include "g726/exports.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsEncodeGetStateSize_G726_16s8u(Vsp32s* pSize) { return fixedSize(pSize, 88); }
VspStatus vspsDecodeGetStateSize_G726_8u16s(Vsp32s* pSize) { return fixedSize(pSize, 92); }

}  // namespace vsp::VSP_LEVEL
