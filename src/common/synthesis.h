// LP synthesis filter 1/A(z) of a given even order (Syn_filt).
#pragma once

#include "arithmetic/basic_ops.h"
#include "core/level.h"
#include "vector/magnitude.h"
#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

// What the filter needs of vectors of four values for each of one or two signals.
template <class W>
struct NarrowOf;
template <>
struct NarrowOf<S32_128> {
    using Type = S16_128;
};
template <class W>
using Narrow = typename NarrowOf<W>::Type;
template <class V, class From>
VSP_INLINE V forEach(From a) {
    if constexpr (sizeof(V) == sizeof(From)) return {a.v};
    VSP_IF_256(else return {_mm256_set_m128i(a.v, a.v)};)
}
// What two signals have each; of one signal the first.
template <class V, class From>
VSP_INLINE V both(From a, [[maybe_unused]] From b) {
    if constexpr (sizeof(V) == sizeof(From)) return {a.v};
    VSP_IF_256(else return {_mm256_set_m128i(b.v, a.v)};)
}
VSP_IF_256(template <> struct NarrowOf<S32_256> { using Type = S16_256; };)
VSP_IF_256(template <int i> VSP_INLINE S32_256 splatElement(S32_256 a) { return {_mm256_shuffle_epi32(a.v, 0x55 * i)}; })
VSP_IF_256(template <int i> VSP_INLINE S16_256 splatLowerHalves(S32_256 a) {
    return {_mm256_shuffle_epi8(a.v, _mm256_set1_epi32(0x05040100 + 0x04040404 * i))};
})

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

    // Whether no partial sum leaves 32 bits. As long as the outputs before one are right and no larger than this, no
    // partial sum of it leaves the range, so that it is right itself.
    static bool fits(int lpcMagnitude, Vsp32u largest, int scaleFactor) {
        return Vsp64s(lpcMagnitude) * largest < (1 << 30) - roundingConstant(scaleFactor);
    }

    // Keeps the compiler from vectors, whose 64-bit products are slow.
    [[gnu::always_inline]] static Vsp64u inRegister(Vsp64u a) {
        asm("" : "+r"(a));
        return a;
    }

    // Elements k .. k + 3 of the taps 1 .. kOrder, zeros beside them.
    [[gnu::always_inline]] static S16_128 taps(const Vsp16s* lpc, int k) {
        if (k <= 0) return {shl(S64_128{fourAt(lpc).v & S64_128::splat(~0xFFFF).v}, -16 * k).v};
        const int beyond = k + 3 - kOrder;
        return beyond <= 0 ? fourAt(lpc + k) : S16_128{shrU(S64_128{fourAt(lpc + kOrder - 3).v}, 16 * beyond).v};
    }

    [[gnu::always_inline]] static Vsp32s magnitudes(const Vsp16s* lpc) {
        S32_128 sums = magnitude(loadFour(lpc));
        for (int k = 4; k <= kOrder; k += 4) sums = add(sums, magnitude(widenFour(taps(lpc, k))));
        return sum(sums);
    }

    static constexpr int kShift = 12;                // of filters in the usual format
    static constexpr int kFours = (kOrder + 3) / 4;  // to which the outputs of four before them contribute

    // Outputs with sums that wrap and without clipping, eight at a call, of one signal or, in vectors of 256 bits, of two.
    // What an output adds to later ones is taken from their sums at once, so that what it waits for is one product with the
    // output before. input(n) and past(n) are the inputs and earlier outputs n .. n + 3, all of which are read at first.
    template <class W>
    class Unclipped {
      public:
        using V = Narrow<W>;

        // lpcB: of the second signal.
        template <class Input, class Past>
        [[gnu::always_inline]] Unclipped(const Vsp16s* lpc, const Vsp16s* lpcB, int len, Input input, Past past, W* inputs)
            : largest_{W::splat(0).v} {
            const auto ofBoth = [=](auto of) { return both<V>(of(lpc), of(lpcB)); };
            const auto inAll = [](Vsp16s tap) { return S16_128{S32_128::splat(Vsp16u(tap)).v}; };
            for (int f = 0; f <= kFours; f++) {
                of01_[f] = ofBoth([f](const Vsp16s* c) { return zipLo(taps(c, 4 * f), taps(c, 4 * f - 1)); });
                of23_[f] = ofBoth([f](const Vsp16s* c) { return zipLo(taps(c, 4 * f - 2), taps(c, 4 * f - 3)); });
            }
            a1InAll_ = ofBoth([=](const Vsp16s* c) { return inAll(c[1]); });
            const V lpc0 = ofBoth([=](const Vsp16s* c) { return inAll(c[0]); });
            const W rounding = W::splat(roundingConstant(kShift));
            const int end = (len + 7) & -8;
            for (int n = 0; n < end; n += 8) {
                const W lo = input(n), hi = input(n + 4);
                largest_ = maxU(largest_, magnitude(packSat(lo, hi)));
                inputs[n / 4] = add(dot2(V{lo.v}, lpc0), rounding);
                inputs[n / 4 + 1] = add(dot2(V{hi.v}, lpc0), rounding);
            }
            inputs[end / 4] = W::splat(0);

            for (W& sum : sums_) sum = W::splat(0);
            for (int f = kFours; f > 0; f--) {
                const W four = past(-4 * f);
                largest_ = maxU(largest_, magnitude(packSat(four, four)));
                for (int to = 0; to < kFours; to++) takeFrom(to, splatLowerHalves<0>(four), splatLowerHalves<2>(four));
            }
            sum_ = add(sums_[0], inputs[0]);
            next_ = splatElement<0>(sum_);
        }

        // The next eight outputs; following: the inputs behind the first and behind the second four of them. Zeros stand
        // where none is left.
        [[gnu::always_inline]] V nextEight(const W* following, int left) {
            const W lo = nextFour(following[0]), hi = nextFour(following[1]);
            V eight = packSat(lo, hi);
            if (left < 8) eight = V{eight.v & forEach<V>(firstOfEight(left)).v};
            largest_ = maxU(largest_, magnitude(eight));
            return eight;
        }

        // The largest magnitudes of inputs and outputs by element; an output that does not fit counts as 32767 or 32768.
        V largest() const { return largest_; }

      private:
        static V ofFirst(V pairs) { return {pairs.v & W::splat(0xFFFF).v}; }
        static V ofSecond(V pairs) { return {shrU(W{pairs.v}, 16).v}; }
        static W without(W sum, V pairs, V factors) { return sub(sum, dot2(pairs, factors)); }
        [[gnu::always_inline]] void takeFrom(int f, V y01, V y23) {
            sums_[f] = without(without(sums_[f + 1], y01, of01_[f + 1]), y23, of23_[f + 1]);
        }
        static W shifted(W sum) { return shr(sum, kShift); }
        [[gnu::always_inline]] V newest() {
            asm("" : "+x"(next_.v));  // or it is taken from an element of the sum, as the same value
            return {shifted(next_).v};
        }

        // Two chains side by side: the sum holds one output of four in each element, next_ the coming one in all of them.
        // What an output waits for is then a product and a difference, without moving an element.
        [[gnu::always_inline]] W nextFour(W following) {
            const V y0 = newest();
            next_ = without(splatElement<1>(sum_), y0, a1InAll_);
            sum_ = without(sum_, y0, ofFirst(of01_[0]));
            const V y1 = newest();
            next_ = without(splatElement<2>(sum_), y1, a1InAll_);
            sum_ = without(sum_, y1, ofSecond(of01_[0]));
            const V y2 = newest();
            next_ = without(splatElement<3>(sum_), y2, a1InAll_);
            const W four = shifted(without(sum_, y2, of23_[0]));
            const V y3 = newest();
            const V y01 = splatLowerHalves<0>(shifted(sum_)), y23 = splatLowerHalves<2>(four);
            sum_ = without(without(add(sums_[1], following), y01, of01_[1]), y2, ofFirst(of23_[1]));
            asm(""
                : "+x"(sum_.v));  // or some of this is added behind what y3 takes away, where the next output waits for it
            next_ = without(splatElement<0>(sum_), y3, a1InAll_);
            sum_ = without(sum_, y3, ofSecond(of23_[1]));
            for (int to = 1; to < kFours; to++) takeFrom(to, y01, y23);
            return four;
        }

        // Element i of the vectors f: with which factors the outputs 0 and 1, 2 and 3 of four contribute to output 4f + i.
        V of01_[kFours + 1], of23_[kFours + 1], a1InAll_;
        V largest_;
        W sums_[kFours + 1];  // of the outputs to come
        W sum_, next_;
    };

    // store(eight, n) takes the outputs.
    template <class W, class Input, class Past, class Store>
    [[gnu::always_inline]] static Narrow<W> filterUnclipped(const Vsp16s* lpc, int len, Input input, Past past,
                                                            Store store) {
        W inputs[kBlock / 4 + 1];
        Unclipped<W> outputs(lpc, lpc, len, input, past, inputs);
        for (int n = 0; n < len; n += 8) store(outputs.nextEight(inputs + n / 4 + 1, len - n), n);
        return outputs.largest();
    }

    // Ones in the first n of eight elements.
    [[gnu::always_inline]] static S16_128 firstOfEight(int n) {
        static constexpr Vsp16s kOnes[16] = {-1, -1, -1, -1, -1, -1, -1, -1};
        return S16_128::load(kOnes + 8 - n);
    }

    // x[n .. n + 3], zeros from len on.
    [[gnu::always_inline]] static S32_128 fourOf(const Vsp16s* x, int n, int len) {
        return n + 4 <= len ? loadFour(x + n) : n < len ? loadFew(x + n, len - n) : S32_128::splat(0);
    }

    // Of the outputs before mem[kOrder], those from n on, zeros before them.
    [[gnu::always_inline]] static S32_128 earlier(const Vsp16s* mem, int n) {
        const int missing = n < -kOrder ? -kOrder - n : 0;
        return widenFour({shl(S64_128{fourAt(mem + kOrder + n + missing).v}, 16 * missing).v});
    }

    // Stores the first len of eight outputs of a block from n on.
    [[gnu::always_inline]] static void storeOutputs(S16_128 eight, Vsp16s* y, int n, int len) {
        if (n + 8 <= len) return eight.store(y + n);
        Vsp16s last[8];
        eight.store(last);
        for (int i = n; i < len; i++) y[i] = last[i - n];
    }

    // Of one signal.
    [[gnu::always_inline]] static Vsp16u filterOne(const Vsp16s* lpc, const Vsp16s* x, const Vsp16s* mem, Vsp16s* y,
                                                   int len) {
        return largestU(filterUnclipped<S32_128>(
            lpc, len, [&](int n) { return fourOf(x, n, len); }, [&](int n) { return earlier(mem, n); },
            [&](S16_128 eight, int n) { storeOutputs(eight, y, n, len); }));
    }

    // Whether outputs that were made without clipping are right.
    static bool areRight(const Vsp16s* lpc, Vsp16u largest) {
        return largest < kMax16 && fits(magnitudes(lpc), largest, kShift);
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
        const Vsp16u largestX = maxMagnitude(x, len), largestY = maxMagnitude(y - kOrder, kOrder + len);
        const Vsp32s largest = largestX > largestY ? largestX : largestY;
        if (!fits(lpcMagnitude, Vsp32u(largest), scaleFactor)) return Outcome::uncertain;
        if (clipped != 0) return Outcome::clipped;
        return largest > kMax16 ? Outcome::uncertain : Outcome::exact;  // a shift that saturates may still round to -32768
    }

    // The outputs of a block whose sums or outputs may leave their ranges. Returns whether some step saturated.
    [[gnu::noinline]] static bool filterAnyhow(const Vsp16s* lpc, int lpcMagnitude, const Vsp16s* x, const Vsp16s* past,
                                               Vsp16s* y, int len, int scaleFactor) {
        Vsp16s buffer[kOrder + kBlock];
        for (int j = 0; j < kOrder; j++) buffer[j] = past[j];
        const Outcome outcome =
            scaleFactor < 0 ? Outcome::uncertain : filterWrapping(lpc, lpcMagnitude, x, buffer + kOrder, len, scaleFactor);
        const bool overflow = outcome == Outcome::uncertain ? filterSaturating(lpc, x, buffer + kOrder, len, scaleFactor)
                                                            : outcome == Outcome::clipped;
        for (int i = 0; i < len; i++) y[i] = buffer[kOrder + i];
        return overflow;
    }

    // What a block is made of, for the case that it has to be made again after its outputs have been stored.
    struct Kept {
        Vsp16s x[kBlock], mem[kOrder];
        [[gnu::always_inline]] Kept(const Vsp16s* src, int len, const Vsp16s* past) {
            int i = 0;
            for (; i + 8 <= len; i += 8) S16_128::load(src + i).store(x + i);
            for (; i < len; i++) x[i] = src[i];
            for (i = 0; i < kOrder; i++) mem[i] = past[i];
        }
    };

    // dst may be src. mem: the outputs before dst[0], the newest last. Returns whether some step saturated. scaleFactor: at
    // most 15, and 0 or more but for exceptions.
    static bool run(const Vsp16s* lpc, const Vsp16s* src, Vsp16s* dst, Vsp32s len, int scaleFactor, const Vsp16s* mem) {
        bool overflow = false;
        for (; len > 0; len -= kBlock) {
            const int count = len < kBlock ? len : kBlock;
            const Kept kept(src, count, mem);
            const bool right = scaleFactor == kShift && areRight(lpc, filterOne(lpc, src, mem, dst, count));
            if (!right) overflow |= filterAnyhow(lpc, magnitudes(lpc), kept.x, kept.mem, dst, count, scaleFactor);
            src += count;
            dst += count;
            mem = dst - kOrder;
        }
        return overflow;
    }

    // A signal, its filter in the usual format and the outputs before it.
    struct Signal {
        const Vsp16s *lpc, *src;
        Vsp16s* dst;
        const Vsp16s* mem;
    };

#if defined(__AVX2__)
    // A block of two signals at once. Returns whether all outputs are right.
    [[gnu::always_inline]] static bool filterTwo(const Signal& a, const Signal& b) {
        S32_256 inputs[kBlock / 4 + 1];
        Unclipped<S32_256> outputs(
            a.lpc, b.lpc, kBlock, [&](int n) { return both<S32_256>(loadFour(a.src + n), loadFour(b.src + n)); },
            [&](int n) { return both<S32_256>(earlier(a.mem, n), earlier(b.mem, n)); }, inputs);
        for (int n = 0; n < kBlock; n += 8) {
            const S16_256 eight = outputs.nextEight(inputs + n / 4 + 1, 8);
            S16_128{_mm256_castsi256_si128(eight.v)}.store(a.dst + n);
            S16_128{_mm256_extracti128_si256(eight.v, 1)}.store(b.dst + n);
        }
        const Vsp16u largest = largestU(foldMaxU(outputs.largest()));
        return areRight(a.lpc, largest) && areRight(b.lpc, largest);
    }
#endif

    // The same, made again where they are not. None of the arrays is the dst of the other signal.
    static void runTwo(const Signal& a, const Signal& b) {
#if defined(__AVX2__)
        const Kept keptA(a.src, kBlock, a.mem), keptB(b.src, kBlock, b.mem);
        if (filterTwo(a, b)) return;
        run(a.lpc, keptA.x, a.dst, kBlock, kShift, keptA.mem);
        run(b.lpc, keptB.x, b.dst, kBlock, kShift, keptB.mem);
#else
        run(a.lpc, a.src, a.dst, kBlock, kShift, a.mem);
        run(b.lpc, b.src, b.dst, kBlock, kShift, b.mem);
#endif
    }
};

}  // namespace vsp::VSP_LEVEL
