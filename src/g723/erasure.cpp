// Concealment of erased frames (G.723.1 3.10): what good frames leave for it, and the excitation it makes.
#include "core/checks.h"
#include "g723/correlations.h"
#include "g723/exports.h"
#include "g723/gain_tables.h"
#include "g723/operators.h"
#include "vector/map.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kHistory = 145, kFrame = 240, kLongestDelay = 142;
constexpr Vsp16s kAttenuation = 24576;  // 0.75

}  // namespace

VspStatus vspsErasureGain_G723_16s(Vsp16s index2, Vsp16s index3, Vsp32s erased, Vsp16s* pGain) {
    if (anyNull(pGain)) return vspStsNullPtrErr;
    if (erased != 0 && erased != 1) return vspStsRangeErr;
    if (erased != 0) {
        *pGain = mulRound_16s(*pGain, kAttenuation);
        return vspStsNoErr;
    }
    if (index2 < 0 || index2 >= g723::kCodeGains) return vspStsCodeRangeErr;
    if (index3 < 0 || index3 >= g723::kCodeGains) return vspStsCodeRangeErr;
    *pGain = g723::codeGains[(index2 + index3) >> 1];
    return vspStsNoErr;
}

// `Comp_Info`
VspStatus vspsErasureClassify_G723_16s(const Vsp16s* pExc, Vsp16s lag, Vsp16s* pDelay, Vsp16s* pEnergy) {
    constexpr int kLen = 120, kAround = 3;
    if (anyNull(pExc, pDelay, pEnergy)) return vspStsNullPtrErr;
    if (lag < 18 || lag > 145) return vspStsRangeErr;
    const Vsp16s* const last = pExc + kHistory + kFrame - kLen;
    const Segment newest(last, kLen);
    const int middle = lag < kLongestDelay ? lag : kLongestDelay;
    int delay = middle;
    Vsp32s largest = 0;
    for (int d = middle - kAround; d <= middle + kAround; d++) {
        const Vsp32s cross = correlation(newest, Segment(last - d, kLen));
        if (cross <= largest) continue;
        largest = cross;
        delay = d;
    }
    const Vsp16s energy = round_32s(newest.energy32()), cross = round_32s(largest);
    const Vsp16s delayed = round_32s(Segment(last - delay, kLen).energy32());
    const bool voiced = cross > 0 && (Mul2_16s32s(delayed, energy) >> 3) < Mul2_16s32s(cross, cross);
    *pDelay = voiced ? Vsp16s(delay) : Vsp16s(0);
    *pEnergy = energy;
    return vspStsNoErr;
}

// `Regen`
VspStatus vspsErasureConceal_G723_16s(Vsp16s delay, Vsp16s gain, Vsp32s count, Vsp16s* pPastExc, Vsp16s* pSeed,
                                      Vsp16s* pDst) {
    constexpr int kMuted = 3;
    const bool muted = count == kMuted, unvoiced = delay == 0;
    if (anyNull(pPastExc, pDst) || (unvoiced && count < kMuted && anyNull(pSeed))) return vspStsNullPtrErr;
    if (delay != 0 && (delay < 15 || delay > kHistory)) return vspStsRangeErr;
    if (count < 1 || count > kMuted) return vspStsRangeErr;
    if (!muted && !unvoiced) {
        Vsp16s repeated[kHistory + kFrame];
        for (int i = 0; i < kHistory; i++) repeated[i] = pPastExc[i];
        for (int n = kHistory; n < kHistory + kFrame; n++) repeated[n] = repeated[n - delay];
        for (int n = 0; n < kFrame; n++) pDst[n] = Mul_16s(repeated[kHistory + n], kAttenuation);
        for (int i = 0; i < kHistory; i++) pPastExc[i] = pDst[kFrame - kHistory + i];
        return vspStsNoErr;
    }
    for (int n = 0; n < kFrame; n++) {
        if (!muted) *pSeed = Vsp16s(Vsp16u(*pSeed) * 521 + 259);
        pDst[n] = muted ? Vsp16s(0) : Mul_16s(gain, *pSeed);
    }
    for (int i = 0; i < kHistory; i++) pPastExc[i] = 0;
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
