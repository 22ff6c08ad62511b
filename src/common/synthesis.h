// LP synthesis filter 1/A(z) of a given even order (Syn_filt).
#pragma once

#include "arithmetic/basic_ops.h"
#include "core/level.h"
#include "vector/magnitude.h"

namespace vsp::VSP_LEVEL {

template <int kOrder, int kBlock = 40>
struct SynthesisFilter {
    enum class Outcome { exact, clipped, uncertain };

    // Output n, every step saturated; notes in overflow whether one was.
    static Vsp16s outputSaturating(const Vsp16s* lpc, Vsp16s x, const Vsp16s* y, int scaleFactor, bool& overflow) {
        const auto saturate = [&overflow](Vsp64s a) {
            overflow |= a != Cnvrt_64s32s(a);
            return Cnvrt_64s32s(a);
        };
        Vsp32s sum = saturate(2 * (x * Vsp64s(lpc[0])));
        for (int j = 1; j <= kOrder; j++) sum = saturate(Vsp64s(sum) - saturate(2 * (lpc[j] * Vsp64s(y[-j]))));
        sum = saturate(sum * (1LL << (15 - scaleFactor)));
        return Vsp16s(saturate(sum + 0x8000LL) >> 16);
    }

    // The outputs of a block, kOrder earlier ones before them. Returns whether some step saturated.
    [[gnu::noinline]] static bool filterSaturating(const Vsp16s* lpc, const Vsp16s* x, Vsp16s* y, int len,
                                                   int scaleFactor) {
        bool overflow = false;
        for (int n = 0; n < len; n++) y[n] = outputSaturating(lpc, x[n], y + n, scaleFactor, overflow);
        return overflow;
    }

    // Keeps the compiler from vectors, whose 64-bit products are slow.
    [[gnu::always_inline]] static Vsp64u inRegister(Vsp64u a) {
        asm("" : "+r"(a));
        return a;
    }

    // The same with sums that wrap; only the outputs are clipped. They are made in pairs: one 64-bit product holds what an
    // output contributes to the first of a pair in its low half and, a borrow apart, what it contributes to the second in
    // its high half.
    [[gnu::always_inline]] static Outcome filterWrapping(const Vsp16s* lpc, int lpcMagnitude, const Vsp16s* x, Vsp16s* y,
                                                         int len, int scaleFactor) {
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
        // As long as the outputs before one are right and no larger than this, no partial sum of it leaves the range, so
        // that it is right itself.
        const Vsp16u largestX = maxMagnitude(x, len), largestY = maxMagnitude(y - kOrder, kOrder + len);
        const Vsp32s largest = largestX > largestY ? largestX : largestY;
        if (Vsp64s(lpcMagnitude) * largest >= (1 << 30) - rounding) return Outcome::uncertain;
        if (clipped != 0) return Outcome::clipped;
        return largest > kMax16 ? Outcome::uncertain : Outcome::exact;  // a shift that saturates may still round to -32768
    }

    // dst may be src. mem: the outputs before dst[0], the newest last. Returns whether some step saturated. scaleFactor: at
    // most 15, and 0 or more but for exceptions.
    static bool run(const Vsp16s* lpc, const Vsp16s* src, Vsp16s* dst, Vsp32s len, int scaleFactor, const Vsp16s* mem) {
        int lpcMagnitude = 0;
        for (int j = 0; j <= kOrder; j++) lpcMagnitude += lpc[j] < 0 ? -lpc[j] : lpc[j];
        Vsp16s buffer[kOrder + kBlock];
        Vsp16s* const y = buffer + kOrder;
        for (int j = 0; j < kOrder; j++) buffer[j] = mem[j];
        bool overflow = false;
        for (Vsp32s left = len; left > 0; left -= kBlock) {
            const Vsp32s count = left < kBlock ? left : kBlock;
            const Outcome outcome =
                scaleFactor < 0 ? Outcome::uncertain : filterWrapping(lpc, lpcMagnitude, src, y, count, scaleFactor);
            if (outcome == Outcome::uncertain)
                overflow |= filterSaturating(lpc, src, y, count, scaleFactor);
            else
                overflow |= outcome == Outcome::clipped;
            for (int i = 0; i < count; i++) dst[i] = y[i];
            for (int j = 0; j < kOrder; j++) buffer[j] = y[count - kOrder + j];
            src += count;
            dst += count;
        }
        return overflow;
    }
};

}  // namespace vsp::VSP_LEVEL
