// What the voice activity detectors in fixed and in floating point share (G.729 B.3): their memory, the tracking of the
// lowest energy, the smoothing of decisions and the background means. Arithmetic has the types, the limits and the few
// operations in which they differ.
#pragma once

#include "core/inline.h"
#include "g729/lsp_tables.h"

namespace vsp {

constexpr int kVadInitFrames = 32, kVadMinimumFrames = 128;
constexpr int kVadMinima = 16, kVadMinimumPeriod = 8;           // the minima of so many periods of frames
constexpr int kVadFirstCrossing = 121, kVadLastCrossing = 200;  // samples of the window
constexpr int kVadLags = 13;

template <class T, class Count>
struct VadMemory {
    T meanLSF[kLspOrder];
    T minima[kVadMinima];
    T previousMin, nextMin, min;
    T meanE, meanSE, meanSLE, meanSZC;
    T previousEnergy;
    Count countSil, countUpdate, countExt, flag, v_flag, lessCount;
    Count frames;
    Count pastVad, ppastVad;
};

template <class T>
struct VadFeatures {
    T energy, lowEnergy, spectralDistortion, crossings;
    T dSE, dSLE, dSZC;  // means less the values of the frame
    T rc1;
};

// The shares of the means that stay in an update, the more the more updates there were.
template <class T>
struct VadWeights {
    int below;                          // so many updates; 0 in the last set
    T energy[2], crossings[2], lsf[2];  // of the mean and of the frame
};

template <class Arithmetic, class Memory>
VSP_INLINE void startVad(Memory& s) {
    s = {};
    s.flag = 1;
    s.min = Arithmetic::kHighest;
    s.pastVad = s.ppastVad = 1;
}

template <class Memory>
VSP_INLINE void countVadFrame(Memory& s) {
    if (s.frames >= 32767)
        s.frames = 256;
    else
        s.frames = decltype(s.frames)(s.frames + 1);
}

template <class T>
VSP_INLINE T smallestOf(const T* values, int n) {
    T smallest = values[0];
    for (int i = 1; i < n; i++) smallest = values[i] < smallest ? values[i] : smallest;
    return smallest;
}

// The lowest energy of the last 128 frames or so, in periods of 8.
template <class Arithmetic, class Memory, class T>
VSP_INLINE void trackMinimum(Memory& s, T energy) {
    const bool periodEnds = s.frames % kVadMinimumPeriod == 0;
    if (s.frames <= kVadMinimumFrames) {
        if (energy < s.min) s.min = s.previousMin = energy;
        if (periodEnds) {
            s.minima[(s.frames / kVadMinimumPeriod - 1) & (kVadMinima - 1)] = s.min;
            s.min = Arithmetic::kHighest;
            s.previousMin = smallestOf(s.minima, Arithmetic::kEarlyMinima);
        }
        return;
    }
    if (s.frames % kVadMinimumPeriod == 1) {
        s.min = s.previousMin;
        s.nextMin = Arithmetic::kHighest;
    }
    if (energy < s.min) s.min = energy;
    if (energy < s.nextMin) s.nextMin = energy;
    if (periodEnds) {
        for (int i = 1; i < kVadMinima; i++) s.minima[i - 1] = s.minima[i];
        s.minima[kVadMinima - 1] = s.nextMin;
        s.previousMin = smallestOf(s.minima, kVadMinima);
    }
}

// The decision after hangover and its opposite.
template <class Arithmetic, class Memory, class T>
VSP_INLINE int smoothDecision(Memory& s, int vad, const VadFeatures<T>& f) {
    s.v_flag = 0;
    if (s.pastVad == 1 && vad == 0 && Arithmetic::wellAboveNoise(s, f)) {
        vad = 1;
        s.v_flag = 1;
    }
    if (s.flag == 1) {
        if (s.ppastVad == 1 && s.pastVad == 1 && vad == 0 && Arithmetic::similar(s.previousEnergy, f.energy)) {
            s.countExt = Arithmetic::next(s.countExt);
            vad = 1;
            s.v_flag = 1;
            if (s.countExt > 4) s.countExt = s.flag = 0;
        }
    } else {
        s.flag = 1;
    }
    if (vad == 0) s.countSil = Arithmetic::next(s.countSil);
    if (vad == 1 && s.countSil > 10 && !Arithmetic::rises(s.previousEnergy, f.energy)) {
        vad = 0;
        s.countSil = 0;
    }
    if (vad == 1) s.countSil = 0;
    if (Arithmetic::nearNoise(f.energy, s.meanSE) && s.frames > kVadMinimumFrames && s.v_flag == 0 &&
        f.rc1 < Arithmetic::kSpeechReflection)
        vad = 0;
    return vad;
}

template <class Arithmetic, class Memory, class T>
VSP_INLINE void updateMeans(Memory& s, const VadFeatures<T>& f, const T* lsf) {
    if (Arithmetic::nearNoise(f.energy, s.meanSE) && f.rc1 < Arithmetic::kNoiseReflection &&
        f.spectralDistortion < Arithmetic::kNoiseDistortion) {
        s.countUpdate = Arithmetic::next(s.countUpdate);
        const VadWeights<T>* w = Arithmetic::kWeights;
        while (w->below != 0 && s.countUpdate >= w->below) w++;
        s.meanSE = Arithmetic::weigh(w->energy, s.meanSE, f.energy);
        s.meanSLE = Arithmetic::weigh(w->energy, s.meanSLE, f.lowEnergy);
        s.meanSZC = Arithmetic::weigh(w->crossings, s.meanSZC, f.crossings);
        for (int i = 0; i < kLspOrder; i++) s.meanLSF[i] = Arithmetic::weigh(w->lsf, s.meanLSF[i], lsf[i]);
    }
    if (Arithmetic::belowMinimum(s, f)) {
        s.meanSE = s.min;
        s.countUpdate = 0;
    }
}

// Stores the decision and returns it.
template <class Memory>
VSP_INLINE int storeDecision(Memory& s, int vad) {
    s.ppastVad = s.pastVad;
    s.pastVad = decltype(s.pastVad)(vad);
    return vad;
}

}  // namespace vsp
