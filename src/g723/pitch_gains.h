// Rules of the adaptive codebook that coder and decoder share.
#pragma once

#include "arithmetic/standard_ops.h"
#include "g723/gain_tables.h"

namespace vsp::g723 {

constexpr int kRate53 = 2, kRate63 = 4;
constexpr Vsp16s kShortLag = 58;  // below it the higher rate uses the short codebook, and codes repeat within a subframe

VSP_INLINE constexpr bool isRate(Vsp32s rate) { return rate == kRate53 || rate == kRate63; }

VSP_INLINE constexpr bool usesShortCodebook(Vsp32s rate, int lag) { return rate == kRate63 && lag < kShortLag; }
VSP_INLINE constexpr int codebookSize(Vsp32s rate, int lag) {
    return usesShortCodebook(rate, lag) ? kShortCodebook : kLongCodebook;
}

// The lags that are tried in a subframe: the first three or four from lag - 1 on.
VSP_INLINE constexpr bool isEven(Vsp32s subframe) { return subframe % 2 == 0; }
VSP_INLINE constexpr int triedLags(Vsp32s subframe) { return isEven(subframe) ? 3 : 4; }
VSP_INLINE constexpr bool isSearchedLag(Vsp16s lag, Vsp32s subframe) {
    return isEven(subframe) ? lag >= 19 && lag <= 140 : lag >= 18 && lag <= 141;
}

}  // namespace vsp::g723
