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

    // The outputs, halved, of steps that do not saturate: what depends on the output before is one product, one shift and
    // one addition. Sums wrap.
    class Recursion {
      public:
        [[gnu::always_inline]] Recursion(const HighPassCoefficients& c, const HighPassMemory& m)
            : a2_(c.a2),
              shiftedA1_(c.a1 * (1LL << kShift)),
              y1_(m.y1Hi * 32768LL + m.y1Lo),
              y2_(m.y2Hi * 32768LL + m.y2Lo),
              fed1_((y1_ * c.a1) >> 15) {
            asm("" : "+r"(shiftedA1_));  // or the shift follows each product, where the next output waits for it
        }

        // fromInputs: half of what the inputs contribute. The result is half of the output, before the shift by kShift.
        [[gnu::always_inline]] Vsp32s next(Vsp32s fromInputs) {
            const Vsp64s sum = Vsp64s(Vsp64u(fed1_) + Vsp64u(fromInputs + (product(y2_, a2_) >> 15)));
            fed1_ = product(sum, shiftedA1_) >> 15;
            outside_ |= Vsp64u(sum) + kLimit;
            y2_ = y1_;
            y1_ = Vsp64s(Vsp64u(sum) << kShift);
            return Vsp32s(sum);
        }

        // Of inputs that are no larger than fits() allows.
        bool isRight() const { return outside_ < 2 * kLimit; }

        void keep(HighPassMemory& m) const {
            m.y1Hi = Vsp16s(y1_ >> 15);
            m.y1Lo = Vsp16s(y1_ & 0x7FFF);
            m.y2Hi = Vsp16s(y2_ >> 15);
            m.y2Lo = Vsp16s(y2_ & 0x7FFF);
        }

      private:
        static Vsp64s product(Vsp64s a, Vsp64s b) { return Vsp64s(Vsp64u(a) * Vsp64u(b)); }
        static constexpr Vsp64u kLimit = 1ULL << (30 - kShift);

        Vsp64s a2_, shiftedA1_, y1_, y2_, fed1_;
        Vsp64u outside_ = 0;
    };

    static constexpr int kDown = 15 - kShift - kDoubled;

    // Whether no sum leaves 31 bits with outputs below 2^31, whose halves are fed back.
    bool fits(Vsp32s largestInput) const {
        const auto magnitude = [](Vsp32s a) { return Vsp64s(a < 0 ? -a : a); };
        const Vsp64s fromInputs = (magnitude(c.b0) + magnitude(c.b1) + magnitude(c.b2)) * largestInput;
        const Vsp64s fromOutputs = ((1 << 15) + 2) * (magnitude(c.a1) + magnitude(c.a2)) + 4;
        return fromInputs + fromOutputs < 1 << 30;
    }

    // Halves of what the inputs contribute. x: two samples before the first one.
    [[gnu::always_inline]] void feedForward(const Vsp16s* x, Vsp32s* halves, int len) const {
        for (int n = 0; n < len; n++) halves[n] = c.b0 * x[n + 2] + c.b1 * x[n + 1] + c.b2 * x[n];
    }
    // The same of eight inputs after eight others; sums wrap.
    [[gnu::always_inline]] void feedForward(S16_128 before, S16_128 x, Vsp32s* halves) const {
        const S16_128 x1 = {_mm_alignr_epi8(x.v, before.v, 14)}, x2 = {_mm_alignr_epi8(x.v, before.v, 12)};
        const S16_128 b0 = S16_128{S32_128::splat(Vsp16u(c.b0)).v};
        const S16_128 b21 = S16_128{S32_128::splat(Vsp32s(Vsp32u(Vsp16u(c.b1)) << 16 | Vsp16u(c.b2))).v};
        const auto sums = [&](S32_128 x21, S32_128 x0) { return add(dot2(S16_128{x21.v}, b21), dot2(S16_128{x0.v}, b0)); };
        sums(zipLo(x2, x1), zipLo(x, x)).store(halves);
        sums(zipHi(x2, x1), zipHi(x, x)).store(halves + 4);
    }
    [[gnu::always_inline]] static void roundSums(const Vsp32s* sums, Vsp16s* dst, int len) {
        for (int n = 0; n < len; n++) dst[n] = sat_16s((sums[n] + (1 << (kDown - 1))) >> kDown);
    }

    static constexpr int kBlock = 80;

    // Returns whether no step saturates; otherwise nothing is changed.
    [[gnu::always_inline]] bool runUnsaturated(Vsp16s* srcDst, int len, HighPassMemory& m) const {
        Vsp16s x[2 + kBlock];
        x[0] = m.x2;
        x[1] = m.x1;
        for (int n = 0; n < len; n++) x[2 + n] = srcDst[n];
        if (!fits(maxMagnitude(x, 2 + len))) return false;

        Vsp32s sums[kBlock];
        feedForward(x, sums, len);
        Recursion outputs(c, m);
        for (int n = 0; n < len; n++) sums[n] = outputs.next(sums[n]);
        if (!outputs.isRight()) [[unlikely]]
            return false;
        roundSums(sums, srcDst, len);
        outputs.keep(m);
        m.x1 = x[1 + len];
        m.x2 = x[len];
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
