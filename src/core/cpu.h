// Processor features and the instruction-set level that they give.
#pragma once

#include <cpuid.h>

#include "core/inline.h"

namespace vsp {

enum class Level { y8, v3, v4 };  // x86-64-v2, x86-64-v3, x86-64-v4

// The registers that decide the level, as the processor and the operating system report them.
struct CpuRegisters {
    unsigned leaf1Ecx, leaf7Ebx, extended1Ecx, xcr0;
};

namespace cpubit {
constexpr unsigned fma = 1u << 12, movbe = 1u << 22, osxsave = 1u << 27, avx = 1u << 28, f16c = 1u << 29;  // leaf 1 ecx
constexpr unsigned bmi1 = 1u << 3, avx2 = 1u << 5, bmi2 = 1u << 8;                                         // leaf 7 ebx
constexpr unsigned avx512f = 1u << 16, avx512dq = 1u << 17, avx512cd = 1u << 28, avx512bw = 1u << 30, avx512vl = 1u << 31;
constexpr unsigned lzcnt = 1u << 5;                   // leaf 0x80000001 ecx
constexpr unsigned ymmState = 0x06, zmmState = 0xe6;  // xcr0
}  // namespace cpubit

VSP_INLINE constexpr bool hasAll(unsigned value, unsigned bits) { return (value & bits) == bits; }

VSP_INLINE constexpr Level bestLevel(const CpuRegisters& r) {
    using namespace cpubit;
    const bool v3 = hasAll(r.leaf1Ecx, fma | movbe | osxsave | avx | f16c) && hasAll(r.leaf7Ebx, bmi1 | avx2 | bmi2) &&
                    hasAll(r.extended1Ecx, lzcnt) && hasAll(r.xcr0, ymmState);
    const bool v4 =
        v3 && hasAll(r.leaf7Ebx, avx512f | avx512dq | avx512cd | avx512bw | avx512vl) && hasAll(r.xcr0, zmmState);
    return v4 ? Level::v4 : v3 ? Level::v3 : Level::y8;
}

// Calls nothing: the resolver runs it before the library is relocated.
VSP_INLINE CpuRegisters readCpuRegisters() {
    CpuRegisters r{};
    unsigned a = 0, b = 0, c = 0, d = 0;
    __cpuid(0, a, b, c, d);
    const unsigned maxLeaf = a;
    __cpuid(1, a, b, c, d);
    r.leaf1Ecx = c;
    if (maxLeaf >= 7) {
        __cpuid_count(7, 0, a, b, c, d);
        r.leaf7Ebx = b;
    }
    __cpuid(0x80000000u, a, b, c, d);
    if (a >= 0x80000001u) {
        __cpuid(0x80000001u, a, b, c, d);
        r.extended1Ecx = c;
    }
    if (hasAll(r.leaf1Ecx, cpubit::osxsave)) {
        unsigned high = 0;
        asm volatile("xgetbv" : "=a"(r.xcr0), "=d"(high) : "c"(0));
    }
    return r;
}

// Feature masks of ownGetFeature: the instruction-set levels.
constexpr int kFeatureY8 = 0x40;   // x86-64-v2, which the library needs to run at all
constexpr int kFeatureV3 = 0x80;   // x86-64-v3: AVX2, a level above the baseline
constexpr int kFeatureV4 = 0x100;  // x86-64-v4: AVX-512

// 1 if the processor has all features of the mask, else 0; an unknown bit is a feature that it does not have.
VSP_INLINE constexpr int ownGetFeature(const CpuRegisters& r, int mask) {
    const Level level = bestLevel(r);
    const int features = kFeatureY8 | (level >= Level::v3 ? kFeatureV3 : 0) | (level >= Level::v4 ? kFeatureV4 : 0);
    return (features & mask) == mask;
}

VSP_INLINE int ownGetFeature(int mask) { return ownGetFeature(readCpuRegisters(), mask); }

}  // namespace vsp
