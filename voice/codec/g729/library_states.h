// Memory of the states of the library. Their sizes are part of its interface.
#pragma once

#include "codec/library_state.h"
#include "samples.h"
#include "vspsc/common.h"
#include "vspsc/g729.h"

namespace vspv::g729 {

using HighPassState = LibraryState<24>;
using VadState = LibraryState<88>;
using NoiseCoderState = LibraryState<208>;
using NoiseDecoderState = LibraryState<24>;
using DispersionState = LibraryState<20>;
using PostFilterState = LibraryState<328>;
using FastPostFilterState = LibraryState<312>;
using BackwardPostFilterState = LibraryState<368>;
using HybridWindowState = LibraryState<124>;
using MusicState = LibraryState<40>;

// G.729 3.1 and 4.2.5
constexpr Vsp16s kInputFilter[6] = {1899, -3798, 1899, 4096, 7807, -3733};
constexpr Vsp16s kOutputFilter[6] = {7699, -15398, 7699, 8192, 15836, -7667};
constexpr Vsp32s kInputScale = 12, kOutputScale = 13;

constexpr Vsp16s kLspReset[10] = {30000, 26000, 21000, 15000, 8000, 0, -8000, -15000, -21000, -26000};
constexpr Vsp16s kLsfReset[10] = {2339, 4679, 7018, 9358, 11698, 14037, 16377, 18717, 21056, 23396};
constexpr Vsp16s kLeastSharpening = 3277, kMostSharpening = 13017;  // Q14
constexpr Vsp16s kEnergyReset = -14336;                             // Q10, -14 dB
constexpr Vsp16s kNoiseSeed = 11111;

inline Vsp16s clipped(Vsp16s x, Vsp16s least, Vsp16s most) { return x < least ? least : x > most ? most : x; }
inline Vsp16s saturated(Vsp32s x) { return Vsp16s(x < -32768 ? -32768 : x > 32767 ? 32767 : x); }

inline void resetLsfHistory(Vsp16s* history) {
    for (Vsp32s row = 0; row < 4; row++) copy(kLsfReset, history + 10 * row, 10);
}

}  // namespace vspv::g729
