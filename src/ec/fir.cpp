// Echo estimate by a full-band FIR filter, subtracted from the near-end signal.
#include "arithmetic/basic_ops.h"
#include "core/checks.h"
#include "ec/echo_terms.h"
#include "ec/exports.h"
#include "vector/for_blocks.h"
#include "vector/magnitude.h"
#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

namespace {

// --- Floating point: vectors of outputs, each of which has its own sum in the order of the taps --------------------------

constexpr int kMaxUnits = 10;  // vectors of outputs at a time: enough to hide the latency of an addition

// One value as a vector.
struct F32_1 {
    static constexpr int width = 1;
    Vsp32f v;
    static F32_1 splat(Vsp32f x) { return {x}; }
    static F32_1 load(const Vsp32f* p) { return {*p}; }
    void store(Vsp32f* p) const { *p = v; }
};
VSP_INLINE F32_1 add(F32_1 a, F32_1 b) { return {a.v + b.v}; }
VSP_INLINE F32_1 mul(F32_1 a, F32_1 b) { return {a.v * b.v}; }

// Units vectors of outputs; the last one ends at output len and may overlap the one before.
template <class V, int Units>
void echoUnits(const Vsp32f* ref, const Vsp32f* taps, Vsp32s numTaps, Vsp32f* echo, Vsp32s len) {
    const Vsp32s last = len - V::width;
    V y[Units];
    for (int u = 0; u < Units; u++) y[u] = V::splat(0);
    for (Vsp32s k = 0; k < numTaps; k++) {
        const V tap = V::splat(taps[k]);
        for (int u = 0; u < Units - 1; u++) y[u] = add(y[u], mul(V::load(ref - k + u * V::width), tap));
        y[Units - 1] = add(y[Units - 1], mul(V::load(ref - k + last), tap));
    }
    for (int u = 0; u < Units - 1; u++) y[u].store(echo + u * V::width);
    y[Units - 1].store(echo + last);
}

template <class V, int MaxUnits>
void echoUpTo(const Vsp32f* ref, const Vsp32f* taps, Vsp32s numTaps, Vsp32f* echo, Vsp32s len) {
    if constexpr (MaxUnits > 1)
        if (len <= (MaxUnits - 1) * V::width) return echoUpTo<V, MaxUnits - 1>(ref, taps, numTaps, echo, len);
    echoUnits<V, MaxUnits>(ref, taps, numTaps, echo, len);
}

}  // namespace

VspStatus vspsFIR_EC_32f(const Vsp32f* pRef, const Vsp32f* pNear, Vsp32f* pDst, Vsp32s len, const Vsp32f* pTaps,
                         Vsp32s numTaps) {
    if (anyNull(pRef, pNear, pDst, pTaps)) return vspStsNullPtrErr;
    if (len < 1 || numTaps < 1) return vspStsBadArgErr;
    constexpr int W = Sliding32f::width, kBlock = kMaxUnits * W;
    Vsp32f buffer[W + kBlock], *const echo = buffer + W;  // the last vector may begin before the block
    forBlocks(len, kBlock, [&](Vsp32s n, Vsp32s count) {
        if (len >= W)
            echoUpTo<Sliding32f, kMaxUnits>(pRef + n, pTaps, numTaps, echo, count);
        else if (len >= F32_128::width)
            echoUpTo<F32_128, W / F32_128::width>(pRef, pTaps, numTaps, echo, len);
        else
            echoUpTo<F32_1, F32_128::width - 1>(pRef, pTaps, numTaps, echo, len);
        // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult): count values of echo have been stored
        for (Vsp32s i = 0; i < count; i++) pDst[n + i] = pNear[n + i] - echo[i];
    });
    return vspStsNoErr;
}

// --- Fixed point: vectors of taps; the order of a sum that cannot saturate does not matter -----------------------------

namespace {

constexpr Vsp32s kMinChunk = 512, kMaxOutputs = 256;
constexpr Vsp16u kSmallTap = 8191;

// Some taps, the last one first, so that they run in the direction of the reference. What whole vectors leave lies in one
// more vector, behind zeros for the taps that it overlaps.
struct Chunk {
    Vsp16s taps[2 * kMinChunk];
    Vsp32s count, whole;
    bool small;  // four of them add up to less than 2^15
};

VSP_INLINE void fill(Chunk& chunk, const Vsp16s* taps, Vsp32s count) {
    constexpr int W = Sliding16::width;
    chunk.count = count;
    chunk.whole = count & -W;
    chunk.small = maxMagnitude(taps, count) <= kSmallTap;
    for (Vsp32s j = 0; j < chunk.whole; j += W) reversed(Sliding16::load(taps + count - W - j)).store(chunk.taps + j);
    const Vsp32s rest = count - chunk.whole;
    if (rest > 0) {
        Vsp16s* const end = chunk.taps + chunk.whole + W;
        for (Vsp32s k = 0; k < W; k++) end[-1 - k] = k < rest ? taps[k] : Vsp16s(0);
    }
}

// Adds to the estimates of Outputs neighbouring outputs. The oldest sample that the first one needs is ref[0].
template <int Outputs>
VSP_INLINE void addEchoes(const Chunk& chunk, const Vsp16s* ref, Vsp32s* echo) {
    using V = Sliding16;
    constexpr int W = V::width;
    const Vsp32s quadruple = chunk.small ? chunk.whole & (-4 * W) : 0;
    const Vsp32s biased = (chunk.count - quadruple + W - 1) / W;
    Wide<V> y[Outputs];
    for (int i = 0; i < Outputs; i++) y[i] = Wide<V>::splat(kPairBias * biased);
    for (Vsp32s j = 0; j < quadruple; j += 4 * W) {
        const V taps[4] = {V::load(chunk.taps + j), V::load(chunk.taps + j + W), V::load(chunk.taps + j + 2 * W),
                           V::load(chunk.taps + j + 3 * W)};
        for (int i = 0; i < Outputs; i++) {
            const Vsp16s* at = ref + i + j;
            const V sum0 = add(mulRoundWrap(V::load(at), taps[0]), mulRoundWrap(V::load(at + W), taps[1]));
            const V sum1 = add(mulRoundWrap(V::load(at + 2 * W), taps[2]), mulRoundWrap(V::load(at + 3 * W), taps[3]));
            y[i] = add(y[i], dot2(add(sum0, sum1), V::splat(1)));
        }
    }
    for (Vsp32s j = quadruple; j < chunk.whole; j += W) {
        const V taps = V::load(chunk.taps + j);
        for (int i = 0; i < Outputs; i++) y[i] = add(y[i], biasedTermPairs(V::load(ref + i + j), taps));
    }
    if (chunk.whole < chunk.count) {
        const V taps = V::load(chunk.taps + chunk.whole);
        for (int i = 0; i < Outputs; i++) y[i] = add(y[i], biasedTermPairs(V::load(ref + i + chunk.count - W), taps));
    }
    if constexpr (Outputs == 4)
        add(S32_128::load(echo), sums(y[0], y[1], y[2], y[3])).store(echo);
    else
        for (int i = 0; i < Outputs; i++) echo[i] += sum(y[i]);
}

// Up to kMaxOutputs echo estimates.
void estimateEcho(const Vsp16s* ref, const Vsp16s* taps, Vsp32s numTaps, Vsp32s* echo, Vsp32s count) {
    Chunk chunk;
    for (Vsp32s i = 0; i < count; i++) echo[i] = 0;
    for (Vsp32s k = 0; k < numTaps; k += chunk.count) {
        fill(chunk, taps + k, numTaps - k < 2 * kMinChunk ? numTaps - k : kMinChunk);
        const Vsp16s* oldest = ref - k - chunk.count + 1;
        Vsp32s n = 0;
        for (; n + 4 <= count; n += 4) addEchoes<4>(chunk, oldest + n, echo + n);
        for (; n < count; n++) addEchoes<1>(chunk, oldest + n, echo + n);
    }
}

// In the order of the definition.
Vsp32s saturatingEcho(const Vsp16s* ref, const Vsp16s* taps, Vsp32s numTaps) {
    Vsp32s y = 0;
    for (Vsp32s k = 0; k < numTaps; k++) y = Add_32s(y, echoTerm(ref[-k], taps[k]));
    return y;
}

}  // namespace

VspStatus vspsFIR_EC_16s(const Vsp16s* pRef, const Vsp16s* pNear, Vsp16s* pDst, Vsp32s len, const Vsp16s* pTaps,
                         Vsp32s numTaps) {
    if (anyNull(pRef, pNear, pDst, pTaps)) return vspStsNullPtrErr;
    if (len < 1 || numTaps < 1) return vspStsBadArgErr;
    if (numTaps < Sliding16::width || numTaps > kMaxUnsaturatedTaps) {
        for (Vsp32s n = 0; n < len; n++) pDst[n] = sat_16s(wrapSub_32s(pNear[n], saturatingEcho(pRef + n, pTaps, numTaps)));
        return vspStsNoErr;
    }
    Vsp32s echo[kMaxOutputs];
    forBlocks(len, kMaxOutputs, [&](Vsp32s n, Vsp32s count) {
        estimateEcho(pRef + n, pTaps, numTaps, echo, count);
        for (Vsp32s i = 0; i < count; i++) pDst[n + i] = sat_16s(pNear[n + i] - echo[i]);
    });
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
