// The adaptive-codebook vector in the decoder, with lags for lost frames (`lagconc`; 3GPP TS 26.190, 6.1, TS 26.191).
#include "amrwb/adaptive_vector.h"
#include "amrwb/exports.h"
#include "amrwb/modes.h"
#include "amrwb/pitch_range.h"
#include "arithmetic/standard_ops.h"
#include "common/history.h"
#include "common/random.h"
#include "core/checks.h"
#include "core/state_size.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kLags = 5;
constexpr Vsp16s kStartLag = 64;

struct State {
    Vsp16s lags[kLags];  // newest first
    Vsp16s lastGood, lagMin, seed;
    Vsp16s unused[4];
};
static_assert(sizeof(State) == 24);

struct Delay {
    int lag, fraction;
};

VSP_INLINE int clip(int x, int low, int high) { return x < low ? low : x > high ? high : x; }

bool isAbsolute(Vsp16s subframe, Vsp32s mode) { return subframe == 0 || (subframe == 2 && mode != kMode660); }

int indexBits(Vsp32s mode, bool absolute) {
    const int bits = absolute ? 8 : 5;
    return isLowWideMode(mode) ? bits : bits + 1;
}

// Lags from the first one on, in so many steps to a sample.
Delay inSteps(int index, int steps, int first) { return {first + index / steps, index % steps * (4 / steps)}; }

Delay decodeIndex(int index, Vsp32s mode, bool absolute, int lagMin) {
    if (isLowWideMode(mode)) {
        if (!absolute) return inSteps(index, 2, lagMin);
        constexpr int kHalves = 2 * (kLowResolution.whole - kShortestLag);
        return index < kHalves ? inSteps(index, 2, kShortestLag) : Delay{index - kHalves + kLowResolution.whole, 0};
    }
    if (!absolute) return inSteps(index, 4, lagMin);
    constexpr int kQuarters = 4 * (kResolution.halves - kShortestLag);
    constexpr int kHalves = 2 * (kResolution.whole - kResolution.halves);
    if (index < kQuarters) return inSteps(index, 4, kShortestLag);
    index -= kQuarters;
    return index < kHalves ? inSteps(index, 2, kResolution.halves) : Delay{index - kHalves + kResolution.whole, 0};
}

// --- Lost frames -------------------------------------------------------------------------------------------------------

struct PitchHistory {
    Vsp16s sorted[kLags];  // by size
    Vsp16s newest, mean;
    Vsp16s leastGain, lastGain;
    bool voiced;  // the newest two gains are high

    PitchHistory(const Vsp16s* lags, const Vsp16s* gains) : newest(lags[0]), leastGain(gains[0]), lastGain(gains[4]) {
        constexpr Vsp16s kHighGain = 8192, kOneFifth = 6554;
        Vsp16s sum = 0;
        for (int i = 0; i < kLags; i++) {
            int at = i;
            for (; at > 0 && sorted[at - 1] > lags[i]; at--) sorted[at] = sorted[at - 1];
            sorted[at] = lags[i];
            sum = Add_16s(sum, lags[i]);
            if (gains[i] < leastGain) leastGain = gains[i];
        }
        mean = Mul_16s(sum, kOneFifth);
        voiced = gains[3] > kHighGain && gains[4] > kHighGain;
    }

    Vsp16s least() const { return sorted[0]; }
    Vsp16s most() const { return sorted[kLags - 1]; }
    int spread() const { return Sub_16s(most(), least()); }
    bool steady() const { return spread() < 10; }
    bool steadilyVoiced() const { return leastGain > 8192 && steady(); }
    bool within(int lag) const { return lag > least() && lag < most(); }

    // Whether the lag of a bad frame can be right.
    bool agreesWith(int lag) const {
        constexpr Vsp16s kLowGain = 6554;
        if (steady() && lag > least() - 5 && lag - most() < 5) return true;
        if (voiced && lag - newest > -10 && lag - newest < 10) return true;
        if (leastGain < kLowGain && lastGain == leastGain && within(lag)) return true;
        if (spread() < 70 && within(lag)) return true;
        return lag > mean && lag < most();
    }

    // One near the longest three.
    Vsp16s randomLag(Vsp16s* seed) const {
        constexpr Vsp16s kOneThird = 10923, kMostSpread = 40;
        Vsp16s spreadOfLongest = Sub_16s(sorted[4], sorted[2]);
        if (spreadOfLongest > kMostSpread) spreadOfLongest = kMostSpread;
        const Vsp16s deviation = Mul_16s(Vsp16s(spreadOfLongest >> 1), ownRandom(seed));
        return Add_16s(Mul_16s(Add_16s(Add_16s(sorted[2], sorted[3]), sorted[4]), kOneThird), deviation);
    }
};

// The lag of a bad frame, of which nothing may be usable.
int concealedLag(State& s, const Vsp16s* gains, int lag, bool usable) {
    const PitchHistory history(s.lags, gains);
    if (usable && history.agreesWith(lag)) return lag;
    if (history.steadilyVoiced())
        lag = usable ? history.newest : s.lastGood;
    else if (history.voiced)
        lag = history.newest;
    else
        lag = history.randomLag(&s.seed);
    return clip(lag, history.least(), history.most());
}

}  // namespace

VspStatus vspsAdaptiveCodebookDecodeGetSize_AMRWB_16s(Vsp32s* pSize) { return fixedSize(pSize, sizeof(State)); }

VspStatus vspsAdaptiveCodebookDecodeInit_AMRWB_16s(void* pState) {
    constexpr Vsp16s kSeed = 21845;
    if (anyNull(pState)) return vspStsNullPtrErr;
    State& s = *static_cast<State*>(pState);
    s = {};
    for (Vsp16s& lag : s.lags) lag = kStartLag;
    s.lastGood = kStartLag;
    s.lagMin = kShortestLag;
    s.seed = kSeed;
    return vspStsNoErr;
}

VspStatus vspsAdaptiveCodebookDecodeReset_AMRWB_16s(void* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    static_cast<State*>(pState)->lastGood = kStartLag;
    return vspStsNoErr;
}

VspStatus vspsAdaptiveCodebookDecode_AMRWB_16s(Vsp16s index, Vsp16s filter, Vsp16s subframe, Vsp32s mode, Vsp16s bfi,
                                               const Vsp16s* pGains, Vsp16s* pExc, Vsp16s* pDelay, void* pState) {
    constexpr Vsp16s kUnusable = 2;
    if (anyNull(pGains, pExc, pDelay, pState)) return vspStsNullPtrErr;
    if (filter != 0 && filter != 1) return vspStsRangeErr;
    if (subframe < 0 || subframe > 3 || !isWideMode(mode) || bfi < 0 || bfi > kUnusable) return vspStsRangeErr;
    const bool absolute = isAbsolute(subframe, mode);
    if (index < 0 || index >> indexBits(mode, absolute) != 0) return vspStsRangeErr;
    State& s = *static_cast<State*>(pState);

    Delay delay = decodeIndex(index, mode, absolute, clip(s.lagMin, kShortestLag, kLargestLagMin));
    if (absolute) s.lagMin = Vsp16s(clip(delay.lag - 8, kShortestLag, kLargestLagMin));
    if (bfi != 0) {
        delay = {clip(concealedLag(s, pGains, delay.lag, bfi != kUnusable), kShortestLag, kLongestLag), 0};
    } else {
        pushFront<kLags>(s.lags, Vsp16s(delay.lag));
        s.lastGood = Vsp16s(delay.lag);
    }
    ownAdaptiveVector(delay.lag, delay.fraction, pExc);
    const bool unfiltered = bfi == kUnusable || (filter == 1 && !isLowWideMode(mode));
    if (!unfiltered) {
        Vsp16s filtered[kWideSubframe];
        lowPass(pExc, filtered);
        __builtin_memcpy(pExc, filtered, sizeof filtered);
    }
    pDelay[0] = Vsp16s(delay.lag);
    pDelay[1] = Vsp16s(delay.fraction);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
