// The functions that the family exports, declared at the level that is being compiled.
#pragma once

#include "core/level.h"
#include "vspsc/g723.h"

namespace vsp::VSP_LEVEL {
#include "g723/exports.def"
}  // namespace vsp::VSP_LEVEL
