// Concealment of lost frames in the index domain.
#include "core/checks.h"
#include "g722/exports.h"

namespace vsp::VSP_LEVEL {

static constexpr Vsp16s kFrames = 4, kSilentCode = 0xFF;

static void copyFrame(const Vsp16s* from, Vsp16s* to, Vsp64s len) { __builtin_memcpy(to, from, sizeof(Vsp16s) * len); }

VspStatus vspsConcealCodes_G722_16s_I(Vsp16s* pSrcDst, Vsp32s len, Vsp32s lost, Vsp16s* pHist) {
    if (anyNull(pSrcDst, pHist)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    Vsp16s* const frames = pHist + 1;  // newest first
    const Vsp64s n = len;
    if (lost == 0) {
        pHist[0] = 0;
        __builtin_memmove(frames + n, frames, sizeof(Vsp16s) * (kFrames - 1) * n);
        copyFrame(pSrcDst, frames, n);
    } else if (pHist[0] >= 0 && pHist[0] < kFrames) {
        copyFrame(frames + pHist[0]++ * n, pSrcDst, n);
    } else {
        pHist[0] = kFrames + 1;
        for (Vsp64s i = 0; i < n; i++) pSrcDst[i] = kSilentCode;
        for (Vsp64s i = 0; i < kFrames * n; i++) frames[i] = kSilentCode;
    }
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
