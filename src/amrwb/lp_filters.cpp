// LP analysis and synthesis filters (3GPP TS 26.190 5.2 to 5.10; `Residu`, `Syn_filt`, `Syn_filt_32`).
#include "amrwb/exports.h"
#include "arithmetic/standard_ops.h"
#include "common/residual_filter.h"
#include "common/synthesis.h"
#include "core/checks.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kOrder = 16, kHighOrder = 20, kSubframe = 64, kMaxLen = 80;

// Left shift of the sum that gives an output; 3 for lpc[0] = 4096.
int outputShift(const Vsp16s* lpc) { return norm_16s(lpc[0]) + 1; }

template <int kFilterOrder>
void synthesise(const Vsp16s* lpc, const Vsp16s* src, Vsp16s* dst, Vsp32s len, const Vsp16s* mem) {
    Vsp16s halved[kFilterOrder + 1];
    halved[0] = Vsp16s(lpc[0] >> 1);
    for (int j = 1; j <= kFilterOrder; j++) halved[j] = lpc[j];
    SynthesisFilter<kFilterOrder, kMaxLen>::run(halved, src, dst, len, 15 - outputShift(lpc), mem);
}

// With outputs of 28 bits: a high word and 12 bits of the low one.
struct DoublePrecisionSynthesis {
    const Vsp16s* lpc;
    Vsp16s factor;  // of the inputs
    int shift;

    static constexpr Vsp64s kLowBits = 12;

    [[gnu::noinline]] void filterSaturating(const Vsp16s* x, Vsp32s* y, int len) const {
        for (int n = 0; n < len; n++) {
            Vsp32s sum = 0;
            for (int j = 1; j <= kOrder; j++) sum = msu_32s(sum, Vsp16s(y[n - j] & 0xFFF), lpc[j]);
            sum = mac_32s(sum >> kLowBits, x[n], factor);
            for (int j = 1; j <= kOrder; j++) sum = msu_32s(sum, Vsp16s(y[n - j] >> kLowBits), lpc[j]);
            y[n] = shl_32s(sum, shift) >> 4;
        }
    }

    // Exact sums; only the outputs are clipped. Returns whether that is right.
    [[gnu::always_inline]] bool filterExact(const Vsp16s* x, Vsp32s* y, int len) const {
        Vsp64s taps[kOrder + 1], lpcMagnitude = 0, largest = 0;
        for (int j = 1; j <= kOrder; j++) {
            taps[j] = lpc[j];
            lpcMagnitude += lpc[j] < 0 ? -lpc[j] : lpc[j];
            largest |= y[-j] ^ y[-j] >> 31;
        }
        Vsp64s newest = y[-1];
        for (int n = 0; n < len; n++) {
            Vsp64s sum = 0;
            for (int j = kOrder; j >= 2; j--) sum = inRegister(sum + taps[j] * y[n - j]);
            sum = (-(sum + taps[1] * newest)) >> (kLowBits - 1);
            newest = (sum + 2 * Vsp64s(factor) * x[n]) * (1 << shift);
            if (newest != Vsp32s(newest)) [[unlikely]]
                newest = newest < 0 ? kMin32 : kMax32;
            newest >>= 4;
            y[n] = Vsp32s(newest);
            largest |= newest ^ newest >> 63;
        }
        // Where the sums of the low words fit and so do all others with the largest words that there are.
        constexpr Vsp64s kLow = 1 << 18;
        const Vsp64s high = (largest >> kLowBits) + 1;
        return lpcMagnitude < kLow &&
               lpcMagnitude * high + (factor < 0 ? -factor : factor) * Vsp64s(maxMagnitude(x, len)) < (1 << 30) - kLow;
    }

    // Keeps the compiler from vectors, whose 64-bit products are slow.
    [[gnu::always_inline]] static Vsp64s inRegister(Vsp64s a) {
        asm("" : "+r"(a));
        return a;
    }
};

}  // namespace

VspStatus vspsResidualFilter_AMRWB_16s_Sfs(const Vsp16s* pLPC, const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len,
                                           Vsp32s scaleFactor) {
    if (anyNull(pLPC, pSrc, pDst)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    if (scaleFactor < 0 || scaleFactor > 15) return vspStsScaleRangeErr;
    ownResidual(pSrc, pLPC, kOrder, pDst, len, scaleFactor);
    return vspStsNoErr;
}

VspStatus vspsSynthesisFilter_AMRWB_16s(const Vsp16s* pLPC, Vsp32s order, const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len,
                                        const Vsp16s* pMem) {
    if (anyNull(pLPC, pSrc, pDst, pMem)) return vspStsNullPtrErr;
    if (len < 1 || len > kMaxLen) return vspStsSizeErr;
    if (order != kOrder && order != kHighOrder) return vspStsRangeErr;
    if (order == kOrder)
        synthesise<kOrder>(pLPC, pSrc, pDst, len, pMem);
    else
        synthesise<kHighOrder>(pLPC, pSrc, pDst, len, pMem);
    return vspStsNoErr;
}

VspStatus vspsSynthesisFilter_AMRWB_16s32s(const Vsp16s* pLPC, const Vsp16s* pSrc, Vsp32s scale, Vsp32s len, Vsp32s* pMem,
                                           Vsp32s* pDst) {
    if (anyNull(pLPC, pSrc, pMem, pDst)) return vspStsNullPtrErr;
    if (len < 1 || len > kSubframe) return vspStsSizeErr;
    if (scale < 0 || scale > 8) return vspStsRangeErr;
    Vsp32s buffer[kOrder + kSubframe];
    Vsp32s* const y = buffer + kOrder;
    for (int j = 0; j < kOrder; j++) buffer[j] = pMem[j] >> 4;
    const DoublePrecisionSynthesis filter{pLPC, Vsp16s(pLPC[0] >> (4 + scale)), outputShift(pLPC)};
    if (!filter.filterExact(pSrc, y, len)) [[unlikely]]
        filter.filterSaturating(pSrc, y, len);
    for (int n = 0; n < len; n++) pDst[n] = y[n] * 16;
    for (int j = 0; j < kOrder; j++) pMem[j] = buffer[len + j] * 16;
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
