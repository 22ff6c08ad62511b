// The perceptual weighting filter on the input, and with the synthesis filter before it (G.728 blocks 4, 9 and 10).
#include "core/checks.h"
#include "core/state_size.h"
#include "g728/exports.h"
#include "g728/synthesis.h"

namespace vsp::VSP_LEVEL {

using namespace g728;

namespace {

constexpr int kOrder = 10, kSpeechScale = 2;

// One output of the weighting filter: x and y are the places of the present input and output, the past before them.
Vsp16s weigh(const Vsp16s* zero, const Vsp16s* pole, const Vsp16s* x, const Vsp16s* y, int zeros = kOrder,
             int poles = kOrder) {
    Vsp64s t = 16384 * x[0];
    for (int i = 0; i < zeros; i++) t += zero[i] * x[-1 - i];
    for (int i = 0; i < poles; i++) t -= pole[i] * y[-1 - i];
    return sat16(t >> 14);
}

struct InputState {
    Vsp16s x[kOrder], y[kOrder];  // the oldest first
    Vsp16s unused[12];
};
static_assert(sizeof(InputState) == 64);

struct CombinedState {
    SynthesisMemory memory;
    Vsp16s weighted[kOrder];  // past output, the oldest first
    Vsp16s unused[28];
};
static_assert(sizeof(CombinedState) == 208);

}  // namespace

VspStatus vspsIIR16sGetStateSize_G728_16s(Vsp32s* pSize) { return fixedSize(pSize, sizeof(InputState)); }

VspStatus vspsIIR16sInit_G728_16s(void* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    *static_cast<InputState*>(pState) = {};
    return vspStsNoErr;
}

VspStatus vspsIIR16s_G728_16s(const Vsp16s* pSrc, const Vsp16s* pZero, const Vsp16s* pPole, Vsp16s* pDst, Vsp32s len,
                              void* pState) {
    constexpr int kBlock = 40;
    if (anyNull(pSrc, pZero, pPole, pDst, pState)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    InputState& s = *static_cast<InputState*>(pState);
    Vsp16s x[kOrder + kBlock], y[kOrder + kBlock];
    for (int i = 0; i < kOrder; i++) x[i] = s.x[i], y[i] = s.y[i];
    while (len > 0) {
        const int n = len < kBlock ? len : kBlock;
        for (int i = 0; i < n; i++) x[kOrder + i] = pSrc[i];
        for (int i = 0; i < n; i++) y[kOrder + i] = weigh(pZero, pPole, x + kOrder + i, y + kOrder + i);
        for (int i = 0; i < n; i++) pDst[i] = y[kOrder + i];
        for (int i = 0; i < kOrder; i++) x[i] = x[n + i], y[i] = y[n + i];
        pSrc += n, pDst += n, len -= n;
    }
    for (int i = 0; i < kOrder; i++) s.x[i] = x[i], s.y[i] = y[i];
    return vspStsNoErr;
}

VspStatus vspsCombinedFilterGetStateSize_G728_16s(Vsp32s* pSize) { return fixedSize(pSize, sizeof(CombinedState)); }

VspStatus vspsCombinedFilterInit_G728_16s(void* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    CombinedState& s = *static_cast<CombinedState*>(pState);
    s = {};
    s.memory.reset();
    return vspStsNoErr;
}

VspStatus vspsCombinedFilterZeroInput_G728_16s(const Vsp16s* pLPC, const Vsp16s* pZero, const Vsp16s* pPole, Vsp16s* pDst,
                                               void* pState) {
    if (anyNull(pLPC, pZero, pPole, pDst, pState)) return vspStsNullPtrErr;
    CombinedState& s = *static_cast<CombinedState*>(pState);
    s.memory.ring(pLPC);
    Vsp16s x[kOrder + kVector], y[kOrder + kVector];
    const auto place = [&](const Vector& v, Vsp16s* at) {
        for (int n = 0; n < kVector; n++) at[n] = shift_16s(v.x[n], Vsp64s(kSpeechScale) - v.scale);
    };
    place(s.memory.past[1], x);
    place(s.memory.past[0], x + kVector);
    place(s.memory.pending, x + kOrder);
    for (int i = 0; i < kOrder; i++) y[i] = s.weighted[i];
    for (int n = 0; n < kVector; n++) y[kOrder + n] = weigh(pZero, pPole, x + kOrder + n, y + kOrder + n);
    for (int i = 0; i < kOrder; i++) s.weighted[i] = y[kVector + i];
    for (int n = 0; n < kVector; n++) pDst[n] = y[kOrder + n];
    return vspStsNoErr;
}

VspStatus vspsCombinedFilterUpdate_G728_16s(const Vsp16s* pSrc, Vsp32s scale, const Vsp16s* pLPC, const Vsp16s* pZero,
                                            const Vsp16s* pPole, Vsp16s* pDst, Vsp16s* pDstScale, void* pState) {
    if (anyNull(pSrc, pLPC, pZero, pPole, pDst, pDstScale, pState)) return vspStsNullPtrErr;
    CombinedState& s = *static_cast<CombinedState*>(pState);
    Vsp16s z[kVector], w[kVector];
    const Vsp64s excited = SynthesisMemory::excite(pLPC, pSrc, scale, z);
    for (int n = 0; n < kVector; n++) {
        w[n] = weigh(pZero, pPole, z + n, w + n, n, n);
        Vsp16s& memory = s.weighted[kOrder - kVector + n];
        memory = sat16(Vsp64s(memory) + shift_32s(w[n], kSpeechScale - excited));
    }
    const Vector& newest = s.memory.advance(z, excited);
    for (int n = 0; n < kVector; n++) pDst[n] = newest.x[n];
    *pDstScale = newest.scale;
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
