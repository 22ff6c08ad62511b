// Levinson-Durbin recursion in double precision (Levinson of G.729, GSM-AMR and their relatives).
#pragma once

#include "arithmetic/split_32.h"
#include "vector/signs.h"

namespace vsp::VSP_LEVEL {

// The reference encoders give up at a stage whose reflection coefficient is larger than 0.99945.
constexpr int kMaxReflection = 32750;

template <int kOrder>
struct Levinson {
    Vsp32s a[kOrder + 1];       // prediction filter, Q27; a[0] is not set
    Vsp32s reflection[kOrder];  // Q31
    Vsp16s error;               // energy of the prediction error relative to that of the signal, a high word
    bool stable;                // if not, the recursion stopped and a and error are not set

    using V = Wide<Sliding16>;

    // A factor of many split products, which are right but for high words of -1 on both sides.
    struct Factor {
        Sliding16 high, highInLow, low;  // pairs: high word above 0, 0 above the high word, 0 above the low word
        [[gnu::always_inline]] explicit Factor(V x)
            : high{(x.v & V::splat(-0x10000).v)}, highInLow{shrU(x, 16).v}, low{(shrU(x, 1).v & V::splat(0x7FFF).v)} {}
        [[gnu::always_inline]] V times(V y) const {
            const Factor other(y);
            const V product =
                add(dot2(high, other.high), add(shr(dot2(highInLow, other.low), 15), shr(dot2(low, other.highInLow), 15)));
            return add(product, product);
        }
    };

    // r: autocorrelations 0 .. kOrder, normalised. kLimited: a numerator above the denominator counts as that.
    template <bool kLimited = false>
    [[gnu::always_inline]] void run(const Vsp32s* r) {
        stable = true;
        const auto limited = [](Vsp32s num, Vsp32s den) { return kLimited && num > den ? den : num; };
        const Vsp32s r0 = splitValue(r[0]), r1 = limited(splitValue(r[1]), r0);
        Vsp32s k = divSplit_32s(Abs_32s(r1), r0);
        if (r1 > 0) k = Sub_32s(0, k);
        reflection[0] = k;
        Vsp32s alpha = mulSplit_32s(r0, kMax32 - Abs_32s(mulSplit_32s(k, k)));
        int exponent = norm_32s(alpha);
        alpha = splitValue(shl_32s(alpha, exponent));

        bool ordinary = true;
        for (int j = 1; j < kOrder; j++) ordinary &= (r[j] >> 16) != kMin16;

        // The filter forwards and backwards, with zeros where it has no coefficients yet: products with these change
        // nothing. backward[kOrder - j] is filter[j].
        constexpr int kPadded = kOrder + 1 + V::width;
        Vsp32s filter[kPadded] = {}, backward[kPadded] = {}, reversed[kPadded + kOrder] = {}, products[kPadded];
        for (int j = 1; j <= kOrder; j++) reversed[kOrder - j] = r[j];
        filter[1] = backward[kOrder - 1] = splitValue(k >> 4);
        for (int i = 2; i <= kOrder; i++) {
            const Vsp32s* const lags = reversed + kOrder - i;  // lags[j] is r[i - j]
            Vsp32s* const mirrored = backward + kOrder - i;    // mirrored[j] is filter[i - j]
            for (int j = 1; j < i; j += V::width) Factor(V::load(filter + j)).times(V::load(lags + j)).store(products + j);
            if (!ordinary) [[unlikely]]
                for (int j = 1; j < i; j++) products[j] = mulSplit_32s(filter[j], lags[j]);
            Vsp32s sum = 0;
            for (int j = i - 1; j >= 1; j--) sum = addRare_32s(sum, products[j]);
            sum = addRare_32s(shl_32s(sum, 4), splitValue(r[i]));
            k = divSplit_32s(limited(Abs_32s(sum), alpha), alpha);
            if (sum > 0) k = Sub_32s(0, k);
            k = shl_32s(k, exponent);
            reflection[i - 1] = k;
            const int high = k >> 16;
            if (high > kMaxReflection || high < -kMaxReflection) {
                stable = false;
                return;
            }
            const Factor factor(V::splat(k));
            const V even = V::splat(-2);
            for (int j = 1; j < i; j += V::width) {
                const V x = V::load(filter + j), y = V::load(mirrored + j);
                V{addSat32(factor.times(y), x).v & even.v}.store(filter + j);
                V{addSat32(factor.times(x), y).v & even.v}.store(mirrored + j);
            }
            filter[i] = backward[kOrder - i] = splitValue(k >> 4);
            alpha = mulSplit_32s(alpha, kMax32 - Abs_32s(mulSplit_32s(k, k)));
            const int shift = norm_32s(alpha);
            alpha = splitValue(shl_32s(alpha, shift));
            exponent += shift;
        }
        for (int j = 1; j <= kOrder; j++) a[j] = filter[j];
        error = Vsp16s((alpha >> 16) >> (exponent < 15 ? exponent : 15));
    }

    // The filter in Q12.
    [[gnu::always_inline]] void round(Vsp16s* lpc) const {
        lpc[0] = 4096;
        for (int i = 1; i <= kOrder; i++) lpc[i] = round_32s(Mul2_32s(a[i]));
    }

    // Results of the G.729 coders: filter, reflection coefficients, Q15, and error. mem has the last good filter and its
    // first two reflection coefficients, which take the place of an unstable one.
    [[gnu::always_inline]] VspStatus finish(Vsp16s* lpc, Vsp16s* rc, Vsp16s* err, Vsp16s* mem) const {
        constexpr int kKept = 2;
        if (!stable) {
            for (int i = 0; i <= kOrder; i++) lpc[i] = mem[i];
            for (int i = 0; i < kKept; i++) rc[i] = mem[kOrder + 1 + i];
            return vspStsOverflow;
        }
        round(lpc);
        for (int i = 0; i < kOrder; i++) rc[i] = Vsp16s(reflection[i] >> 16);
        *err = error;
        for (int i = 0; i <= kOrder; i++) mem[i] = lpc[i];
        for (int i = 0; i < kKept; i++) mem[kOrder + 1 + i] = rc[i];
        return vspStsNoErr;
    }
};

}  // namespace vsp::VSP_LEVEL
