// Samples as the application has them, and inside: on the scale of 16 bits.
#pragma once

#include <span>

#include "vspsc/types.h"

namespace vspv {

constexpr float kFullScale = 32768, kHighest = 32767;

inline float fromOutside(Vsp16s x) { return x; }
inline float fromOutside(float x) {
    constexpr float kMost = 2 * kFullScale;
    return x > kMost ? kMost : x < -kMost ? -kMost : x == x ? x : 0;
}

inline void toOutside(float x, Vsp32f& out) { out = x; }
// To the nearest; halves away from zero.
inline void toOutside(float x, Vsp16s& out) {
    const double clipped = x > kHighest ? kHighest : x < -kFullScale ? -kFullScale : x;
    out = static_cast<Vsp16s>(clipped + (clipped < 0 ? -0.5 : 0.5));
}

template <class Sample>
float meanSquare(std::span<const Sample> x) {
    float sum = 0;
    for (const Sample v : x) sum += static_cast<float>(v) * static_cast<float>(v);
    return sum / static_cast<float>(x.size());
}

}  // namespace vspv
