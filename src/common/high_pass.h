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
    static constexpr Vsp64s kLimit = 1LL << (30 - kShift);  // of a sum

    // Makes sums of the inputs sums with those of the outputs before, and leaves the halves of the last two outputs.
    // Returns whether no sum reached the limit; otherwise nobody needs what the arguments hold.
    [[gnu::always_inline]] bool sumsInIntegers(Vsp32s* sums, int len, Vsp64s& y1, Vsp64s& y2) const {
        Vsp64s fed1 = (y1 * c.a1) >> 15;
        Vsp64s shiftedA1 = c.a1 * (1LL << kShift);
        asm("" : "+r"(shiftedA1));  // or the shift follows each product, where the next output waits for it
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
        return true;
    }

#if defined(__AVX512F__)
    // The same where each output waits for one operation only: a product, rounded down to an integer, and a sum are one
    // multiplication and addition of doubles in whose binades the distance is 1. The sums stand in the lower half of a
    // double as they are, 3 * 2^51 above themselves. Returns false, and leaves the arguments, if another way has to be
    // taken.
    [[gnu::always_inline]] bool sumsInDoubles(Vsp32s* sums, int len, Vsp64s& y1, Vsp64s& y2) const {
        constexpr Vsp64s kOne = 1 << kScaleFactor, kOffset = 3LL << 51;
        const Vsp64s without1 = kOne - c.a1, without12 = without1 - c.a2;  // of how many offsets there are, times kOne
        const Vsp64s thrice1 = 3 * (without1 < 0 ? -without1 : without1),
                     thrice12 = 3 * (without12 < 0 ? -without12 : without12);
        if (len < 3 || thrice1 <= 2 * kOne || thrice1 >= 4 * kOne || thrice12 >= 2 * kOne) return false;
        const Vsp64s sum0 = ((y1 * c.a1) >> 15) + ((y2 * c.a2) >> 15) + sums[0];
        const Vsp64s sum1 = ((sum0 * (1 << kShift) * c.a1) >> 15) + ((y1 * c.a2) >> 15) + sums[1];
        Vsp64u outside = Vsp64u(sum0 + kLimit) | Vsp64u(sum1 + kLimit);
        if (outside >= 2 * kLimit) return false;

        Vsp64f inputs[kBlock], outputs[kBlock];
        const Vsp64f offset = Vsp64f(without12) * (kOffset / kOne);
        for (int n = 2; n < len; n++) inputs[n] = sums[n] + offset;
        const __m128d a1 = _mm_set_sd(c.a1 / Vsp64f(kOne)), a2 = _mm_set_sd(c.a2 / Vsp64f(kOne));
        __m128d s1 = _mm_set_sd(Vsp64f(kOffset + sum1)), s2 = _mm_set_sd(Vsp64f(kOffset + sum0));
        outputs[0] = _mm_cvtsd_f64(s2);
        outputs[1] = _mm_cvtsd_f64(s1);
        for (int n = 2; n < len; n++) {
            constexpr int kDown = _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC;
            const __m128d others = _mm_fmadd_round_sd(s2, a2, _mm_load_sd(inputs + n), kDown);
            s2 = s1;
            s1 = _mm_fmadd_round_sd(s1, a1, others, kDown);
            _mm_store_sd(outputs + n, s1);
        }
        // With wrapping, as what comes behind a sum beyond the limit may be anything.
        const auto sumOf = [](Vsp64f output) {
            return __builtin_bit_cast(Vsp64u, output) - __builtin_bit_cast(Vsp64u, Vsp64f(kOffset));
        };
        for (int n = 2; n < len; n++) outside |= sumOf(outputs[n]) + Vsp64u(kLimit);
        if (outside >= 2 * kLimit) return false;
        for (int n = 0; n < len; n++) sums[n] = Vsp32s(sumOf(outputs[n]));
        y1 = Vsp64s(sumOf(outputs[len - 1])) * (1 << kShift);
        y2 = Vsp64s(sumOf(outputs[len - 2])) * (1 << kShift);
        return true;
    }
#else
    static bool sumsInDoubles(Vsp32s*, int, Vsp64s&, Vsp64s&) { return false; }
#endif

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
        Vsp64s y1 = m.y1Hi * 32768LL + m.y1Lo, y2 = m.y2Hi * 32768LL + m.y2Lo;
        if (!sumsInDoubles(sums, len, y1, y2) && !sumsInIntegers(sums, len, y1, y2)) return false;
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
