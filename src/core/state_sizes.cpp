// Size queries of the families whose functions on the state are not built yet; a family takes its own over with them.
#include "core/checks.h"
#include "core/level.h"

namespace vsp::VSP_LEVEL {

namespace {

VspStatus fixedSize(Vsp32s* pSize, Vsp32s size) {
    if (anyNull(pSize)) return vspStsNullPtrErr;
    *pSize = size;
    return vspStsNoErr;
}

}  // namespace

VspStatus vspsHighPassFilterGetSize_AMRWB_16s(Vsp32s mode, Vsp32s* pSize) {
    if (anyNull(pSize)) return vspStsNullPtrErr;
    if (mode != 2 && mode != 3) return vspStsRangeErr;
    *pSize = 40;
    return vspStsNoErr;
}

VspStatus vspsAdaptiveCodebookDecodeGetSize_AMRWB_16s(Vsp32s* pSize) { return fixedSize(pSize, 24); }
VspStatus vspsVADGetSize_AMRWB_16s(Vsp32s* pSize) { return fixedSize(pSize, 172); }

VspStatus vspsHighPassFilterSize_G729(Vsp32s* pSize) { return fixedSize(pSize, 24); }
VspStatus vspsPhaseDispersionGetStateSize_G729D_16s(Vsp32s* pSize) { return fixedSize(pSize, 20); }
VspStatus vspsWinHybridGetStateSize_G729E_16s(Vsp32s* pSize) { return fixedSize(pSize, 124); }
VspStatus vspsWinHybridGetStateSize_G729E_32f(Vsp32s* pSize) { return fixedSize(pSize, 124); }

VspStatus vspsFilterHighpassGetStateSize_G7291_16s(Vsp32s* pSize) { return fixedSize(pSize, 24); }
VspStatus vspsGenerateExcitationGetStateSize_G7291_16s(Vsp32s* pSize) { return fixedSize(pSize, 128); }
VspStatus vspsQMFGetStateSize_G7291_16s(Vsp32s* pSize) { return fixedSize(pSize, 128); }

VspStatus vspsSBADPCMEncodeStateSize_G722_16s(Vsp32s* pSize) { return fixedSize(pSize, 144); }
VspStatus vspsSBADPCMDecodeStateSize_G722_16s(Vsp32s* pSize) { return fixedSize(pSize, 144); }

VspStatus vspsEncodeGetStateSize_G726_16s8u(Vsp32s* pSize) { return fixedSize(pSize, 88); }
VspStatus vspsDecodeGetStateSize_G726_8u16s(Vsp32s* pSize) { return fixedSize(pSize, 92); }

VspStatus vspsCombinedFilterGetStateSize_G728_16s(Vsp32s* pSize) { return fixedSize(pSize, 208); }
VspStatus vspsIIR16sGetStateSize_G728_16s(Vsp32s* pSize) { return fixedSize(pSize, 64); }
VspStatus vspsPostFilterGetStateSize_G728_16s(Vsp32s* pSize) { return fixedSize(pSize, 64); }
VspStatus vspsPostFilterAdapterGetStateSize_G728(Vsp32s* pSize) { return fixedSize(pSize, 176); }
VspStatus vspsSynthesisFilterGetStateSize_G728_16s(Vsp32s* pSize) { return fixedSize(pSize, 144); }

VspStatus vspsFullbandControllerGetSize_EC_16s(Vsp32s* pSize) { return fixedSize(pSize, 96); }
VspStatus vspsFullbandControllerGetSize_EC_32f(Vsp32s* pSize) { return fixedSize(pSize, 72); }

VspStatus vspsPostFilterGetStateSize_RTA_32f(Vsp32s* pSize) { return fixedSize(pSize, 32); }
VspStatus vspsQMFGetStateSize_RTA_32f(Vsp32s* pSize) { return fixedSize(pSize, 208); }

}  // namespace vsp::VSP_LEVEL
