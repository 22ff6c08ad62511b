// The level control: vspsALC_G169_16s, which takes blocks of eight samples, on blocks of any length.
#pragma GCC visibility push(default)  // of what the library exports
#include "vspsvoice/level.h"
#pragma GCC visibility pop

#include "samples.h"
#include "vspsc/alc.h"

namespace vspv {

static constexpr Vsp32s kBlock = 8;

// In front of the state of the library's level control.
struct alignas(8) LevelControl {
    Vsp32s unit;                     // samples, of the blocks that come
    Vsp32s filled;                   // samples of the current block
    Vsp16s in[kBlock], out[kBlock];  // the current block, and the last one controlled
};

static LevelControl* own(VspvLevelControl* control) { return reinterpret_cast<LevelControl*>(control); }

static VspALCState_G169_16s* stateOf(VspvLevelControl* control) {
    return reinterpret_cast<VspALCState_G169_16s*>(own(control) + 1);
}

}  // namespace vspv

using namespace vspv;

VspStatus vspvLevelControlGetSize(Vsp32s* pSize) {
    if (pSize == nullptr) return vspStsNullPtrErr;
    Vsp32s state = 0;
    vspsALCGetStateSize_G169_16s(&state);
    *pSize = (Vsp32s(sizeof(LevelControl)) + state + 7) & ~7;
    return vspStsNoErr;
}

VspStatus vspvLevelControlInit(VspvLevelControl* pControl, const VspvLevelSettings* pSettings) {
    if (pControl == nullptr || pSettings == nullptr) return vspStsNullPtrErr;
    const VspvLevelSettings s = *pSettings;
    if (!(s.target >= 0 && s.limit >= 0 && s.maxGain >= 0)) return vspStsRangeErr;
    if (s.blockUnit < 1 || s.blockUnit > kBlock || kBlock % s.blockUnit != 0) return vspStsBadArgErr;
    *own(pControl) = {s.blockUnit, 0, {}, {}};
    vspsALCInit_G169_16s(stateOf(pControl));
    vspsALCSetLevel_G169_16s(stateOf(pControl), s.target, s.limit);
    vspsALCSetGain_G169_16s(stateOf(pControl), s.maxGain);
    return vspStsNoErr;
}

VspStatus vspvLevelControlLatency(const VspvLevelControl* pControl, Vsp32s* pSamples) {
    if (pControl == nullptr || pSamples == nullptr) return vspStsNullPtrErr;
    *pSamples = kBlock - reinterpret_cast<const LevelControl*>(pControl)->unit;
    return vspStsNoErr;
}

VspStatus vspvLevelControlProcess(VspvLevelControl* pControl, const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len) {
    if (pControl == nullptr || pSrc == nullptr || pDst == nullptr) return vspStsNullPtrErr;
    LevelControl& c = *own(pControl);
    const Vsp32s unit = c.unit;
    if (len < 1 || len % unit != 0) return vspStsSizeErr;
    if (unit == kBlock) return vspsALC_G169_16s(pSrc, pDst, len, stateOf(pControl));
    for (Vsp32s i = 0; i < len; i += unit) {
        copy(pSrc + i, c.in + c.filled, unit);
        c.filled += unit;
        if (c.filled == kBlock) {
            vspsALC_G169_16s(c.in, c.out, kBlock, stateOf(pControl));
            c.filled = 0;
        }
        copy(c.out + c.filled, pDst + i, unit);  // the oldest samples that have not come out
    }
    return vspStsNoErr;
}
