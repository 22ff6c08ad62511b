// The gains from their indices (`d_gain_pitch`, `d_gain_code`, `Dec_gain`).
#include "core/checks.h"
#include "gsmamr/code_gain_prediction.h"
#include "gsmamr/exports.h"
#include "gsmamr/gain_tables.h"
#include "gsmamr/pitch_tables.h"

namespace vsp::VSP_LEVEL {

namespace {

int indexBits(Vsp32s mode) {
    switch (mode) {
        case kMode475: return 8;
        case kMode515:
        case kMode590: return 6;
        case kMode795:
        case kMode122: return 5;
        default: return 7;
    }
}

template <int N>
void decodeJointly(const GainTable<N>& table, int index, PowerOfTwo predicted, Vsp16s* pred, Vsp16s* gain) {
    gain[0] = table.pitch[index];
    gain[1] = ownCorrectedGain(table.code[index], predicted);
    ownUpdatePredictor(pred, {table.decibels[index], table.log2[index]});
}

}  // namespace

VspStatus vspsPitchGainDecode_GSMAMR_16s(Vsp32s mode, Vsp16s index, Vsp16s* pGain) {
    if (anyNull(pGain)) return vspStsNullPtrErr;
    if ((mode != kMode795 && mode != kMode122) || index < 0 || index > 15) return vspStsRangeErr;
    *pGain = mode == kMode122 ? Vsp16s(qua_gain_pitch[index] & ~3) : qua_gain_pitch[index];
    return vspStsNoErr;
}

VspStatus vspsGainDecode_GSMAMR_16s(const Vsp16s* pCode, Vsp32s mode, Vsp32s subframe, Vsp16s index, Vsp16s* pPred,
                                    Vsp16s* pGain) {
    if (anyNull(pCode, pPred, pGain)) return vspStsNullPtrErr;
    if (!isSpeechMode(mode) || !isSubframe(subframe)) return vspStsRangeErr;
    if (index < 0 || index >> indexBits(mode) != 0) return vspStsRangeErr;
    const PowerOfTwo predicted = ownPredictCodeGain(pPred, pCode, mode);
    switch (mode) {
        case kMode475: {
            const int odd = subframe & 1;
            const Vsp16s code = gain_MR475[2 * odd + 1][index];
            pGain[0] = gain_MR475[2 * odd][index];
            pGain[1] = ownCorrectedGain(code, predicted);
            ownUpdatePredictor(pPred, ownCorrectionOfCode(code));
            break;
        }
        case kMode515:
        case kMode590: decodeJointly(gain_lowrates, index, predicted, pPred, pGain); break;
        case kMode795:
        case kMode122: {
            const Vsp16s correction = qua_gain_code[0][index];
            pGain[1] = mode == kMode795 ? ownCorrectedGain(correction, predicted, 9)
                                        : shl_16s(Mul_16s(ownPredictedGain122(predicted), correction), 1);
            ownUpdatePredictor(pPred, {qua_gain_code[2][index], qua_gain_code[1][index]});
            break;
        }
        default: decodeJointly(gain_highrates, index, predicted, pPred, pGain);
    }
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
