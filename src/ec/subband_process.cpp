// The filter bank: analysis splits a signal into the bands of a uniform DFT, synthesis joins them (weighted overlap-add).
#include "arithmetic/basic_ops.h"
#include "core/checks.h"
#include "ec/align.h"
#include "ec/exports.h"
#include "ec/subband_state.h"

namespace vsp::VSP_LEVEL {

namespace {

// Moves the line on by a frame and returns the place of the new one.
template <class State>
auto* moveOn(State& s) {
    const Vsp32s kept = s.windowLen - s.frameSize;
    for (Vsp32s i = 0; i < kept; i++) s.line[i] = s.line[i + s.frameSize];
    return s.line + kept;
}

VSP_INLINE Vsp32s mulQ13(Vsp16s a, Vsp16s window) { return (a * window + 4096) >> 13; }

}  // namespace

VspStatus vspsSubbandAnalysis_32f32fc(const Vsp32f* pSrc, Vsp32fc* pDst, VspSubbandProcessState_32f* pState, Vsp8u* pBuf) {
    if (anyNull(pSrc, pDst, pState, pBuf)) return vspStsNullPtrErr;
    SubbandState_32f& s = *aligned<SubbandState_32f>(pState);
    Vsp32f* const u = aligned<Vsp32f>(pBuf);
    Vsp32f* const newest = moveOn(s);
    for (Vsp32s i = 0; i < s.frameSize; i++) newest[i] = pSrc[i];

    for (Vsp32s i = 0; i < s.fftLen; i++) u[i] = s.line[i] * s.window[i];
    for (Vsp32s b = s.fftLen; b < s.windowLen; b += s.fftLen)
        for (Vsp32s i = 0; i < s.fftLen; i++) u[i] += s.line[b + i] * s.window[b + i];
    if (ownRealFftFwd_32f(u, pDst, s.fft, reinterpret_cast<Vsp8u*>(u + s.fftLen)) != vspStsNoErr) return vspStsTransformErr;
    return vspStsNoErr;
}

VspStatus vspsSubbandAnalysis_16s32sc_Sfs(const Vsp16s* pSrc, Vsp32sc* pDst, VspSubbandProcessState_16s* pState,
                                          Vsp32s scaleFactor, Vsp8u* pBuf) {
    if (anyNull(pSrc, pDst, pState, pBuf)) return vspStsNullPtrErr;
    SubbandState_16s& s = *aligned<SubbandState_16s>(pState);
    Vsp16s* const u = aligned<Vsp16s>(pBuf);
    Vsp16s* const newest = moveOn(s);
    for (Vsp32s i = 0; i < s.frameSize; i++) newest[i] = pSrc[i];

    for (Vsp32s i = 0; i < s.fftLen; i++) u[i] = sat_16s(mulQ13(s.line[i], s.window[i]));
    for (Vsp32s b = s.fftLen; b < s.windowLen; b += s.fftLen)
        for (Vsp32s i = 0; i < s.fftLen; i++) u[i] = sat_16s(u[i] + mulQ13(s.line[b + i], s.window[b + i]));
    Vsp8u* const work = reinterpret_cast<Vsp8u*>(u + 2 * s.fftLen);
    if (ownRealFftFwd_16s32s_Sfs(u, pDst, s.fft, scaleFactor, work) != vspStsNoErr) return vspStsTransformErr;
    return vspStsNoErr;
}

VspStatus vspsSubbandSynthesis_32fc32f(const Vsp32fc* pSrc, Vsp32f* pDst, VspSubbandProcessState_32f* pState, Vsp8u* pBuf) {
    if (anyNull(pSrc, pDst, pState, pBuf)) return vspStsNullPtrErr;
    SubbandState_32f& s = *aligned<SubbandState_32f>(pState);
    Vsp32f* const y = aligned<Vsp32f>(pBuf);
    if (ownRealFftInv_32f(pSrc, y, s.fft, reinterpret_cast<Vsp8u*>(y + s.fftLen)) != vspStsNoErr) return vspStsTransformErr;
    Vsp32f* const newest = moveOn(s);
    for (Vsp32s i = 0; i < s.frameSize; i++) newest[i] = 0;

    const Vsp32s last = s.windowLen - 1;
    for (Vsp32s b = 0; b < s.windowLen; b += s.fftLen)
        for (Vsp32s i = 0; i < s.fftLen; i++) s.line[b + i] += y[i] * s.window[last - b - i];
    for (Vsp32s i = 0; i < s.frameSize; i++) pDst[i] = s.line[i];
    return vspStsNoErr;
}

VspStatus vspsSubbandSynthesis_32sc16s_Sfs(const Vsp32sc* pSrc, Vsp16s* pDst, VspSubbandProcessState_16s* pState,
                                           Vsp32s scaleFactor, Vsp8u* pBuf) {
    if (anyNull(pSrc, pDst, pState, pBuf)) return vspStsNullPtrErr;
    SubbandState_16s& s = *aligned<SubbandState_16s>(pState);
    Vsp16s* const y = aligned<Vsp16s>(pBuf);
    Vsp8u* const work = reinterpret_cast<Vsp8u*>(y + 2 * s.fftLen);
    if (ownRealFftInv_32s16s_Sfs(pSrc, y, s.fft, scaleFactor, work) != vspStsNoErr) return vspStsTransformErr;
    Vsp16s* const newest = moveOn(s);
    for (Vsp32s i = 0; i < s.frameSize; i++) newest[i] = 0;

    const Vsp32s last = s.windowLen - 1;
    for (Vsp32s b = 0; b < s.windowLen; b += s.fftLen)
        for (Vsp32s i = 0; i < s.fftLen; i++) s.line[b + i] = sat_16s(s.line[b + i] + mulQ13(y[i], s.window[last - b - i]));
    for (Vsp32s i = 0; i < s.frameSize; i++) pDst[i] = s.line[i];
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
