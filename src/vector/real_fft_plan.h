// How a real transform of 2^order points is done, and its tables.
//
// The M = N/2 pairs of samples, taken as complex numbers, go through a complex transform of mixed radix: all passes but the
// last work within blocks and leave the r-th result of each butterfly, times its factor, in the r-th part of the block; the
// last one transforms the blocks that are left and puts everything in order. The spectrum of the samples follows from that
// of the pairs.
//
// Tables and work arrays hold complex numbers in groups of kFftGroup (fewer where there are not as many): the real parts,
// then the imaginary ones.
#pragma once

#include "core/inline.h"
#include "vspsc/types.h"

namespace vsp {

constexpr int kMaxFftOrder = 17, kLastSmallFftOrder = 8, kMaxFftPasses = 5, kFftGroup = 8;  // small: without a work array

struct FftPlan {
    int passes;
    int radix[kMaxFftPasses];
};

// For N/2 = 2^0, 2^1, ...
constexpr FftPlan kFftPlans[kMaxFftOrder] = {
    {1, {1}},
    {1, {2}},
    {1, {4}},
    {1, {8}},
    {2, {4, 4}},
    {2, {8, 4}},
    {2, {8, 8}},
    {2, {16, 8}},
    {3, {8, 4, 8}},
    {3, {8, 8, 8}},
    {3, {16, 8, 8}},
    {3, {16, 16, 8}},
    {4, {8, 8, 8, 8}},
    {4, {16, 8, 8, 8}},
    {4, {16, 16, 8, 8}},
    {4, {16, 16, 16, 8}},
    {5, {16, 8, 8, 8, 8}},
};

// The radices make up N/2. Long transforms begin with 8 or 16, so that eight blocks follow each other in the result, and
// end with 8.
VSP_INLINE constexpr bool validFftPlans() {
    for (int order = 1; order <= kMaxFftOrder; order++) {
        const FftPlan& plan = kFftPlans[order - 1];
        const int first = plan.radix[0], last = plan.radix[plan.passes - 1];
        int points = 1;
        for (int i = 0; i < plan.passes; i++) points *= plan.radix[i];
        if (points != 1 << (order - 1)) return false;
        if (order > kLastSmallFftOrder && ((first != 8 && first != 16) || last != 8)) return false;
    }
    return true;
}
static_assert(validFftPlans());

VSP_INLINE constexpr int smallerOf(int a, int b) { return a < b ? a : b; }

// The tables, in this order: -0.5 j exp(-j 2 pi k / N) for k < M/2; for each pass but the last, over blocks of n with radix
// R, exp(-j 2 pi c q / n) for each group of columns c < n/R and q = 1 .. R-1.
VSP_INLINE constexpr int fftSpectrumTableLen(int order) { return 1 << (order - 1); }
VSP_INLINE constexpr int fftPassTableLen(int n, int radix) { return 2 * (n / radix) * (radix - 1); }
VSP_INLINE constexpr int fftTablesLen(int order) {
    const FftPlan& plan = kFftPlans[order - 1];
    int len = fftSpectrumTableLen(order), n = 1 << (order - 1);
    for (int i = 0; i + 1 < plan.passes; i++) {
        len += fftPassTableLen(n, plan.radix[i]);
        n /= plan.radix[i];
    }
    return len;
}

// Computed in double precision and rounded once.
void ownFftTables(int order, Vsp32f* to);
void ownFftTables(int order, Vsp64f* to);

// Where the blocks of the last pass lie: of each eight that follow each other in the result, the element where the first
// begins, eight of them M/radix[0] apart. For M / (8 radix[last]) eights.
void ownFftBlocks(int order, Vsp32s* blocks);

}  // namespace vsp
