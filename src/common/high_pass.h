// Second-order high-pass filter with a feedback in double precision (Pre_Process and Post_Process of G.729 and GSM-AMR).
#pragma once

#include "arithmetic/split_32.h"
#include "core/level.h"
#include "vector/magnitude.h"

namespace vsp::VSP_LEVEL {

// Part of the states of the filters.
struct HighPassMemory {
    Vsp16s y1Hi, y1Lo, y2Hi, y2Lo;  // earlier outputs in double precision, the newest first
    Vsp16s x1, x2;                  // earlier inputs
};

struct HighPassCoefficients {
    Vsp16s b0, b1, b2, a1, a2;
};

// scaleFactor: Q format of the coefficients. kDoubled: the output, not the feedback, is doubled with saturation.
template <int kScaleFactor, bool kDoubled>
struct HighPass {
    static constexpr int kShift = 15 - kScaleFactor;

    HighPassCoefficients c;

    // Twice the product with a value of which halfY is the half: the high word and 15 bits of the low one.
    static Vsp32s feedback(Vsp64s halfY, Vsp16s a) {
        return Add_32s(Mul2_32s(Vsp16s(halfY >> 15) * a), 2 * sat_16s(Vsp32s(((halfY & 0x7FFF) * a) >> 15)));
    }

    static Vsp16s output(Vsp64s y) { return sat_16s(Vsp32s(((kDoubled ? 2 * y : y) + 0x8000) >> 16)); }

    // The new output before rounding; every step saturates.
    [[gnu::noinline]] static Vsp32s stepSaturating(const HighPassCoefficients& c, Vsp64s y1, Vsp64s y2,
                                                   const Vsp16s (&x)[3]) {
        Vsp32s sum = Add_32s(feedback(y1, c.a1), feedback(y2, c.a2));
        sum = mac_32s(mac_32s(mac_32s(sum, x[0], c.b0), x[1], c.b1), x[2], c.b2);
        return shl_32s(sum, kShift);
    }

    [[gnu::noinline]] void runSaturating(Vsp16s* srcDst, Vsp32s len, HighPassMemory& m) const {
        // Products of -1 and -1 are left to the saturating step.
        const bool ordinary = c.b0 != kMin16 && c.b1 != kMin16 && c.b2 != kMin16 && c.a1 != kMin16 && c.a2 != kMin16;
        Vsp64s y1 = m.y1Hi * 32768LL + m.y1Lo, y2 = m.y2Hi * 32768LL + m.y2Lo;  // halves
        Vsp32s x1 = m.x1, x2 = m.x2;
        for (Vsp32s n = 0; n < len; n++) {
            const Vsp32s x = srcDst[n];
            const Vsp64s product0 = 2LL * (c.b0 * x), product1 = 2LL * (c.b1 * x1), product2 = 2LL * (c.b2 * x2);
            const Vsp64s fed2 = 2 * ((y2 * c.a2) >> 15), rest = fed2 + product0 + product1 + product2;
            const Vsp64s fed1 = 2 * ((y1 * c.a1) >> 15);
            const Vsp64s sum = fed1 + rest, sum0 = fed1 + fed2, sum1 = sum0 + product0, sum2 = sum1 + product1;
            Vsp64s y = sum * (1 << kShift);
            const auto biased = [](Vsp64s a) { return Vsp64u(a + 0x80000000LL); };
            if (!ordinary || ((biased(sum0) | biased(sum1) | biased(sum2) | biased(y)) >> 32) != 0) [[unlikely]]
                y = stepSaturating(c, y1, y2, {Vsp16s(x), Vsp16s(x1), Vsp16s(x2)});
            srcDst[n] = output(y);
            y2 = y1;
            y1 = y >> 1;
            x2 = x1;
            x1 = x;
        }
        m = {Vsp16s(y1 >> 15), Vsp16s(y1 & 0x7FFF), Vsp16s(y2 >> 15), Vsp16s(y2 & 0x7FFF), Vsp16s(x1), Vsp16s(x2)};
    }

    static constexpr int kBlock = 80;

    // Halves of the outputs of a step that does not saturate: what depends on the output before is one product, one shift
    // and one addition. Returns whether the whole block could be taken for that; otherwise nothing is changed.
    [[gnu::always_inline]] bool runUnsaturated(Vsp16s* srcDst, int len, HighPassMemory& m) const {
        const auto magnitude = [](Vsp32s a) { return Vsp64s(a < 0 ? -a : a); };
        Vsp16s x[2 + kBlock];
        x[0] = m.x2;
        x[1] = m.x1;
        for (int n = 0; n < len; n++) x[2 + n] = srcDst[n];
        // No sum leaves 31 bits with outputs y below 2^31, whose halves are fed back.
        const Vsp64s largestX = maxMagnitude(x, 2 + len);
        const Vsp64s fromInputs = (magnitude(c.b0) + magnitude(c.b1) + magnitude(c.b2)) * largestX;
        const Vsp64s fromOutputs = ((1 << 15) + 2) * (magnitude(c.a1) + magnitude(c.a2)) + 4;
        if (fromInputs + fromOutputs >= 1 << 30) return false;

        Vsp32s sums[kBlock];
        for (int n = 0; n < len; n++) sums[n] = c.b0 * x[n + 2] + c.b1 * x[n + 1] + c.b2 * x[n];
        Vsp64s y1 = m.y1Hi * 32768LL + m.y1Lo, y2 = m.y2Hi * 32768LL + m.y2Lo, fed1 = (y1 * c.a1) >> 15;
        Vsp64s shiftedA1 = c.a1 * (1LL << kShift);
        asm("" : "+r"(shiftedA1));  // or the shift follows each product, where the next output waits for it
        constexpr Vsp64s kLimit = 1LL << (30 - kShift);
        Vsp64u outside = 0;
        for (int n = 0; n < len; n++) {
            const Vsp64s sum = fed1 + (sums[n] + ((y2 * c.a2) >> 15));
            fed1 = (sum * shiftedA1) >> 15;
            outside |= Vsp64u(sum + kLimit);
            sums[n] = Vsp32s(sum);
            y2 = y1;
            y1 = sum * (1 << kShift);
            if (outside >= 2 * kLimit) [[unlikely]]
                return false;
        }
        constexpr int kDown = 15 - kShift - kDoubled;
        for (int n = 0; n < len; n++) srcDst[n] = sat_16s((sums[n] + (1 << (kDown - 1))) >> kDown);
        m = {Vsp16s(y1 >> 15), Vsp16s(y1 & 0x7FFF), Vsp16s(y2 >> 15), Vsp16s(y2 & 0x7FFF), x[1 + len], x[len]};
        return true;
    }

    [[gnu::always_inline]] void run(Vsp16s* srcDst, Vsp32s len, HighPassMemory& m) const {
        for (Vsp32s left = len; left > 0; left -= kBlock, srcDst += kBlock) {
            const int count = left < kBlock ? left : kBlock;
            if (!runUnsaturated(srcDst, count, m)) [[unlikely]]
                runSaturating(srcDst, count, m);
        }
    }
};

}  // namespace vsp::VSP_LEVEL
