// Size queries of states whose other functions are not built yet.
#include "core/state_size.h"
#include "g729/exports.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsHighPassFilterSize_G729(Vsp32s* pSize) { return fixedSize(pSize, 24); }
VspStatus vspsPhaseDispersionGetStateSize_G729D_16s(Vsp32s* pSize) { return fixedSize(pSize, 20); }
VspStatus vspsWinHybridGetStateSize_G729E_16s(Vsp32s* pSize) { return fixedSize(pSize, 124); }
VspStatus vspsWinHybridGetStateSize_G729E_32f(Vsp32s* pSize) { return fixedSize(pSize, 124); }

}  // namespace vsp::VSP_LEVEL
