// Quantisers of the ISFs (`Qpisf_2s_46b`, `Qpisf_2s_36b`, `Qisf_ns`).
#include "amrwb/isf_quant.h"

#include "amrwb/exports.h"
#include "core/checks.h"
#include "vector/nearest.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kSurvivors = 4, kFirstStage = 256;

// Halves of squared distances; what would saturate when doubled is kFar.
constexpr Vsp32s kFar = 1 << 30;

struct Distances {
    S32 lo, hi;
};

// Of the entries at a place of a codebook.
template <int kElements>
VSP_INLINE Distances distances(const Vsp16s* entries, int size, const Vsp16s* x) {
    const S32 far = S32::splat(kFar);
    const auto difference = [&](int e) {
        return e < kElements ? subSat(S16::splat(x[e]), S16::load(entries + e * size)) : S16::splat(0);
    };
    Distances sum{S32::splat(0), S32::splat(0)};
    // Two squares are at most 2^31, as is a sum of two that are limited.
    const auto limitedSum = [&](S32 a, S32 squares) { return minU(add(a, minU(squares, far)), far); };
    for (int e = 0; e < kElements; e += 2) {
        const S16 a = difference(e), b = difference(e + 1);
        const S16 lo{zipLo(a, b).v}, hi{zipHi(a, b).v};
        sum = {limitedSum(sum.lo, dot2(lo, lo)), limitedSum(sum.hi, dot2(hi, hi))};
    }
    return sum;
}

template <int kElements>
Smallest::Found nearest(const IsfSplit& split, const Vsp16s* x) {
    Smallest smallest(kFar);
    RunningIndices indices;
    for (int i = 0; i < split.size; i += S16::width) {
        const Distances d = distances<kElements>(split.entries + i, split.size, x);
        smallest.offer(d.lo, d.hi, indices.lo, indices.hi);
        indices.advance(S16::width);
    }
    return smallest.found();
}

// The nearest entries of splits that follow each other. Returns the sum of their distances.
template <int... kElements>
VSP_INLINE Vsp64s nearestOfSplits(const IsfSplit* split, const Vsp16s* x, Vsp16s* index) {
    Vsp64s sum = 0;
    const auto take = [&](Smallest::Found found, int elements) {
        sum += found.value;
        *index++ = Vsp16s(found.index);
        x += elements;
        split++;
    };
    (take(nearest<kElements>(*split, x), kElements), ...);
    return sum;
}

struct Survivors {
    Vsp32s distance[kSurvivors];
    int index[kSurvivors];
};

// The nearest entries of the first stage in their order, of equal ones the first ahead.
template <int kElements>
void survivorsOf(const IsfSplit& split, const Vsp16s* x, Survivors& s) {
    Vsp32s all[kFirstStage];
    for (int i = 0; i < kFirstStage; i += S16::width) {
        const Distances d = distances<kElements>(split.entries + i, kFirstStage, x);
        constexpr int kLane = 4;
        // Each half has the halves of the 128-bit lanes.
        Vsp32s lo[S32::width], hi[S32::width];
        d.lo.store(lo);
        d.hi.store(hi);
        for (int lane = 0; lane < S32::width; lane += kLane)
            for (int k = 0; k < kLane; k++) {
                all[i + 2 * lane + k] = lo[lane + k];
                all[i + 2 * lane + kLane + k] = hi[lane + k];
            }
    }
    for (int n = 0; n < kSurvivors; n++) {
        s.distance[n] = kFar;
        s.index[n] = n;
    }
    for (int first = 0; first < kFirstStage; first += S32::width) {
        Vsp32u nearer = whereSmaller(S32::load(all + first), S32::splat(s.distance[kSurvivors - 1]));
        for (; nearer != 0; nearer &= nearer - 1) {
            const int i = first + __builtin_ctz(nearer);
            if (all[i] >= s.distance[kSurvivors - 1]) continue;
            int n = kSurvivors - 1;
            for (; n > 0 && all[i] < s.distance[n - 1]; n--) {
                s.distance[n] = s.distance[n - 1];
                s.index[n] = s.index[n - 1];
            }
            s.distance[n] = all[i];
            s.index[n] = i;
        }
    }
}

// A half of the vector: an entry of the first stage and those of the second one that come nearest to what it leaves.
template <int kTotal, int... kElements>
VSP_INLINE void searchHalf(const IsfSplit& first, const IsfSplit* second, const Vsp16s* x, Vsp16s* index,
                           Vsp16s* secondIndex) {
    constexpr int kSplits = sizeof...(kElements);
    Survivors survivors;
    survivorsOf<kTotal>(first, x, survivors);
    Vsp64s least = kFar;
    *index = 0;
    for (int s = 0; s < kSplits; s++) secondIndex[s] = 0;
    for (const int survivor : survivors.index) {
        Vsp16s rest[kTotal], nearestIndex[kSplits];
        for (int e = 0; e < kTotal; e++) rest[e] = Sub_16s(x[e], first.entries[e * kFirstStage + survivor]);
        const Vsp64s distance = nearestOfSplits<kElements...>(second, rest, nearestIndex);
        if (distance >= least) continue;
        least = distance;
        *index = Vsp16s(survivor);
        for (int s = 0; s < kSplits; s++) secondIndex[s] = nearestIndex[s];
    }
}

}  // namespace

VspStatus vspsISFQuant_AMRWB_16s(const Vsp16s* pISF, Vsp32s mode, Vsp16s* pPast, Vsp16s* pQISF, Vsp16s* pIndex) {
    constexpr int kFirstHalf = 9;
    if (anyNull(pISF, pPast, pQISF, pIndex)) return vspStsNullPtrErr;
    if (!isWideMode(mode)) return vspStsRangeErr;
    const IsfSplits splits = isfSplits(mode);
    const IsfSplit* const split = splits.split;
    Vsp16s error[kIsfOrder];
    for (int i = 0; i < kIsfOrder; i++)
        error[i] = Sub_16s(Sub_16s(pISF[i], mean_isf[i]), Mul_16s(kIsfPrediction, pPast[i]));
    if (mode == kMode660) {
        searchHalf<9, 5, 4>(split[0], split + 2, error, pIndex, pIndex + 2);
        searchHalf<7, 7>(split[1], split + 4, error + kFirstHalf, pIndex + 1, pIndex + 4);
    } else {
        searchHalf<9, 3, 3, 3>(split[0], split + 2, error, pIndex, pIndex + 2);
        searchHalf<7, 3, 4>(split[1], split + 5, error + kFirstHalf, pIndex + 1, pIndex + 5);
    }
    sumIsfSplits(splits, pIndex, error);
    predictIsf(error, pPast, pQISF);
    reorderIsf(pQISF);
    return vspStsNoErr;
}

VspStatus vspsISFQuantDTX_AMRWB_16s(const Vsp16s* pISF, Vsp16s* pQISF, Vsp16s* pIndex) {
    if (anyNull(pISF, pQISF, pIndex)) return vspStsNullPtrErr;
    const IsfSplits splits = isfSplits(kModeDtx);
    Vsp16s x[kIsfOrder];
    for (int i = 0; i < kIsfOrder; i++) x[i] = Sub_16s(pISF[i], mean_isf_noise[i]);
    nearestOfSplits<2, 3, 3, 4, 4>(splits.split, x, pIndex);
    return vspsISFDecodeDTX_AMRWB_16s(pIndex, pQISF);
}

}  // namespace vsp::VSP_LEVEL
