// Discontinuous transmission in the encoder (`tx_dtx_handler`, `dtx_buffer`, `dtx_enc`, `sid_sync`; 3GPP
// TS 26.093, 26.092).
#include "core/checks.h"
#include "core/state_size.h"
#include "gsmamr/comfort_noise.h"
#include "gsmamr/exports.h"
#include "gsmamr/lsf_quant.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kLevelIndex = 4;  // of the indices of a silence descriptor

struct State {
    Vsp16s lsp[kDtxHistory][kLsfOrder], level[kDtxHistory];
    Vsp16s newest, index[5], hangover, elapsed;
};
static_assert(sizeof(State) == 192);

void describe(State& s, Vsp16s* pred) {
    constexpr Vsp16s kOffset = 2560;
    Vsp16s level = 0;
    for (int n = 0; n < kDtxHistory; n++) level = Add_16s(level, Vsp16s(s.level[n] >> 2));
    const int index = Add_16s(Add_16s(Vsp16s(level >> 1), kOffset), 128) >> 8;
    s.index[kLevelIndex] = Vsp16s(index < 0 ? 0 : index > 63 ? 63 : index);
    setPredictor(pred, Vsp16s((s.index[kLevelIndex] << 8) - kOffset));

    Vsp16s lsp[kLsfOrder], lsf[kLsfOrder], unusedResidual[kLsfOrder], unusedLsp[kLsfOrder];
    meanOfHistory(s.lsp, lsp);
    vspsLSPToLSF_GSMAMR_16s(lsp, lsf);
    reorderLsf(lsf);
    vspsLSFToLSP_GSMAMR_16s(lsf, lsp);
    vspsLSPQuant_GSMAMR_16s(lsp, kModeSID, unusedResidual, unusedLsp, s.index);
}

}  // namespace

VspStatus vspsDTXGetStateSize_GSMAMR_16s(Vsp32s* pSize) { return fixedSize(pSize, sizeof(State)); }

VspStatus vspsDTXInit_GSMAMR_16s(void* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    State& s = *static_cast<State*>(pState);
    s = {};
    for (auto& lsp : s.lsp) resetLsp(lsp);
    s.hangover = kDtxHangover;
    s.elapsed = kMax16;
    return vspStsNoErr;
}

VspStatus vspsDTXHandler_GSMAMR_16s(Vsp32s vadFlag, Vsp32s* pMode, Vsp32s* pComputeSID, void* pState) {
    if (anyNull(pMode, pComputeSID, pState)) return vspStsNullPtrErr;
    if (!isSpeechMode(*pMode)) return vspStsRangeErr;
    State& s = *static_cast<State*>(pState);
    const DtxFrame frame = ownDtxFrame(s, vadFlag != 0);
    if (frame != DtxFrame::speech) *pMode = kModeSID;
    *pComputeSID = frame == DtxFrame::noiseToDescribe;
    return vspStsNoErr;
}

VspStatus vspsDTXBuffer_GSMAMR_16s(const Vsp16s* pLSP, const Vsp16s* pSrc, void* pState) {
    if (anyNull(pLSP, pSrc, pState)) return vspStsNullPtrErr;
    State& s = *static_cast<State*>(pState);
    s.newest = nextInHistory(s.newest);
    for (int i = 0; i < kLsfOrder; i++) s.lsp[s.newest][i] = pLSP[i];
    s.level[s.newest] = Vsp16s(frameLogEnergy(pSrc) >> 1);
    return vspStsNoErr;
}

VspStatus vspsDTXEncode_GSMAMR_16s(Vsp32s computeSID, Vsp16s* pPred, Vsp16s* pIndex, void* pState) {
    if (anyNull(pPred, pIndex, pState)) return vspStsNullPtrErr;
    State& s = *static_cast<State*>(pState);
    if (computeSID != 0 || s.index[kLevelIndex] == 0) describe(s, pPred);
    for (int i = 0; i < 5; i++) pIndex[i] = s.index[i];
    return vspStsNoErr;
}

VspStatus vspsSIDSync_GSMAMR_16s(Vsp32s mode, Vsp16s* pMem, Vsp32s* pFrameType) {
    constexpr Vsp16s kSpeech = 0, kSidFirst = 1, kSidUpdate = 2, kNoData = 3;
    constexpr Vsp16s kAfterFirst = 3, kPeriod = 8;
    if (anyNull(pMem, pFrameType)) return vspStsNullPtrErr;
    if (!isMode(mode)) return vspStsRangeErr;
    Vsp16s &counter = pMem[0], &type = pMem[1];
    if (mode != kModeSID) {
        counter = kPeriod;
        type = kSpeech;
    } else {
        counter = Sub_16s(counter, 1);
        if (type == kSpeech) {
            type = kSidFirst;
            counter = kAfterFirst;
        } else if (counter == 0) {
            type = kSidUpdate;
            counter = kPeriod;
        } else {
            type = kNoData;
        }
    }
    *pFrameType = type;
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
