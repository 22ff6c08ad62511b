// The functions that the family exports, declared at the level that is being compiled.
#pragma once

#include "core/level.h"
#include "vspsc/g7221.h"

namespace vsp::VSP_LEVEL {
#include "g7221/exports.def"
}  // namespace vsp::VSP_LEVEL
