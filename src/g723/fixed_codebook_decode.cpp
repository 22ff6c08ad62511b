// The codes of both rates from their indices (G.723.1 3.5, `Fcbk_Unpk`).
#include "core/checks.h"
#include "g723/acelp.h"
#include "g723/exports.h"
#include "g723/pitch_gains.h"
#include "g723/pulse_tables.h"
#include "g723/pulse_train.h"

namespace vsp::VSP_LEVEL {

static constexpr int kLen = 60;

VspStatus vspsFixedCodebookDecode_MLQ_G723_16s(const Vsp16s* pIndex, Vsp32s pos, Vsp16s lag, Vsp32s subframe,
                                               Vsp16s* pDst) {
    constexpr int kMost = g723::kMostPulses;
    if (anyNull(pIndex, pDst)) return vspStsNullPtrErr;
    if (subframe < 0 || subframe > 3) return vspStsRangeErr;
    if (lag < 18 || lag > 145) return vspStsRangeErr;
    const Vsp16s gain = pIndex[0], grid = pIndex[1], train = pIndex[2], signs = pIndex[3];
    if (gain < 0 || gain >= g723::kCodeGains) return vspStsCodeRangeErr;
    if (grid < 0 || grid > 1) return vspStsCodeRangeErr;
    if (train < 0 || train > 1) return vspStsCodeRangeErr;
    if (signs < 0 || signs > 63) return vspStsCodeRangeErr;
    if (pos < 0) return vspStsCodeRangeErr;
    const int first = kMost - g723::pulsesOf(subframe);
    Vsp16s code[kLen] = {};
    if (pos < g723::positionsOf(subframe))
        for (int i = 0, j = first; i < g723::kGridPlaces && j < kMost; i++) {
            const Vsp32s rest = pos - g723::combinations[j][i];
            if (rest >= 0) {
                pos = rest;
                continue;
            }
            j++;
            code[grid + 2 * i] = Vsp16s((signs >> (kMost - j) & 1) != 0 ? -g723::codeGains[gain] : g723::codeGains[gain]);
        }
    if (train != 0)
        repeatPulses(code, lag, pDst);
    else
        for (int n = 0; n < kLen; n++) pDst[n] = code[n];
    return vspStsNoErr;
}

VspStatus vspsFixedCodebookDecode_ACELP_G723_16s(const Vsp16s* pIndex, Vsp32s pos, Vsp16s lag, Vsp16s gainIndex,
                                                 Vsp16s* pDst) {
    constexpr int kPulses = 4;
    if (anyNull(pIndex, pDst)) return vspStsNullPtrErr;
    if (lag < 17 || lag > 144) return vspStsRangeErr;
    const Vsp16s gain = pIndex[0], grid = pIndex[1], signs = pIndex[3];
    if (gain < 0 || gain >= g723::kCodeGains) return vspStsCodeRangeErr;
    if (grid < 0 || grid > 1) return vspStsCodeRangeErr;
    if (signs < 0 || signs > 15) return vspStsCodeRangeErr;
    if (pos < 0 || pos > 4095) return vspStsCodeRangeErr;
    if (gainIndex < 0 || gainIndex >= g723::kLongCodebook) return vspStsCodeRangeErr;
    Vsp16s code[PitchSharpening::kRoom] = {};
    for (int k = 0; k < kPulses; k++) {
        const int at = 8 * (pos >> 3 * k & 7) + 2 * k + grid;
        if (at < kLen) code[at] = Vsp16s((signs >> k & 1) != 0 ? g723::codeGains[gain] : -g723::codeGains[gain]);
    }
    PitchSharpening(lag, gainIndex).apply(code);
    for (int n = 0; n < kLen; n++) pDst[n] = code[n];
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
