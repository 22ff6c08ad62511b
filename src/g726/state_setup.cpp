// Size, initialisation and rate of the state objects.
#include "core/checks.h"
#include "core/state_size.h"
#include "g726/exports.h"
#include "g726/state.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr Vsp32s kEncoderSize = 88, kDecoderSize = 92;
static_assert(sizeof(G726State) <= kEncoderSize);

// Bits of a code, 0 for a rate that there is not.
VSP_INLINE Vsp8u bitsOf(Vsp32s rate) {
    switch (rate) {
        case 17: return 2;
        case 22: return 3;
        case 23: return 4;
        case 24: return 5;
        default: return 0;
    }
}

VspStatus init(void* pState, Vsp32s rate) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    if (bitsOf(rate) == 0) return vspStsRangeErr;
    G726State& state = *static_cast<G726State*>(pState);
    state = {};
    for (int i = kG726FirstZero; i < kG726Lanes; i++) state.dq[i] = kG726Zero;
    state.yl = 34816;
    state.yu = 544;
    state.bits = bitsOf(rate);
    return vspStsNoErr;
}

VspStatus setRate(void* pState, Vsp32s rate) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    if (bitsOf(rate) == 0) return vspStsRangeErr;
    static_cast<G726State*>(pState)->bits = bitsOf(rate);
    return vspStsNoErr;
}

}  // namespace

VspStatus vspsEncodeGetStateSize_G726_16s8u(Vsp32s* pSize) { return fixedSize(pSize, kEncoderSize); }
VspStatus vspsDecodeGetStateSize_G726_8u16s(Vsp32s* pSize) { return fixedSize(pSize, kDecoderSize); }
VspStatus vspsEncodeInit_G726_16s8u(void* pState, Vsp32s rate) { return init(pState, rate); }
VspStatus vspsDecodeInit_G726_8u16s(void* pState, Vsp32s rate) { return init(pState, rate); }
VspStatus vspsEncodeSetRate_G726_16s8u(void* pState, Vsp32s rate) { return setRate(pState, rate); }
VspStatus vspsDecodeSetRate_G726_8u16s(void* pState, Vsp32s rate) { return setRate(pState, rate); }

}  // namespace vsp::VSP_LEVEL
