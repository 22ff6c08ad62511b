#include "g729/lsp_predictor.h"

#include "arithmetic/standard_ops.h"

namespace vsp::VSP_LEVEL {

// 8 * a >> 16 of an a that is not negative, saturated.
VSP_INLINE int eighthOfHigh(int a) { return (a < 1 << 28 ? a : (1 << 28) - 1) >> 13; }

void ownLspWeights(const Vsp16s* lsf, Vsp16s* weights) {
    constexpr Vsp16s kOne = 8192, kFirst = 1029, kLast = 23677;  // Q13 of 1, 0.04 pi and 0.92 pi
    Vsp16s distance[kLspOrder];
    distance[0] = Sub_16s(lsf[1], kFirst + kOne);
    for (int i = 1; i < kLspOrder - 1; i++) distance[i] = Sub_16s(Sub_16s(lsf[i + 1], lsf[i - 1]), kOne);
    distance[kLspOrder - 1] = Sub_16s(kLast - kOne, lsf[kLspOrder - 2]);

    int values[kLspOrder], largest = 0;
    for (int i = 0; i < kLspOrder; i++) {  // 1 and, where frequencies are close, 10 times the square, Q11
        const int close = distance[i] < 0 ? distance[i] : 0;
        const int weight = eighthOfHigh(eighthOfHigh(close * close) * 20480) + 2048;
        values[i] = weight < kMax16 ? weight : kMax16;
    }
    for (int i = 4; i < 6; i++) values[i] = Mul2_32s(Mul2_16s32s(Vsp16s(values[i]), 19661)) >> 16;  // 1.2
    for (const int value : values) largest = value > largest ? value : largest;
    const int shift = norm_16s(Vsp16s(largest));
    for (int i = 0; i < kLspOrder; i++) weights[i] = Vsp16s(values[i] << shift);
}

void ownLspSpread(Vsp16s* lsf, int first, int last, Vsp16s gap) {
    int before = lsf[first - 1];
    for (int j = first; j <= last; j++) {
        const int here = lsf[j], middle = (before + here + gap) >> 1, moved = here > middle ? here : middle;
        lsf[j - 1] = Vsp16s(before + here - moved);
        before = moved;
    }
    lsf[last] = Vsp16s(before);
}

void ownLspCompose(const LspPredictor<Vsp16s>& predictor, const Vsp16s* coded, const Vsp16s* previous, Vsp16s* lsf) {
    for (int j = 0; j < kLspOrder; j++) {
        int sum = coded[j] * predictor.sum[j];  // the weights add up to less than 1, so that no partial sum saturates
        for (int k = 0; k < kMaTaps; k++) sum += previous[k * kLspOrder + j] * predictor.fg[k][j];
        lsf[j] = Vsp16s(sum >> 15);
    }
}

// high(shl_32s(2 * a * b, 3))
VSP_INLINE Vsp16s extracted(Vsp16s a, Vsp16s b) {
    constexpr int kLimit = 1 << 27;
    const int product = a * b;
    return Vsp16s((product < -kLimit ? -kLimit : product < kLimit ? product : kLimit - 1) >> 12);
}

void ownLspExtract(const LspPredictor<Vsp16s>& predictor, const Vsp16s* lsf, const Vsp16s* previous, Vsp16s* coded) {
    int signs = 0;
    for (int j = 0; j < kLspOrder; j++) signs |= lsf[j];
    for (int i = 0; i < kMaTaps * kLspOrder; i++) signs |= previous[i];
    if (signs >= 0) {  // then nothing saturates
        Vsp32s sums[kLspOrder];
        for (int j = 0; j < kLspOrder; j++) sums[j] = lsf[j] << 15;
        for (int k = 0; k < kMaTaps; k++)
            for (int j = 0; j < kLspOrder; j++) sums[j] -= previous[k * kLspOrder + j] * predictor.fg[k][j];
        for (int j = 0; j < kLspOrder; j++) coded[j] = extracted(Vsp16s(sums[j] >> 15), predictor.sumInverse[j]);
        return;
    }
    for (int j = 0; j < kLspOrder; j++) {
        Vsp32s sum = lsf[j] * 0x10000;
        for (int k = 0; k < kMaTaps; k++) sum = msu_32s(sum, previous[k * kLspOrder + j], predictor.fg[k][j]);
        coded[j] = extracted(high_32s(sum), predictor.sumInverse[j]);
    }
}

void ownLspRemember(const Vsp16s* coded, Vsp16s* previous) {
    Vsp16s kept[(kMaTaps - 1) * kLspOrder];
    for (int i = 0; i < (kMaTaps - 1) * kLspOrder; i++) kept[i] = previous[i];
    for (int i = 0; i < (kMaTaps - 1) * kLspOrder; i++) previous[kLspOrder + i] = kept[i];
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
