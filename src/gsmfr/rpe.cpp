// The regular-pulse excitation: weighting, choice of the grid, block-adaptive PCM (GSM 06.10 5.2.13 to 5.2.17).
#include "arithmetic/basic_ops.h"
#include "core/checks.h"
#include "gsmfr/exports.h"
#include "gsmfr/frame.h"
#include "gsmfr/tables.h"
#include "vector/correlate.h"

namespace vsp::VSP_LEVEL {

namespace {

// The coded maximum as exponent, -4..6, and mantissa, 0..7.
struct Maximum {
    int exponent, mantissa;
};

VSP_INLINE Maximum decodedMaximum(int code) {
    int exponent = code > 15 ? (code >> 3) - 1 : 0, mantissa = code - exponent * 8;
    if (mantissa == 0) return {-4, 7};
    while (mantissa <= 7) {
        mantissa = 2 * mantissa + 1;
        exponent--;
    }
    return {exponent, mantissa - 8};
}

}  // namespace

VspStatus vspsWeightingFilter_GSMFR_16s(const Vsp16s* pSrc, Vsp16s* pDst) {
    if (anyNull(pSrc, pDst)) return vspStsNullPtrErr;
    constexpr int kTaps = 11, kMargin = kTaps / 2;
    Vsp16s line[kMargin + kSubframe + kMargin] = {};
    __builtin_memcpy(line + kMargin, pSrc, kSubframe * sizeof(Vsp16s));
    Vsp32s sums[kSubframe];
    correlate(H, kTaps, line, sums, kSubframe);  // H is symmetric
    const auto rounded = [&](int k) { return shr(add(S32_128::load(sums + k), S32_128::splat(4096)), 13); };
    for (int k = 0; k < kSubframe; k += 8) packSat(rounded(k), rounded(k + 4)).store(pDst + k);
    return vspStsNoErr;
}

VspStatus vspsRPEGridSelect_GSMFR_16s(const Vsp16s* pSrc, Vsp16s* pDst, Vsp16s* pGrid) {
    if (anyNull(pSrc, pDst, pGrid)) return vspStsNullPtrErr;
    const auto square = [&](int k) { return (pSrc[k] >> 2) * (pSrc[k] >> 2); };
    Vsp32s energies[kGrids] = {};  // up to 13 * 2^26
    for (int i = 0; i < kPulses; i++)
        for (int m = 0; m < 3; m++) energies[m] += square(3 * i + m);
    energies[3] = energies[0] - square(0) + square(3 * kPulses);
    int grid = 0;
    for (int m = 1; m < kGrids; m++)
        if (energies[m] > energies[grid]) grid = m;
    for (int i = 0; i < kPulses; i++) pDst[i] = pSrc[grid + 3 * i];
    *pGrid = Vsp16s(grid);
    return vspStsNoErr;
}

VspStatus vspsRPEQuantEncode_GSMFR_16s(const Vsp16s* pSrc, Vsp16s* pDst, Vsp16s* pMax) {
    if (anyNull(pSrc, pDst, pMax)) return vspStsNullPtrErr;
    Vsp32s xmax = 0;
    for (int i = 0; i < kPulses; i++) {
        const Vsp32s magnitude = pSrc[i] < 0 ? -pSrc[i] : pSrc[i];
        xmax = magnitude > xmax ? magnitude : xmax;
    }
    xmax = xmax > kMax16 ? kMax16 : xmax;
    const int exponent = xmax >> 9 == 0 ? 0 : 32 - __builtin_clz(Vsp32u(xmax >> 9));  // 6 at most
    const int code = (xmax >> (exponent + 5)) + exponent * 8;
    const Maximum maximum = decodedMaximum(code);
    const int shift = 6 - maximum.exponent;
    const Vsp32s factor = NRFAC[maximum.mantissa];
    for (int i = 0; i < kPulses; i++) pDst[i] = Vsp16s(((Vsp16s(Vsp32u(pSrc[i]) << shift) * factor) >> 27) + 4);
    *pMax = Vsp16s(code);
    return vspStsNoErr;
}

VspStatus vspsRPEScaleDecode_GSMFR_16s(Vsp16s max, Vsp16s* pFactor, Vsp16s* pScale) {
    if (anyNull(pFactor, pScale)) return vspStsNullPtrErr;
    const Maximum maximum = decodedMaximum(max & 63);
    *pFactor = FAC[maximum.mantissa];
    *pScale = Vsp16s(6 - maximum.exponent);
    return vspStsNoErr;
}

VspStatus vspsRPEQuantDecode_GSMFR_16s(const Vsp16s* pSrc, Vsp16s* pDst, Vsp16s factor, Vsp16s scaleFactor) {
    if (anyNull(pSrc, pDst)) return vspStsNullPtrErr;
    if (scaleFactor < 0 || scaleFactor > 10) return vspStsScaleRangeErr;
    Vsp16s levels[8];
    for (int code = 0; code < 8; code++) {
        const Vsp16s level = mulRound_16s(factor, Vsp16s((2 * code - 7) * 4096));
        levels[code] = Vsp16s(sat_16s(level + roundingConstant(scaleFactor)) >> scaleFactor);
    }
    for (int i = 0; i < kPulses; i++) pDst[i] = levels[pSrc[i] & 7];
    return vspStsNoErr;
}

VspStatus vspsRPEGridPosition_GSMFR_16s(const Vsp16s* pSrc, Vsp16s* pDst, Vsp16s grid) {
    if (anyNull(pSrc, pDst)) return vspStsNullPtrErr;
    for (int k = 0; k < kSubframe; k++) pDst[k] = 0;
    for (int i = 0; i < kPulses; i++) pDst[(grid & 3) + 3 * i] = pSrc[i];
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
