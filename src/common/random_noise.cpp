// Comfort-noise excitation of G.729 Annex B (B.4.4).
#include "arithmetic/basic_ops.h"
#include "common/exports.h"
#include "common/random.h"
#include "core/checks.h"
#include "vector/for_blocks.h"
#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kStepsPerElement = 12;

// Elements are made W at a time: each 32-bit lane is one element and holds two of its generator values.
constexpr int W = S32::width;

// randMul and randAdd hold, for lane j and step pair k, what leads from the seed of the group to that value.
struct GroupTables {
    alignas(64) Vsp16s randMul[kStepsPerElement / 2][2 * W], randAdd[kStepsPerElement / 2][2 * W];
};

constexpr GroupTables makeGroupTables() {
    GroupTables t{};
    for (int k = 0; k < kStepsPerElement; k++)
        for (int j = 0; j < W; j++) {
            const GeneratorSteps s = generatorSteps(kStepsPerElement * j + k + 1);
            t.randMul[k / 2][2 * j + k % 2] = Vsp16s(s.mul);
            t.randAdd[k / 2][2 * j + k % 2] = Vsp16s(s.add);
        }
    return t;
}
constexpr GroupTables kGroup = makeGroupTables();

}  // namespace

VspStatus vspsRandomNoiseExcitation_G729B_16s(Vsp16s* pSeed, Vsp16s* pDst, Vsp32s len) {
    if (anyNull(pSeed, pDst)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    Vsp16s seed = *pSeed;
    forBlocks(len, W, [&](Vsp32s first, Vsp32s count) {
        const S16 seeds = S16::splat(seed);
        S16 values;
        S32 total = S32::splat(0);
        for (int k = 0; k < kStepsPerElement / 2; k++) {
            values = add(mulLo(seeds, S16::load(kGroup.randMul[k])), S16::load(kGroup.randAdd[k]));
            total = add(total, dot2(values, S16::splat(1)));
        }
        Vsp32s sums[W];
        Vsp16s lastValues[2 * W];
        shr(total, 7).store(sums);
        values.store(lastValues);
        for (int j = 0; j < count; j++) pDst[first + j] = Vsp16s(sums[j]);
        seed = lastValues[2 * count - 1];
    });
    *pSeed = seed;
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
