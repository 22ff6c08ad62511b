// The quantisation of the LSPs (`Q_plsf_3`, `Q_plsf_5`).
#include "core/checks.h"
#include "gsmamr/exports.h"
#include "gsmamr/lsf_quant.h"
#include "vector/nearest.h"

namespace vsp::VSP_LEVEL {

namespace {

// The LSFs count more where they are close (`Lsf_wt`).
void weigh(const Vsp16s* lsf, Vsp16s* weights) {
    constexpr Vsp16s kKnee = 1843;
    for (int i = 0; i < kLsfOrder; i++) {
        const Vsp16s above = i + 1 < kLsfOrder ? lsf[i + 1] : Vsp16s(16384), below = i > 0 ? lsf[i - 1] : Vsp16s(0);
        const Vsp16s distance = Sub_16s(above, below), excess = Sub_16s(distance, kKnee);
        const Vsp16s weight = excess < 0 ? Sub_16s(3427, Mul_16s(distance, 28160)) : Sub_16s(kKnee, Mul_16s(excess, 6242));
        weights[i] = shl_16s(weight, 3);
    }
}

// (a * b) >> 15 where a is not -32768
VSP_INLINE S16 weighted(S16 weight, S16 difference) {
    return {shl(mulHi(weight, difference), 1).v | shrU(mulLo(weight, difference), 15).v};
}

// Halves of the distances, all bits kept; what would saturate becomes kFar or more.
constexpr Vsp32s kFar = 1 << 30;

struct Distances {
    S32 lo, hi;
};

// Of the entries at a place of a codebook whose elements are stored one after the other.
template <int Elements, class Difference>
VSP_INLINE Distances distances(const Vsp16s* const (&element)[Elements], const Vsp16s (&weight)[Elements], int at,
                               Difference difference) {
    S16 t[4];
    for (int e = 0; e < Elements; e++) t[e] = weighted(S16::splat(weight[e]), difference(e, S16::load(element[e] + at)));
    if (Elements == 3) t[3] = S16::splat(0);
    const S16 lo01{zipLo(t[0], t[1]).v}, hi01{zipHi(t[0], t[1]).v}, lo23{zipLo(t[2], t[3]).v}, hi23{zipHi(t[2], t[3]).v};
    const S32 a = dot2(lo01, lo01), b = dot2(lo23, lo23), c = dot2(hi01, hi01), d = dot2(hi23, hi23);
    // Each is below 2^31. Limited, their sum still is.
    const S32 far = S32::splat(kFar), nearFar = S32::splat(kFar - 1);
    return {add(min(a, far), min(b, nearFar)), add(min(c, far), min(d, nearFar))};
}

// The nearest entry of a codebook to a residual.
template <int Elements>
int nearest(const Vsp16s* codebook, int size, const Vsp16s (&residual)[Elements], const Vsp16s (&weight)[Elements],
            int count) {
    const Vsp16s* element[Elements];
    for (int e = 0; e < Elements; e++) element[e] = codebook + e * size;
    const auto difference = [&](int e, S16 entry) { return subSat(S16::splat(residual[e]), entry); };
    Smallest smallest(kFar);
    RunningIndices indices;
    for (int i = 0; i < count; i += S16::width) {
        const Distances d = distances<Elements>(element, weight, i, difference);
        smallest.offer(d.lo, d.hi, indices.lo, indices.hi);
        indices.advance(S16::width);
    }
    return smallest.index();
}

// The same with every entry negated as well, after it; the lowest bit of the index is the sign.
int nearestSigned(const Vsp16s* codebook, int size, const Vsp16s (&residual)[4], const Vsp16s (&weight)[4]) {
    const Vsp16s* element[4];
    for (int e = 0; e < 4; e++) element[e] = codebook + e * size;
    const auto difference = [&](int e, S16 entry) { return subSat(S16::splat(residual[e]), entry); };
    const auto sum = [&](int e, S16 entry) { return addSat(S16::splat(residual[e]), entry); };
    Smallest smallest(kFar);
    RunningIndices indices;
    const S32 one = S32::splat(1);
    for (int i = 0; i < size; i += S16::width) {
        const Distances plus = distances<4>(element, weight, i, difference), minus = distances<4>(element, weight, i, sum);
        const S32 lo = add(indices.lo, indices.lo), hi = add(indices.hi, indices.hi);
        smallest.offer(plus.lo, plus.hi, lo, hi);
        smallest.offer(minus.lo, minus.hi, add(lo, one), add(hi, one));
        indices.advance(S16::width);
    }
    return smallest.index();
}

void searchThree(const Vsp16s* residual, const Vsp16s* weights, Vsp32s mode, Vsp16s* index) {
    const ThreeCodebooks codebooks = threeCodebooks(mode);
    const Vsp16s r1[3] = {residual[0], residual[1], residual[2]}, w1[3] = {weights[0], weights[1], weights[2]};
    const Vsp16s r2[3] = {residual[3], residual[4], residual[5]}, w2[3] = {weights[3], weights[4], weights[5]};
    const Vsp16s r3[4] = {residual[6], residual[7], residual[8], residual[9]};
    const Vsp16s w3[4] = {weights[6], weights[7], weights[8], weights[9]};
    index[0] = Vsp16s(nearest<3>(codebooks.first, codebooks.size1, r1, w1, codebooks.size1));
    index[1] = Vsp16s(codebooks.step2 == 1 ? nearest<3>(codebooks.second, codebooks.stride2, r2, w2, codebooks.stride2)
                                           : nearest<3>(svq3_cb2_half.entries[0], 256, r2, w2, 256));
    index[2] = Vsp16s(nearest<4>(codebooks.third, codebooks.size3, r3, w3, codebooks.size3));
}

// Both vectors of 12.2 kbit/s, two elements of each at a time.
void searchFive(const Vsp16s* residual, const Vsp16s (&weights)[2][kLsfOrder], Vsp16s* index) {
    struct Codebook {
        const Vsp16s* entries;
        int size;
    };
    static constexpr int kSigned = 2;
    const Codebook codebooks[5] = {
        {svq5_cb1[0], 128}, {svq5_cb2[0], 256}, {svq5_cb3[0], 256}, {svq5_cb4[0], 256}, {svq5_cb5[0], 64}};
    for (int pair = 0; pair < 5; pair++) {
        const Vsp16s* const second = residual + kLsfOrder;
        const int i = 2 * pair;
        const Vsp16s r[4] = {residual[i], residual[i + 1], second[i], second[i + 1]};
        const Vsp16s w[4] = {weights[0][i], weights[0][i + 1], weights[1][i], weights[1][i + 1]};
        const auto [entries, size] = codebooks[pair];
        index[pair] = Vsp16s(pair == kSigned ? nearestSigned(entries, size, r, w) : nearest<4>(entries, size, r, w, size));
    }
}

int nearestStart(const Vsp16s* lsf) {
    int best = 0;
    Vsp32s least = kMax32;
    for (int start = 0; start < 8; start++) {
        Vsp16s predicted[kLsfOrder];
        predictLsfOfSid(start, predicted);
        Vsp32s sum = 0;
        for (int i = 0; i < kLsfOrder; i++) {
            const Vsp16s difference = Sub_16s(lsf[i], predicted[i]);
            sum = mac_32s(sum, difference, difference);
        }
        if (sum < least) {
            least = sum;
            best = start;
        }
    }
    return best;
}

}  // namespace

VspStatus vspsLSPQuant_GSMAMR_16s(const Vsp16s* pLSP, Vsp32s mode, Vsp16s* pPrevRes, Vsp16s* pQLSP, Vsp16s* pIndex) {
    if (anyNull(pLSP, pPrevRes, pQLSP, pIndex)) return vspStsNullPtrErr;
    if (!isMode(mode)) return vspStsRangeErr;
    const int vectors = mode == kMode122 ? 2 : 1;
    Vsp16s lsf[2 * kLsfOrder], weights[2][kLsfOrder], predicted[kLsfOrder], residual[2 * kLsfOrder];
    for (int v = 0; v < vectors; v++) {
        vspsLSPToLSF_GSMAMR_16s(pLSP + kLsfOrder * v, lsf + kLsfOrder * v);
        weigh(lsf + kLsfOrder * v, weights[v]);
    }
    Vsp16s* index = pIndex;
    if (mode == kModeSID) {
        *index = Vsp16s(nearestStart(lsf));
        predictLsfOfSid(*index++, predicted);
    } else {
        predictLsf(mode, pPrevRes, predicted);
    }
    for (int i = 0; i < kLsfOrder * vectors; i++) residual[i] = Sub_16s(lsf[i], predicted[i % kLsfOrder]);
    if (mode == kMode122)
        searchFive(residual, weights, index);
    else
        searchThree(residual, weights[0], mode, index);

    ownLsfResidual(index, mode, residual);
    for (int v = 0; v < vectors; v++) {
        for (int i = 0; i < kLsfOrder; i++) lsf[i] = Add_16s(residual[kLsfOrder * v + i], predicted[i]);
        reorderLsf(lsf);
        vspsLSFToLSP_GSMAMR_16s(lsf, pQLSP + kLsfOrder * v);
    }
    for (int i = 0; i < kLsfOrder; i++) pPrevRes[i] = residual[kLsfOrder * (vectors - 1) + i];
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
