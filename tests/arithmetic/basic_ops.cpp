// The saturating operators and the logarithm and power of two.
#include "arithmetic/basic_ops.h"

#include <gtest/gtest.h>

#include <cmath>

#include "common/definitions.h"
#include "support/samples.h"

namespace vsp::test {

namespace {

// Left shifts that bring a value to the limit or above.
int shiftsTo(Vsp64s limit, Vsp64s x) {
    int n = 0;
    for (; x < limit; x *= 2) n++;
    return n;
}

std::vector<Vsp32s> values32() {
    std::vector<Vsp32s> values = samples<Vsp32s>(400);
    for (int k = 0; k <= 31; k++)
        for (const Vsp64s d : {-1, 0, 1})
            for (const Vsp64s sign : {-1, 1}) values.push_back(saturate32(sign * ((1LL << k) + d)));
    return values;
}

}  // namespace

TEST(BasicOps, ShiftsAndNormalisationOfEvery16BitValue) {
    for (int a = -32768; a <= 32767; a++) {
        for (int n = 0; n <= 31; n++) ASSERT_EQ(saturate16(a * (1LL << n)), ShiftL_16s(Vsp16s(a), n)) << a << " << " << n;
        ASSERT_EQ(saturate16(a), sat_16s(a));
        if (a > 0) {
            ASSERT_EQ(shiftsTo(0x4000, a), Exp_16s_Pos(Vsp16u(a))) << a;
        }
    }
    EXPECT_EQ(15, Exp_16s_Pos(0));
    for (int a = 0x8000; a <= 0xFFFF; a++) ASSERT_EQ(-1, Exp_16s_Pos(Vsp16u(a)));
}

TEST(BasicOps, NormalisationOf32BitValues) {
    std::vector<Vsp32s> values = values32();
    for (Vsp32s a = 0; a < 0x20000; a++) values.push_back(a);
    for (const Vsp32s a : values)
        if (a > 0) {
            const int n = shiftsTo(0x40000000, a);
            Vsp32s shifted = a;
            ASSERT_EQ(n, Norm_32s_Pos_I(&shifted)) << a;
            ASSERT_EQ(a * (1LL << n), shifted) << a;
            ASSERT_EQ(n, norm_32s_Pos(a));
        }
    Vsp32s zero = 0;
    EXPECT_EQ(0, Norm_32s_Pos_I(&zero));
    EXPECT_EQ(0, zero);
}

TEST(BasicOps, SumsAndProductsSaturateOrWrapAsDefined) {
    for (const Vsp64s a : values32()) {
        const Vsp32s x = Vsp32s(a);
        ASSERT_EQ(saturate32(std::abs(a)), Abs_32s(x)) << a;
        ASSERT_EQ(saturate32(2 * a), Mul2_32s(x)) << a;
        ASSERT_EQ(saturate32(4 * a), Mul4_32s(x)) << a;
        ASSERT_EQ(saturate16(a), sat_16s(x)) << a;
        for (const Vsp64s b : values32()) {
            const Vsp32s y = Vsp32s(b);
            ASSERT_EQ(saturate32(a + b), Add_32s(x, y)) << a << ", " << b;
            ASSERT_EQ(saturate32(a - b), Sub_32s(x, y)) << a << ", " << b;
            ASSERT_EQ(saturate32(a * 3 + b), Cnvrt_64s32s(a * 3 + b));
            ASSERT_EQ(wrap32(a + b), wrapAdd_32s(x, y));
            ASSERT_EQ(wrap32(a * b), wrapMul_32s(x, y));
            const Vsp64s h1 = Vsp16s(a >> 15), l1 = a & 0x7FFF, h2 = Vsp16s(b >> 15), l2 = b & 0x7FFF;
            ASSERT_EQ(wrap32(2 * (h1 * h2 + (h1 * l2 >> 15) + (l1 * h2 >> 15))), Mul_32s(x, y)) << a << ", " << b;
        }
    }
    for (int a = -32768; a <= 32767; a++)
        for (const Vsp16s b : std::vector<Vsp16s>{-32768, -32767, -1, 0, 1, 32767})
            for (const int s : {0, 1, 15, 16, 31})
                ASSERT_EQ(Vsp64s(a) * b >> s, Mul_16s_Sfs(Vsp16s(a), b, s)) << a << ", " << b;
}

TEST(BasicOps, TablesFollowTheirFormulas) {
    for (int i = 0; i <= 32; i++) {
        EXPECT_EQ(std::lround(32767 * std::log2(1 + i / 32.0)), Log2Table[i]);
        EXPECT_EQ(std::min(32767L, std::lround(16384 * std::exp2(i / 32.0))), tabpow[i]);
    }
}

TEST(BasicOps, LogarithmAndPowerOfTwoAreCloseToTheExactOnes) {
    for (const Vsp32s x : values32()) {
        Vsp16s exponent = 99, fraction = 99;
        ownLog2(x, &exponent, &fraction);
        const double exact = x < 1 ? 0 : std::log2(double(x));
        ASSERT_NEAR(exact, exponent + fraction / 32768.0, 2e-4) << x;
        ASSERT_TRUE(fraction >= 0 && exponent == std::floor(exact)) << x;
    }
    for (int exponent = -40; exponent <= 40; exponent++)
        for (int fraction = 0; fraction <= 32767; fraction++) {
            const double exact = std::exp2(exponent + fraction / 32768.0);
            const Vsp32s result = ownPow2(Vsp16s(exponent), Vsp16s(fraction));
            if (exponent > 30) {
                ASSERT_EQ(0x7FFFFFFF, result);
            } else {
                ASSERT_NEAR(exact, result, 0.51 + exact * 2e-4) << exponent << ", " << fraction;
            }
        }
}

}  // namespace vsp::test
