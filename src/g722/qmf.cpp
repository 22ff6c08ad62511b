// The quadrature mirror filter of G.722 (3.1 and 4.5).
#include "core/checks.h"
#include "g722/exports.h"
#include "g722/tables.h"
#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kHistory = 22, kChunk = 320;
using V = Sliding16;
static_assert(kChunk % (2 * V::width) == 0);

// Two values for every pair of samples up to it: finish gets the sums with the first and those with the second taps.
template <class Finish>
VSP_INLINE void filterPairs(const Vsp16s* line, int samples, const QmfTaps& taps, Vsp16s* out, Finish finish) {
    for (int n = 0; n < samples; n += 2 * V::width) {
        Wide<V> first[2], second[2];
        first[0] = first[1] = second[0] = second[1] = Wide<V>::splat(0);
        for (int t = 0; t < 24; t += 2) {
            const V tapsOfFirst = splatPair<V>(taps.first + t), tapsOfSecond = splatPair<V>(taps.second + t);
            for (int i = 0; i < 2; i++) {
                const V pairs = V::load(line + n + i * V::width + t);
                first[i] = add(first[i], dot2(pairs, tapsOfFirst));
                second[i] = add(second[i], dot2(pairs, tapsOfSecond));
            }
        }
        for (int i = 0; i < 2; i++) finish(first[i], second[i]).store(out + n + i * V::width);
    }
}

// Runs a filter over chunks. Whole vectors of a chunk are filtered, what is beyond its end as zeros.
template <class Filter>
VSP_INLINE void inChunks(const Vsp16s* src, Vsp16s* dst, int len, Vsp16s* delay, Filter filter) {
    Vsp16s line[kHistory + kChunk], out[kChunk];  // the history first
    Vsp16s* const present = line + kHistory;
    __builtin_memcpy(line, delay, sizeof(Vsp16s) * kHistory);
    for (Vsp64s i = 0; i < len; i += kChunk) {
        const int n = len - i < kChunk ? int(len - i) : kChunk;
        __builtin_memcpy(present, src + i, sizeof(Vsp16s) * n);
        __builtin_memset(present + n, 0, sizeof(Vsp16s) * (kChunk - n));
        filter(line, n, out);
        __builtin_memcpy(dst + i, out, sizeof(Vsp16s) * n);
        __builtin_memmove(line, line + n, sizeof(Vsp16s) * kHistory);
    }
    __builtin_memcpy(delay, line, sizeof(Vsp16s) * kHistory);
}

}  // namespace

VspStatus vspsQMFAnalysis_G722_16s(const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len, Vsp16s* pDelay) {
    if (anyNull(pSrc, pDst, pDelay)) return vspStsNullPtrErr;
    if (len < 2 || len % 2 != 0) return vspStsSizeErr;
    inChunks(pSrc, pDst, len, pDelay, [](const Vsp16s* line, int n, Vsp16s* out) {
        filterPairs(line, n, qmfAnalysis, out, [](Wide<V> low, Wide<V> high) {
            const V bands = packSatAlternating(shr(low, 14), shr(high, 14));
            return min(max(bands, V::splat(-16384)), V::splat(16383));
        });
    });
    return vspStsNoErr;
}

VspStatus vspsQMFSynthesis_G722_16s(const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len, Vsp16s* pDelay) {
    if (anyNull(pSrc, pDst, pDelay)) return vspStsNullPtrErr;
    if (len < 2 || len % 2 != 0) return vspStsSizeErr;
    inChunks(pSrc, pDst, len, pDelay, [](Vsp16s* line, int n, Vsp16s* out) {
        Vsp16s* const present = line + kHistory;
        for (int i = 0; i < n; i += V::width) {  // low, high to low + high, low - high
            const V bands = V::load(present + i), swapped = swapInPairs(bands);
            firstAndSecond(addSat(bands, swapped), subSat(swapped, bands)).store(present + i);
        }
        filterPairs(line, n, qmfSynthesis, out,
                    [](Wide<V> first, Wide<V> second) { return packSatAlternating(shr(first, 11), shr(second, 11)); });
    });
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
