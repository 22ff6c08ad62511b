// The adaptive-codebook gain and the removal of its contribution from the target (G.729 3.7.3 and A.3.7).
#include "arithmetic/basic_ops.h"
#include "common/exports.h"
#include "core/checks.h"
#include "g729/constants.h"
#include "g729/exports.h"
#include "vector/dot.h"
#include "vector/map.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr Vsp16s kMaxGain = 19661;         // 1.2 in Q14
constexpr Vsp64s kDoublable = 0x3FFFFFFF;  // sums from here on are formed again from scaled samples

// A positive value normalised and rounded: value = mantissa * 2^(16 - exponent).
struct Normalised {
    Vsp16s mantissa;
    int exponent;
};

Normalised normalise(Vsp32s value) {
    const int exponent = Norm_32s_Pos_I(&value);
    return {round_32s(value), exponent};
}

// G.729 G_pitch: <x, y> / <y, y> in Q14, at most 1.2
Vsp16s gainOf(const Vsp16s* x, const Vsp16s* y) {
    const auto same = [](auto a) { return a; };
    const auto quarter = [](auto a) { return shr(a, 2); };

    // In small pieces: y has just been stored, in pieces that a wide load would have to wait for.
    S64_128 xyBiased = S64_128::splat(0), yyBiased = xyBiased;
    for (int i = 0; i < kL_subfr; i += S16_128::width) {
        const S16_128 piece = S16_128::load(y + i);
        xyBiased = add(xyBiased, biasedProducts(S16_128::load(x + i), piece));
        yyBiased = add(yyBiased, biasedProducts(piece, piece));
    }
    constexpr Vsp64s kBias = Vsp64s(kDotBias) * (kL_subfr / 2);
    Vsp64s xySum = sum(xyBiased) - kBias, yySum = sum(yyBiased) - kBias;
    int xyCorrection = 0, yyCorrection = 0;
    if (xySum <= 0) return 0;
    if (xySum >= kDoublable) {
        xySum = dot(x, y, kL_subfr, same, quarter);
        xyCorrection = -2;
    }
    if (yySum >= kDoublable) {
        yySum = dot(y, y, kL_subfr, quarter, quarter);
        yyCorrection = -4;
    }

    const Normalised yy = normalise(Cnvrt_64s32s(2 * yySum + 1)), xy = normalise(Cnvrt_64s32s(2 * xySum));
    const Vsp32s quotient = ((xy.mantissa >> 1) << 15) / yy.mantissa;
    const int shift = xy.exponent + xyCorrection - (yy.exponent + yyCorrection);
    const Vsp16s gain = Vsp16s(quotient);
    const Vsp16s shifted = shift >= 0 ? Vsp16s(gain >> (shift < 15 ? shift : 15)) : ShiftL_16s(gain, -shift);
    return shifted < kMaxGain ? shifted : kMaxGain;
}

}  // namespace

VspStatus vspsAdaptiveCodebookGain_G729_16s(const Vsp16s* pTarget, const Vsp16s* pImpulse, const Vsp16s* pVector,
                                            Vsp16s* pFiltered, Vsp16s* pGain) {
    if (anyNull(pTarget, pImpulse, pVector, pFiltered, pGain)) return vspStsNullPtrErr;
    vspsConvPartial_16s_Sfs(pVector, pImpulse, pFiltered, kL_subfr, 12);
    *pGain = gainOf(pTarget, pFiltered);
    return vspStsNoErr;
}

VspStatus vspsAdaptiveCodebookGain_G729A_16s(const Vsp16s* pTarget, const Vsp16s* pLPC, const Vsp16s* pVector,
                                             Vsp16s* pFiltered, Vsp16s* pGain) {
    if (anyNull(pTarget, pLPC, pVector, pFiltered, pGain)) return vspStsNullPtrErr;
    static constexpr Vsp16s kZeroHistory[10] = {};
    vspsSynthesisFilter_NR_16s_Sfs(pLPC, pVector, pFiltered, kL_subfr, 12, kZeroHistory);
    *pGain = gainOf(pTarget, pFiltered);
    return vspStsNoErr;
}

VspStatus vspsAdaptiveCodebookContribution_G729_16s(Vsp16s gain, const Vsp16s* pFiltered, const Vsp16s* pTarget,
                                                    Vsp16s* pDst) {
    if (anyNull(pFiltered, pTarget, pDst)) return vspStsNullPtrErr;
    const auto remainder = [gain](auto y, auto x) {
        using V = decltype(y);
        const V factor = V::splat(gain);
        // The low 16 bits of product >> 14, from both halves of the product.
        return sub(x, add(shl(mulHi(y, factor), 2), shrU(mulLo(y, factor), 14)));
    };
    map(kL_subfr, remainder, pDst, pFiltered, pTarget);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
