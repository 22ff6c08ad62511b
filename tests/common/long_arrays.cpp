// The largest length, at which an index that runs past the end does not fit 32 bits. These functions stand for all: the
// loops over blocks are forBlocks, or count down.
#include <gtest/gtest.h>

#include "support/repeated_memory.h"
#include "vspsc.h"

namespace vsp::test {

namespace {

constexpr Vsp32s kLongest = 0x7FFFFFFF;

}  // namespace

TEST(LongArrays, NoiseExcitation) {
    Repeated<Vsp16s> dst(kLongest, 0);
    Vsp16s seed = 1;
    ASSERT_EQ(vspStsNoErr, vspsRandomNoiseExcitation_G729B_16s(&seed, dst.data(), kLongest));
    // The generator repeats itself after 2^16 values, twelve of which make an element.
    Vsp16s expectedSeed = 1, few[16384];
    ASSERT_EQ(vspStsNoErr, vspsRandomNoiseExcitation_G729B_16s(&expectedSeed, few, kLongest % 16384));
    EXPECT_EQ(expectedSeed, seed);
    for (std::size_t i = 1; i <= 100; i++) EXPECT_EQ(few[kLongest % 16384 - i], dst[kLongest - i]);
}

// In place, where every repetition of the memory subtracts once more: not one block is left out.
TEST(LongArrays, EchoOfOneTap) {
    constexpr Vsp32f kTap = 0.25F;
    constexpr std::size_t kRepetitions = (std::size_t(kLongest) + 1) * sizeof(Vsp32f) / RepeatedPages::kPeriod;
    Repeated<Vsp32f> ref(kLongest, 1), signal(kLongest, 4096);
    ASSERT_EQ(vspStsNoErr, vspsFIR_EC_32f(ref.data(), signal.data(), signal.data(), kLongest, &kTap, 1));
    for (std::size_t i = 1; i <= 100; i++) EXPECT_EQ(4096 - kTap * Vsp32f(kRepetitions), signal[kLongest - i]);
}

}  // namespace vsp::test
