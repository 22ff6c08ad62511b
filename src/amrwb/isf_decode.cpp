// Decoders of the ISFs (`Dpisf_2s_46b`, `Dpisf_2s_36b`, `Disf_ns`).
#include "amrwb/exports.h"
#include "amrwb/isf_quant.h"
#include "core/checks.h"

namespace vsp::VSP_LEVEL {

static constexpr int kFrames = 3;  // that a buffer has

static bool areIndices(const IsfSplits& splits, const Vsp16s* index) {
    for (int s = 0; s < splits.count; s++)
        if (index[s] < 0 || index[s] >= splits.split[s].size) return false;
    return true;
}

VspStatus vspsISFDecode_AMRWB_16s(const Vsp16s* pIndex, Vsp32s mode, Vsp16s* pPast, Vsp16s* pBuf, Vsp16s* pISF) {
    if (anyNull(pIndex, pPast, pBuf, pISF)) return vspStsNullPtrErr;
    if (!isWideMode(mode)) return vspStsRangeErr;
    const IsfSplits splits = isfSplits(mode);
    if (!areIndices(splits, pIndex)) return vspStsRangeErr;
    Vsp16s error[kIsfOrder], isf[kIsfOrder];
    sumIsfSplits(splits, pIndex, error);
    predictIsf(error, pPast, isf);
    for (int i = kFrames * kIsfOrder - 1; i >= kIsfOrder; i--) pBuf[i] = pBuf[i - kIsfOrder];
    for (int i = 0; i < kIsfOrder; i++) pBuf[i] = isf[i];
    reorderIsf(isf);
    for (int i = 0; i < kIsfOrder; i++) pISF[i] = isf[i];
    return vspStsNoErr;
}

VspStatus vspsISFDecodeErased_AMRWB_16s(const Vsp16s* pPrevISF, const Vsp16s* pBuf, Vsp16s* pPast, Vsp16s* pISF) {
    constexpr Vsp16s kKept = 29491, kReference = 3277, kQuarter = 8192;  // 0.9, 0.1, 1/4, Q15
    if (anyNull(pPrevISF, pBuf, pPast, pISF)) return vspStsNullPtrErr;
    for (int i = 0; i < kIsfOrder; i++) {
        Vsp32s sum = Mul2_16s32s(mean_isf[i], kQuarter);
        for (int f = 0; f < kFrames; f++) sum = mac_32s(sum, pBuf[f * kIsfOrder + i], kQuarter);
        const Vsp16s reference = round_32s(sum);
        const Vsp16s isf = Add_16s(Mul_16s(kKept, pPrevISF[i]), Mul_16s(kReference, reference));
        const Vsp16s predicted = Add_16s(reference, Mul_16s(pPast[i], kIsfPrediction));
        pPast[i] = Vsp16s(Sub_16s(isf, predicted) >> 1);
        pISF[i] = isf;
    }
    reorderIsf(pISF);
    return vspStsNoErr;
}

VspStatus vspsISFDecodeDTX_AMRWB_16s(const Vsp16s* pIndex, Vsp16s* pISF) {
    if (anyNull(pIndex, pISF)) return vspStsNullPtrErr;
    const IsfSplits splits = isfSplits(kModeDtx);
    if (!areIndices(splits, pIndex)) return vspStsRangeErr;
    sumIsfSplits(splits, pIndex, pISF);
    for (int i = 0; i < kIsfOrder; i++) pISF[i] = Add_16s(pISF[i], mean_isf_noise[i]);
    reorderIsf(pISF);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
