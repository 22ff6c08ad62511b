// Music detector, which corrects the voice activity detector at 11.8 kbit/s (G.729 Annexes G and I).
#include "arithmetic/split_32.h"
#include "core/checks.h"
#include "core/state_size.h"
#include "g729/exports.h"
#include "g729/vad.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kPeriod = 64;  // frames over which music and pitch are counted
constexpr int kValues = 5;   // lags and gains
constexpr Vsp16s kCount = 256;

struct State {
    Vsp16s frames;
    Vsp16s meanReflection[kLspOrder], meanEnergy, meanGain;
    Vsp16s reflectionRun;  // frames with a reflection coefficient of noise
    Vsp16s music, meanMusic, runWithoutMusic;
    Vsp16s pitch, meanPitch, runWithoutPitch;
};
static_assert(sizeof(State) == 40);

constexpr int kRate11 = 2;  // 11.8 kbit/s

Vsp16s mix(Vsp16s oldWeight, Vsp16s mean, Vsp16s newWeight, Vsp16s value) {
    return high_32s(mac_32s(Mul2_16s32s(oldWeight, mean), newWeight, value));
}

// Share of the energy that the first four stages of prediction leave, Q15.
Vsp16s predictionError(const Vsp16s* rc) {
    Vsp16s error = 32767;
    for (int i = 0; i < 4; i++) {
        const Vsp16s factor = Sub_16s(32767, Mul_16s(rc[i], rc[i]));
        error = i == 0 ? factor : Mul_16s(error, factor);
    }
    return error;
}

Vsp16s distortion(const Vsp16s* mean, const Vsp16s* rc) {
    Vsp32s sum = 0;
    for (int i = 0; i < kLspOrder; i++) {
        const Vsp16s difference = Sub_16s(mean[i], rc[i]);
        sum = mac_32s(sum, difference, difference);
    }
    return high_32s(sum);
}

Vsp16s smoothGain(Vsp16s mean, const Vsp16s* gain) {
    Vsp32s sum = 0;
    for (int i = 0; i < kValues; i++) sum = mac_32s(sum, gain[i], 6554);
    return mix(6554, high_32s(sum), 26214, mean);
}

Vsp16s lagSpread(const Vsp16s* lag) {
    Vsp16s sum = 0;
    for (int i = 0; i < kValues; i++) sum = Add_16s(sum, lag[i]);
    Vsp32s spread = 0;
    for (int i = 0; i < kValues; i++) {
        const Vsp16s difference = Sub_16s(Add_16s(ShiftL_16s(lag[i], 2), lag[i]), sum);
        spread = mac_32s(spread, difference, difference);
    }
    return high_32s(shl_32s(spread, 22));
}

// Counts an event over a period, and the frames since there was one; the mean over periods.
struct Counter {
    Vsp16s &count, &mean, &run;
    const int maxRun;

    void take(bool event) const {
        if (event) count = Add_16s(count, kCount);
    }
    void finish(const State& s, Vsp16s oldWeight, Vsp16s newWeight) const {
        const bool periodEnds = s.frames % kPeriod == 0;
        if (periodEnds) mean = s.frames == kPeriod ? count : mix(oldWeight, mean, newWeight, count);
        run = count == 0 ? Add_16s(run, 1) : Vsp16s(0);
        if (run > maxRun || s.reflectionRun > 150) mean = 0;
        if (periodEnds) count = 0;
    }
};

}  // namespace

VspStatus vspsMusicDetectGetStateSize_G729E_16s(Vsp32s* pSize) { return fixedSize(pSize, sizeof(State)); }

VspStatus vspsMusicDetectInit_G729E_16s(void* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    State& s = *static_cast<State*>(pState);
    s = {};
    s.meanGain = 8192;
    return vspStsNoErr;
}

VspStatus vspsMusicDetect_G729E_16s(Vsp16s rate, Vsp32s r0, Vsp16s expR0, const Vsp16s* pRC, const Vsp16s* pLag,
                                    const Vsp16s* pGain, Vsp16s prevMode, Vsp16s prevVad, Vsp16s* pVad, void* pState) {
    if (anyNull(pRC, pLag, pGain, pVad, pState)) return vspStsNullPtrErr;
    if (rate < 0 || rate > 2) return vspStsRangeErr;
    if (prevMode != 0 && prevMode != 1) return vspStsRangeErr;
    if (prevVad != 0 && prevVad != 1) return vspStsRangeErr;
    if (*pVad != 0 && *pVad != 1) return vspStsRangeErr;
    State& s = *static_cast<State*>(pState);
    s.frames = s.frames == 32767 ? Vsp16s(256) : Vsp16s(s.frames + 1);

    const Vsp16s energy = vadEnergy(r0 & ~1, expR0);
    const Vsp16s residualEnergy = vadEnergy(mulSplit_32s16s(r0, predictionError(pRC)), expR0);
    const Vsp16s change = distortion(s.meanReflection, pRC), rise = Sub_16s(residualEnergy, s.meanEnergy);
    if (*pVad == 0) {
        for (int i = 0; i < kLspOrder; i++) s.meanReflection[i] = mix(29491, s.meanReflection[i], 3277, pRC[i]);
        s.meanEnergy = mix(29491, s.meanEnergy, 3277, residualEnergy);
    }
    s.meanGain = smoothGain(s.meanGain, pGain);
    const bool periodic = s.meanGain > (rate == 0 ? 11960 : 10322);
    const bool steady = lagSpread(pLag) < 21632 && s.meanGain > 7373;
    const bool noiseLike = pRC[1] >= 0 && pRC[1] <= 14746 && s.meanGain < 8192;
    s.reflectionRun = noiseLike ? Add_16s(s.reflectionRun, 1) : Vsp16s(0);

    const Counter music{s.music, s.meanMusic, s.runWithoutMusic, 500};
    music.take(prevMode == 1 && *pVad == 1);
    music.finish(s, 29491, 3277);
    const Counter pitch{s.pitch, s.meanPitch, s.runWithoutPitch, 100};
    pitch.take(periodic || (prevVad == 1 && steady));
    if (s.pitch > 6400)
        pitch.finish(s, 32113, 655);
    else if (s.pitch > 5120)
        pitch.finish(s, 31130, 1638);
    else
        pitch.finish(s, 29491, 3277);

    if (rate != kRate11) return vspStsNoErr;
    const bool changed = change > 12452 || rise > 819;  // includes a smaller change with a rise
    const bool musical = s.meanPitch > 2560 || s.meanMusic > 280 || s.frames < kPeriod;
    if ((changed && energy > 10240) || (musical && energy > 1433)) *pVad = 1;
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
