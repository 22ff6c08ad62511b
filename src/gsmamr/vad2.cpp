// Voice activity detection, option 2 (3GPP TS 26.094).
#include "core/checks.h"
#include "gsmamr/exports.h"
#include "gsmamr/vad2_channels.h"

static_assert(sizeof(VspGSMAMRVad2State) == 188 && alignof(VspGSMAMRVad2State) == 4);

namespace vsp::VSP_LEVEL {

namespace {

constexpr Vsp32s kInitialHalves = 4;
constexpr Vsp32s kNoiseStart = 8192;
constexpr int kNoiseBits = 9;  // fraction bits of the noise estimates

// Sum of values of either sign, saturated at every step.
VSP_INLINE Vsp32s totalOf(const Vsp32s a[kVad2Channels]) {
    Vsp32s sum = 0;
    for (int ch = 0; ch < kVad2Channels; ch++) sum = Add_32s(sum, a[ch]);
    return sum;
}

VSP_INLINE int clampIndex(int index, int count) { return index < 0 ? 0 : index < count ? index : count - 1; }

// The first noise estimates, then signal-to-noise ratios and the voice metric.
VSP_INLINE void ownVad2SnrEstimatorAndSumVocieMetric_GSMAMR_16s(VspGSMAMRVad2State& s, Vad2Half& half) {
    const int scaling = scalingOf(s);
    if (s.frameCnt <= kInitialHalves) {
        Vsp32s energies[kVad2Channels];
        for (int ch = 0; ch < kVad2Channels; ch++) energies[ch] = s.chEnrg[ch];
        if (scaling == 1) shiftEnergies(energies, 5);
        for (int ch = 0; ch < kVad2Channels; ch++)
            s.chNoise[ch] = half.peaked || s.chEnrg[ch] < tableIneNoise[scaling] ? kNoiseStart : energies[ch];
    }
    Vsp16s noiseDb[kVad2Channels];
    channelDecibels<kVad2Channels>(s.chEnrg, tableFbits[scaling], half.energyDb);
    channelDecibels<kVad2Channels>(s.chNoise, kNoiseBits, noiseDb);
    half.voiceMetric = 0;
    for (int ch = 0; ch < kVad2Channels; ch++) {
        half.channelSnr[ch] = Vsp16s(half.energyDb[ch] - noiseDb[ch]);
        const int index = ((half.channelSnr[ch] * 21845 >> 15) + 32) >> 6;  // steps of 3/8 dB
        half.voiceMetric += TableVoiceMetric[clampIndex(index, 90)];
    }
}

VSP_INLINE Vsp16s decibels(Vsp32s x, int fractionBits) {
    Vsp16s db;
    channelDecibels<1>(&x, fractionBits, &db);
    return db;
}

// Q16 weights of old and new, rounded.
VSP_INLINE Vsp16s smoothed(Vsp16s old, Vsp32s oldWeight, Vsp16s fresh, Vsp32s freshWeight) {
    return round_32s(old * oldWeight + fresh * freshWeight);
}

// The long-term ratio and the bias that noise of changing level puts on the threshold.
VSP_INLINE void ownVad2DecisionCalibrate_GSMAMR_16s(VspGSMAMRVad2State& s, Vad2Half& half) {
    constexpr Vsp16s kSpeechDb = 14320, kHighestVariance = 1024;
    if (s.frameCnt <= kInitialHalves || s.forcedUpdateFlag == 1) {
        s.negSnrVar = s.negSnrBias = 0;
        half.snr = s.tsnr = Vsp16s(kSpeechDb - decibels(totalOf(s.chNoise), kNoiseBits));
    } else {
        half.snr = decibels(sumOfPowers<kVad2Channels>(half.channelSnr), 7);
        if (half.snr > s.tsnr)
            s.tsnr = smoothed(s.tsnr, 58982, half.snr, 6554);  // 0.9, 0.1
        else if (half.snr > Vsp16s(((5 * s.tsnr) & 0xFFFFF) >> 3))
            s.tsnr = smoothed(s.tsnr, 65404, half.snr, 132);  // 0.998, 0.002
    }
    half.snrIndex = clampIndex(Vsp16s(Mul_16s_Sfs(s.tsnr, 10923, 15)) >> 8, kVad2SnrIndices);

    if (half.snr >= 0) return;
    const Vsp16s square = round_32s(Cnvrt_64s32s(Vsp64s(half.snr * half.snr) << 8));
    const Vsp16s variance = smoothed(s.negSnrVar, 64880, square, 656);  // 0.99, 0.01
    s.negSnrVar = variance < kHighestVariance ? variance : kHighestVariance;
    const Vsp64s bias = (Vsp64s(s.negSnrVar) * 16 * 24576 - 65257472) >> 15;
    s.negSnrBias = bias < 0 ? Vsp16s(0) : Vsp16s(bias >> 8);
}

// The decision of the half-frame, the deviation from the long-term spectrum and the update of that spectrum.
VSP_INLINE bool ownVad2DetermineVADAndSpectrDeviation_GSMAMR_16s(VspGSMAMRVad2State& s, Vad2Half& half) {
    bool speech = half.voiceMetric > TablePeakSNR[half.snrIndex] + s.negSnrBias;
    if (speech) {
        s.burstCount = sat_16s(s.burstCount + 1);
        if (s.burstCount > TableBurstcount[half.snrIndex]) s.hangoverCount = TableHangover[half.snrIndex];
    } else {
        s.burstCount = 0;
        speech = s.hangoverCount > 1;
        s.hangoverCount = speech ? Vsp16s(s.hangoverCount - 1) : Vsp16s(0);
    }

    constexpr Vsp16s kSlowest = 29491, kFastest = 22938;  // 0.9, 0.7
    Vsp16s fresh = 3277, old = kSlowest;
    const Vsp16s below = sat_16s(s.tsnr - half.snr);
    if (below >= 1 && s.tsnr >= below) {
        old = Vsp16s(kSlowest - ((div_16s(below, s.tsnr) * (kSlowest - kFastest)) >> 15));
        fresh = Vsp16s(kMax16 - old);
    } else if (below >= 1 && s.tsnr >= 1) {
        old = kFastest;
        fresh = 9830;
    }

    half.deviation = 0;
    for (int ch = 0; ch < kVad2Channels; ch++) {
        const Vsp16s longTerm = s.frameCnt == 1 ? half.energyDb[ch] : s.chEnrgLongDb[ch];
        half.deviation += Abs_32s(longTerm - half.energyDb[ch]);
        s.chEnrgLongDb[ch] = round_32s(Mul2_32s(half.energyDb[ch] * fresh + longTerm * old));
    }
    return speech;
}

// Updates the noise estimate in a pause, or after long enough of a steady spectrum.
VSP_INLINE void ownVad2BackgroundNoiseUpdate_GSMAMR_16s(VspGSMAMRVad2State& s, const Vad2Half& half, bool periodic) {
    constexpr Vsp16s kPauseMetric = 35, kSteadyDeviation = 7168, kForcedUpdate = 50, kHysteresis = 6;
    constexpr Vsp16s kOldNoise = 29491, kNewNoise = 3277;  // 0.9, 0.1
    constexpr Vsp32s kLowestNoise = 32;
    const int scaling = scalingOf(s);
    bool update = false;
    s.forcedUpdateFlag = 0;
    if (half.voiceMetric <= kPauseMetric) {
        update = s.burstCount == 0;
        if (update) s.updateCnt = 0;
    } else if (half.totalEnergy > tableNoiseFloorChan[scaling] && half.deviation < kSteadyDeviation && !half.peaked &&
               !periodic) {
        s.updateCnt = sat_16s(s.updateCnt + 1);
        update = s.updateCnt >= kForcedUpdate;
        s.forcedUpdateFlag = update;
    }
    s.hysterCnt = s.updateCnt == s.lastUpdateCnt ? sat_16s(s.hysterCnt + 1) : Vsp16s(0);
    s.lastUpdateCnt = s.updateCnt;
    if (s.hysterCnt > kHysteresis) s.updateCnt = 0;
    if (!update) return;

    Vsp32s energies[kVad2Channels];
    for (int ch = 0; ch < kVad2Channels; ch++) energies[ch] = s.chEnrg[ch];
    if (scaling == 1) shiftEnergies(energies, 5);
    for (int ch = 0; ch < kVad2Channels; ch++) {
        const Vsp32s noise = mul_32s16s(s.chNoise[ch], kOldNoise) + mul_32s16s(energies[ch], kNewNoise);
        s.chNoise[ch] = noise > kLowestNoise ? noise : kLowestNoise;
    }
}

VSP_INLINE bool detectInHalf(const Vsp16s* src, VspGSMAMRVad2State& s, bool periodic) {
    Vad2Half half;
    s.frameCnt = Add_32s(s.frameCnt, 1);
    ownVad2ChEnergyEstimator_GSMAMR_16s(src, s, half);
    ownVad2SnrEstimatorAndSumVocieMetric_GSMAMR_16s(s, half);
    ownVad2DecisionCalibrate_GSMAMR_16s(s, half);
    const bool speech = ownVad2DetermineVADAndSpectrDeviation_GSMAMR_16s(s, half);
    ownVad2BackgroundNoiseUpdate_GSMAMR_16s(s, half, periodic);
    return speech;
}

}  // namespace

VspStatus vspsVAD2_GSMAMR_16s(const Vsp16s* pSrc, VspGSMAMRVad2State* pState, Vsp16s* pVadFlag, Vsp32s ltpFlag) {
    if (anyNull(pSrc, pState, pVadFlag)) return vspStsNullPtrErr;
    bool speech = false;
    for (int i = 0; i < 2; i++) speech |= detectInHalf(pSrc + i * kVad2Half, *pState, ltpFlag != 0);
    *pVadFlag = speech;
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
