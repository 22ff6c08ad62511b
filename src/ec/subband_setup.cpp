// Sizes and states of the filter bank.
#include "core/checks.h"
#include "ec/align.h"
#include "ec/exports.h"
#include "ec/subband_state.h"
#include "ec/tables.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr Vsp32s kMax = 0x7FFFFFFF;

struct Sizes {
    Vsp64s state, init, buffer;
};

VSP_INLINE Vsp64s roundUp16(Vsp64s x) { return (x + 15) & ~15LL; }

// order below 31, so that the length is a 32-bit number.
VSP_INLINE bool multipleOfTransform(Vsp32s windowLen, Vsp32s order) { return order < 31 && windowLen % (1 << order) == 0; }

VSP_INLINE VspStatus report(const Sizes& sizes, Vsp32s* pStateSize, Vsp32s* pInitBufSize, Vsp32s* pBufSize) {
    if (sizes.state > kMax || sizes.buffer > kMax) return vspStsBadArgErr;
    *pStateSize = Vsp32s(sizes.state);
    *pInitBufSize = Vsp32s(sizes.init);
    *pBufSize = Vsp32s(sizes.buffer);
    return vspStsNoErr;
}

template <class State>
void setUp(State& s, Vsp32s order, Vsp32s frameSize, Vsp32s windowLen, const auto* window) {
    s.windowLen = windowLen;
    s.fftLen = 1 << order;
    s.frameSize = frameSize;
    for (Vsp32s i = 0; i < windowLen; i++) {
        s.window[i] = window[i];
        s.line[i] = 0;
    }
}

}  // namespace

VspStatus vspsSubbandProcessGetSize_32f(Vsp32s order, Vsp32s windowLen, Vsp32s* pStateSize, Vsp32s* pInitBufSize,
                                        Vsp32s* pBufSize) {
    if (order < 1 || windowLen < 1) return vspStsBadArgErr;
    if (anyNull(pStateSize, pInitBufSize, pBufSize)) return vspStsNullPtrErr;
    if (!multipleOfTransform(windowLen, order)) return vspStsBadArgErr;
    Vsp32s spec, init, work;
    if (ownRealFftGetSize_32f(order, &spec, &init, &work) != vspStsNoErr) return vspStsBadArgErr;
    const Vsp64s state = spec + 8LL * windowLen + Vsp64s(sizeof(SubbandState_32f)) + kAlignment;
    return report({state, init, work + (4LL << order) + kAlignment}, pStateSize, pInitBufSize, pBufSize);
}

VspStatus vspsSubbandProcessGetSize_16s(Vsp32s order, Vsp32s windowLen, Vsp32s* pStateSize, Vsp32s* pInitBufSize,
                                        Vsp32s* pBufSize) {
    if (order < 1 || windowLen < 1) return vspStsBadArgErr;
    if (anyNull(pStateSize, pInitBufSize, pBufSize)) return vspStsNullPtrErr;
    if (!multipleOfTransform(windowLen, order)) return vspStsBadArgErr;
    Vsp32s spec, init, work;
    if (ownRealFftGetSize_16s(order, &spec, &init, &work) != vspStsNoErr) return vspStsBadArgErr;
    const Vsp64s state = roundUp16(spec) + 2 * roundUp16(2LL * windowLen) + kHeader_16s + kAlignment;
    return report({state, init, work + roundUp16(4LL << order) + kAlignment}, pStateSize, pInitBufSize, pBufSize);
}

VspStatus vspsSubbandProcessInit_32f(VspSubbandProcessState_32f* pState, Vsp32s order, Vsp32s frameSize, Vsp32s windowLen,
                                     const Vsp32f* pWindow, Vsp8u* pInitBuf) {
    if (order < 1 || frameSize < 1 || (order < 31 && frameSize > 1 << order) || windowLen < 1) return vspStsBadArgErr;
    if (anyNull(pState)) return vspStsNullPtrErr;
    if (!multipleOfTransform(windowLen, order)) return vspStsBadArgErr;
    const Vsp32f* const window = pWindow != nullptr ? pWindow : builtInWindow_32f(order, frameSize, windowLen);
    if (window == nullptr) return vspStsBadArgErr;
    SubbandState_32f& s = *aligned<SubbandState_32f>(pState);
    Vsp32f* const copy = reinterpret_cast<Vsp32f*>(&s + 1);
    Vsp32f* const line = copy + windowLen;
    const RealFftSpec_32f* fft;
    if (ownRealFftInit_32f(&fft, order, reinterpret_cast<Vsp8u*>(line + windowLen), pInitBuf) != vspStsNoErr)
        return vspStsTransformErr;
    s.window = copy;
    s.line = line;
    s.fft = fft;
    setUp(s, order, frameSize, windowLen, window);
    return vspStsNoErr;
}

VspStatus vspsSubbandProcessInit_16s(VspSubbandProcessState_16s* pState, Vsp32s order, Vsp32s frameSize, Vsp32s windowLen,
                                     const Vsp16s* pWindow, Vsp8u* pInitBuf) {
    if (order < 1 || frameSize < 1 || (order < 31 && frameSize > 1 << order) || windowLen < 1) return vspStsBadArgErr;
    if (anyNull(pState)) return vspStsNullPtrErr;
    if (!multipleOfTransform(windowLen, order)) return vspStsBadArgErr;
    const Vsp16s* const window = pWindow != nullptr ? pWindow : builtInWindow_16s(order, frameSize, windowLen);
    if (window == nullptr) return vspStsBadArgErr;
    SubbandState_16s& s = *aligned<SubbandState_16s>(pState);
    Vsp8u* const copy = reinterpret_cast<Vsp8u*>(&s) + kHeader_16s;
    const Vsp64s arrayBytes = roundUp16(2LL * windowLen);
    const RealFftSpec_16s* fft;
    if (ownRealFftInit_16s(&fft, order, copy + 2 * arrayBytes, pInitBuf) != vspStsNoErr) return vspStsTransformErr;
    s.window = reinterpret_cast<Vsp16s*>(copy);
    s.line = reinterpret_cast<Vsp16s*>(copy + arrayBytes);
    s.fft = fft;
    setUp(s, order, frameSize, windowLen, window);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
