// Decoder of the line spectral frequencies (G.729 3.2.4, 4.1.1 and 4.4.1).
#include "core/checks.h"
#include "g729/exports.h"
#include "g729/lsp_predictor.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsLSFDecode_G729_16s(const Vsp16s* pIndex, Vsp16s* pPrevFreq, Vsp16s* pLSF) {
    if (anyNull(pIndex, pPrevFreq, pLSF)) return vspStsNullPtrErr;
    const int index0 = pIndex[0], index1 = pIndex[1];
    ownLspReconstruct(index0 >> 7 & 1, index0 & 127, index1 >> 5 & 31, index1 & 31, pPrevFreq, pLSF);
    return vspStsNoErr;
}

VspStatus vspsLSFDecodeErased_G729_16s(Vsp16s mode, const Vsp16s* pPrevLSF, Vsp16s* pPrevFreq) {
    if (anyNull(pPrevLSF, pPrevFreq)) return vspStsNullPtrErr;
    if (mode != 0 && mode != 1) return vspStsCodeRangeErr;
    Vsp16s coded[kLspOrder];
    ownLspExtract(lspPredictors[mode], pPrevLSF, pPrevFreq, coded);
    ownLspRemember(coded, pPrevFreq);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
