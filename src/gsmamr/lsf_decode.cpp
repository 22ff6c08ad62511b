// The LSFs from their indices, or from those before (`D_plsf_3`, `D_plsf_5`).
#include "core/checks.h"
#include "gsmamr/exports.h"
#include "gsmamr/lsf_quant.h"

namespace vsp::VSP_LEVEL {

namespace {

bool fits(const Vsp16s* index, Vsp32s mode) {
    struct Bits {
        int count;
        Vsp8u bits[5];
    };
    const Bits bits = mode == kMode122                       ? Bits{5, {7, 8, 9, 8, 6}}
                      : mode == kModeSID                     ? Bits{4, {3, 8, 9, 9}}
                      : mode == kMode795                     ? Bits{3, {9, 9, 9}}
                      : mode == kMode475 || mode == kMode515 ? Bits{3, {8, 8, 7}}
                                                             : Bits{3, {8, 9, 9}};
    for (int i = 0; i < bits.count; i++)
        if (index[i] < 0 || index[i] >> bits.bits[i] != 0) return false;
    return true;
}

void copy(const Vsp16s* from, Vsp16s* to) {
    for (int i = 0; i < kLsfOrder; i++) to[i] = from[i];
}

}  // namespace

void ownLsfResidual(const Vsp16s* index, Vsp32s mode, Vsp16s* residual) {
    if (mode == kMode122) {
        const auto pairs = [&](int pair, const Vsp16s* codebook, int size, int entry, int sign) {
            for (int vector = 0; vector < 2; vector++)
                for (int i = 0; i < 2; i++) {
                    const Vsp16s value = codebook[(2 * vector + i) * size + entry];
                    residual[kLsfOrder * vector + 2 * pair + i] = Vsp16s(sign * value);
                }
        };
        pairs(0, svq5_cb1[0], 128, index[0], 1);
        pairs(1, svq5_cb2[0], 256, index[1], 1);
        pairs(2, svq5_cb3[0], 256, index[2] >> 1, (index[2] & 1) != 0 ? -1 : 1);
        pairs(3, svq5_cb4[0], 256, index[3], 1);
        pairs(4, svq5_cb5[0], 64, index[4], 1);
        return;
    }
    const ThreeCodebooks codebooks = threeCodebooks(mode);
    for (int i = 0; i < 3; i++) residual[i] = codebooks.first[i * codebooks.size1 + index[0]];
    for (int i = 0; i < 3; i++) residual[3 + i] = codebooks.second[i * codebooks.stride2 + codebooks.step2 * index[1]];
    for (int i = 0; i < 4; i++) residual[6 + i] = codebooks.third[i * codebooks.size3 + index[2]];
}

VspStatus vspsLSFDecode_GSMAMR_16s(const Vsp16s* pIndex, Vsp32s mode, Vsp16s* pPrevRes, Vsp16s* pPrevLSF, Vsp16s* pLSP) {
    if (anyNull(pIndex, pPrevRes, pPrevLSF, pLSP)) return vspStsNullPtrErr;
    if (!isMode(mode)) return vspStsRangeErr;
    if (!fits(pIndex, mode)) return vspStsRangeErr;
    Vsp16s predicted[kLsfOrder], residual[2 * kLsfOrder], lsf[kLsfOrder];
    if (mode == kModeSID)
        predictLsfOfSid(pIndex[0], predicted);
    else
        predictLsf(mode, pPrevRes, predicted);
    ownLsfResidual(pIndex + (mode == kModeSID), mode, residual);
    const int vectors = mode == kMode122 ? 2 : 1;
    for (int v = 0; v < vectors; v++) {
        for (int i = 0; i < kLsfOrder; i++) lsf[i] = Add_16s(residual[kLsfOrder * v + i], predicted[i]);
        reorderLsf(lsf);
        vspsLSFToLSP_GSMAMR_16s(lsf, pLSP + kLsfOrder * v);
    }
    copy(residual + kLsfOrder * (vectors - 1), pPrevRes);
    copy(lsf, pPrevLSF);
    return vspStsNoErr;
}

VspStatus vspsLSFDecodeErased_GSMAMR_16s(Vsp32s mode, Vsp16s* pPrevRes, Vsp16s* pPrevLSF, Vsp16s* pLSP) {
    if (anyNull(pPrevRes, pPrevLSF, pLSP)) return vspStsNullPtrErr;
    if (!isSpeechMode(mode)) return vspStsRangeErr;
    const bool five = mode == kMode122;
    const Vsp16s ofPast = five ? 31128 : 29491, ofMean = five ? 1639 : 3277;  // 0.95, 0.9 and the rest
    Vsp16s predicted[kLsfOrder];
    predictLsf(mode, pPrevRes, predicted);
    for (int i = 0; i < kLsfOrder; i++) {
        const Vsp16s mean = five ? svq5_mean[i] : svq3_mean[i];
        pPrevLSF[i] = Add_16s(Mul_16s(pPrevLSF[i], ofPast), Mul_16s(mean, ofMean));
        pPrevRes[i] = Sub_16s(pPrevLSF[i], predicted[i]);
    }
    reorderLsf(pPrevLSF);
    vspsLSFToLSP_GSMAMR_16s(pPrevLSF, pLSP);
    if (five) copy(pLSP, pLSP + kLsfOrder);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
