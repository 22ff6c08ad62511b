// Size queries of states whose other functions are not built yet.
#include "core/state_size.h"
#include "g729/exports.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsPhaseDispersionGetStateSize_G729D_16s(Vsp32s* pSize) { return fixedSize(pSize, 20); }

}  // namespace vsp::VSP_LEVEL
