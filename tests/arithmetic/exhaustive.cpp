// The basic operators with every operand and every pair of 16-bit operands; logarithm and inverse square root of all 2^31
// positive numbers. Label `slow`: two minutes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "arithmetic/basic_ops.h"
#include "arithmetic/standard_ops.h"
#include "common/definitions.h"
#include "support/level_test.h"

namespace vsp::test {

namespace {

// Compares with the definition, in 64 bits, for every first operand and every second one from the lowest on.
template <class Operator, class Definition>
void expectAllPairs(Operator op, Definition definition, int lowest = -32768) {
    for (int a = -32768; a <= 32767; a++) {
        bool same = true;
        for (int b = lowest; b <= 32767; b++) same &= op(Vsp16s(a), Vsp16s(b)) == definition(Vsp64s(a), Vsp64s(b));
        ASSERT_TRUE(same) << "first operand " << a;
    }
}

}  // namespace

TEST(Exhaustive, PairsOf16BitOperands) {
    expectAllPairs([](Vsp16s a, Vsp16s b) { return Add_16s(a, b); }, [](Vsp64s a, Vsp64s b) { return saturate16(a + b); });
    expectAllPairs([](Vsp16s a, Vsp16s b) { return Sub_16s(a, b); }, [](Vsp64s a, Vsp64s b) { return saturate16(a - b); });
    expectAllPairs([](Vsp16s a, Vsp16s b) { return Mul_16s(a, b); },
                   [](Vsp64s a, Vsp64s b) { return saturate16(a * b >> 15); });
    expectAllPairs([](Vsp16s a, Vsp16s b) { return mulRound_16s(a, b); },
                   [](Vsp64s a, Vsp64s b) { return saturate16((a * b + 0x4000) >> 15); });
    expectAllPairs([](Vsp16s a, Vsp16s b) { return Mul2_16s32s(a, b); },
                   [](Vsp64s a, Vsp64s b) { return saturate32(2 * a * b); });
    for (const Vsp32s sum : {kMin32, -1, 0x12345678, kMax32}) {
        expectAllPairs([=](Vsp16s a, Vsp16s b) { return mac_32s(sum, a, b); },
                       [=](Vsp64s a, Vsp64s b) { return saturate32(sum + Vsp64s(saturate32(2 * a * b))); });
        expectAllPairs([=](Vsp16s a, Vsp16s b) { return msu_32s(sum, a, b); },
                       [=](Vsp64s a, Vsp64s b) { return saturate32(sum - Vsp64s(saturate32(2 * a * b))); });
    }
    expectAllPairs([](Vsp16s a, Vsp16s b) { return Div_16s(a, b); },
                   [](Vsp64s a, Vsp64s b) { return a >= b  ? 32767
                                                   : a < 0 ? 0
                                                           : 32768 * a / b; }, 1);
}

TEST(Exhaustive, ShiftsOf16BitOperands) {
    const auto shifted = [](Vsp64s a, Vsp64s n) { return n >= 0 ? saturate16(a * (1LL << n)) : Vsp16s(a >> -n); };
    for (int a = -32768; a <= 32767; a++) {
        ASSERT_EQ(saturate16(std::abs(a)), Abs_16s(Vsp16s(a)));
        ASSERT_EQ(saturate16(-a), Negate_16s(Vsp16s(a)));
        const int n = norm_16s(Vsp16s(a));
        ASSERT_TRUE(a == 0    ? n == 0
                    : a == -1 ? n == 15
                              : std::abs(2 * (a << n) + 1) > 32767 && shifted(a, n) == a << n)
            << a;
        for (int s = -40; s <= 40; s++) {
            ASSERT_EQ(shifted(a, s), shl_16s(Vsp16s(a), s)) << a << " << " << s;
            ASSERT_EQ(shifted(a, -s), shr_16s(Vsp16s(a), s)) << a << " >> " << s;
            const Vsp64s rounded = s <= 0 ? shifted(a, -s) : s > 15 ? 0 : (a >> s) + (a >> (s - 1) & 1);
            ASSERT_EQ(rounded, shrRound_16s(Vsp16s(a), s)) << a << " >> " << s;
        }
    }
}

TEST(Exhaustive, Operators32Bit) {
    for (Vsp64s high = -32768; high <= 32767; high++) {
        bool same = true;
        for (Vsp64s a = high * 65536; a < (high + 1) * 65536; a++) {
            const Vsp32s x = Vsp32s(a);
            same &= Abs_32s(x) == saturate32(std::abs(a)) && Mul2_32s(x) == saturate32(2 * a) &&
                    Mul4_32s(x) == saturate32(4 * a);
            same &= sat_16s(x) == saturate16(a) && round_32s(x) == saturate32(a + 0x8000) >> 16;
            const int n = norm_32s(x);  // one more would overflow
            const Vsp64s most = a << n;
            same &= a == 0 ? n == 0 : a == -1 ? n == 31 : most == Vsp32s(most) && 2 * most != Vsp32s(2 * most);
            const int s = int(high & 63) - 32;  // every number with one shift
            same &= shl_32s(x, s) == (s < 0 ? a >> -s : s > 31 ? saturate32(a << 32) : saturate32(a * (1LL << s)));
        }
        ASSERT_TRUE(same) << "high half " << high;
    }
}

TEST(Exhaustive, LogarithmOfEveryNumber) {
    for (Vsp64s high = 0; high <= 32767; high++) {
        double error = 0;
        for (Vsp64s x = high * 65536; x < (high + 1) * 65536; x++) {
            if (x == 0) continue;
            Vsp16s exponent = 99, fraction = 99;
            ownLog2(Vsp32s(x), &exponent, &fraction);
            error = std::max(error, std::abs(double(exponent + fraction / 32768.0F) - std::log2(double(x))));
            ASSERT_EQ(63 - __builtin_clzll(static_cast<unsigned long long>(x)), exponent) << x;
            ASSERT_GE(fraction, 0) << x;
        }
        ASSERT_LT(error, 2e-4) << "high half " << high;
    }
}

class ExhaustiveAtEveryLevel : public LevelTest {};
VSPSC_EVERY_LEVEL(ExhaustiveAtEveryLevel);

TEST_P(ExhaustiveAtEveryLevel, InverseSquareRootOfEveryNumber) {
    constexpr int kBlock = 1 << 16;
    std::vector<Vsp32s> roots(kBlock), baseline(kBlock);
    Vsp32s last = kMax32;
    for (Vsp64s first = 0; first <= kMax32; first += kBlock) {
        for (int i = 0; i < kBlock; i++) roots[std::size_t(i)] = baseline[std::size_t(i)] = Vsp32s(first + i);
        ASSERT_EQ(vspStsNoErr, api.vspsInvSqrt_32s_I(roots.data(), kBlock));
        ASSERT_EQ(vspStsNoErr, kApi_y8.vspsInvSqrt_32s_I(baseline.data(), kBlock));
        ASSERT_EQ(baseline, roots) << "from " << first;
        for (int i = first == 0 ? 1 : 0; i < kBlock; i++) {
            const double exact = 0x1p30 / std::sqrt(double(first + i));
            const Vsp32s root = roots[std::size_t(i)];
            ASSERT_LT(std::abs(root - exact), 7e-4 * exact + 1) << first + i;
            ASSERT_LE(root, last) << first + i;
            last = root;
        }
    }
}

}  // namespace vsp::test
