// The synthesis filter of the decoder and the conversion of its output (G.728 blocks 32 and 28).
#include "core/checks.h"
#include "core/state_size.h"
#include "g728/exports.h"
#include "g728/synthesis.h"

namespace vsp::VSP_LEVEL {

using namespace g728;

namespace {

struct State {
    SynthesisMemory memory;
    Vsp16s unused[6];
};
static_assert(sizeof(State) == 144);

// Times 2^n, rounded or clipped.
struct ToScale {
    int left, right, half;
    explicit ToScale(Vsp64s n)
        : left(n < 0    ? 0
               : n < 16 ? int(n)
                        : 16),
          right(n > 0     ? 0
                : n > -16 ? int(-n)
                          : 16),
          half(right > 0 ? 1 << (right - 1) : 0) {}
    S16_128 operator()(S16_128 x) const { return narrowSat(shl(shr(add(widen(x), Eight32s::splat(half)), right), left)); }
};

}  // namespace

VspStatus vspsSynthesisFilterGetStateSize_G728_16s(Vsp32s* pSize) { return fixedSize(pSize, sizeof(State)); }

VspStatus vspsSynthesisFilterInit_G728_16s(void* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    static_cast<State*>(pState)->memory.reset();
    return vspStsNoErr;
}

VspStatus vspsSynthesisFilter_G728_16s(const Vsp16s* pSrc, Vsp32s scale, const Vsp16s* pLPC, Vsp32s maxScale, Vsp16s* pDst,
                                       Vsp16s* pDstScale, void* pState) {
    if (anyNull(pSrc, pLPC, pDst, pDstScale, pState)) return vspStsNullPtrErr;
    SynthesisMemory& memory = static_cast<State*>(pState)->memory;
    Vsp16s z[kVector];
    memory.ring(pLPC);
    const Vsp64s excited = SynthesisMemory::excite(pLPC, pSrc, scale, z);
    memory.advance(z, excited);
    Vector& newest = memory.past[0];
    if (newest.scale > maxScale) newest.scale = sat16(maxScale);
    for (int n = 0; n < kVector; n++) pDst[n] = newest.x[n];
    *pDstScale = newest.scale;
    return vspStsNoErr;
}

VspStatus vspsSpeechConvert_G728_16s(const Vsp16s* pSrc, Vsp32s srcScale, Vsp32s dstScale, Vsp16s* pDst, Vsp32s len) {
    if (anyNull(pSrc, pDst)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    if (dstScale != 2 && dstScale != 3) return vspStsRangeErr;
    const Vsp64s shift = 16LL + dstScale - srcScale;
    Vsp32s i = 0;
    for (const ToScale convert(shift - 16); len - i >= kVector; i += kVector)
        storeFive(convert(loadFive(pSrc + i)), pDst + i);
    for (; i < len; i++) pDst[i] = Vsp16s(roundHigh(shift_32s(pSrc[i], shift)));
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
