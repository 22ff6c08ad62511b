// What discontinuous transmission is in both families of AMR (3GPP TS 26.092, 26.093; TS 26.192, 26.193).
#pragma once

#include "arithmetic/standard_ops.h"
#include "core/level.h"

namespace vsp::VSP_LEVEL {

constexpr int kDtxHistory = 8;      // frames that a silence descriptor describes
constexpr Vsp16s kDtxHangover = 7;  // frames of speech before it
constexpr Vsp16s kDtxElapsed = 30;  // frames after which there is a hangover again

VSP_INLINE Vsp16s nextInHistory(Vsp16s index) { return Vsp16s((index + 1) & (kDtxHistory - 1)); }

// The mean of the vectors of a history.
template <int N>
VSP_INLINE void meanOfHistory(const Vsp16s (&history)[kDtxHistory][N], Vsp16s* mean) {
    for (int i = 0; i < N; i++) {
        Vsp32s sum = 0;
        for (int n = 0; n < kDtxHistory; n++) sum += history[n][i];
        mean[i] = Vsp16s(sum >> 3);
    }
}

// --- The encoder -------------------------------------------------------------------------------------------------------

enum class DtxFrame { speech, noise, noiseToDescribe };

// What becomes of a frame (`tx_dtx_handler`).
template <class State>
VSP_INLINE DtxFrame ownDtxFrame(State& s, bool speech) {
    s.elapsed = Add_16s(s.elapsed, 1);
    if (speech) {
        s.hangover = kDtxHangover;
        return DtxFrame::speech;
    }
    if (s.hangover == 0) {
        s.elapsed = 0;
        return DtxFrame::noiseToDescribe;
    }
    s.hangover = Sub_16s(s.hangover, 1);
    return Add_16s(s.elapsed, s.hangover) < kDtxElapsed ? DtxFrame::noise : DtxFrame::speech;
}

// --- The decoder -------------------------------------------------------------------------------------------------------

enum FrameType { kGood, kDegraded, kLost, kBad, kSidFirst, kSidUpdate, kSidBad, kNoData };
enum Synthesis { kSpeech, kDtx, kMuted };

// The state after a frame, and what the frame has for the noise (`rx_dtx_handler`). encoderInDtx tells from the new state
// whether the encoder has stopped to send speech.
template <class State, class EncoderInDtx>
VSP_INLINE Synthesis ownSynthesis(State& s, Vsp32s frameType, Vsp32s prevState, EncoderInDtx encoderInDtx) {
    constexpr Vsp16s kMostWithoutSid = 50;
    const bool isSid = frameType == kSidFirst || frameType == kSidUpdate || frameType == kSidBad;
    const bool isLost = frameType == kNoData || frameType == kBad || frameType == kLost;
    Synthesis newState = kSpeech;
    if (isSid || (prevState != kSpeech && isLost)) {
        const bool staysMuted = frameType != kSidUpdate && frameType != kBad;
        newState = prevState == kMuted && staysMuted ? kMuted : kDtx;
        s.sinceSid = Add_16s(s.sinceSid, 1);
        if (frameType != kSidUpdate && s.sinceSid > kMostWithoutSid) newState = kMuted;
    } else {
        s.sinceSid = 0;
    }

    if (s.dataUpdated == 0 && frameType == kSidUpdate) s.elapsed = 0;
    s.elapsed = Add_16s(s.elapsed, 1);
    s.hangoverAdded = 0;
    if (!isSid && !encoderInDtx(newState)) {
        s.hangover = kDtxHangover;
    } else if (s.elapsed > kDtxElapsed) {
        s.hangoverAdded = 1;
        s.elapsed = 0;
        s.hangover = 0;
    } else if (s.hangover == 0) {
        s.elapsed = 0;
    } else {
        s.hangover = Sub_16s(s.hangover, 1);
    }
    if (newState != kSpeech) {
        s.sid = isSid;
        s.validData = frameType == kSidUpdate;
        if (frameType == kSidBad) s.hangoverAdded = 0;
    }
    return newState;
}

constexpr Vsp16s kLongestPeriod = 32;

// The inverse of a number of frames, Q15 of 1024.
VSP_INLINE Vsp16s inverseOf(Vsp16s frames) { return Div_16s(1 << 10, shl_16s(frames, 10)); }

// The period of the interpolation after an update.
VSP_INLINE Vsp16s inversePeriodOfUpdates(Vsp16s sinceSid) {
    const Vsp16s period = sinceSid < kLongestPeriod ? sinceSid : kLongestPeriod;
    return period >= 2 ? inverseOf(period) : Vsp16s(1 << 14);
}

// The same while the noise is muted.
VSP_INLINE Vsp16s inversePeriodOfMuting(Vsp16s sinceSid) {
    const Vsp16s period = sinceSid < kLongestPeriod ? sinceSid : kLongestPeriod;
    return inverseOf(period > 0 ? period : Vsp16s(8));
}

// Between the descriptor before and the newest one; the weights are in Q14.
struct NoiseInterpolation {
    Vsp16s ofNew, ofOld;

    [[gnu::always_inline]] static NoiseInterpolation after(Vsp16s frames, Vsp16s inversePeriod) {
        constexpr Vsp16s kWhole = 1024;
        const Vsp16s elapsed = Mul_16s(shl_16s(frames, 10), inversePeriod);
        const Vsp16s weight = shl_16s(elapsed < kWhole ? elapsed : kWhole, 4);
        return {weight, Sub_16s(16384, weight)};
    }
    [[gnu::always_inline]] Vsp32s level(Vsp16s newLevel, Vsp16s oldLevel) const {
        return mac_32s(Mul2_16s32s(ofNew, newLevel), ofOld, oldLevel);
    }
    [[gnu::always_inline]] void vector(const Vsp16s* newVector, const Vsp16s* oldVector, int n, Vsp16s* between) const {
        for (int i = 0; i < n; i++)
            between[i] = shl_16s(Add_16s(Mul_16s(ofNew, newVector[i]), Mul_16s(ofOld, oldVector[i])), 1);
    }
};

}  // namespace vsp::VSP_LEVEL
