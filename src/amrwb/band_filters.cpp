// Filters with a fixed, finite impulse response: decimation of the weighted speech (3GPP TS 26.190 5.4, `LP_Decim2`) and
// the high band (5.9 and 6.3, `Filt_6k_7k`, `Filt_7k`).
#include "amrwb/exports.h"
#include "amrwb/filter_tables.h"
#include "arithmetic/standard_ops.h"
#include "common/residual_filter.h"
#include "core/checks.h"
#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kBandMemory = kBandTaps - 1, kMaxBandLen = 80;

// kShift: right shift of the samples on their way into the filter and its memory.
template <int kShift>
VSP_INLINE VspStatus filterBand(const Vsp16s* taps, Vsp16s* srcDst, Vsp32s len, Vsp16s* mem) {
    if (len < 1 || len > kMaxBandLen) return vspStsSizeErr;
    Vsp16s x[kBandMemory + kMaxBandLen];
    for (int i = 0; i < kBandMemory; i++) x[i] = mem[i];
    for (int i = 0; i < len; i++) x[kBandMemory + i] = Vsp16s(srcDst[i] >> kShift);
    ownFir(x, taps, kBandTaps, srcDst, len);
    for (int i = 0; i < kBandMemory; i++) mem[i] = x[len + i];
    return vspStsNoErr;
}

}  // namespace

VspStatus vspsLowPassDecimate_AMRWB_16s(const Vsp16s* pSrc, Vsp32s len, Vsp16s* pMem, Vsp16s* pDst) {
    constexpr int kMaxLen = 256, kMemory = 3;
    constexpr Vsp16s kTaps[6] = {4260, 7536, 9175, 7536, 4260, 0};
    if (anyNull(pSrc, pMem, pDst)) return vspStsNullPtrErr;
    if (len < 4 || len > kMaxLen || len % 2 != 0) return vspStsSizeErr;
    using V = Sliding16;
    constexpr int kWhole = V::width / 2;  // outputs of a vector
    Vsp16s x[kMemory + kMaxLen + V::width + 4];
    for (int i = 0; i < kMemory; i++) x[i] = pMem[i];
    for (int i = 0; i < len; i++) x[kMemory + i] = pSrc[i];
    for (int i = 0; i < V::width + 4; i++) x[kMemory + len + i] = 0;
    const int outputs = len / 2;
    Vsp32s sum[kMaxLen / 2 + kWhole];
    for (int j = 0; j < outputs; j += kWhole) {
        Wide<V> total = Wide<V>::splat(0x4000);
        for (int t = 0; t < 6; t += 2) total = add(total, dot2(V::load(x + 2 * j + t), splatPair<V>(kTaps + t)));
        shr(total, 15).store(sum + j);  // the taps add up to less than 1
    }
    for (int j = 0; j < outputs; j++) pDst[j] = Vsp16s(sum[j]);
    for (int i = 0; i < kMemory; i++) pMem[i] = x[len + i];
    return vspStsNoErr;
}

VspStatus vspsBandPassFilter_AMRWB_16s_I(Vsp16s* pSrcDst, Vsp32s len, Vsp16s* pMem) {
    if (anyNull(pSrcDst, pMem)) return vspStsNullPtrErr;
    return filterBand<2>(fir_6k_7k, pSrcDst, len, pMem);
}

VspStatus vspsLowPassFilter_AMRWB_16s_I(Vsp16s* pSrcDst, Vsp32s len, Vsp16s* pMem) {
    if (anyNull(pSrcDst, pMem)) return vspStsNullPtrErr;
    return filterBand<0>(fir_7k, pSrcDst, len, pMem);
}

}  // namespace vsp::VSP_LEVEL
