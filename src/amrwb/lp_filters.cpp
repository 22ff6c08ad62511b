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

    // A larger output is clipped.
    static constexpr Vsp64s kLargestOutput = (1 << 27) - 1;

    static Vsp64s magnitudeBits(Vsp64s a) { return a ^ a >> 63; }

    Vsp64s lpcMagnitude() const {
        Vsp32s sum = 0;
        for (int j = 1; j <= kOrder; j++) sum += lpc[j] < 0 ? -lpc[j] : lpc[j];
        return sum;
    }

    // Whether the sums of the low words fit and so do all others with the largest words that there are.
    bool fits(Vsp64s largest, const Vsp16s* x, int len) const {
        constexpr Vsp64s kLow = 1 << 18;
        const Vsp64s high = (largest >> kLowBits) + 1, lpcSum = lpcMagnitude();
        return lpcSum < kLow &&
               lpcSum * high + (factor < 0 ? -factor : factor) * Vsp64s(maxMagnitude(x, len)) < (1 << 30) - kLow;
    }

    // Exact sums without clipping, four outputs at a time. To an output those before it in the four and the four before
    // are added one by one, so that it waits for a product with the last one; older ones have been added to its sum in
    // vectors, several outputs earlier. Returns whether that is right. y is written up to a multiple of four.
    [[gnu::always_inline]] bool filterUnclipped(const Vsp16s* x, Vsp32s* y, int len) const {
        if (shift > 4) return false;
        using V = Related<Sliding16>::Sum;
        constexpr int kFours = 3;  // that have sums: the first two behind the next one, and one more
        constexpr int kVectors = 4 / V::width;
        Vsp64s taps[20] = {}, inputs[kSubframe];  // 0 beyond the order
        for (int j = 1; j <= kOrder; j++) taps[j] = -lpc[j];
        for (int n = 0; n < len; n++) inputs[n] = factor * x[n] * (1LL << kLowBits);
        for (int n = len; n % 4 != 0; n++) inputs[n] = 0;

        V sums[kFours + 1][kVectors];
        for (auto& four : sums)
            for (V& sum : four) sum = V::splat(0);
        Vsp64s next[4], nextButOne[4] = {}, last[4], largest = 0;
        const auto add4 = [&](const Vsp64s(&outputs)[4]) {
            V factors[4];
            for (int i = 0; i < 4; i++) factors[i] = V::splat(outputs[i]);
            for (int f = 0; f < kFours; f++)
                for (int v = 0; v < kVectors; v++) {
                    sums[f][v] = sums[f + 1][v];
                    for (int i = 0; i < 4; i++)
                        sums[f][v] = add(sums[f][v], mulLo(V::load(taps + 8 + 4 * f - i + V::width * v), factors[i]));
                }
            for (int i = 0; i < 4; i++) next[i] = nextButOne[i];
            for (int v = 0; v < kVectors; v++) sums[0][v].store(nextButOne + V::width * v);
        };
        for (int n = -kOrder; n < 0; n += 4) {
            for (int i = 0; i < 4; i++) {
                last[i] = y[n + i];
                largest |= magnitudeBits(last[i]);
            }
            add4(last);
        }
        for (int n = 0; n < len; n += 4) {
            Vsp64s four[4];
            for (int k = 0; k < 4; k++) {
                Vsp64s sum = inputs[n + k] + next[k];
                for (int i = 0; i < 4; i++) sum = inRegister(sum + taps[k + 4 - i] * last[i]);
                for (int i = 0; i < k; i++) sum = inRegister(sum + taps[k - i] * four[i]);
                four[k] = sum >> (kLowBits + 3 - shift);
                largest |= magnitudeBits(four[k]);
                y[n + k] = Vsp32s(four[k]);
            }
            if (largest > kLargestOutput) [[unlikely]]
                return false;
            for (int i = 0; i < 4; i++) last[i] = four[i];
            add4(last);
        }
        return fits(largest, x, len);
    }

    // Exact sums; only the outputs are clipped. Returns whether that is right.
    [[gnu::noinline]] bool filterClipping(const Vsp16s* x, Vsp32s* y, int len) const {
        Vsp64s taps[kOrder + 1], largest = 0;
        for (int j = 1; j <= kOrder; j++) {
            taps[j] = lpc[j];
            largest |= magnitudeBits(y[-j]);
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
            largest |= magnitudeBits(newest);
        }
        return fits(largest, x, len);
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
    if (!filter.filterUnclipped(pSrc, y, len)) [[unlikely]]
        if (!filter.filterClipping(pSrc, y, len)) filter.filterSaturating(pSrc, y, len);
    for (int n = 0; n < len; n++) pDst[n] = y[n] * 16;
    for (int j = 0; j < kOrder; j++) pMem[j] = buffer[len + j] * 16;
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
