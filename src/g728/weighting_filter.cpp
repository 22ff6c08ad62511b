// The perceptual weighting filter on the input, and with the synthesis filter before it (G.728 blocks 4, 9 and 10).
#include "core/checks.h"
#include "core/state_size.h"
#include "g728/exports.h"
#include "g728/synthesis.h"

namespace vsp::VSP_LEVEL {

using namespace g728;

namespace {

constexpr int kOrder = 10, kSpeechScale = 2;

constexpr int kPadding = 7;

// The weighting filter on a vector: x and y are the places of the present input and output, the past before them.
void weigh(const Vsp16s* zero, const Vsp16s* pole, const Vsp16s* x, Vsp16s* y) {
    Vsp64s ofInput[kOutputs], ofPast[kOutputs];
    for (int n = 0; n < kVector; n++) y[n] = 0;
    sumsOfTen(zero, x, ofInput);
    sumsOfTen(pole, y, ofPast);
    for (int n = 0; n < kVector; n++) {
        Vsp64s t = 16384 * x[n] + ofInput[n] - ofPast[n];
        for (int i = 0; i < n; i++) t -= pole[i] * y[n - 1 - i];
        y[n] = sat16(t >> 14);
    }
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
    if (anyNull(pSrc, pZero, pPole, pDst, pState)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    InputState& s = *static_cast<InputState*>(pState);
    Vsp16s x[kOrder + kVector + kPadding] = {}, y[kOrder + kVector + kPadding] = {};
    for (int i = 0; i < kOrder; i++) x[i] = s.x[i], y[i] = s.y[i];
    while (len > 0) {
        const int count = len < kVector ? len : kVector;
        for (int n = 0; n < kVector; n++) x[kOrder + n] = n < count ? pSrc[n] : Vsp16s(0);
        weigh(pZero, pPole, x + kOrder, y + kOrder);
        for (int n = 0; n < count; n++) pDst[n] = y[kOrder + n];
        for (int i = 0; i < kOrder; i++) x[i] = x[count + i], y[i] = y[count + i];
        pSrc += count, pDst += count, len -= count;
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
    Vsp16s x[kOrder + kVector + kPadding] = {}, y[kOrder + kVector + kPadding] = {};
    const auto place = [&](const Vector& v, Vsp16s* at) {
        for (int n = 0; n < kVector; n++) at[n] = shift_16s(v.x[n], Vsp64s(kSpeechScale) - v.scale);
    };
    place(s.memory.past[1], x);
    place(s.memory.past[0], x + kVector);
    place(s.memory.pending, x + kOrder);
    for (int i = 0; i < kOrder; i++) y[i] = s.weighted[i];
    weigh(pZero, pPole, x + kOrder, y + kOrder);
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
        Vsp64s t = 16384 * z[n];
        for (int i = 0; i < n; i++) t += Vsp64s(pZero[i]) * z[n - 1 - i] - pPole[i] * w[n - 1 - i];
        w[n] = sat16(t >> 14);
        Vsp16s& memory = s.weighted[kOrder - kVector + n];
        memory = sat16(Vsp64s(memory) + shift_32s(w[n], kSpeechScale - excited));
    }
    const Vector& newest = s.memory.advance(z, excited);
    for (int n = 0; n < kVector; n++) pDst[n] = newest.x[n];
    *pDstScale = newest.scale;
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
