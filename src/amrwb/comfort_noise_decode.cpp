// Comfort noise in the decoder (`rx_dtx_handler`, `dtx_dec`, `dtx_dec_activity_update`; 3GPP TS 26.192, 26.193).
#include "amrwb/comfort_noise.h"
#include "amrwb/exports.h"
#include "core/checks.h"
#include "core/state_size.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kEnergyIndex = 5, kDitherIndex = 6;

struct State {
    Vsp16s sinceSid, inversePeriod;
    Vsp16s level, oldLevel;
    Vsp16s isf[kIsfOrder], oldIsf[kIsfOrder];
    Vsp16s isfHistory[kDtxHistory][kIsfOrder], levelHistory[kDtxHistory];
    Vsp16s newest, hangover, elapsed;
    Vsp16s sid, validData, hangoverAdded, dataUpdated;
    Vsp16s lastState, noiseFrames;
    Vsp16s dithered, seed, ditherSeed;
    Vsp16s unused[16];
};
static_assert(sizeof(State) == 400);

void copy(const Vsp16s* from, Vsp16s* to) {
    for (int i = 0; i < kIsfOrder; i++) to[i] = from[i];
}

// A first silence descriptor after hangover: the noise is what was decoded as speech.
void takeHistory(State& s) {
    const Vsp16s newest = s.newest & (kDtxHistory - 1), oldest = nextInHistory(newest);
    copy(s.isfHistory[newest], s.isfHistory[oldest]);
    s.levelHistory[oldest] = s.levelHistory[newest];
    Vsp16s sum = 0;
    for (const Vsp16s level : s.levelHistory) sum = Add_16s(sum, level);
    const Vsp16s level = Add_16s(Vsp16s(sum >> 1), 1024);
    s.level = level < 0 ? Vsp16s(0) : level;
    meanOfHistory(s.isfHistory, s.isf);
}

void takeParameters(State& s, const Vsp16s* index) {
    s.inversePeriod = inversePeriodOfUpdates(s.sinceSid);
    s.sinceSid = 0;
    vspsISFDecodeDTX_AMRWB_16s(index, s.isf);
    s.level = logEnergyOfIndex(index[kEnergyIndex]);
    s.dithered = index[kDitherIndex];
    if (s.dataUpdated == 0 || s.lastState == kSpeech) {
        copy(s.isf, s.oldIsf);
        s.oldLevel = s.level;
    }
}

// The sum of two random numbers, whose distribution is a triangle.
Vsp16s triangularRandom(Vsp16s* seed) {
    const Vsp16s a = Vsp16s(ownRandom(seed) >> 1), b = Vsp16s(ownRandom(seed) >> 1);
    return Add_16s(a, b);
}

// Varies level and spectrum (`CN_dithering`).
Vsp32s dither(Vsp32s level, Vsp16s* isf, Vsp16s* seed) {
    constexpr Vsp16s kLevelFactor = 75, kIsfFactor = 256, kIsfStep = 2, kLeast = 128, kGap = 448, kMost = 16384;
    level = Add_32s(level, Mul2_16s32s(triangularRandom(seed), kLevelFactor));
    Vsp16s least = kLeast;
    for (int i = 0; i + 1 < kIsfOrder; i++) {
        const Vsp16s factor = Vsp16s(kIsfFactor + i * kIsfStep);
        const Vsp16s varied = Add_16s(isf[i], mulRound_16s(triangularRandom(seed), factor));
        isf[i] = varied > least ? varied : least;
        least = Add_16s(isf[i], kGap);
    }
    if (isf[kIsfOrder - 2] > kMost) isf[kIsfOrder - 2] = kMost;
    return level > 0 ? level : 0;
}

void mute(State& s) {
    constexpr Vsp16s kFade = 64;
    s.inversePeriod = inversePeriodOfMuting(s.sinceSid);
    s.sinceSid = 0;
    s.oldLevel = s.level;
    s.level = Sub_16s(s.level, kFade);
}

bool fits(const Vsp16s* index) {
    static constexpr Vsp8u kBits[7] = {6, 6, 6, 5, 5, 6, 1};
    for (int i = 0; i < 7; i++)
        if (index[i] < 0 || index[i] >> kBits[i] != 0) return false;
    return true;
}

}  // namespace

VspStatus vspsCNGGetSize_AMRWB_16s(Vsp32s* pSize) { return fixedSize(pSize, sizeof(State)); }

VspStatus vspsCNGInit_AMRWB_16s(void* pState) {
    constexpr Vsp16s kLevel = 3500, kSeed = 21845;
    if (anyNull(pState)) return vspStsNullPtrErr;
    State& s = *static_cast<State*>(pState);
    s = {};
    s.inversePeriod = 8192;
    s.level = s.oldLevel = kLevel;
    resetIsf(s.isf);
    resetIsf(s.oldIsf);
    for (int n = 0; n < kDtxHistory; n++) {
        resetIsf(s.isfHistory[n]);
        s.levelHistory[n] = kLevel >> 3;
    }
    s.hangover = kDtxHangover;
    s.elapsed = kMax16;
    s.seed = s.ditherSeed = kSeed;
    return vspStsNoErr;
}

VspStatus vspsCNGHandler_AMRWB_16s(Vsp16s frameType, Vsp16s* pNewState, void* pState) {
    constexpr Vsp16s kManyNoiseFrames = 7;
    if (anyNull(pNewState, pState)) return vspStsNullPtrErr;
    if (frameType < kGood || frameType > kNoData) return vspStsRangeErr;
    State& s = *static_cast<State*>(pState);
    *pNewState = ownSynthesis(s, frameType, s.lastState, [&s, frameType](Synthesis) {
        return frameType == kNoData && (s.lastState != kSpeech || s.noiseFrames >= kManyNoiseFrames);
    });
    return vspStsNoErr;
}

VspStatus vspsCNGDecode_AMRWB_16s(const Vsp16s* pIndex, Vsp16s newState, Vsp16s* pISF, Vsp16s* pExc, void* pState) {
    if (anyNull(pIndex, pISF, pExc, pState)) return vspStsNullPtrErr;
    if (!fits(pIndex) || (newState != kDtx && newState != kMuted)) return vspStsRangeErr;
    State& s = *static_cast<State*>(pState);
    const bool sid = s.sid != 0, valid = sid && s.validData != 0, fromHistory = sid && s.hangoverAdded != 0;
    if (fromHistory) takeHistory(s);
    if (sid) {
        copy(s.isf, s.oldIsf);
        s.oldLevel = s.level;
    }
    if (valid) takeParameters(s, pIndex);

    const auto between = NoiseInterpolation::after(s.sinceSid, s.inversePeriod);
    Vsp32s level = between.level(s.level, s.oldLevel);
    between.vector(s.isf, s.oldIsf, kIsfOrder, pISF);
    if (s.dithered != 0) level = dither(level, pISF, &s.ditherSeed);
    level >>= 9;
    ownNoiseExcitation(high_32s(level), Vsp16s((level & 0xFFFF) >> 1), &s.seed, pExc);

    if (newState == kMuted) mute(s);
    if (valid || fromHistory) {
        s.sinceSid = 0;
        s.dataUpdated = 1;
    }
    return vspStsNoErr;
}

VspStatus vspsCNGUpdate_AMRWB_16s(const Vsp16s* pISF, const Vsp16s* pExc, void* pState) {
    if (anyNull(pISF, pExc, pState)) return vspStsNullPtrErr;
    State& s = *static_cast<State*>(pState);
    s.newest = nextInHistory(s.newest);
    copy(pISF, s.isfHistory[s.newest]);
    s.levelHistory[s.newest] = frameLogEnergy(energy(pExc, kWideFrame));
    return vspStsNoErr;
}

VspStatus vspsCNGSetState_AMRWB_16s(Vsp16s newState, Vsp16s vad, Vsp16s bfi, void* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    if (newState < kSpeech || newState > kMuted) return vspStsRangeErr;
    if ((vad != 0 && vad != 1) || (bfi != 0 && bfi != 1)) return vspStsRangeErr;
    State& s = *static_cast<State*>(pState);
    if (newState == kSpeech) {
        if (bfi == 0 ? vad == 0 : s.noiseFrames != 0)
            s.noiseFrames = Add_16s(s.noiseFrames, 1);
        else
            s.noiseFrames = 0;
    }
    s.lastState = newState;
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
