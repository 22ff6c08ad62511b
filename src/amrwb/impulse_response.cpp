// The impulse response of the weighted synthesis filter (3GPP TS 26.190, 5.5).
#include "amrwb/deemphasis.h"
#include "amrwb/exports.h"
#include "amrwb/lengths.h"
#include "common/synthesis.h"
#include "core/checks.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsImpulseResponse_AMRWB_16s(const Vsp16s* pLpcW, const Vsp16s* pLpcQ, Vsp16s* pDst) {
    if (anyNull(pLpcW, pLpcQ, pDst)) return vspStsNullPtrErr;
    constexpr Vsp16s kUnit = 16384;  // the input is a quarter of the response's scale
    constexpr Vsp16s kDeemphasis = 22282;
    Vsp16s lpc[kIsfOrder + 1], response[kWideSubframe], memory = 0;
    lpc[0] = kUnit;
    for (int i = 1; i <= kIsfOrder; i++) lpc[i] = pLpcQ[i];
    for (int n = 0; n < kWideSubframe; n++) response[n] = n <= kIsfOrder ? pLpcW[n] : Vsp16s(0);
    const Vsp16s rest[kIsfOrder] = {};
    SynthesisFilter<kIsfOrder, kWideSubframe>::run(lpc, response, response, kWideSubframe, 12, rest);
    deemphasize([&](Vsp32s n) { return response[n] * 16384 + 0x4000; }, kDeemphasis, kMax32, kWideSubframe, &memory, pDst);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
