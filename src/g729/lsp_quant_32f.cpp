// Quantiser and decoder of the line spectral pairs in floating point (G.729 3.2.4 and Annex C).
#include "arithmetic/elementary.h"
#include "core/checks.h"
#include "g729/exports.h"
#include "g729/lsp_tables.h"
#include "g729/nearest.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr Vsp32f kPi = 3.14159265f;
constexpr Vsp32f kGap1 = 0.0012f, kGap2 = 0.0006f;

struct Choice {
    int entry1, entryLow, entryHigh;
    Vsp32f distance;
};

void weigh(const Vsp32f* lsf, Vsp32f* weights) {
    Vsp32f distance[kLspOrder];
    distance[0] = lsf[1] - (0.04f * kPi + 1);
    for (int i = 1; i < kLspOrder - 1; i++) distance[i] = lsf[i + 1] - lsf[i - 1] - 1;
    distance[kLspOrder - 1] = (0.92f * kPi - 1) - lsf[kLspOrder - 2];
    for (int i = 0; i < kLspOrder; i++) weights[i] = distance[i] > 0 ? 1 : 10 * distance[i] * distance[i] + 1;
    weights[4] *= 1.2f;
    weights[5] *= 1.2f;
}

void extract(const LspPredictor<Vsp32f>& predictor, const Vsp32f* lsf, const Vsp32f* previous, Vsp32f* coded) {
    for (int j = 0; j < kLspOrder; j++) {
        Vsp32f remainder = lsf[j];
        for (int k = 0; k < kMaTaps; k++) remainder -= previous[k * kLspOrder + j] * predictor.fg[k][j];
        coded[j] = remainder * predictor.sumInverse[j];
    }
}

void remember(const Vsp32f* coded, Vsp32f* previous) {
    for (int i = kMaTaps * kLspOrder - 1; i >= kLspOrder; i--) previous[i] = previous[i - kLspOrder];
    for (int j = 0; j < kLspOrder; j++) previous[j] = coded[j];
}

void spread(Vsp32f* lsf, int first, int last, Vsp32f gap) {
    for (int j = first; j <= last; j++) {
        const Vsp32f half = (lsf[j - 1] - lsf[j] + gap) * 0.5f;
        if (!(half > 0)) continue;
        lsf[j - 1] -= half;
        lsf[j] += half;
    }
}

void stabilise(Vsp32f* lsf) {
    for (int j = 0; j < kLspOrder - 1; j++)
        if (lsf[j + 1] < lsf[j]) {
            const Vsp32f larger = lsf[j];
            lsf[j] = lsf[j + 1];
            lsf[j + 1] = larger;
        }
    if (lsf[0] < 0.005f) lsf[0] = 0.005f;
    for (int j = 0; j < kLspOrder - 1; j++)
        if (lsf[j + 1] - lsf[j] < 0.0392f) lsf[j + 1] = lsf[j] + 0.0392f;
    if (lsf[kLspOrder - 1] > 3.135f) lsf[kLspOrder - 1] = 3.135f;
}

void add(const Vsp32f* row, int entryLow, int entryHigh, Vsp32f* coded) {
    for (int j = 0; j < kLspOrder; j++) coded[j] = row[j] + lspcb2_32f[j < kLspHalf ? entryLow : entryHigh][j];
}

void reconstruct(int mode, int entry1, int entryLow, int entryHigh, Vsp32f* previous, Vsp32f* lsf) {
    const LspPredictor<Vsp32f>& predictor = lspPredictors_32f[mode];
    Vsp32f coded[kLspOrder];
    add(lspcb1_32f[entry1], entryLow, entryHigh, coded);
    spread(coded, 1, kLspOrder - 1, kGap1);
    spread(coded, 1, kLspOrder - 1, kGap2);
    for (int j = 0; j < kLspOrder; j++) {
        lsf[j] = coded[j] * predictor.sum[j];
        for (int k = 0; k < kMaTaps; k++) lsf[j] += previous[k * kLspOrder + j] * predictor.fg[k][j];
    }
    remember(coded, previous);
    stabilise(lsf);
}

// Adds the weighted squared errors of one element of all entries.
template <int entries>
VSP_INLINE void addErrors(const Vsp32f (&column)[entries], Vsp32f target, Vsp32f weight, Vsp32f* distances) {
    for (int i = 0; i < entries; i++) {
        const Vsp32f error = target - column[i];
        distances[i] += weight * error * error;
    }
}

// The bits of floats that are not negative are in the order of their values.
int firstSmallestOf(const Vsp32f* distances, int entries) {
    return firstSmallest(entries, [distances](int i) {
        return S32{S32::load(reinterpret_cast<const Vsp32s*>(distances + i)).v & S32::splat(0x7FFFFFFF).v};
    });
}

Choice choose(const LspPredictor<Vsp32f>& predictor, const Vsp32f* lsf, const Vsp32f* weights, const Vsp32f* previous) {
    Vsp32f target[kLspOrder], coded[kLspOrder];
    extract(predictor, lsf, previous, target);
    Choice choice{};
    Vsp32f first[kNc0] = {}, low[kNc1] = {}, high[kNc1] = {};
    for (int j = 0; j < kLspOrder; j++) addErrors(lspcb1_columns.columns[j], target[j], 1, first);
    choice.entry1 = firstSmallestOf(first, kNc0);
    const Vsp32f* const row = lspcb1_32f[choice.entry1];
    for (int j = 0; j < kLspOrder; j++)
        addErrors(lspcb2_columns.columns[j], target[j] - row[j], weights[j], j < kLspHalf ? low : high);
    choice.entryLow = firstSmallestOf(low, kNc1);
    choice.entryHigh = firstSmallestOf(high, kNc1);
    add(row, choice.entryLow, choice.entryHigh, coded);
    spread(coded, 1, kLspHalf - 1, kGap1);
    spread(coded, kLspHalf, kLspOrder - 1, kGap1);
    spread(coded, 1, kLspOrder - 1, kGap2);
    for (int j = 0; j < kLspOrder; j++) {
        const Vsp32f error = (coded[j] - target[j]) * predictor.sum[j];
        choice.distance += weights[j] * error * error;
    }
    return choice;
}

}  // namespace

VspStatus vspsLSPQuant_G729_32f(const Vsp32f* pLSP, Vsp32f* pPrevFreq, Vsp32f* pQLSP, Vsp32s* pIndex) {
    if (anyNull(pLSP, pPrevFreq, pQLSP, pIndex)) return vspStsNullPtrErr;
    Vsp32f lsf[kLspOrder], weights[kLspOrder];
    for (int j = 0; j < kLspOrder; j++) lsf[j] = acos_32f(pLSP[j]);
    weigh(lsf, weights);
    Choice choice = choose(lspPredictors_32f[0], lsf, weights, pPrevFreq);
    const Choice other = choose(lspPredictors_32f[1], lsf, weights, pPrevFreq);
    const int mode = other.distance < choice.distance;
    if (mode == 1) choice = other;
    reconstruct(mode, choice.entry1, choice.entryLow, choice.entryHigh, pPrevFreq, lsf);
    for (int j = 0; j < kLspOrder; j++) pQLSP[j] = cos_32f(lsf[j]);
    pIndex[0] = mode << 7 | choice.entry1;
    pIndex[1] = choice.entryLow << 5 | choice.entryHigh;
    return vspStsNoErr;
}

VspStatus vspsLSFDecode_G729_32f(const Vsp32s* pIndex, Vsp32f* pPrevFreq, Vsp32f* pLSF) {
    if (anyNull(pIndex, pPrevFreq, pLSF)) return vspStsNullPtrErr;
    reconstruct(pIndex[0] >> 7 & 1, pIndex[0] & 127, pIndex[1] >> 5 & 31, pIndex[1] & 31, pPrevFreq, pLSF);
    return vspStsNoErr;
}

VspStatus vspsLSFDecodeErased_G729_32f(Vsp32s mode, const Vsp32f* pPrevLSF, Vsp32f* pPrevFreq) {
    if (anyNull(pPrevLSF, pPrevFreq)) return vspStsNullPtrErr;
    if (mode != 0 && mode != 1) return vspStsCodeRangeErr;
    Vsp32f coded[kLspOrder];
    extract(lspPredictors_32f[mode], pPrevLSF, pPrevFreq, coded);
    remember(coded, pPrevFreq);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
