// Comfort noise in the decoder (G.729 B.4.5, and Annexes F and I).
#include "arithmetic/standard_ops.h"
#include "core/checks.h"
#include "core/state_size.h"
#include "g729/comfort_noise.h"
#include "g729/constants.h"
#include "g729/exports.h"
#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

namespace {

struct State {
    Vsp16s gain;
    Vsp16s lsp[kLspOrder];
    Vsp16s sidGain;
};
static_assert(sizeof(State) == 24);

enum { kNothing = 0, kActive = 1, kDescriptor = 2 };  // frame types

struct Arguments {
    Vsp16s frameType;
    const Vsp16s* index;
    Vsp16s pastFrameType, energy, shift;
    Vsp16s *exc, *qLSP, *prevFreq, *seed, *lpc, *gain;
};

VspStatus check(Vsp16s frameType, const Vsp16s* index, Vsp16s pastFrameType) {
    if (frameType != kNothing && frameType != kDescriptor) return vspStsRangeErr;
    if (pastFrameType < kNothing || pastFrameType > kDescriptor) return vspStsRangeErr;
    static constexpr Vsp16s kLimits[4] = {2, kNoiseEntries1, kNoiseEntries2, kSidGains};
    if (frameType == kDescriptor)
        for (int i = 0; i < 4; i++)
            if (index[i] < 0 || index[i] >= kLimits[i]) return vspStsCodeRangeErr;
    return vspStsNoErr;
}

VspStatus decode(const Arguments& a, void* pState) {
    const VspStatus status = check(a.frameType, a.index, a.pastFrameType);
    if (status != vspStsNoErr) return status;
    State& s = *static_cast<State*>(pState);
    if (a.frameType == kDescriptor) {
        s.sidGain = tab_Sidgain[a.index[3]];
        ownDecodeNoiseLSP(a.index, a.prevFreq, s.lsp);
    } else if (a.pastFrameType == kActive) {  // the descriptor was lost
        s.sidGain = tab_Sidgain[ownNoiseLevel(&a.energy, &a.shift, 0).index];
    }
    s.gain = a.pastFrameType == kActive ? s.sidGain : ownSmoothedNoiseGain(s.gain, s.sidGain);
    ownNoiseExcitation(s.gain, a.exc, a.seed, nullptr, a.gain);
    ownNoiseFilters(a.qLSP, s.lsp, a.lpc);
    return vspStsNoErr;
}

}  // namespace

VspStatus vspsCNGGetStateSize_G729B_16s(Vsp32s* pSize) { return fixedSize(pSize, sizeof(State)); }

VspStatus vspsCNGInit_G729B_16s(void* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    State& s = *static_cast<State*>(pState);
    s = {};
    for (int i = 0; i < kLspOrder; i++) s.lsp[i] = lspSid_reset[i];
    s.sidGain = tab_Sidgain[0];
    return vspStsNoErr;
}

VspStatus vspsCNGDecode_G729B_16s(Vsp16s frameType, const Vsp16s* pIndex, Vsp16s pastFrameType, Vsp16s energy, Vsp16s shift,
                                  Vsp16s* pExc, Vsp16s* pQLSP, Vsp16s* pPrevFreq, Vsp16s* pSeed, Vsp16s* pLPC,
                                  void* pState) {
    if (anyNull(pIndex, pExc, pQLSP, pPrevFreq, pSeed, pLPC, pState)) return vspStsNullPtrErr;
    return decode({frameType, pIndex, pastFrameType, energy, shift, pExc, pQLSP, pPrevFreq, pSeed, pLPC, nullptr}, pState);
}

VspStatus vspsCNGDecode_G729D_16s(Vsp16s frameType, const Vsp16s* pIndex, Vsp16s pastFrameType, Vsp16s energy, Vsp16s shift,
                                  Vsp16s* pExc, Vsp16s* pQLSP, Vsp16s* pPrevFreq, Vsp16s* pSeed, Vsp16s* pLPC,
                                  Vsp16s* pGain, void* pState) {
    if (anyNull(pIndex, pExc, pQLSP, pPrevFreq, pSeed, pLPC, pGain, pState)) return vspStsNullPtrErr;
    return decode({frameType, pIndex, pastFrameType, energy, shift, pExc, pQLSP, pPrevFreq, pSeed, pLPC, pGain}, pState);
}

VspStatus vspsCNGEnergy_G729B_16s(const Vsp16s* pExc, Vsp16s* pEnergy, Vsp16s* pShift) {
    if (anyNull(pExc, pEnergy, pShift)) return vspStsNullPtrErr;
    const Vsp32s sum = Cnvrt_64s32s(2 * energy(pExc, kL_frame));
    const int shift = norm_32s(sum);
    *pEnergy = round_32s(shl_32s(sum, shift));
    *pShift = Vsp16s(16 - shift);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
