#include "common/autocorrelation.h"
#include "common/exports.h"
#include "common/lengths.h"
#include "core/checks.h"

namespace vsp::VSP_LEVEL {

// For any numbers of samples and lags.
static int autoCorrLong(const Vsp16s* src, int len, Vsp32s* r, int lags, Vsp32s* norm) {
    constexpr int kMaxDivisions = 8;  // which leave 0 and -1
    const auto correlation = [&](int lag, int divisions) {
        const auto divided = [shift = 2 * divisions](auto x) { return shr(x, shift); };
        return dot(src + lag, src, len - lag, divided, divided);
    };
    int divisions = 0;
    while (divisions < kMaxDivisions && correlation(0, divisions) >= kEnergyLimit) divisions++;
    const Vsp32s r0 = Cnvrt_64s32s(2 * correlation(0, divisions) + 1);
    const int shift = norm_32s_Pos(r0);
    r[0] = splitValue(r0 << shift);
    for (int k = 1; k < lags; k++) r[k] = splitValue(shl_32s(Cnvrt_64s32s(2 * correlation(k, divisions)), shift));
    *norm = shift - 4 * divisions;
    return divisions;
}

VspStatus vspsAutoCorr_NormE_16s32s(const Vsp16s* pSrc, Vsp32s len, Vsp32s* pDst, Vsp32s lenDst, Vsp32s* pNorm) {
    constexpr int kMaxLags = 32;
    if (anyNull(pSrc, pDst, pNorm)) return vspStsNullPtrErr;
    if (len < 1 || lenDst < 1 || lenDst > len) return vspStsSizeErr;
    int divisions;
    if (len <= kMaxFast && lenDst <= kMaxLags) {
        PaddedSignal<kMaxFast, kMaxLags> signal(len);
        for (int i = 0; i < len; i++) signal.samples[i] = pSrc[i];
        divisions = normalisedAutoCorr(signal, pDst, lenDst, pNorm);
    } else {
        divisions = autoCorrLong(pSrc, len, pDst, lenDst, pNorm);
    }
    return divisions > 0 ? vspStsOverflow : vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
