#include "support/upper_halves.h"

#include <cpuid.h>

namespace vsp::test {

bool upperHalvesInUse() {
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
