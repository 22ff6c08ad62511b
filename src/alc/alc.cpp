// Automatic level control in the manner of ITU-T G.169. Single precision throughout, every operation rounded as written.
#include <math.h>

#include "alc/alc_state.h"
#include "alc/blocks.h"
#include "alc/exports.h"
#include "core/checks.h"
#include "vector/for_blocks.h"

namespace vsp::VSP_LEVEL {

namespace {

using State = VspALCState_G169_16s;

constexpr Vsp16s kCounterMax = 16383;
constexpr Vsp16s kShortBurst = 50;       // active blocks below which a burst is undone
constexpr Vsp16s kLearningBlocks = 500;  // active blocks in which the level of a burst is still being learned
constexpr Vsp32f kLevelToNoise = 1456.7665f;
constexpr Vsp32f kSmallest = 0x1p-126f, kLargest = 0x1.fffffep127f;

VSP_INLINE Vsp32f minOf(Vsp32f a, Vsp32f b) { return a < b ? a : b; }
VSP_INLINE Vsp32f maxOf(Vsp32f a, Vsp32f b) { return a > b ? a : b; }
VSP_INLINE Vsp16s countUp(Vsp16s counter) { return counter < kCounterMax ? Vsp16s(counter + 1) : kCounterMax; }

// Kept within the positive normal numbers of single precision: with them no quotient of levels is 0/0.
VSP_INLINE Vsp32f toSingle(Vsp64f x) { return x < kSmallest ? kSmallest : x > kLargest ? kLargest : Vsp32f(x); }

VSP_INLINE void trackEnvelopes(State& s) {
    s.envelope = 0.8f * s.blockMean + 0.2f * s.envelope;
    s.peakEnvelope = maxOf(s.envelope, 0.99f * s.peakEnvelope);
}

// The noise level falls quickly, rises slowly, and is held up by the speech level once there has been a burst.
VSP_INLINE void trackNoise(State& s) {
    Vsp32f noise = s.noiseLevel;
    if (noise > s.envelope)
        noise = 0.9f * noise + 0.1f * s.envelope;
    else if (2.0f * noise > s.envelope)
        noise = 0.99f * noise + 0.01f * s.envelope;
    noise = maxOf(s.noiseFloor, noise);

    const bool levelKnown =
        s.burstCount >= 2 || (s.burstCount == 1 && s.activeBlocks > kLearningBlocks && s.rate < 0.0025f);
    const Vsp32f speechFloor = levelKnown ? s.level * kLevelToNoise : 0.0f;
    s.noiseLevel = minOf(s.noiseCeiling, maxOf(speechFloor, noise));
    s.threshold = 4.0f * s.noiseLevel;

    if (s.slowEnvelope > s.envelope)
        s.slowEnvelope = 0.7f * s.slowEnvelope + 0.3f * s.envelope;
    else
        s.slowEnvelope = 0.99f * s.slowEnvelope + 0.01f * s.envelope;
    s.slowEnvelope = maxOf(s.noiseLevel, s.slowEnvelope);
}

// Onset and hangover of a speech burst. One that had fewer than kShortBurst active blocks is undone when it ends.
VSP_INLINE void trackBurst(State& s) {
    if (s.blockMean > s.threshold) s.activeBlocks = countUp(s.activeBlocks);
    if (s.peakEnvelope > s.threshold) {
        s.hangoverCount = 0;
        if (s.speechActive == 0) {
            s.speechActive = 1;
            s.burstCount = countUp(s.burstCount);
            s.levelScale = 0.7f;
            s.savedPower = s.power;
            s.savedGain = s.gain;
            s.savedRate = s.rate;
        }
    } else if (s.speechActive == 1) {
        s.hangoverCount = countUp(s.hangoverCount);
        if (Vsp32f(s.hangoverCount) == s.hangover) {
            s.speechActive = 0;
            if (s.activeBlocks < kShortBurst) {
                s.rate = s.savedRate;
                s.power = s.savedPower;
                s.gain = s.savedGain;
                s.burstCount = Vsp16s(s.burstCount - 1);
            }
        }
    }
    if (s.speechActive == 0) s.activeBlocks = 0;
}

VSP_INLINE void trackSpeechLevel(State& s) {
    const bool firstBurst = s.burstCount == 1;
    const bool tooEarly = s.activeBlocks < 10 || (s.activeBlocks < kLearningBlocks && 3.0f * s.slowEnvelope > s.envelope);
    s.gainStep = firstBurst && tooEarly ? 0.0f : s.stepRate;

    if (s.speechActive == 0)
        s.speechLevel = s.burstCount == 0 ? s.peakEnvelope : s.level;
    else if (s.peakEnvelope > s.speechLevel)
        s.speechLevel = s.peakEnvelope;
    else if (s.peakEnvelope > s.threshold)
        s.speechLevel = 0.001f * s.peakEnvelope + 0.999f * s.speechLevel;
}

VSP_INLINE void trackPower(State& s) {
    const bool learning = s.activeBlocks < kLearningBlocks;
    if (s.speechActive == 0) {
        s.rate = s.burstCount == 0 ? 0.1f : maxOf(s.idleRateFloor, s.rate);
    } else {
        if (s.burstCount == 1 && learning && 0.1f * s.blockPower > s.power) s.rate = maxOf(0.05f, s.rate);
        if (s.threshold > s.envelope) {
            if (learning) s.levelScale = 0.7f;
        } else if (s.blockMean >= s.threshold || s.activeBlocks >= 20) {
            s.rate = s.rate - s.rate * s.rate;
            s.power = s.power + (s.blockPower - s.power) * s.rate;
        }
    }
    s.rate = maxOf(s.rateFloor, s.rate);

    s.level = sqrtf(s.power) * s.levelScale;  // correctly rounded, like a double root rounded to single
    if (learning) s.levelScale = minOf(0.89f, s.levelScale + 0.000461f * s.levelScale);
}

// The gain grows by a fixed part of its target in every block of speech and falls only when the cap does.
VSP_INLINE void moveGain(State& s) {
    if (s.speechActive == 0) return;
    Vsp32f goal, cap;
    if (s.target > s.level * s.maxGain) {
        goal = s.target > s.maxGain * s.speechLevel ? s.maxGain : s.target / s.speechLevel;
        cap = s.maxGain;
    } else {
        goal = cap = s.target / s.level;
    }
    s.gain = minOf(cap, s.gain + s.gainStep * goal);
}

// The gain that the block gets: it drops at once where the peak would pass the limit and recovers slowly.
VSP_INLINE void limitGain(State& s) {
    s.appliedGain = minOf(s.gain, s.appliedGain + (s.gain - s.appliedGain) * s.attack);
    if (s.appliedGain * s.blockPeak > s.peakLimit) {
        s.appliedGain = s.peakLimit / s.blockPeak;
        s.attack = 0.001f;
    } else {
        s.attack = minOf(1.0f, 1.1f * s.attack);
    }
}

}  // namespace

VspStatus vspsALCGetStateSize_G169_16s(Vsp32s* pSize) {
    if (anyNull(pSize)) return vspStsNullPtrErr;
    *pSize = sizeof(State);
    return vspStsNoErr;
}

VspStatus vspsALCInit_G169_16s(VspALCState_G169_16s* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    *pState = State{};
    return vspStsNoErr;
}

VspStatus vspsALCSetLevel_G169_16s(VspALCState_G169_16s* pState, Vsp32f target, Vsp32f limit) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    if (!(target >= 0.0f) || !(limit >= 0.0f)) return vspStsRangeErr;  // NaN too
    pState->target = toSingle(32768.0 / pow(10.0, target / 20.0));
    pState->peakLimit = toSingle(32768.0 / pow(10.0, limit / 20.0));
    return vspStsNoErr;
}

VspStatus vspsALCSetGain_G169_16s(VspALCState_G169_16s* pState, Vsp32f gain) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    if (!(gain >= 0.0f)) return vspStsRangeErr;  // NaN too
    pState->maxGain = toSingle(pow(10.0, gain / 20.0));
    return vspStsNoErr;
}

VspStatus vspsALC_G169_16s(const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len, VspALCState_G169_16s* pState) {
    if (anyNull(pSrc, pDst, pState)) return vspStsNullPtrErr;
    if (len < kBlock || len % kBlock != 0) return vspStsSizeErr;
    State s = *pState;
    forBlocks(len, kGroup * kBlock, [&](Vsp32s done, Vsp32s count) {
        const int blocks = count / kBlock;
        BlockMeasures measures;
        if (blocks == kGroup) {
            measureBlocks(pSrc + done, measures);
        } else {
            Vsp16s padded[kGroup * kBlock] = {};
            for (int i = 0; i < count; i++) padded[i] = pSrc[done + i];
            measureBlocks(padded, measures);
        }
        for (int b = 0; b < blocks; b++) {
            s.blockMean = measures.mean[b];
            s.blockPower = measures.power[b];
            s.blockPeak = measures.peak[b];
            trackEnvelopes(s);
            trackNoise(s);
            trackBurst(s);
            trackSpeechLevel(s);
            trackPower(s);
            moveGain(s);
            limitGain(s);
            applyGain(pSrc + done + b * kBlock, pDst + done + b * kBlock, s.appliedGain);
        }
    });
    *pState = s;
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
