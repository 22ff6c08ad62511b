// The band above 6.4 kHz: shaped noise at the energy of the excitation, and its gain (3GPP TS 26.190, 5.9 and 6.3).
#include "amrwb/exports.h"
#include "amrwb/lengths.h"
#include "amrwb/normalised.h"
#include "common/random_vector.h"
#include "core/checks.h"
#include "vector/map.h"

namespace vsp::VSP_LEVEL {

namespace {

// The gains of 23.85 kbit/s, Q14.
constexpr int kGains = 16;
constexpr Vsp16s kHighBandGains[kGains] = {3624,  4673,  5597,  6479,  7425,  8378,  9324,  10264,
                                           11210, 12206, 13391, 14844, 16770, 19655, 24289, 32728};

// src >> count, rounded.
template <int count>
VSP_INLINE void shiftedDown(const Vsp16s* src, int len, Vsp16s* dst) {
    map(
        len, [](auto a) { return mulRoundWrap(a, decltype(a)::splat(1 << (15 - count))); }, dst, src);
}

// sqrt(wanted / present), of which the exponent is of wanted.
VSP_INLINE Vsp16s amplitudeRatio(Normalised wanted, Normalised present, int moreBits) {
    Vsp16s energy = high_32s(present.value);
    int exponent = present.exponent - wanted.exponent;
    if (energy > high_32s(wanted.value)) {
        energy = Vsp16s(energy >> 1);
        exponent++;
    }
    const Normalised root = ownInverseSqrt({Div_16s(energy, high_32s(wanted.value)) * 65536, exponent});
    return high_32s(shl_32s(root.value, root.exponent + moreBits));
}

// Q15 products, truncated, shifted left by 0 or 1 with saturation.
template <int shift>
VSP_INLINE void multiply(Vsp16s* x, Vsp16s factor) {
    for (int i = 0; i < kHighSubframe; i++) {
        const Vsp32s product = (x[i] * factor) >> 15;
        x[i] = sat_16s(sat_16s(product) * (1 << shift));
    }
}

}  // namespace

VspStatus vspsHighBandNoise_AMRWB_16s(const Vsp16s* pExc, Vsp32s scale, Vsp16s* pSeed, Vsp16s* pDst) {
    if (anyNull(pExc, pSeed, pDst)) return vspStsNullPtrErr;
    if (scale < 0 || scale > 8) return vspStsRangeErr;
    Vsp16s exc[kWideSubframe];
    shiftedDown<3>(pExc, kWideSubframe, exc);
    ownRandomVector(pSeed, 3, pDst, kHighSubframe);
    Normalised wanted = ownNormalisedEnergy(exc, kWideSubframe);
    wanted.exponent -= 2 * (scale - 3);
    multiply<0>(pDst, amplitudeRatio(wanted, ownNormalisedEnergy(pDst, kHighSubframe), 1));
    return vspStsNoErr;
}

VspStatus vspsHighBandGain_AMRWB_16s(const Vsp16s* pSrc, Vsp16s vadHist, Vsp16s* pGain) {
    constexpr Vsp16s kLeast = 3277, kNoiseGain = 20480;  // 0.1, and 1.25 in Q14
    if (anyNull(pSrc, pGain)) return vspStsNullPtrErr;
    const Vsp32s energy0 = Cnvrt_64s32s(1 + 2 * energy(pSrc, kWideSubframe));
    const int norm = norm_32s(energy0);
    const Vsp16s correlation = high_32s(shl_32s(saturatingDot(1, pSrc + 1, pSrc, kWideSubframe - 1), norm));
    const Vsp16s tilt = correlation > 0 ? Div_16s(correlation, high_32s(shl_32s(energy0, norm))) : Vsp16s(0);
    const Vsp16s ofSpeech = Sub_16s(kMax16, tilt), ofNoise = shl_16s(Mul_16s(ofSpeech, kNoiseGain), 1);
    Vsp16s gain = Mul_16s(kMax16, vadHist > 0 ? ofNoise : ofSpeech);
    if (gain != 0) gain = Add_16s(gain, 1);
    *pGain = gain > kLeast ? gain : kLeast;
    return vspStsNoErr;
}

VspStatus vspsHighBandScale_AMRWB_16s_I(Vsp16s gain, Vsp16s index, Vsp16s* pSrcDst) {
    if (anyNull(pSrcDst)) return vspStsNullPtrErr;
    if (index < -1 || index >= kGains) return vspStsRangeErr;
    if (index < 0)
        multiply<0>(pSrcDst, gain);
    else
        multiply<1>(pSrcDst, kHighBandGains[index]);
    return vspStsNoErr;
}

VspStatus vspsHighBandGainQuant_AMRWB_16s(const Vsp16s* pSpeech, const Vsp16s* pNoise, Vsp16s gain, Vsp16s hangover,
                                          Vsp16s* pAlpha, Vsp16s* pIndex) {
    constexpr Vsp16s kFullHangover = 7, kOneSeventh = 4681;
    if (anyNull(pSpeech, pNoise, pAlpha, pIndex)) return vspStsNullPtrErr;
    if (hangover < 0 || hangover > kFullHangover) return vspStsRangeErr;
    Vsp16s speech[kHighSubframe];
    shiftedDown<1>(pSpeech, kHighSubframe, speech);
    const Vsp16s measured =
        amplitudeRatio(ownNormalisedEnergy(speech, kHighSubframe), ownNormalisedEnergy(pNoise, kHighSubframe), 0);

    const Vsp16s fading = high_32s(shl_32s(Mul2_16s32s(hangover, kOneSeventh), 15));
    const Vsp16s ofMeasured = hangover == kFullHangover ? kMax16 : Mul_16s(*pAlpha, fading);
    const Vsp16s ofEstimate = Sub_16s(kMax16, ofMeasured);
    const Vsp16s wanted = Add_16s(Mul_16s(measured, ofMeasured), Mul_16s(ofEstimate, Vsp16s(gain >> 1)));
    Vsp16s smallest = kMax16, best = 0;
    for (Vsp16s i = 0; i < kGains; i++) {
        const Vsp16s difference = Sub_16s(wanted, kHighBandGains[i]), distance = Mul_16s(difference, difference);
        if (distance < smallest) {
            smallest = distance;
            best = i;
        }
    }
    *pAlpha = ofMeasured;
    *pIndex = best;
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
