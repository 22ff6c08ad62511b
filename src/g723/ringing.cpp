// The synthesis filter followed by the weighting filters, formant and harmonic (G.723.1 2.12 and 2.19): impulse response
// and ringing.
#include "core/checks.h"
#include "g723/exports.h"
#include "g723/filters.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kLen = kL_subfr_G723, kHistory = 145;

bool isLegalDelay(Vsp16s delay) { return delay >= 15 && delay <= kHistory; }

// The synthesis and the formant weighting filter.
struct CombinedFilter {
    const Vsp16s *lpc, *weight;
    FilterLine synthesis, weighted;

    // sum: the input in the format of the sums. kDoubled: what goes from the zeros to the poles is doubled.
    template <bool kDoubled>
    [[gnu::always_inline]] void run(Vsp32s* sum) {
        addPoles(lpc, sum, synthesis, kLen, 13);
        subtractZeros(weight, synthesis, sum, kLen);
        if (kDoubled)
            for (int n = 0; n < kLen; n++) sum[n] = Mul2_32s(sum[n]);
        addPoles(weight + kLpOrder, sum, weighted, kLen, 13);
    }
};

constexpr Vsp16s kSilence[kLpOrder] = {};

}  // namespace

// `Comp_Ir`
VspStatus vspsImpulseResponse_G723_16s(const Vsp16s* pLPC, const Vsp16s* pWeight, Vsp16s delay, Vsp16s gain, Vsp16s* pDst) {
    if (anyNull(pLPC, pWeight, pDst)) return vspStsNullPtrErr;
    if (!isLegalDelay(delay)) return vspStsRangeErr;
    CombinedFilter filter{pLPC, pWeight, FilterLine(kSilence), FilterLine(kSilence)};
    Vsp32s sum[kLen] = {0x04000000};
    filter.run<true>(sum);
    Vsp16s line[kHistory + kLen];
    for (int i = 0; i < kHistory; i++) line[i] = 0;
    for (int n = 0; n < kLen; n++) line[kHistory + n] = filter.weighted.block()[n];
    addScaled(line + kHistory, line + kHistory - delay, -gain, pDst);
    return vspStsNoErr;
}

// `Sub_Ring`
VspStatus vspsSubtractRinging_G723_16s_I(const Vsp16s* pLPC, const Vsp16s* pWeight, const Vsp16s* pErr,
                                         const Vsp16s* pFIRMem, const Vsp16s* pIIRMem, Vsp16s delay, Vsp16s gain,
                                         Vsp16s* pSrcDst) {
    if (anyNull(pLPC, pWeight, pErr, pFIRMem, pIIRMem, pSrcDst)) return vspStsNullPtrErr;
    if (!isLegalDelay(delay)) return vspStsRangeErr;
    CombinedFilter filter{pLPC, pWeight, FilterLine(pFIRMem), FilterLine(pIIRMem)};
    Vsp32s sum[kLen] = {};
    filter.run<false>(sum);
    Vsp16s line[kHistory + kLen], difference[kLen];
    for (int i = 0; i < kHistory; i++) line[i] = pErr[i];
    for (int n = 0; n < kLen; n++) line[kHistory + n] = filter.weighted.block()[n];
    map(
        kLen, [](auto a, auto b) { return subSat(a, b); }, difference, pSrcDst, line + kHistory);
    addScaled(difference, line + kHistory - delay, gain, pSrcDst);
    return vspStsNoErr;
}

// `Upd_Ring`
VspStatus vspsUpdateRinging_G723_16s_I(const Vsp16s* pLPC, const Vsp16s* pWeight, Vsp16s* pSrcDst, Vsp16s* pErr,
                                       Vsp16s* pFIRMem, Vsp16s* pIIRMem) {
    if (anyNull(pLPC, pWeight, pSrcDst, pErr, pFIRMem, pIIRMem)) return vspStsNullPtrErr;
    CombinedFilter filter{pLPC, pWeight, FilterLine(pFIRMem), FilterLine(pIIRMem)};
    Vsp32s sum[kLen];
    for (int n = 0; n < kLen; n++) sum[n] = pSrcDst[n] * 8192;
    filter.run<false>(sum);
    for (int i = 0; i < kHistory - kLen; i++) pErr[i] = pErr[i + kLen];
    for (int n = 0; n < kLen; n++) pErr[kHistory - kLen + n] = filter.weighted.block()[n];
    for (int n = 0; n < kLen; n++) pSrcDst[n] = ShiftL_16s(filter.synthesis.block()[n], 1);
    filter.synthesis.keep(pFIRMem, kLen);
    filter.weighted.keep(pIIRMem, kLen);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
