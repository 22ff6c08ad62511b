// A frame of GSM-AMR as its encoder makes it and its decoder takes it: parameters before they are packed.
#pragma once

#include "vspsc/types.h"

namespace vspv::amr {

constexpr int kSamples = 160, kSubframe = 40, kOrder = 10, kMaxParameters = 57;

// Bit rates as libvspscy8 numbers them.
constexpr Vsp32s kMode475 = 0, kMode515 = 1, kMode590 = 3, kMode670 = 6, kMode740 = 7, kMode795 = 8, kMode102 = 11,
                 kMode122 = 12, kModeSid = 25;

enum class Detector { none, option1, option2 };

// What the encoder sends.
enum class SentType { speech, sidFirst, sidUpdate, noData };

// What the decoder is told of a frame.
enum class ReceivedType { good, degraded, onset, bad, sidFirst, sidUpdate, sidBad, noData };

// The parameters in the order of their bits: indices of the LSPs, then for each subframe the delay, the pitch gain (12.2
// kbit/s), pulses and gains; of a silence descriptor five.
struct Parameters {
    Vsp16s values[kMaxParameters];
};

// Line spectral pairs before the first frame.
inline constexpr Vsp16s kStartLsp[kOrder] = {30000, 26000, 21000, 15000, 8000, 0, -8000, -15000, -21000, -26000};

// How many parameters the LSPs, the pulses and the gains have.
inline int lspCount(Vsp32s mode) { return mode == kMode122 ? 5 : 3; }
inline int pulseCount(Vsp32s mode) { return mode == kMode122 ? 10 : mode == kMode102 ? 7 : 2; }

inline void copy(const Vsp16s* from, int count, Vsp16s* to) {
    for (int i = 0; i < count; i++) to[i] = from[i];
}
inline void clear(Vsp16s* x, int count) {
    for (int i = 0; i < count; i++) x[i] = 0;
}
// Moves the values of a history by one; the newest is the last.
inline void push(Vsp16s* history, int count, Vsp16s newest) {
    for (int i = 0; i + 1 < count; i++) history[i] = history[i + 1];
    history[count - 1] = newest;
}

// The sharpening of the codes after a subframe.
inline Vsp16s sharpeningOf(Vsp16s pitchGain) {
    constexpr Vsp16s kMost = 13017;
    return pitchGain < kMost ? pitchGain : kMost;
}

// The predictor of the code gain at the start.
inline void resetPredictor(Vsp16s* pred) {
    for (int i = 0; i < 4; i++) {
        pred[i] = -14336;
        pred[4 + i] = -2381;
    }
}

}  // namespace vspv::amr
