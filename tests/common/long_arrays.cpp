// The largest length, at which an index that runs past the end does not fit 32 bits. These functions stand for all: the
// loops over blocks are one, forBlocks.
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

TEST(LongArrays, SynthesisFilter) {
    const Vsp16s lpc[11] = {4096, 2048}, memory[10] = {};
    Repeated<Vsp16s> src(kLongest, 300), dst(kLongest, 0);
    ASSERT_EQ(vspStsNoErr, vspsSynthesisFilter_NR_16s_Sfs(lpc, src.data(), dst.data(), kLongest, 12, memory));
    for (std::size_t i = 1; i <= 100; i++) EXPECT_EQ(200, dst[kLongest - i]);
}

}  // namespace vsp::test
