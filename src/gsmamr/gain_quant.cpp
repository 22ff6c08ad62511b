// The quantisation of the gains (`gainQuant`; 3GPP TS 26.090, 5.8).
#include "gsmamr/gain_quant.h"

#include "core/checks.h"
#include "gsmamr/exports.h"
#include "gsmamr/gain_search.h"
#include "gsmamr/gain_tables.h"
#include "vector/map.h"

namespace vsp::VSP_LEVEL {

namespace {

template <int N>
int searchJointly(const GainTable<N>& table, const Vsp32s (&c)[5], Vsp16s gcode0, Vsp16s limit) {
    const GainColumns columns[1] = {{table.pitch, table.code, table.largestPitch, table.largestCode}};
    if (limit >= table.largestPitch && gainSumsFit(columns, c, {gcode0})) return searchGains(columns, c, {gcode0}, N);
    Vsp32s least = kMax32;
    int best = 0;
    for (int i = 0; i < N; i++) {
        const Vsp16s p = table.pitch[i], g = Mul_16s(table.code[i], gcode0);
        if (p > limit) continue;
        Vsp32s sum = mulSplit_32s16s(c[0], Mul_16s(p, p));
        sum = Add_32s(sum, mulSplit_32s16s(c[1], p));
        sum = Add_32s(sum, mulSplit_32s16s(c[2], Mul_16s(g, g)));
        sum = Add_32s(sum, mulSplit_32s16s(c[3], g));
        sum = Add_32s(sum, mulSplit_32s16s(c[4], Mul_16s(g, p)));
        if (sum < least) {
            least = sum;
            best = i;
        }
    }
    return best;
}

// Both gains at once (`Qua_gain`).
template <int N>
int quantiseJointly(const GainTable<N>& table, const GainSignals& signals, Vsp32s mode, Vsp16s limit, Vsp16s* pred,
                    Vsp16s* gain) {
    const PowerOfTwo predicted = ownPredictCodeGain(pred, signals.code, mode);
    Vsp16s scaledY2[kL_subfr];
    const GainTerms terms = gainTerms(signals.target, signals.y1, signals.y2, signals.coeff, 1, scaledY2);
    int exponents[5];
    scaleExponents(terms, predicted.exponent - 11, exponents);
    Vsp32s c[5];
    alignTerms(terms.term, exponents, 5, c);
    const int best = searchJointly(table, c, mantissaOf(predicted), limit);
    gain[0] = table.pitch[best];
    gain[1] = ownCorrectedGain(table.code[best], predicted);
    ownUpdatePredictor(pred, {table.decibels[best], table.log2[best]});
    return best;
}

// <target, y2> / <y2, y2> (`G_code`), Q1
Vsp16s codeGain122(const Vsp16s* target2, const Vsp16s* y2) {
    Vsp16s half[kL_subfr];
    map(
        kL_subfr, [](auto a) { return shr(a, 1); }, half, y2);
    const Scaled xy = normalised(saturatingSum(1, target2, half));
    if (xy.fraction <= 0) return 0;
    const Scaled yy = normalised(saturatingSum(0, half, half));
    return shl_16s(shr_16s(Div_16s(Vsp16s(xy.fraction >> 1), yy.fraction), xy.exponent + 5 - yy.exponent), 1);
}

// `q_gain_code`
int quantiseCode122(const GainSignals& signals, Vsp16s* pred, Vsp16s* gain) {
    const Vsp16s predicted = ownPredictedGain122(ownPredictCodeGain(pred, signals.code, kMode122));
    const Vsp16s wanted = Vsp16s(codeGain122(signals.target2, signals.y2) >> 1);
    const auto offered = [&](int i) { return Mul_16s(predicted, qua_gain_code[0][i]); };
    int best = 0;
    Vsp16s least = Abs_16s(Sub_16s(wanted, offered(0)));
    for (int i = 1; i < 32; i++) {
        const Vsp16s distance = Abs_16s(Sub_16s(wanted, offered(i)));
        if (distance < least) {
            least = distance;
            best = i;
        }
    }
    gain[1] = shl_16s(offered(best), 1);
    ownUpdatePredictor(pred, {qua_gain_code[2][best], qua_gain_code[1][best]});
    return best;
}

}  // namespace

VspStatus vspsGainQuant_GSMAMR_16s(const Vsp16s* pResidual, const Vsp16s* pExc, const Vsp16s* pCode, const Vsp16s* pTarget,
                                   const Vsp16s* pTarget2, const Vsp16s* pY1, const Vsp16s* pY2, const Vsp16s* pCoeff,
                                   Vsp32s mode, Vsp32s subframe, Vsp16s limit, Vsp16s* pPred, Vsp16s* pMem, Vsp16s* pGain,
                                   Vsp16s* pGainPrev, Vsp16s* pIndex) {
    constexpr Vsp16s kLowestLimit = 6556;
    if (anyNull(pCode, pY2, pPred, pGain)) return vspStsNullPtrErr;
    if (!isSpeechMode(mode) || !isSubframe(subframe) || limit < kLowestLimit) return vspStsRangeErr;
    const bool pairs = mode == kMode475, prepares = pairs && subframe % 2 == 0, alone = mode == kMode795;
    if (alone && anyNull(pResidual, pExc)) return vspStsNullPtrErr;
    if (mode != kMode122 && anyNull(pTarget, pY1, pCoeff)) return vspStsNullPtrErr;
    if ((pairs || alone || mode == kMode122) && anyNull(pTarget2)) return vspStsNullPtrErr;
    if ((pairs || alone) && anyNull(pMem)) return vspStsNullPtrErr;
    if (pairs && !prepares && anyNull(pGainPrev)) return vspStsNullPtrErr;
    if (!prepares && anyNull(pIndex)) return vspStsNullPtrErr;

    const GainSignals signals{pResidual, pExc, pCode, pTarget, pTarget2, pY1, pY2, pCoeff};
    const GainMemory mem{pMem};
    switch (mode) {
        case kMode475:
            if (prepares)
                ownPrepareGains475(signals, pPred, mem, pGain);
            else
                *pIndex = Vsp16s(ownQuantiseGains475(signals, limit, pPred, mem, pGain, pGainPrev));
            break;
        case kMode515:
        case kMode590: *pIndex = Vsp16s(quantiseJointly(gain_lowrates, signals, mode, limit, pPred, pGain)); break;
        case kMode795: ownQuantiseGains795(signals, limit, pPred, mem, pGain, pIndex); break;
        case kMode122: *pIndex = Vsp16s(quantiseCode122(signals, pPred, pGain)); break;
        default: *pIndex = Vsp16s(quantiseJointly(gain_highrates, signals, mode, limit, pPred, pGain));
    }
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
