// Voice activity detection, option 1 (3GPP TS 26.094).
#include "core/checks.h"
#include "gsmamr/exports.h"
#include "gsmamr/noise_estimate.h"
#include "gsmamr/vad1_filter_bank.h"
#include "vector/dot.h"

static_assert(sizeof(VspGSMAMRVad1State) == 116 && alignof(VspGSMAMRVad1State) == 2);

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kLookahead = 40;
constexpr Vsp16s kNoiseCeiling = 16000;

// Powers of a frame, below which pitch, complex signals and speech are not believed.
constexpr Vsp32s kPitchPower = 343040, kLowPower = 15000;

// Smoothed correlations of a complex signal (music), Q15.
constexpr Vsp16s kCorrLowest = 13106;    // 0.4
constexpr Vsp16s kCorrModerate = 16383;  // 0.5
constexpr Vsp16s kCorrHigh = 19660;      // 0.6
constexpr Vsp16s kCorrSpeech = 21298;    // 0.65
constexpr Vsp16s kCorrVeryHigh = 22936;  // 0.7

VSP_INLINE Vsp16s snrSum(const Vsp16s level[kVad1Bands], const Vsp16s noise[kVad1Bands]) {
    constexpr Vsp16s kOneNinth = 3641;
    const Vsp32s scaled = Cnvrt_64s32s(Vsp64s(bandSnrEnergy<kVad1Bands, 10>(level, noise)) * 64);
    return Vsp16s(Mul_16s_Sfs(Vsp16s(scaled >> 16), kOneNinth, 15));
}

VSP_INLINE Vsp16s snrThreshold(Vsp16s noiseLevel) {
    constexpr Vsp16s kSlope = -2808, kHighest = 1260, kLowest = 720;
    const Vsp32s threshold = Mul_16s_Sfs(noiseLevel, kSlope, 15) + kHighest;
    return threshold > kLowest ? Vsp16s(threshold) : kLowest;
}

// Follows the correlation of complex signals.
VSP_INLINE void trackComplexSignal(VspGSMAMRVad1State& s, Vsp16s bestCorrHp, bool lowPower) {
    constexpr int kAll8 = 0x7F80, kAll15 = 0x7FFF;
    const int alphaWhenHigh = bestCorrHp < s.corrHpFast ? 6553 : 655;
    const int alpha = s.corrHpFast < kCorrHigh ? 2621 : alphaWhenHigh;
    s.corrHpFast = round_32s(Add_32s(s.corrHpFast * 65536, 2 * alpha * (bestCorrHp - s.corrHpFast)));
    if (s.corrHpFast < kCorrLowest || lowPower) s.corrHpFast = kCorrLowest;

    s.complexHigh = Vsp16s(s.complexHigh >> 1 | (s.corrHpFast > kCorrHigh ? kNewestFlag : 0));
    s.complexLow = Vsp16s(s.complexLow >> 1 | (s.corrHpFast > kCorrModerate ? kNewestFlag : 0));
    s.complexHangTimer = s.corrHpFast > kCorrVeryHigh ? sat_16s(s.complexHangTimer + 1) : Vsp16s(0);
    s.complexWarning = (s.complexHigh & kAll8) == kAll8 || (s.complexLow & kAll15) == kAll15;
}

// The decision with hangover.
VSP_INLINE Vsp16s addHangover(VspGSMAMRVad1State& s, Vsp16s noiseLevel, bool lowPower) {
    constexpr Vsp16s kNoisy = 100, kComplexFrames = 100, kComplexHangover = 250;
    const Vsp16s burstLength = noiseLevel > kNoisy ? 4 : 5, hangover = noiseLevel > kNoisy ? 7 : 4;
    if (lowPower) {
        s.burstCount = s.hangCount = s.complexHangCount = s.complexHangTimer = 0;
        return 0;
    }
    if (s.complexHangTimer > kComplexFrames && s.complexHangCount < kComplexHangover) s.complexHangCount = kComplexHangover;
    if (s.complexHangCount != 0) {
        s.burstCount = 4;
        s.complexHangCount = sat_16s(s.complexHangCount - 1);
        return 1;
    }
    if ((s.vadReg & 0x3FF0) == 0 && s.corrHpFast > kCorrSpeech) return 1;
    if ((s.vadReg & kNewestFlag) != 0) {
        s.burstCount = sat_16s(s.burstCount + 1);
        if (s.burstCount >= burstLength) s.hangCount = hangover;
        return 1;
    }
    s.burstCount = 0;
    if (s.hangCount <= 0) return 0;
    s.hangCount--;
    return 1;
}

VSP_INLINE Vsp16s ownVadDecision_GSMAMR_16s(VspGSMAMRVad1State& s, const Vsp16s level[kVad1Bands], Vsp32s power,
                                            Vsp16s bestCorrHp, Vsp16s toneFlags) {
    Vsp32s noise = 0;
    for (const Vsp16s estimate : s.bckrEst) noise += estimate;
    const Vsp16s noiseLevel = Vsp16s(noise >> 3);
    const bool lowPower = power < kLowPower;

    s.vadReg = Vsp16s(s.vadReg >> 1 | (snrSum(level, s.bckrEst) > snrThreshold(noiseLevel) ? kNewestFlag : 0));
    trackComplexSignal(s, bestCorrHp, lowPower);
    ownNoiseEstimateUpdate<kVad1Bands>(s, level, toneFlags, kNoiseCeiling);
    return addHangover(s, noiseLevel, lowPower);
}

}  // namespace

VspStatus vspsVAD1_GSMAMR_16s(const Vsp16s* pSrc, VspGSMAMRVad1State* pState, Vsp16s* pVadFlag, Vsp16s bestCorrHp,
                              Vsp16s toneFlags) {
    if (anyNull(pSrc, pState, pVadFlag)) return vspStsNullPtrErr;
    const Vsp32s power = Cnvrt_64s32s(2 * energy(pSrc, kVad1Frame));
    if (power < kPitchPower) pState->pitchFlags &= 0x3FFF;
    if (power < kLowPower) pState->complexLow &= 0x3FFF;

    Vsp16s level[kVad1Bands];
    ownVadFilterBank_GSMAMR_16s(pSrc + kLookahead, *pState, level);
    *pVadFlag = ownVadDecision_GSMAMR_16s(*pState, level, power, bestCorrHp, toneFlags);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
