#pragma once

#include "core/level.h"

namespace vsp::VSP_LEVEL {

constexpr int kLongTermPast = 152;        // samples of the residual
constexpr Vsp16s kPlainHarmonic = 16384;  // the factor of the main body

// The long-term part of the post-filter (G.729 4.2.1) on the residual of a subframe, before which kLongTermPast samples
// stand. Returns the delay, or 0, with dst untouched, where the filter is not used.
Vsp16s ownLongTermPostFilter(const Vsp16s* residual, int lag, Vsp16s harmonic, Vsp16s* dst);

}  // namespace vsp::VSP_LEVEL
