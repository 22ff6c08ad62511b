// Quantisation of the gains in floating point (G.729 3.9.2 and Annex C).
#include "arithmetic/elementary.h"
#include "core/checks.h"
#include "g729/constants.h"
#include "g729/exports.h"
#include "g729/gain_tables.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kCandidates1 = 4, kCandidates2 = 8;
constexpr Vsp32f kSmall = 0.01f;
constexpr Vsp32f kInverseCoef = -0.032623f;
constexpr Vsp32f kTamedPitch = 0.94f, kTamedLimit = 0.9999f;

Vsp32f product(const Vsp32f* a, const Vsp32f* b) {
    Vsp32f sum = 0;
    vspsDotProd_G729A_32f(a, b, kL_subfr, &sum);
    return sum;
}

Vsp32f predictGain(const Vsp32f* code, const Vsp32f* pastEnergy) {
    Vsp32f predicted = 36;
    for (int i = 0; i < kEnergies; i++) predicted += pred_32f[i] * pastEnergy[i];
    return exp10_32f((predicted - 10 * log10_32f((kSmall + product(code, code)) / kL_subfr)) / 20);
}

// How many thresholds, times the predicted gain, a value is above; below for a predicted gain that is not positive.
int passed(Vsp32f value, const Vsp32f* thresholds, int count, Vsp32f predicted) {
    int n = 0;
    while (n < count && (predicted > 0 ? value > thresholds[n] * predicted : value < thresholds[n] * predicted)) n++;
    return n;
}

}  // namespace

VspStatus vspsGainQuant_G729_32f(const Vsp32f* pTarget, const Vsp32f* pFilteredAdaptive, const Vsp32f* pFilteredFixed,
                                 const Vsp32f* pCode, Vsp32s tameFlag, Vsp32f* pPastEnergy, Vsp32f* pGain, Vsp32s* pIndex) {
    if (anyNull(pTarget, pFilteredAdaptive, pFilteredFixed, pCode, pPastEnergy, pGain, pIndex)) return vspStsNullPtrErr;
    if (tameFlag != 0 && tameFlag != 1) return vspStsRangeErr;
    const bool tame = tameFlag != 0;
    const GainCodebooks_32f& t = gainCodebooks_32f;

    const Vsp32f g0 = kSmall + product(pFilteredAdaptive, pFilteredAdaptive);
    const Vsp32f g1 = kSmall - 2 * product(pTarget, pFilteredAdaptive);
    const Vsp32f g2 = kSmall + product(pFilteredFixed, pFilteredFixed);
    const Vsp32f g3 = -2 * (kSmall + product(pTarget, pFilteredFixed));
    const Vsp32f g4 = 2 * (kSmall + product(pFilteredAdaptive, pFilteredFixed));
    const Vsp32f predicted = predictGain(pCode, pPastEnergy);

    const Vsp32f inverse = -1 / (4 * g0 * g2 - g4 * g4);
    Vsp32f pitch = (2 * g2 * g1 - g3 * g4) * inverse;
    const Vsp32f code = (2 * g0 * g3 - g1 * g4) * inverse;
    if (tame && pitch > kTamedPitch) pitch = kTamedPitch;

    const Vsp32f part = t.coef[0][0] * pitch;
    const Vsp32f x = (code - (part + t.coef[1][1]) * predicted) * kInverseCoef;
    const Vsp32f y = (t.coef[1][0] * (part - t.coef[0][1]) * predicted - t.coef[0][0] * code) * kInverseCoef;
    const int first1 = passed(y, t.thr1, 8 - kCandidates1, predicted);
    const int first2 = passed(x, t.thr2, 16 - kCandidates2, predicted);

    int entry1 = first1, entry2 = first2;
    Vsp32f smallest = 1e30f;
    for (int i = first1; i < first1 + kCandidates1; i++)
        for (int j = first2; j < first2 + kCandidates2; j++) {
            const Vsp32f p = t.gbk1[i][0] + t.gbk2[j][0];
            const Vsp32f c = predicted * (t.gbk1[i][1] + t.gbk2[j][1]);
            const Vsp32f error = p * p * g0 + p * g1 + c * c * g2 + c * g3 + p * c * g4;
            if ((tame && !(p < kTamedLimit)) || !(error < smallest)) continue;
            smallest = error;
            entry1 = i;
            entry2 = j;
        }

    const Vsp32f factor = t.gbk1[entry1][1] + t.gbk2[entry2][1];
    pGain[0] = t.gbk1[entry1][0] + t.gbk2[entry2][0];
    pGain[1] = predicted * factor;
    *pIndex = gainCodebooks.map1[entry1] * 16 + gainCodebooks.map2[entry2];
    for (int i = kEnergies - 1; i > 0; i--) pPastEnergy[i] = pPastEnergy[i - 1];
    pPastEnergy[0] = 20 * log10_32f(factor);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
