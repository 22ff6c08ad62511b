#pragma once

#include "core/level.h"

namespace vsp {

// k steps of the generator seed = seed * 31821 + 13849, modulo 2^16.
struct GeneratorSteps {
    Vsp16u mul, add;
};

constexpr GeneratorSteps generatorSteps(int k) {
    Vsp32u mul = 1, add = 0;
    for (; k > 0; k--) {
        mul = mul * 31821 & 0xFFFF;
        add = (add * 31821 + 13849) & 0xFFFF;
    }
    return {Vsp16u(mul), Vsp16u(add)};
}
static_assert(Vsp16s(generatorSteps(48).mul) == -26431 && Vsp16s(generatorSteps(48).add) == -8048);

}  // namespace vsp

namespace vsp::VSP_LEVEL {

// The standards' generator of pseudo-random numbers (`Random`).
VSP_INLINE Vsp16s ownRandom(Vsp16s* seed) {
    *seed = Vsp16s(*seed * 31821 + 13849);
    return *seed;
}

}  // namespace vsp::VSP_LEVEL
