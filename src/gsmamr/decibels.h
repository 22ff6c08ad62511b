// Levels of many channels in dB, Q8, and back: ownLog2 and ownPow2 in a form without branches, which compilers vectorise.
#pragma once

#include "common/sum_of_positive.h"
#include "core/level.h"
#include "gsmamr/tables.h"

namespace vsp::VSP_LEVEL {

// db[i] = 10 * log10(x[i] * 2^-fractionBits); what is below 1 counts as 1.
template <int n>
VSP_INLINE void channelDecibels(const Vsp32s* x, int fractionBits, Vsp16s* db) {
    constexpr Vsp32s kTenLog2 = 24660;  // 10 * log10(2), Q13
    for (int i = 0; i < n; i++) {
        // The upper word of a double: the exponent, and 20 bits after the leading one, of which 5 are the place in the
        // table.
        const Vsp32s word = Vsp32s(__builtin_bit_cast(Vsp64s, Vsp64f(x[i] < 1 ? 1 : x[i])) >> 32);
        const Vsp32s pair = log2Pairs.words[(word >> 15) & 31];
        const Vsp32s exponent = (word >> 20) - 1023, fraction = (pair & 0xFFFF) + (((pair >> 16) * (word & 0x7FFF)) >> 15);
        const Vsp32s y = 2 * ((exponent - fractionBits) * kTenLog2 + ((fraction * kTenLog2) >> 15));
        db[i] = Vsp16s(((y >> 5) + 1) >> 1);
    }
}

// Sum of 10^(db[i] / 10), 3 bits more, saturated.
template <int n>
VSP_INLINE Vsp32s sumOfPowers(const Vsp16s* db) {
    constexpr Vsp32s kToLog2 = 10885;  // log2(10) / 10, Q15
    Vsp32s powers[n];
    for (int i = 0; i < n; i++) {
        const Vsp32s log2 = db[i] * kToLog2;  // Q23
        const Vsp32s pair = powPairs.words[(log2 >> 18) & 31],
                     mantissa = (pair & 0xFFFF) * 65536 + 2 * (pair >> 16) * ((log2 >> 3) & 0x7FE0);
        const Vsp32s right = 27 - (log2 >> 23), shift = right < 1 ? 0 : right < 32 ? right - 1 : 31;
        const Vsp32s shifted = ((mantissa >> shift) + 1) >> 1;
        powers[i] = right < 0 ? kMax32 : right == 0 ? mantissa : shifted;
    }
    return sumOfPositive<n>(powers);
}

}  // namespace vsp::VSP_LEVEL
