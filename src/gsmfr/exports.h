// The functions that the family exports, declared at the level that is being compiled.
#pragma once

#include "core/level.h"
#include "vspsc/gsmfr.h"

namespace vsp::VSP_LEVEL {
#include "gsmfr/exports.def"
}  // namespace vsp::VSP_LEVEL
