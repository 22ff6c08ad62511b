// Samples as the application has them, and inside: on the scale of 16 bits.
#pragma once

#include <emmintrin.h>

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
// Two complex values.
inline Four fourOf(const Vsp32fc* z) { return fourOf(reinterpret_cast<const float*>(z)); }
inline Four fourOf(const Vsp32sc* z) {
    return __builtin_convertvector(FourFlags{z[0].re, z[0].im, z[1].re, z[1].im}, Four);
}
inline void store(Four x, float* to) {
    for (int i = 0; i < 4; i++) to[i] = x[i];
}
inline Four rootOf(Four x) { return Four{std::sqrt(x[0]), std::sqrt(x[1]), std::sqrt(x[2]), std::sqrt(x[3])}; }
inline float sumOf(Four parts) {
    const Four pairs = parts + __builtin_shufflevector(parts, parts, 1, 0, 3, 2);
    return pairs[0] + pairs[2];
}

inline Four fromOutside(Four x) {
    constexpr float kMost = 2 * kFullScale;
    const Four number = x == x ? x : Four{};  // NOLINT(misc-redundant-expression): a number equals itself
    return _mm_max_ps(_mm_min_ps(number, Four{} + kMost), Four{} - kMost);
}

// The powers of four complex values, whose unit is given.
template <class Complex>
Four powersOf(const Complex* z, float unit = 1) {
    const Four a = fourOf(z) / unit, b = fourOf(z + 2) / unit, aa = a * a, bb = b * b;
    return __builtin_shufflevector(aa, bb, 0, 2, 4, 6) + __builtin_shufflevector(aa, bb, 1, 3, 5, 7);
}
inline float powerOf(Vsp32fc z) { return z.re * z.re + z.im * z.im; }
template <class Complex>
Vsp32fc inFloat(Complex z, float unit = 1) {
    return {static_cast<float>(z.re) / unit, static_cast<float>(z.im) / unit};
}

// Sixteen parts of a sum, added in a tree of halves.
inline float sumOf(const Four (&parts)[4]) {
    const Four sums = (parts[0] + parts[2]) + (parts[1] + parts[3]);
    return (sums[0] + sums[2]) + (sums[1] + sums[3]);
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
    return sumOf({fourOf(parts), fourOf(parts + 4), fourOf(parts + 8), fourOf(parts + 12)});
}

// The sum of powers; in the same order.
template <class Complex>
float powerOf(std::span<const Complex> z) {
    Four parts[4] = {};
    std::size_t n = 0;
    for (; z.size() - n >= 16; n += 16)
        for (std::size_t i = 0; i < 4; i++) parts[i] += powersOf(&z[n + 4 * i]);
    for (std::size_t i = 0; n + i < z.size(); i++) {
        Four last{};
        last[i % 4] = powerOf(inFloat(z[n + i]));
        parts[i / 4] += last;
    }
    return sumOf(parts);
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
