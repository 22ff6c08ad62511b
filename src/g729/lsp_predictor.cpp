#include "g729/lsp_predictor.h"

#include "arithmetic/standard_ops.h"

namespace vsp::VSP_LEVEL {

void ownLspWeights(const Vsp16s* lsf, Vsp16s* weights) {
    constexpr Vsp16s kOne = 8192, kFirst = 1029, kLast = 23677;  // Q13 of 1, 0.04 pi and 0.92 pi
    Vsp16s distance[kLspOrder];
    distance[0] = Sub_16s(lsf[1], kFirst + kOne);
    for (int i = 1; i < kLspOrder - 1; i++) distance[i] = Sub_16s(Sub_16s(lsf[i + 1], lsf[i - 1]), kOne);
    distance[kLspOrder - 1] = Sub_16s(kLast - kOne, lsf[kLspOrder - 2]);

    Vsp16s largest = 0;
    for (int i = 0; i < kLspOrder; i++) {
        Vsp16s excess = 0;  // 10 times the square, Q11
        if (distance[i] <= 0) {
            const Vsp16s square = high_32s(Mul4_32s(Mul2_16s32s(distance[i], distance[i])));
            excess = high_32s(Mul4_32s(Mul2_16s32s(square, 20480)));
        }
        weights[i] = Add_16s(excess, 2048);
        if (i == 4 || i == 5) weights[i] = high_32s(Mul2_32s(Mul2_16s32s(weights[i], 19661)));  // 1.2
        if (weights[i] > largest) largest = weights[i];
    }
    const int shift = norm_16s(largest);
    for (int i = 0; i < kLspOrder; i++) weights[i] = ShiftL_16s(weights[i], shift);
}

void ownLspSpread(Vsp16s* lsf, int first, int last, Vsp16s gap) {
    for (int j = first; j <= last; j++) {
        const Vsp16s half = Vsp16s(Add_16s(Sub_16s(lsf[j - 1], lsf[j]), gap) >> 1);
        if (half <= 0) continue;
        lsf[j - 1] = Sub_16s(lsf[j - 1], half);
        lsf[j] = Add_16s(lsf[j], half);
    }
}

void ownLspCompose(const LspPredictor<Vsp16s>& predictor, const Vsp16s* coded, const Vsp16s* previous, Vsp16s* lsf) {
    for (int j = 0; j < kLspOrder; j++) {
        int sum = coded[j] * predictor.sum[j];  // the weights add up to less than 1, so that no partial sum saturates
        for (int k = 0; k < kMaTaps; k++) sum += previous[k * kLspOrder + j] * predictor.fg[k][j];
        lsf[j] = Vsp16s(sum >> 15);
    }
}

void ownLspExtract(const LspPredictor<Vsp16s>& predictor, const Vsp16s* lsf, const Vsp16s* previous, Vsp16s* coded) {
    for (int j = 0; j < kLspOrder; j++) {
        Vsp32s sum = lsf[j] * 0x10000;
        for (int k = 0; k < kMaTaps; k++) sum = msu_32s(sum, previous[k * kLspOrder + j], predictor.fg[k][j]);
        coded[j] = high_32s(shl_32s(Mul2_16s32s(high_32s(sum), predictor.sumInverse[j]), 3));
    }
}

void ownLspRemember(const Vsp16s* coded, Vsp16s* previous) {
    for (int i = kMaTaps * kLspOrder - 1; i >= kLspOrder; i--) previous[i] = previous[i - kLspOrder];
    for (int j = 0; j < kLspOrder; j++) previous[j] = coded[j];
}

void ownLspStabilise(Vsp16s* lsf) {
    constexpr Vsp16s kLowest = 40, kDistance = 321, kHighest = 25681;
    for (int j = 0; j < kLspOrder - 1; j++)
        if (lsf[j + 1] < lsf[j]) {
            const Vsp16s larger = lsf[j];
            lsf[j] = lsf[j + 1];
            lsf[j + 1] = larger;
        }
    if (lsf[0] < kLowest) lsf[0] = kLowest;
    for (int j = 0; j < kLspOrder - 1; j++)
        if (lsf[j + 1] - lsf[j] < kDistance) lsf[j + 1] = Add_16s(lsf[j], kDistance);
    if (lsf[kLspOrder - 1] > kHighest) lsf[kLspOrder - 1] = kHighest;
}

void ownLspReconstruct(int mode, int entry1, int entryLow, int entryHigh, Vsp16s* previous, Vsp16s* lsf) {
    Vsp16s coded[kLspOrder];
    for (int j = 0; j < kLspOrder; j++)
        coded[j] = Add_16s(lspcb1[entry1][j], lspcb2[j < kLspHalf ? entryLow : entryHigh][j]);
    ownLspSpread(coded, 1, kLspOrder - 1, kGap1);
    ownLspSpread(coded, 1, kLspOrder - 1, kGap2);
    ownLspCompose(lspPredictors[mode], coded, previous, lsf);
    ownLspRemember(coded, previous);
    ownLspStabilise(lsf);
}

}  // namespace vsp::VSP_LEVEL
