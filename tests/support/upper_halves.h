#pragma once

#include <cpuid.h>

namespace vsp::test {

// Whether the upper halves of vector registers are in use. A function that leaves them so slows down its caller's SSE code.
// False where the processor does not tell, and where the compiler was not to optimise.
inline bool upperHalvesInUse() {
#ifdef VSPSC_NOT_OPTIMISED
    return false;
#endif
    static const bool tells = [] {
        unsigned a = 0, b = 0, c = 0, d = 0;
        return __get_cpuid_count(0xD, 1, &a, &b, &c, &d) != 0 && (a & 4u) != 0;
    }();
    if (!tells) return false;
    constexpr unsigned kUpperHalves = 0x44;  // those of ymm and of zmm registers
    unsigned low = 0, high = 0;
    asm volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(1));
    return (low & kUpperHalves) != 0;
}

}  // namespace vsp::test
