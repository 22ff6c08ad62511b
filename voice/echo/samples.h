// Samples as the application has them, and inside: on the scale of 16 bits.
#pragma once

#include <algorithm>
#include <cmath>
#include <span>

#include "vspsc/types.h"

namespace vspv {

constexpr float kFullScale = 32768, kHighest = 32767;

inline float fromOutside(Vsp16s x) { return x; }
inline float fromOutside(float x) {
    constexpr float kMost = 2 * kFullScale;
    const float number = x == x ? x : 0, notAbove = number < kMost ? number : kMost;
    return notAbove > -kMost ? notAbove : -kMost;
}

inline void toOutside(float x, Vsp32f& out) { out = x; }
// To the nearest; halves away from zero.
inline void toOutside(float x, Vsp16s& out) {
    const double clipped = x > kHighest ? kHighest : x < -kFullScale ? -kFullScale : x;
    out = static_cast<Vsp16s>(clipped + (clipped < 0 ? -0.5 : 0.5));
}

// Four samples, or parts of a sum.
using Four = float __attribute__((vector_size(16)));
using FourFlags = int __attribute__((vector_size(16)));
inline Four fourOf(const float* x) { return Four{x[0], x[1], x[2], x[3]}; }
inline Four fourOf(const Vsp16s* x) {
    using Integers = Vsp16s __attribute__((vector_size(8)));
    return __builtin_convertvector(Integers{x[0], x[1], x[2], x[3]}, Four);
}
inline void store(Four x, float* to) {
    for (int i = 0; i < 4; i++) to[i] = x[i];
}
inline Four rootOf(Four x) { return Four{std::sqrt(x[0]), std::sqrt(x[1]), std::sqrt(x[2]), std::sqrt(x[3])}; }
inline float sumOf(Four parts) {
    const Four pairs = parts + __builtin_shufflevector(parts, parts, 1, 0, 3, 2);
    return pairs[0] + pairs[2];
}

// The sum of term(0) .. term(count - 1), in parts that the compiler adds at once.
template <class Term>
float sumOf(std::size_t count, Term term) {
    constexpr std::size_t kParts = 16;
    float parts[kParts] = {};
    std::size_t n = 0;
    for (; count - n >= kParts; n += kParts)
        for (std::size_t i = 0; i < kParts; i++) parts[i] += term(n + i);
    for (std::size_t i = 0; n + i < count; i++) parts[i] += term(n + i);
    for (std::size_t half = kParts / 2; half > 0; half /= 2)
        for (std::size_t i = 0; i < half; i++) parts[i] += parts[i + half];
    return parts[0];
}

// The largest magnitude; of whole fours.
template <class Sample>
float peakOf(std::span<const Sample> x) {
    Four peak{};
    for (std::size_t n = 0; n < x.size(); n += 4) {
        const Four value = fourOf(&x[n]), size = value < 0 ? -value : value;
        peak = size > peak ? size : peak;
    }
    return std::max(std::max(peak[0], peak[1]), std::max(peak[2], peak[3]));
}

template <class Sample>
float meanSquare(std::span<const Sample> x) {
    const auto square = [x](std::size_t n) { return static_cast<float>(x[n]) * static_cast<float>(x[n]); };
    return sumOf(x.size(), square) / static_cast<float>(x.size());
}

}  // namespace vspv
