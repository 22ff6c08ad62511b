// Which level a set of processor features gives.
#include "core/cpu.h"

#include <gtest/gtest.h>

namespace vsp::test {

namespace {

// Everything that an AVX-512 processor under a current operating system reports.
constexpr CpuRegisters kEverything = {~0u, ~0u, ~0u, ~0u};

struct Feature {
    const char* name;
    unsigned CpuRegisters::*word;
    unsigned bit;
    Level levelWithout;
};

constexpr Feature kFeatures[] = {
    {"FMA", &CpuRegisters::leaf1Ecx, 1u << 12, Level::y8},       {"MOVBE", &CpuRegisters::leaf1Ecx, 1u << 22, Level::y8},
    {"OSXSAVE", &CpuRegisters::leaf1Ecx, 1u << 27, Level::y8},   {"AVX", &CpuRegisters::leaf1Ecx, 1u << 28, Level::y8},
    {"F16C", &CpuRegisters::leaf1Ecx, 1u << 29, Level::y8},      {"BMI1", &CpuRegisters::leaf7Ebx, 1u << 3, Level::y8},
    {"AVX2", &CpuRegisters::leaf7Ebx, 1u << 5, Level::y8},       {"BMI2", &CpuRegisters::leaf7Ebx, 1u << 8, Level::y8},
    {"LZCNT", &CpuRegisters::extended1Ecx, 1u << 5, Level::y8},  {"xmm state", &CpuRegisters::xcr0, 1u << 1, Level::y8},
    {"ymm state", &CpuRegisters::xcr0, 1u << 2, Level::y8},      {"AVX512F", &CpuRegisters::leaf7Ebx, 1u << 16, Level::v3},
    {"AVX512DQ", &CpuRegisters::leaf7Ebx, 1u << 17, Level::v3},  {"AVX512CD", &CpuRegisters::leaf7Ebx, 1u << 28, Level::v3},
    {"AVX512BW", &CpuRegisters::leaf7Ebx, 1u << 30, Level::v3},  {"AVX512VL", &CpuRegisters::leaf7Ebx, 1u << 31, Level::v3},
    {"opmask state", &CpuRegisters::xcr0, 1u << 5, Level::v3},   {"zmm0-15 state", &CpuRegisters::xcr0, 1u << 6, Level::v3},
    {"zmm16-31 state", &CpuRegisters::xcr0, 1u << 7, Level::v3},
};

}  // namespace

TEST(Cpu, EveryMissingFeatureLowersTheLevel) {
    EXPECT_EQ(Level::v4, bestLevel(kEverything));
    EXPECT_EQ(Level::y8, bestLevel({0, 0, 0, 0}));
    CpuRegisters listed{};  // the features of the table, and no other
    for (const Feature& feature : kFeatures) {
        listed.*feature.word |= feature.bit;
        CpuRegisters without = kEverything;
        without.*feature.word &= ~feature.bit;
        EXPECT_EQ(feature.levelWithout, bestLevel(without)) << "without " << feature.name;
        EXPECT_EQ(feature.levelWithout >= Level::v3, ownGetFeature(without, 0x80)) << "without " << feature.name;
    }
    EXPECT_EQ(Level::v4, bestLevel(listed));
}

TEST(Cpu, FeatureMasksAreTheLevelsAndAllBitsOfAMaskMustBeThere) {
    CpuRegisters avx2 = kEverything;
    avx2.xcr0 = 0x07;
    const CpuRegisters baseline{};
    for (const auto& [mask, onV4, onV3, onY8] : {std::tuple(0, 1, 1, 1),
                                                 {0x40, 1, 1, 1},
                                                 {0x80, 1, 1, 0},
                                                 {0x100, 1, 0, 0},
                                                 {0x180, 1, 0, 0},
                                                 {0xC0, 1, 1, 0},
                                                 {0x01, 0, 0, 0},
                                                 {0x81, 0, 0, 0},
                                                 {-1, 0, 0, 0}}) {
        EXPECT_EQ(onV4, ownGetFeature(kEverything, mask)) << mask;
        EXPECT_EQ(onV3, ownGetFeature(avx2, mask)) << mask;
        EXPECT_EQ(onY8, ownGetFeature(baseline, mask)) << mask;
    }
    EXPECT_EQ(ownGetFeature(readCpuRegisters(), 0x80), ownGetFeature(0x80));
}

TEST(Cpu, LevelOfThisProcessorAgreesWithTheCompiler) {
    EXPECT_EQ(__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") && __builtin_cpu_supports("bmi2"),
              bestLevel(readCpuRegisters()) >= Level::v3);
    EXPECT_EQ(
        __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq"),
        bestLevel(readCpuRegisters()) == Level::v4);
}

}  // namespace vsp::test
