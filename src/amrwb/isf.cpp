// What the decoder and the encoder conclude from the frequencies: their stability, and a filter for the high band at 6.60
// kbit/s (3GPP TS 26.190 6.1 and 6.3.2.1; `Isf_Extrapolation`).
#include "amrwb/exports.h"
#include "arithmetic/split_32.h"
#include "core/checks.h"

namespace vsp::VSP_LEVEL {

static constexpr int kOrder = 16, kHighOrder = 20;
static constexpr int kKnown = kOrder - 1;                    // frequencies that rise
static constexpr int kDifferences = kKnown - 1, kAdded = 4;  // between them; frequencies that are extrapolated

VspStatus vspsISFStability_AMRWB_16s(const Vsp16s* pISF, const Vsp16s* pPrevISF, Vsp16s* pFactor) {
    if (anyNull(pISF, pPrevISF, pFactor)) return vspStsNullPtrErr;
    Vsp32s sum = 0;
    for (int i = 0; i < kKnown; i++) {
        const Vsp16s difference = Sub_16s(pISF[i], pPrevISF[i]);
        sum = mac_32s(sum, difference, difference);
    }
    const Vsp16s distance = Mul_16s(high_32s(shl_32s(sum, 8)), 26214);
    const Vsp16s factor = ShiftL_16s(Sub_16s(20480, distance), 1);
    *pFactor = factor < 0 ? Vsp16s(0) : factor;
    return vspStsNoErr;
}

// 1 less than the distance, 2 to 4, at which the differences between the frequencies repeat.
static int repetition(const Vsp16s* isf) {
    constexpr int kFirst = 2;  // of the differences that count for the mean
    constexpr Vsp16s kShare = 2731;
    Vsp16s differences[kDifferences], largest = 0;
    for (int i = 0; i < kDifferences; i++) {
        differences[i] = Sub_16s(isf[i + 1], isf[i]);
        largest = differences[i] > largest ? differences[i] : largest;
    }
    Vsp32s sum = 0;
    for (int i = kFirst; i < kDifferences; i++) sum = mac_32s(sum, differences[i], kShare);
    const int room = norm_16s(largest);
    const Vsp16s mean = shl_16s(round_32s(sum), room);
    for (Vsp16s& difference : differences) difference = Sub_16s(shl_16s(difference, room), mean);

    Vsp32s correlation[3] = {};
    for (int k = 0; k < 3; k++)
        for (int i = kDifferences / 2; i < kDifferences; i++) {
            const Vsp32s product = Mul2_16s32s(differences[i], differences[i - 2 - k]);
            correlation[k] = Add_32s(correlation[k], mulSplit_32s(product, product));
        }
    const int best = correlation[0] > correlation[1] ? 0 : 1;
    return 1 + (correlation[2] > correlation[best] ? 2 : best);
}

VspStatus vspsISFExtrapolate_AMRWB_16s(const Vsp16s* pISF, Vsp16s* pISP) {
    constexpr Vsp16s kHighest = 19456, kLeastOfTwo = 1280;  // 7600 Hz; of the differences of two neighbours
    constexpr Vsp16s kRate = 26214;                         // 12.8 / 16, Q15
    if (anyNull(pISF, pISP)) return vspStsNullPtrErr;
    Vsp16s isf[kHighOrder];
    for (int i = 0; i < kKnown; i++) isf[i] = pISF[i];
    isf[kHighOrder - 1] = pISF[kOrder - 1];
    const int back = repetition(isf);
    for (int i = kKnown; i < kKnown + kAdded; i++)
        isf[i] = Add_16s(isf[i - 1], Sub_16s(isf[i - 1 - back], isf[i - 2 - back]));

    // The new differences are scaled so that they end at an estimate by the lowest frequencies.
    const Vsp16s estimate = Add_16s(Mul_16s(Sub_16s(isf[2], Add_16s(isf[4], isf[3])), 5461), 20390);
    const Vsp16s wanted = Sub_16s(estimate < kHighest ? estimate : kHighest, isf[kKnown - 1]);
    const Vsp16s reached = Sub_16s(isf[kKnown + kAdded - 1], isf[kKnown - 1]);
    const int wantedRoom = norm_16s(wanted) - 1, reachedRoom = norm_16s(reached);
    const Vsp16s ratio = Div_16s(shl_16s(wanted, wantedRoom), shl_16s(reached, reachedRoom));
    Vsp16s differences[kAdded];
    for (int i = 0; i < kAdded; i++) {
        const Vsp16s difference = Sub_16s(isf[kKnown + i], isf[kKnown + i - 1]);
        differences[i] = shl_16s(Mul_16s(difference, ratio), reachedRoom - wantedRoom);
    }
    for (int i = 1; i < kAdded; i++) {
        Vsp16s &before = differences[i - 1], &after = differences[i];
        if (Add_16s(before, after) >= kLeastOfTwo) continue;
        if (after > before)
            before = Sub_16s(kLeastOfTwo, after);
        else
            after = Sub_16s(kLeastOfTwo, before);
    }
    for (int i = 0; i < kAdded; i++) isf[kKnown + i] = Add_16s(isf[kKnown + i - 1], differences[i]);
    for (int i = 0; i < kKnown + kAdded; i++) isf[i] = Mul_16s(isf[i], kRate);
    return vspsISFToISP_AMRWB_16s(isf, kHighOrder, pISP);
}

}  // namespace vsp::VSP_LEVEL
