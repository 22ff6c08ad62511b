// LP analysis (3GPP TS 26.190 5.2.1 and 5.2.2; `Autocorr`, `Lag_window`, `Levinson`).
#include "amrwb/exports.h"
#include "amrwb/lp_tables.h"
#include "common/autocorrelation.h"
#include "common/levinson.h"
#include "core/checks.h"
#include "vector/map.h"

namespace vsp::VSP_LEVEL {

static constexpr int kOrder = 16, kWindow = 384;

// Right shift that leaves the signal less energy than 2^30, the room for its correlations. Rounding adds 642,000 at most
// afterwards: less than the margin, which is 2^21 or more, but for shifts of 4, after which a windowed signal has two
// thirds of 2^30 at most.
static int shiftOfEnergy(const Vsp16s* y) {
    constexpr Vsp32s kMargin = 16 << 16;
    S32 sum = S32::splat(0);
    const S16 zero = S16::splat(0);
    const auto squares = [](S32 pairs) { return shrU(dot2(S16{pairs.v}, S16{pairs.v}), 7); };
    for (int i = 0; i < kWindow; i += S16::width) {
        const S16 samples = S16::load(y + i);
        sum = add(sum, add(squares(zipLo(samples, zero)), squares(zipHi(samples, zero))));
    }
    Vsp32s parts[S32::width];
    sum.store(parts);
    Vsp64s energy = kMargin;
    for (const Vsp32s part : parts) energy += part;
    const int shift = 4 - norm_32s(Cnvrt_64s32s(energy)) / 2;
    return shift > 0 ? shift : 0;
}

VspStatus vspsAutoCorr_AMRWB_16s32s(const Vsp16s* pSrc, Vsp32s* pDst) {
    if (anyNull(pSrc, pDst)) return vspStsNullPtrErr;
    PaddedSignal<kWindow, kOrder + 1> signal(kWindow);
    Vsp16s* const y = signal.samples;
    map(
        kWindow, [](auto x, auto w) { return mulRound(x, w); }, y, pSrc, window_384);
    const int shift = shiftOfEnergy(y);
    if (shift > 0)
        map(
            kWindow, [&](auto x) { return mulRoundWrap(x, decltype(x)::splat(Vsp16s(0x8000 >> shift))); }, y, y);
    normaliseLags(signal, pDst, kOrder + 1);
    return vspStsNoErr;
}

VspStatus vspsLagWindow_AMRWB_32s_I(Vsp32s* pSrcDst, Vsp32s len) {
    if (anyNull(pSrcDst)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    if (len > kOrder) return vspStsRangeErr;
    for (int i = 0; i < len; i++) pSrcDst[i] = Mpy_32(pSrcDst[i], lag_16[i]);
    return vspStsNoErr;
}

VspStatus vspsLevinsonDurbin_AMRWB_32s16s(const Vsp32s* pAutoCorr, Vsp16s* pMem, Vsp16s* pLPC) {
    if (anyNull(pAutoCorr, pMem, pLPC)) return vspStsNullPtrErr;
    Levinson<kOrder> recursion;
    recursion.run(pAutoCorr);
    if (recursion.stable) {
        recursion.round(pLPC);
        for (int i = 0; i < kOrder; i++) pMem[i] = pLPC[i + 1];
    } else {
        pLPC[0] = 4096;
        for (int i = 0; i < kOrder; i++) pLPC[i + 1] = pMem[i];
    }
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
