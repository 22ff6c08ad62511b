// The functions that the family exports, declared at the level that is being compiled.
#pragma once

#include "core/level.h"
#include "vspsc/g7291.h"

namespace vsp::VSP_LEVEL {
#include "g7291/exports.def"
}  // namespace vsp::VSP_LEVEL
