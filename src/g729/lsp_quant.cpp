// Quantisation of the line spectral pairs (G.729 3.2.4).
#include "arithmetic/standard_ops.h"
#include "core/checks.h"
#include "g729/exports.h"
#include "g729/lsp_predictor.h"
#include "g729/nearest.h"

namespace vsp::VSP_LEVEL {

namespace {

struct Choice {
    int entry1, entryLow, entryHigh;
    Vsp32s distance;
};

// Lsp_pre_select: the entry of the first stage with the smallest squared error.
int nearest1(const Vsp16s* target) {
    return firstSmallest(kNc0, [target](int i) {
        S32 sum = S32::splat(0);
        for (int pair = 0; pair < kLspOrder / 2; pair++) {
            const S16 error = subSat(splatPair<S16>(target + 2 * pair), S16::load(lspcb1_pairs.pairs[pair][i]));
            sum = addLimited(sum, dot2(error, error));
        }
        return sum;
    });
}

// a * b >> 15, b not negative
VSP_INLINE S16 product(S16 a, S16 b) { return add(shl(mulHi(a, b), 1), shrU(mulLo(a, b), 15)); }

// Lsp_select_1 and _2: the entry of the second stage with the smallest weighted squared error in a half.
int nearest2(int half, const Vsp16s* target, const Vsp16s* weights) {
    constexpr int kPairs = (kLspHalf + 1) / 2;
    Vsp16s targets[2 * kPairs] = {}, w[2 * kPairs] = {};
    for (int j = 0; j < kLspHalf; j++) {
        targets[j] = target[half * kLspHalf + j];
        w[j] = weights[half * kLspHalf + j];
    }
    return firstSmallest(kNc1, [&](int i) {
        S32 sum = S32::splat(0);
        for (int pair = 0; pair < kPairs; pair++) {
            const S16 error = subSat(splatPair<S16>(targets + 2 * pair), S16::load(lspcb2_pairs.pairs[half][pair][i]));
            sum = addLimited(sum, dot2(product(error, splatPair<S16>(w + 2 * pair)), error));
        }
        return sum;
    });
}

// Lsp_get_tdist: no product is negative, so that the sum saturates as its partial sums do.
Vsp32s distanceOf(const LspPredictor<Vsp16s>& predictor, const Vsp16s* coded, const Vsp16s* target, const Vsp16s* weights) {
    constexpr int kLimit = 1 << 26;
    Vsp64s sum = 0;
    for (int j = 0; j < kLspOrder; j++) {
        const int error = (Sub_16s(coded[j], target[j]) * predictor.sum[j]) >> 15;
        const int product = weights[j] * error;
        sum += ((product < -kLimit ? -kLimit : product < kLimit ? product : kLimit - 1) >> 11) * error;
    }
    return Cnvrt_64s32s(2 * sum);
}

// The entries for one of the predictors, and the weighted distance of the LSFs that they give.
Choice choose(const LspPredictor<Vsp16s>& predictor, const Vsp16s* lsf, const Vsp16s* weights, const Vsp16s* previous) {
    Vsp16s target[kLspOrder], remainder[kLspOrder], coded[kLspOrder];
    ownLspExtract(predictor, lsf, previous, target);
    Choice choice{};
    choice.entry1 = nearest1(target);
    const Vsp16s* const row = lspcb1[choice.entry1];
    for (int j = 0; j < kLspOrder; j++) remainder[j] = Sub_16s(target[j], row[j]);
    choice.entryLow = nearest2(0, remainder, weights);
    choice.entryHigh = nearest2(1, remainder, weights);
    for (int j = 0; j < kLspOrder; j++)
        coded[j] = Add_16s(row[j], lspcb2[j < kLspHalf ? choice.entryLow : choice.entryHigh][j]);
    ownLspSpread(coded, 1, kLspHalf - 1, kGap1);
    ownLspSpread(coded, kLspHalf, kLspOrder - 1, kGap1);
    ownLspSpread(coded, 1, kLspOrder - 1, kGap2);

    choice.distance = distanceOf(predictor, coded, target, weights);
    return choice;
}

}  // namespace

VspStatus vspsLSPQuant_G729_16s(const Vsp16s* pLSP, Vsp16s* pPrevFreq, Vsp16s* pQLSP, Vsp16s* pIndex) {
    if (anyNull(pLSP, pPrevFreq, pQLSP, pIndex)) return vspStsNullPtrErr;
    Vsp16s lsf[kLspOrder], weights[kLspOrder];
    vspsLSPToLSF_G729_16s(pLSP, lsf);
    ownLspWeights(lsf, weights);
    Choice choice = choose(lspPredictors[0], lsf, weights, pPrevFreq);
    const Choice other = choose(lspPredictors[1], lsf, weights, pPrevFreq);
    const int mode = other.distance < choice.distance;
    if (mode == 1) choice = other;
    ownLspReconstruct(mode, choice.entry1, choice.entryLow, choice.entryHigh, pPrevFreq, lsf);
    vspsLSFToLSP_G729_16s(lsf, pQLSP);
    pIndex[0] = Vsp16s(mode << 7 | choice.entry1);
    pIndex[1] = Vsp16s(choice.entryLow << 5 | choice.entryHigh);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
