// Many numbers of the generator at once.
#pragma once

#include "common/random.h"
#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

constexpr int kRandomBlock = 32;

struct RandomBlock {
    alignas(64) Vsp16s mul[kRandomBlock], add[kRandomBlock];
};

consteval RandomBlock makeRandomBlock() {
    RandomBlock block{};
    for (int i = 0; i < kRandomBlock; i++) {
        block.mul[i] = Vsp16s(generatorSteps(i + 1).mul);
        block.add[i] = Vsp16s(generatorSteps(i + 1).add);
    }
    return block;
}
constexpr RandomBlock kRandomSteps = makeRandomBlock();

// dst[i] = the next random number >> shift, of a number that is a multiple of 16.
VSP_INLINE void ownRandomVector(Vsp16s* seed, int shift, Vsp16s* dst, int len) {
    constexpr int W = Sliding16::width;
    static_assert(kRandomBlock % W == 0 && 16 % W == 0);
    for (int first = 0; first < len; first += kRandomBlock) {
        const Sliding16 start = Sliding16::splat(*seed);
        const int count = len - first < kRandomBlock ? len - first : kRandomBlock;
        for (int i = 0; i < count; i += W)
            shr(add(mulLo(start, Sliding16::load(kRandomSteps.mul + i)), Sliding16::load(kRandomSteps.add + i)), shift)
                .store(dst + first + i);
        *seed = Vsp16s(*seed * kRandomSteps.mul[count - 1] + kRandomSteps.add[count - 1]);
    }
}

}  // namespace vsp::VSP_LEVEL
