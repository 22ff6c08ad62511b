// Size queries of states whose other functions are not built yet.
#include "core/state_size.h"
#include "g7291/exports.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsFilterHighpassGetStateSize_G7291_16s(Vsp32s* pSize) { return fixedSize(pSize, 24); }
VspStatus vspsGenerateExcitationGetStateSize_G7291_16s(Vsp32s* pSize) { return fixedSize(pSize, 128); }
VspStatus vspsQMFGetStateSize_G7291_16s(Vsp32s* pSize) { return fixedSize(pSize, 128); }

}  // namespace vsp::VSP_LEVEL
