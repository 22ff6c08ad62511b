// Size queries of states whose other functions are not built yet.
#include "core/state_size.h"
#include "g722/exports.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsSBADPCMEncodeStateSize_G722_16s(Vsp32s* pSize) { return fixedSize(pSize, 144); }
VspStatus vspsSBADPCMDecodeStateSize_G722_16s(Vsp32s* pSize) { return fixedSize(pSize, 144); }

}  // namespace vsp::VSP_LEVEL
