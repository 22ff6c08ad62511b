// Vectors of sub-bands as the adaptive filters take them.
#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <memory>
#include <vector>

#include "support/guarded.h"
#include "support/samples.h"

namespace vsp::test {

// Vectors of numSubbands values in buffers of their own, and the pointers to them.
template <class T>
class BandVectors {
  public:
    BandVectors(const std::vector<T>& values, std::size_t numSubbands, Guard guard = Guard::end, std::size_t gap = 0) {
        for (auto begin = values.begin(); begin != values.end(); begin += std::ptrdiff_t(numSubbands)) {
            const std::vector<T> vector(begin, begin + std::ptrdiff_t(numSubbands));
            vectors_.push_back(std::make_unique<Guarded<T>>(vector, guard, gap));
            pointers_.push_back(vectors_.back()->data());
        }
    }
    T* const* data() const { return pointers_.data(); }
    const T& at(int t, int k) const { return pointers_[std::size_t(t)][k]; }
    std::vector<T> values() const {
        std::vector<T> all;
        for (const auto& v : vectors_) all.insert(all.end(), v->begin(), v->end());
        return all;
    }

  private:
    std::vector<std::unique_ptr<Guarded<T>>> vectors_;
    std::vector<T*> pointers_;
};

// n pairs of the values that samples() gives.
template <class T, class Part = decltype(T::re)>
std::vector<T> complexSamples(int n, unsigned seed) {
    const auto parts = samples<Part>(2 * std::size_t(n), seed);
    std::vector<T> values;
    for (std::size_t i = 0; i < parts.size(); i += 2) values.push_back({parts[i], parts[i + 1]});
    return values;
}

// The nearest word, up to the largest one that a float holds.
inline Vsp32s roundedWord(Vsp32f a) {
    return a < -0x1p31f ? Vsp32s(-0x7FFFFFFF - 1) : Vsp32s(std::nearbyint(a < 0x7FFFFF80 ? a : Vsp32f(0x7FFFFF80)));
}

inline bool same(Vsp32sc a, Vsp32sc b) { return a.re == b.re && a.im == b.im; }
inline bool same(Vsp32f a, Vsp32f b) {
    return (std::isnan(a) && std::isnan(b)) || std::bit_cast<Vsp32s>(a) == std::bit_cast<Vsp32s>(b);
}
inline bool same(Vsp32fc a, Vsp32fc b) { return same(a.re, b.re) && same(a.im, b.im); }

// Compares; reports the first difference.
template <class T>
void expectSameBands(const std::vector<T>& expected, const std::vector<T>& actual) {
    ASSERT_EQ(expected.size(), actual.size());
    for (std::size_t i = 0; i < expected.size(); i++)
        ASSERT_TRUE(same(expected[i], actual[i])) << "[" << i << "] is " << actual[i].re << ", " << actual[i].im
                                                  << ", expected " << expected[i].re << ", " << expected[i].im;
}

// The places and counts of a call.
struct Shape {
    int len, numSubbands;
    Guard guard;
    std::size_t gap;
};

// Every number of bands with few taps and every small number of taps, at changing alignments, and the limits.
inline std::vector<Shape> shapes() {
    std::vector<Shape> all;
    for (int bands = 1; bands <= 70; bands++)
        all.push_back({1 + bands % 10, bands, bands % 2 == 0 ? Guard::end : Guard::begin, std::size_t(bands % 3)});
    for (int len = 1; len <= 10; len++) all.push_back({len, 17, Guard::end, std::size_t(len % 2)});
    all.push_back({255, 33, Guard::end, 0});
    all.push_back({2, 4097, Guard::begin, 1});
    return all;
}

// Elements that single precision finds hard: infinities, the NaN that operations give, denormal and huge values.
inline std::vector<Vsp32fc> hardFloats(int n, unsigned seed) {
    static constexpr Vsp32u kBits[] = {0xFF800000, 0x7F800000, 0xFFC00000, 0x80000000, 1,          0x807FFFFF,
                                       0x7F7FFFFF, 0xFF7FFFFF, 0x00800000, 0x3F800001, 0x20000000, 0x9F000001};
    std::vector<Vsp32fc> values = complexSamples<Vsp32fc>(n, seed);
    std::mt19937 random(seed);
    for (Vsp32fc& x : values)
        if (random() % 3 == 0)
            x = {std::bit_cast<Vsp32f>(kBits[random() % 12]), std::bit_cast<Vsp32f>(kBits[random() % 12])};
    return values;
}

}  // namespace vsp::test
