// State of the noise filter, from the first line of 64 bytes on in the caller's memory. Its arrays follow; what is kept is
// their place, in bytes from the beginning.
#pragma once

#include "core/inline.h"
#include "core/level.h"
#include "vspsc/types.h"

namespace vsp::VSP_LEVEL {

constexpr Vsp32s kLine = 64;
constexpr int kMinimumParts = 8;  // of the time in which a minimum is searched

// Arrays over time, as long as the transform.
enum NoiseSignal { kWindow, kSynthesisWindow, kNewest, kOverlap, kFrame, kNoiseSignals };

// Arrays over frequency, of half the length and one.
enum NoiseBand {
    kSmoothed,    // power, over time and three bands
    kLowest,      // its minimum over the last parts
    kNextLowest,  // and in the part that is under way
    kPause,       // power where there seems to be no speech, smoothed likewise
    kLowestPause,
    kNextLowestPause,
    kNoise,   // power
    kClean,   // power of the last result over that of the noise
    kExcess,  // power over that of the noise, over a short time
    kPower,
    kGain,
    kScratch,
    kParts,
    kPauseParts = kParts + kMinimumParts,
    kNoiseBands = kPauseParts + kMinimumParts
};

struct NoiseState {
    Vsp32s samplingRate, frameLen, order, mode;
    Vsp32s signalsAt, bandsAt, spectrumAt, fftAt, workAt;  // bytes
    Vsp32s frames;  // from the first one that lies in the signal altogether, up to those that the estimate begins with
    Vsp32s part, framesInPart, framesPerPart;
    Vsp32s reach;  // bands to either side that tell of speech
    Vsp32f smoothing, noiseMemory, cleanMemory, excessMemory, unrestMemory;
    Vsp32f unrest;  // the mean of the noise over its minima
};
static_assert(sizeof(NoiseState) == 80);

VSP_INLINE Vsp64s lineBytes(Vsp64s elements) { return (4 * elements + (kLine - 1)) & -Vsp64s(kLine); }
VSP_INLINE Vsp32s bandsOf(const NoiseState& s) { return (1 << (s.order - 1)) + 1; }

VSP_INLINE NoiseState& noiseStateAt(void* p) {
    return *reinterpret_cast<NoiseState*>((reinterpret_cast<unsigned long>(p) + (kLine - 1)) &
                                          -static_cast<unsigned long>(kLine));
}

template <class T = Vsp32f>
VSP_INLINE T* atOffset(NoiseState& s, Vsp64s bytes) {
    return reinterpret_cast<T*>(reinterpret_cast<Vsp8u*>(&s) + bytes);
}
VSP_INLINE Vsp32f* signalOf(NoiseState& s, int signal) {
    return atOffset(s, s.signalsAt + signal * lineBytes(1LL << s.order));
}
VSP_INLINE Vsp32f* bandOf(NoiseState& s, int band) { return atOffset(s, s.bandsAt + band * lineBytes(bandsOf(s))); }

}  // namespace vsp::VSP_LEVEL
