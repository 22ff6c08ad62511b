// Size queries of states whose other functions are not built yet.
#include "core/state_size.h"
#include "g728/exports.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsCombinedFilterGetStateSize_G728_16s(Vsp32s* pSize) { return fixedSize(pSize, 208); }
VspStatus vspsIIR16sGetStateSize_G728_16s(Vsp32s* pSize) { return fixedSize(pSize, 64); }
VspStatus vspsPostFilterGetStateSize_G728_16s(Vsp32s* pSize) { return fixedSize(pSize, 64); }
VspStatus vspsPostFilterAdapterGetStateSize_G728(Vsp32s* pSize) { return fixedSize(pSize, 176); }
VspStatus vspsSynthesisFilterGetStateSize_G728_16s(Vsp32s* pSize) { return fixedSize(pSize, 144); }

}  // namespace vsp::VSP_LEVEL
