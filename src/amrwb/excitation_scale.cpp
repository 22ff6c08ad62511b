// How far the decoder's excitation is scaled up (`decoder`: the choice of Q_new).
#include "amrwb/exports.h"
#include "amrwb/lengths.h"
#include "arithmetic/standard_ops.h"
#include "common/history.h"
#include "core/checks.h"
#include "vector/magnitude.h"

namespace vsp::VSP_LEVEL {

static constexpr int kSubframes = 4, kMostScale = 8;

VspStatus vspsExcitationScale_AMRWB_16s(Vsp32s gain, const Vsp16s* pHeadroom, Vsp16s* pScale, Vsp16s* pGainCode) {
    constexpr Vsp32s kLarge = 0x08000000;
    if (anyNull(pHeadroom, pScale, pGainCode)) return vspStsNullPtrErr;
    int most = kMostScale, scale = 0;
    for (int i = 0; i < kSubframes; i++) most = pHeadroom[i] < most ? pHeadroom[i] : most;
    for (; gain < kLarge && scale < most; scale++) gain = Mul2_32s(gain);
    *pScale = Vsp16s(scale);
    *pGainCode = round_32s(gain);
    return vspStsNoErr;
}

VspStatus vspsExcitationHeadroom_AMRWB_16s(const Vsp16s* pExc, Vsp32s scale, Vsp16s* pHeadroom) {
    if (anyNull(pExc, pHeadroom)) return vspStsNullPtrErr;
    if (scale < 0 || scale > kMostScale) return vspStsRangeErr;
    const int largest = maxMagnitude(pExc, kWideSubframe);
    const Vsp16s magnitude = largest > kMax16 ? kMax16 : largest < 1 ? Vsp16s(1) : Vsp16s(largest);
    pushFront<kSubframes>(pHeadroom, Vsp16s(norm_16s(magnitude) + scale - 1));
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
