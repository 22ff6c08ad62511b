// The elementary functions of floats, against those of the mathematical library in double precision.
#include "arithmetic/elementary.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace vsp::test {

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity(), kNaN = std::numeric_limits<float>::quiet_NaN();

// At most one unit of the last place away.
void expectNear(double exact, float x, float argument) {
    const float nearest = float(exact);
    EXPECT_GE(x, std::nextafter(nearest, -kInfinity)) << argument;
    EXPECT_LE(x, std::nextafter(nearest, kInfinity)) << argument;
}

}  // namespace

TEST(Elementary, ValuesAreExactToTheLastPlace) {
    for (int i = -200000; i <= 200000; i++) {
        const float x = float(i) / 200000;
        expectNear(std::acos(double(x)), acos_32f(x), x);
        expectNear(std::pow(10.0, double(45 * x)), exp10_32f(45 * x), 45 * x);
        // Where the cosine is near zero its argument as a float is, too.
        EXPECT_NEAR(std::cos(double(4 * x)), double(cos_32f(4 * x)), 6e-8);
    }
    float x = std::numeric_limits<float>::denorm_min();
    while (x < kInfinity) {
        expectNear(std::log10(double(x)), log10_32f(x), x);
        x *= 1.0003f + 0x1p-149f / x;
    }
    x = 1;
    while (x < 1e6f) {
        EXPECT_NEAR(std::cos(double(x)), double(cos_32f(-x)), 1e-7);
        x *= 1.001f;
    }
}

TEST(Elementary, WhatHasNoValueIsDefined) {
    EXPECT_EQ(-kInfinity, log10_32f(0));
    EXPECT_EQ(kInfinity, log10_32f(kInfinity));
    EXPECT_EQ(kInfinity, exp10_32f(1e30f));
    EXPECT_EQ(0, exp10_32f(-kInfinity));
    EXPECT_EQ(1, cos_32f(kInfinity));
    EXPECT_EQ(1, cos_32f(-1e30f));
    for (const float x : {log10_32f(-1), log10_32f(kNaN), exp10_32f(kNaN), cos_32f(kNaN), acos_32f(1.0000001f),
                          acos_32f(-kInfinity), acos_32f(kNaN)})
        EXPECT_TRUE(std::isnan(x));
}

}  // namespace vsp::test
