#pragma once

#include "core/level.h"

namespace vsp::VSP_LEVEL {

// G.729 Interpol_3: the normalised correlation at corr + fraction / 3, fraction -2 .. 2. Reads corr[-4 .. 4].
Vsp32s ownInterpol_3(const Vsp16s* corr, int fraction);

}  // namespace vsp::VSP_LEVEL
