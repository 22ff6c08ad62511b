// The output of the decoder in G.711.
#pragma once

#include "common/g711.h"
#include "g726/adaptation.h"

namespace vsp::VSP_LEVEL {

// The level next to a reconstructed sample, or the one beside it: so that coding and decoding once more changes nothing
// (G.726 3.7, synchronous coding adjustment).
template <int kBits>
VSP_INLINE int synchronousLevel(Law law, int sr, const Prediction& p, int code) {
    constexpr int kTop = 1 << (kBits - 1);
    const int level = sr == -32768 ? -1 : g711LevelOf(law, sr);  // whose magnitude has 15 bits, and is 0
    // With the top bit inverted the codes rise with the signal.
    const int again = codeOf<kBits>(g711Value(law, level) - p.se, p.y) ^ kTop, received = code ^ kTop;
    const int below = law == Law::mu && level == 0 ? -2 : level - 1;  // the negative zero is not reached from above
    const int adjusted = again > received ? below : again < received ? level + 1 : level;
    return clamp(adjusted, -128, 127);
}

}  // namespace vsp::VSP_LEVEL
