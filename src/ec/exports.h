// The functions that the family exports, declared at the level that is being compiled.
#pragma once

#include "core/level.h"
#include "vspsc/ec.h"

namespace vsp::VSP_LEVEL {
#include "ec/exports.def"
}  // namespace vsp::VSP_LEVEL
