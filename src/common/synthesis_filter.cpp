// LP synthesis filter 1/A(z) (G.729 Syn_filt).
#include "arithmetic/basic_ops.h"
#include "common/exports.h"
#include "core/checks.h"
#include "vector/magnitude.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kOrder = 10;
constexpr int kBlock = 40;

// Output n, every step saturated; notes in overflow whether one was.
Vsp16s outputSaturating(const Vsp16s* lpc, Vsp16s x, const Vsp16s* y, int scaleFactor, bool& overflow) {
    const auto saturate = [&overflow](Vsp64s a) {
        overflow |= a != Cnvrt_64s32s(a);
        return Cnvrt_64s32s(a);
    };
    Vsp32s sum = saturate(2 * (x * Vsp64s(lpc[0])));
    for (int j = 1; j <= kOrder; j++) sum = saturate(Vsp64s(sum) - saturate(2 * (lpc[j] * Vsp64s(y[-j]))));
    sum = saturate(sum * (1LL << (15 - scaleFactor)));
    return Vsp16s(saturate(sum + 0x8000LL) >> 16);
}

int magnitudeOf(int a) { return a < 0 ? -a : a; }

// The outputs of a block, kOrder earlier ones before them. Returns whether some step saturated.
bool filterBlockSaturating(const Vsp16s* lpc, const Vsp16s* x, Vsp16s* y, int len, int scaleFactor) {
    bool overflow = false;
    for (int n = 0; n < len; n++) y[n] = outputSaturating(lpc, x[n], y + n, scaleFactor, overflow);
    return overflow;
}

enum class Outcome { exact, clipped, uncertain };

// Keeps the compiler from vectors, whose 64-bit products are slow.
VSP_INLINE Vsp64u inRegister(Vsp64u a) {
    asm("" : "+r"(a));
    return a;
}

// The same with sums that wrap; only the outputs are clipped. They are made in pairs: one 64-bit product holds what an
// output contributes to the first of a pair in its low half and, a borrow apart, what it contributes to the second in its
// high half.
Outcome filterBlockWrapping(const Vsp16s* lpc, int lpcMagnitude, const Vsp16s* x, Vsp16s* y, int len, int scaleFactor) {
    Vsp64s taps[kOrder + 1];
    for (int j = 1; j <= kOrder; j++) taps[j] = lpc[j] + (Vsp64s(j < kOrder ? lpc[j + 1] : 0) << 32);
    constexpr int kPairs = kOrder / 2;
    Vsp64u sums[kPairs] = {};  // of the next pairs, from the outputs so far
    for (int p = 0; p < kPairs; p++)
        for (int j = 2 * p + 1; j <= kOrder; j++) sums[p] = inRegister(sums[p] + Vsp64u(taps[j] * y[2 * p - j]));

    const Vsp32s rounding = roundingConstant(scaleFactor);
    Vsp32s clipped = 0;
    const auto clip = [&clipped](Vsp32s a) {
        const Vsp16s b = sat_16s(a);
        clipped |= a ^ b;
        return b;
    };
    for (int n = 0; n < len; n += 2) {
        const Vsp64u sum0 = Vsp64u(Vsp32s(sums[0])), sum1 = (sums[0] - sum0) >> 32;
        const Vsp64s y0 = clip(Vsp32s(Vsp32u(lpc[0] * x[n] + rounding) - Vsp32u(sum0)) >> scaleFactor);
        y[n] = Vsp16s(y0);
        if (n + 1 == len) break;
        const Vsp32u x1 = Vsp32u(lpc[0] * x[n + 1] + rounding);
        const Vsp64s y1 = clip(Vsp32s(x1 - Vsp32u(sum1) - Vsp32u(lpc[1] * y0)) >> scaleFactor);
        y[n + 1] = Vsp16s(y1);
        for (int p = 0; p < kPairs; p++) {
            const Vsp64u next = p + 1 < kPairs ? sums[p + 1] : 0;
            sums[p] = inRegister(next + Vsp64u(y1 * taps[2 * p + 1]) + Vsp64u(y0 * taps[2 * p + 2]));
        }
    }
    // As long as the outputs before one are right and no larger than this, no partial sum of it leaves the range, so that
    // it is right itself.
    const Vsp16u largestX = maxMagnitude(x, len), largestY = maxMagnitude(y - kOrder, kOrder + len);
    const Vsp32s largest = largestX > largestY ? largestX : largestY;
    if (Vsp64s(lpcMagnitude) * largest >= (1 << 30) - rounding) return Outcome::uncertain;
    if (clipped != 0) return Outcome::clipped;
    return largest > kMax16 ? Outcome::uncertain : Outcome::exact;  // a shift that saturates may still round to -32768
}

}  // namespace

VspStatus vspsSynthesisFilter_NR_16s_Sfs(const Vsp16s* pLPC, const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len,
                                         Vsp32s scaleFactor, const Vsp16s* pMem) {
    if (anyNull(pLPC, pSrc, pDst, pMem)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    if (scaleFactor < 0 || scaleFactor > 15) return vspStsScaleRangeErr;
    int lpcMagnitude = 0;
    for (int j = 0; j <= kOrder; j++) lpcMagnitude += magnitudeOf(pLPC[j]);
    Vsp16s buffer[kOrder + kBlock];
    Vsp16s* const y = buffer + kOrder;
    for (int j = 0; j < kOrder; j++) buffer[j] = pMem[j];
    bool overflow = false;
    for (Vsp32s left = len; left > 0; left -= kBlock) {
        const Vsp32s count = left < kBlock ? left : kBlock;
        const Outcome outcome = filterBlockWrapping(pLPC, lpcMagnitude, pSrc, y, count, scaleFactor);
        if (outcome == Outcome::uncertain)
            overflow |= filterBlockSaturating(pLPC, pSrc, y, count, scaleFactor);
        else
            overflow |= outcome == Outcome::clipped;
        for (int i = 0; i < count; i++) pDst[i] = y[i];
        for (int j = 0; j < kOrder; j++) buffer[j] = y[count - kOrder + j];
        pSrc += count;
        pDst += count;
    }
    return overflow ? vspStsOverflow : vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
