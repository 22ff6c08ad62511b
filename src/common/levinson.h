// Levinson-Durbin recursion in double precision (Levinson of G.729, GSM-AMR and their relatives).
#pragma once

#include "arithmetic/split_32.h"
#include "core/level.h"

namespace vsp::VSP_LEVEL {

// The reference encoders give up at a stage whose reflection coefficient is larger than 0.99945.
constexpr int kMaxReflection = 32750;

template <int kOrder>
struct Levinson {
    Vsp32s a[kOrder + 1];       // prediction filter, Q27; a[0] is not set
    Vsp32s reflection[kOrder];  // Q31
    Vsp16s error;  // energy of the prediction error relative to that of the signal, in the format of its high word
    bool stable;   // if not, the recursion stopped and a and error are not set

    // r: autocorrelations 0 .. kOrder, normalised. kLimited: a numerator above the denominator counts as that.
    template <bool kLimited = false>
    [[gnu::always_inline]] void run(const Vsp32s* r) {
        stable = true;
        const auto limited = [](Vsp32s num, Vsp32s den) { return kLimited && num > den ? den : num; };
        const Vsp32s r0 = splitValue(r[0]), r1 = limited(splitValue(r[1]), r0);
        Vsp32s k = divSplit_32s(Abs_32s(r1), r0);
        if (r1 > 0) k = Sub_32s(0, k);
        reflection[0] = k;
        a[1] = splitValue(k >> 4);
        Vsp32s alpha = mulSplit_32s(r0, kMax32 - Abs_32s(mulSplit_32s(k, k)));
        int exponent = norm_32s(alpha);
        alpha = splitValue(shl_32s(alpha, exponent));
        for (int i = 2; i <= kOrder; i++) {
            Vsp32s sum = 0;
            for (int j = 1; j < i; j++) sum = addRare_32s(sum, mulSplit_32s(r[j], a[i - j]));
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
            for (int j = 1, m = i - 1; j <= m; j++, m--) {  // both of a pair from the values before
                const Vsp32s low = addRare_32s(mulSplit_32s(k, a[m]), a[j]), top = addRare_32s(mulSplit_32s(k, a[j]), a[m]);
                a[j] = splitValue(low);
                a[m] = splitValue(top);
            }
            a[i] = splitValue(k >> 4);
            alpha = mulSplit_32s(alpha, kMax32 - Abs_32s(mulSplit_32s(k, k)));
            const int shift = norm_32s(alpha);
            alpha = splitValue(shl_32s(alpha, shift));
            exponent += shift;
        }
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
