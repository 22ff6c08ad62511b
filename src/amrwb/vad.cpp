// Voice activity detection (`wb_vad`; 3GPP TS 26.194).
#include "amrwb/exports.h"
#include "amrwb/lengths.h"
#include "amrwb/vad_filter_bank.h"
#include "arithmetic/standard_ops.h"
#include "common/band_levels.h"
#include "core/checks.h"
#include "core/state_size.h"
#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kBands = 12;

struct State {
    Vsp32s prevPower;
    Vsp16s noise[kBands], average[kBands], oldLevel[kBands], subLevel[kBands];
    VadFilterMemory filters;
    Vsp16s burstCount, hangCount, statCount, vadReg, toneFlags;
    Vsp16s estimateCount, speechMax, speechMaxCount, speechLevel;
    Vsp16s unused[11];
};
static_assert(sizeof(State) == 172 && alignof(State) == 4);

void bandLevels(const Vsp16s* src, State& s, Vsp16s* level) {
    static constexpr BandPlaces kPlaces[kBands] = {{0, 32, 17},  {16, 32, 17}, {24, 32, 17}, {8, 32, 17},
                                                   {12, 16, 16}, {4, 16, 16},  {6, 16, 16},  {14, 16, 16},
                                                   {2, 8, 15},   {3, 8, 15},   {7, 8, 15},   {1, 4, 14}};
    Vsp32s sums[2][kVadGroup];
    vadBandSums(src, s.filters, sums);
    ownBandLevels(kPlaces, sums[0], sums[1], s.subLevel, level);
}

// --- The decision ------------------------------------------------------------------------------------------------------

// The sum over the bands from the second on, as a level.
Vsp16s meanOf(const Vsp16s* level) {
    Vsp32s sum = 0;
    for (int b = 1; b < kBands; b++) sum += level[b];
    return high_32s(shl_32s(sum, 12));
}

// A fast falling function of x: about 1024 * (31 - log2(x)) (`ilog2`).
Vsp16s inverseLog2(Vsp16s x) {
    if (x < 1) x = 1;
    const int norm = norm_16s(x);
    x = Vsp16s(x << norm);
    for (int i = 0; i < 3; i++) x = Mul_16s(x, x);
    const Vsp32s square = Mul2_16s32s(x, x);
    const int squareNorm = norm_32s(square);
    return sat_16s(((norm + 16) << 10) + (squareNorm << 6) + 127 - (high_32s(shl_32s(square, squareNorm)) >> 8));
}

Vsp16s snrThreshold(Vsp16s noiseLevel, Vsp16s speechOverNoise) {
    constexpr Vsp16s kNoiseSlope = 1509, kNoiseStart = 31744, kAtStart = 768, kLeast = 204;
    constexpr Vsp16s kSpeechSlope = -1339, kSpeechStart = 22527, kSpeechAtStart = -96, kSpeechMost = 96;
    const int byNoise = Mul_16s(kNoiseSlope, Sub_16s(inverseLog2(noiseLevel), kNoiseStart)) + kAtStart;
    int bySpeech = Mul_16s(kSpeechSlope, Sub_16s(inverseLog2(speechOverNoise), kSpeechStart)) + kSpeechAtStart;
    bySpeech = bySpeech > kSpeechMost ? kSpeechMost : bySpeech < -kSpeechMost ? -kSpeechMost : bySpeech;
    const int threshold = byNoise + bySpeech;
    return threshold > kLeast ? sat_16s(threshold) : kLeast;
}

void updateNoise(State& s, const Vsp16s* level) {
    constexpr Vsp16s kNotStationary = 20, kCeiling = 20000;
    const bool speech = (s.vadReg & kNewestFlag) != 0;
    if ((s.toneFlags & 0x7C00) == 0x7C00 || (s.vadReg & 0x7F80) == 0 || !isStationary<kBands>(level, s.average))
        s.statCount = kNotStationary;
    else if (speech && s.statCount != 0)
        s.statCount = Sub_16s(s.statCount, 1);

    const Vsp16s alpha = s.statCount == kNotStationary ? 32767 : speech ? 3276 : 16383;
    NoiseUpdateSpeed speed = {0, 1638, 0};
    if ((s.vadReg & 0x7800) == 0)
        speed = {1638, 2097, 2};
    else if (s.statCount == 0)
        speed = {491, 1867, 2};
    ownUpdateNoise<kBands>(alpha, speed, kCeiling, level, s.average, s.noise, s.oldLevel);
}

Vsp16s addHangover(State& s, Vsp16s threshold, bool lowPower) {
    if (lowPower) {
        s.burstCount = s.hangCount = 0;
        return 0;
    }
    if ((s.vadReg & kNewestFlag) != 0) {
        const Vsp16s hangover = Add_16s(Mul_16s(-1110, Sub_16s(threshold, 217)), 12);
        const Vsp16s burst = Add_16s(Mul_16s(297, Sub_16s(threshold, 768)), 8);
        s.burstCount = Add_16s(s.burstCount, 1);
        if (s.burstCount >= burst) s.hangCount = hangover > 2 ? hangover : Vsp16s(2);
        return 1;
    }
    s.burstCount = 0;
    if (s.hangCount <= 0) return 0;
    s.hangCount--;
    return 1;
}

Vsp16s decide(State& s, const Vsp16s* level, Vsp32s power) {
    constexpr Vsp32s kLowPower = 30000;
    constexpr Vsp16s kSnrScale = 6144;  // 512 for each band
    const Vsp32s snr = bandSnrEnergy<kBands, 9>(level, s.noise);
    const Vsp16s noiseLevel = meanOf(s.noise), leastSpeech = shl_16s(Mul_16s(noiseLevel, 4096), 3);
    if (s.speechLevel < leastSpeech) s.speechLevel = leastSpeech;
    const Vsp16s threshold = snrThreshold(noiseLevel, Sub_16s(s.speechLevel, leastSpeech));
    s.vadReg = Vsp16s(s.vadReg >> 1 | (snr > Mul2_16s32s(threshold, kSnrScale) ? kNewestFlag : 0));
    updateNoise(s, level);
    return addHangover(s, threshold, power < kLowPower);
}

void estimateSpeechLevel(State& s, Vsp16s inputLevel) {
    constexpr Vsp16s kTrials = 80, kActive = 25, kLeastInput = 129, kLeastLevel = 410, kAlpha = 4915;
    const auto restart = [&s] { s.estimateCount = s.speechMax = s.speechMaxCount = 0; };
    if (Sub_16s(s.estimateCount, s.speechMaxCount) > kTrials - kActive) restart();
    s.estimateCount = Add_16s(s.estimateCount, 1);
    const bool active = (s.vadReg & kNewestFlag) != 0 || inputLevel > s.speechLevel;
    if (!active || inputLevel <= kLeastInput) return;
    if (inputLevel > s.speechMax) s.speechMax = inputLevel;
    s.speechMaxCount = Add_16s(s.speechMaxCount, 1);
    if (s.speechMaxCount < kActive) return;
    const Vsp16s half = Vsp16s(s.speechMax >> 1);
    if (half > kLeastLevel) s.speechLevel = Add_16s(s.speechLevel, mulRound_16s(kAlpha, Sub_16s(half, s.speechLevel)));
    restart();
}

}  // namespace

VspStatus vspsVADGetSize_AMRWB_16s(Vsp32s* pSize) { return fixedSize(pSize, sizeof(State)); }

VspStatus vspsVADInit_AMRWB_16s(void* pState) {
    constexpr Vsp16s kNoise = 150, kSpeechLevel = 2050;
    if (anyNull(pState)) return vspStsNullPtrErr;
    State& s = *static_cast<State*>(pState);
    s = {};
    for (int b = 0; b < kBands; b++) s.noise[b] = s.average[b] = s.oldLevel[b] = kNoise;
    s.speechLevel = kSpeechLevel;
    return vspStsNoErr;
}

VspStatus vspsVAD_AMRWB_16s(const Vsp16s* pSrc, Vsp16s* pFlag, void* pState) {
    constexpr Vsp32s kTonePower = 686080;
    if (anyNull(pSrc, pFlag, pState)) return vspStsNullPtrErr;
    State& s = *static_cast<State*>(pState);
    const Vsp32s ofFrame = Cnvrt_64s32s(2 * energy(pSrc, kWideFrame)), power = Add_32s(ofFrame, s.prevPower);
    s.prevPower = ofFrame;
    if (power < kTonePower) s.toneFlags &= 0x1FFF;

    Vsp16s level[kBands];
    bandLevels(pSrc, s, level);
    *pFlag = decide(s, level, power);
    estimateSpeechLevel(s, meanOf(level));
    return vspStsNoErr;
}

VspStatus vspsVADTone_AMRWB_16s(Vsp16s gain, void* pState) {
    constexpr Vsp16s kTone = 21298;  // 0.65
    if (anyNull(pState)) return vspStsNullPtrErr;
    State& s = *static_cast<State*>(pState);
    s.toneFlags = Vsp16s(s.toneFlags >> 1 | (gain > kTone ? kNewestFlag : 0));
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
