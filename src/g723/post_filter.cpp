// Synthesis, formant post-filter and gain control of a subframe (G.723.1 3.7 to 3.9).
#include "common/exports.h"
#include "core/checks.h"
#include "g723/correlations.h"
#include "g723/exports.h"
#include "g723/filters.h"
#include "g723/lp_tables.h"
#include "vector/for_blocks.h"

namespace vsp::VSP_LEVEL {

static constexpr int kLen = kL_subfr_G723;

// `Synt`
VspStatus vspsSynthesisFilter_G723_16s(const Vsp16s* pLPC, const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len, Vsp16s* pMem) {
    if (anyNull(pLPC, pSrc, pDst, pMem)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    forBlocks(len, FilterLine::kRoom, [=](Vsp32s first, Vsp32s count) {
        FilterLine y(pMem);
        Vsp32s sum[FilterLine::kRoom];
        for (int n = 0; n < count; n++) sum[n] = pSrc[first + n] * 8192;
        addPoles(pLPC, sum, y, count, 13);
        for (int n = 0; n < count; n++) pDst[first + n] = y.block()[n];
        y.keep(pMem, count);
    });
    return vspStsNoErr;
}

// `Spf`
VspStatus vspsFormantPostFilter_G723_16s_I(const Vsp16s* pLPC, Vsp16s* pSrcDst, Vsp16s* pFIRMem, Vsp16s* pIIRMem,
                                           Vsp16s* pTilt, Vsp32s* pEnergy) {
    if (anyNull(pLPC, pSrcDst, pFIRMem, pIIRMem, pTilt, pEnergy)) return vspStsNullPtrErr;
    // The first reflection coefficient of the input; scaled to 13 bits its energy fits.
    Vsp16s scaled[kLen];
    Vsp32s scale = 3;
    vspsAutoScale_16s(pSrcDst, scaled, kLen, &scale);
    const Vsp32s r0 = Vsp32s(2 * energy(scaled, kLen)), r1 = Vsp32s(2 * dot(scaled, scaled + 1, kLen - 1));
    const Vsp16s magnitude = g723::divLong(Abs_32s(r1 >> 1), high_32s(r0));
    const Vsp16s reflection = r1 < 0 ? Vsp16s(-magnitude) : magnitude;
    const Vsp16s tilt = round_32s(mac_32s(msu_32s(*pTilt * 65536, *pTilt, 8192), reflection, 8192));
    const Vsp16s factor = Vsp16s(Mul_16s(tilt, -16384) & ~3);

    Vsp16s zeros[kLpOrder], poles[kLpOrder];
    for (int i = 0; i < kLpOrder; i++) {
        zeros[i] = mulRound_16s(pLPC[i], g723::postFilterZeros[i]);
        poles[i] = mulRound_16s(pLPC[i], g723::postFilterPoles[i]);
    }
    FilterLine x(pFIRMem), y(pIIRMem);
    Vsp32s sum[kLen];
    for (int n = 0; n < kLen; n++) {
        x.block()[n] = pSrcDst[n];
        sum[n] = pSrcDst[n] * 16384;
    }
    subtractZeros(zeros, x, sum, kLen);
    addPoles(poles, sum, y, kLen, 13);
    for (int n = 0; n < kLen; n++) pSrcDst[n] = round_32s(mac_32s(Mul4_32s(sum[n]), y.block()[n - 1], factor));
    x.keep(pFIRMem, kLen);
    y.keep(pIIRMem, kLen);
    *pTilt = tilt;
    *pEnergy = shr_32s(r0, 2 * scale + 4);
    return vspStsNoErr;
}

// `Scale`
VspStatus vspsGainControl_G723_16s_I(Vsp32s energyBefore, Vsp16s* pSrcDst, Vsp16s* pGain) {
    constexpr Vsp16s kUnity = 4096, kNew = 2048;  // Q12; a sixteenth
    if (anyNull(pSrcDst, pGain)) return vspStsNullPtrErr;
    if (energyBefore < 0) return vspStsBadArgErr;
    Vsp16s quarter[kLen];
    map(
        kLen, [](auto a) { return shr(a, 2); }, quarter, pSrcDst);
    const Vsp32s energyNow = Segment(quarter, kLen).energy32();
    Vsp16s wanted = kUnity;
    if (energyBefore != 0 && energyNow != 0) {
        const int normNow = norm_32s(energyNow), normBefore = norm_32s(energyBefore);
        const int shift = 6 - (normNow - normBefore + 1);
        const Vsp16s ratio = g723::divLong((energyBefore << normBefore) >> 1, high_32s(energyNow << normNow));
        wanted = g723::squareRoot((ratio * 65536) >> (shift < 0 ? 0 : shift < 31 ? shift : 31));
    }
    Vsp16s gain = *pGain;
    for (int n = 0; n < kLen; n++) {
        gain = round_32s(mac_32s(msu_32s(gain * 65536, gain, kNew), wanted, kNew));
        pSrcDst[n] = round_32s(shl_32s(Mul2_16s32s(pSrcDst[n], Add_16s(gain, Vsp16s(gain >> 4))), 4));
    }
    *pGain = gain;
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
