// The predictive split quantiser of the line spectral frequencies and its decoder (G.723.1 2.5 and 3.2).
#include "core/checks.h"
#include "g723/exports.h"
#include "g723/lsf_tables.h"
#include "g723/operators.h"
#include "vector/nearest.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kOrder = 10, kBands = 3, kFirst[kBands + 1] = {0, 3, 6, 10};

// Of the square of the distance to v, what depends on v: the largest 2 * t * u - v * u with u = w * v counts; w is
// positive.
template <int kElements>
VSP_INLINE int nearestEntry(const Vsp16s* target, const Vsp16s* weight, const Vsp16s (*codebook)[g723::kLsfEntries]) {
    Smallest best(1);  // of the negative values
    RunningIndices indices;
    for (int i = 0; i < g723::kLsfEntries; i += S16::width) {
        const S16 zero = S16::splat(0);
        S32 lo = S32::splat(0), hi = lo;
        for (int k = 0; k < kElements; k++) {
            const S16 v = S16::load(codebook[k] + i), u = mulRound(v, S16::splat(weight[k]));
            // v * u - 2 * t * u, t being added twice
            const S16 t = S16::splat(target[k]), minusU = sub(zero, u);
            const auto accumulate = [&](S32& sum, auto zip) {
                const S16 vt{zip(v, t).v}, uu{zip(u, minusU).v}, tt{zip(t, zero).v};
                sum = add(sum, add(dot2(vt, uu), dot2(tt, S16{zip(minusU, zero).v})));
            };
            accumulate(lo, [](S16 a, S16 b) { return zipLo(a, b); });
            accumulate(hi, [](S16 a, S16 b) { return zipHi(a, b); });
        }
        // Doubled as in the standard, the metric starts at -1.
        best.offer(lo, hi, indices.lo, indices.hi);
        indices.advance(S16::width);
    }
    return best.index();
}

// Raises frequencies that are too close to the one before until all have their distance; false if ten passes do not do.
bool spread(Vsp16s* lsf, Vsp16s distance) {
    constexpr int kPasses = 10;
    constexpr Vsp16s kLowest = 0x180, kHighest = 0x7E00, kTolerance = 4;
    for (int pass = 0; pass < kPasses; pass++) {
        if (lsf[0] < kLowest) lsf[0] = kLowest;
        if (lsf[kOrder - 1] > kHighest) lsf[kOrder - 1] = kHighest;
        for (int j = 1; j < kOrder; j++) {
            const int excess = Sub_16s(Add_16s(distance, lsf[j - 1]), lsf[j]) >> 1;
            if (Sub_16s(Add_16s(distance, lsf[j - 1]), lsf[j]) <= 0) continue;
            lsf[j - 1] = Sub_16s(lsf[j - 1], Vsp16s(excess));
            lsf[j] = Add_16s(lsf[j], Vsp16s(excess));
        }
        bool good = true;
        for (int j = 1; j < kOrder; j++) good &= Sub_16s(Sub_16s(Add_16s(lsf[j - 1], distance), kTolerance), lsf[j]) <= 0;
        if (good) return true;
    }
    return false;
}

}  // namespace

// `Lsp_Qnt`, `Lsp_Svq`
VspStatus vspsLSFQuant_G723_16s(const Vsp16s* pLSF, const Vsp16s* pPrevLSF, Vsp16s* pIndex) {
    constexpr Vsp16s kPrediction = 12288;
    if (anyNull(pLSF, pPrevLSF, pIndex)) return vspStsNullPtrErr;
    Vsp16s weight[kOrder], target[kOrder];
    Vsp16s largest = 0;
    for (int i = 0; i < kOrder; i++) {
        const Vsp16s below = i > 0 ? Sub_16s(pLSF[i], pLSF[i - 1]) : kMax16;
        const Vsp16s above = i < kOrder - 1 ? Sub_16s(pLSF[i + 1], pLSF[i]) : kMax16;
        const Vsp16s distance = below < above ? below : above;
        weight[i] = distance > 32 ? Div_16s(32, distance) : kMax16;
        largest = weight[i] > largest ? weight[i] : largest;
        const Vsp16s predicted = mulRound_16s(Sub_16s(pPrevLSF[i], g723::lsfMean[i]), kPrediction);
        target[i] = Sub_16s(Sub_16s(pLSF[i], g723::lsfMean[i]), predicted);
    }
    const int norm = norm_16s(largest);
    for (Vsp16s& w : weight) w = ShiftL_16s(w, norm);
    pIndex[0] = Vsp16s(nearestEntry<3>(target, weight, g723::lsfCodebook));
    pIndex[1] = Vsp16s(nearestEntry<3>(target + kFirst[1], weight + kFirst[1], g723::lsfCodebook + kFirst[1]));
    pIndex[2] = Vsp16s(nearestEntry<4>(target + kFirst[2], weight + kFirst[2], g723::lsfCodebook + kFirst[2]));
    return vspStsNoErr;
}

// `Lsp_Inq`
VspStatus vspsLSFDecode_G723_16s(const Vsp16s* pIndex, const Vsp16s* pPrevLSF, Vsp32s erased, Vsp16s* pLSF) {
    if (anyNull(pPrevLSF, pLSF) || (erased != 1 && anyNull(pIndex))) return vspStsNullPtrErr;
    if (erased != 0 && erased != 1) return vspStsRangeErr;
    const Vsp16s prediction = erased != 0 ? 23552 : 12288, distance = erased != 0 ? 0x200 : 0x100;
    Vsp16s lsf[kOrder];
    for (int b = 0; b < kBands; b++) {
        const int entry = erased != 0 ? 0 : pIndex[b] & (g723::kLsfEntries - 1);
        for (int i = kFirst[b]; i < kFirst[b + 1]; i++) {
            const Vsp16s mean = g723::lsfMean[i];
            const Vsp16s predicted = mulRound_16s(Sub_16s(pPrevLSF[i], mean), prediction);
            lsf[i] = Add_16s(Add_16s(g723::lsfCodebook[i][entry], predicted), mean);
        }
    }
    const bool good = spread(lsf, distance);
    for (int i = 0; i < kOrder; i++) pLSF[i] = good ? lsf[i] : pPrevLSF[i];
    return good ? vspStsNoErr : vspStsUnstableLSF;
}

}  // namespace vsp::VSP_LEVEL
