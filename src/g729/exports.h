// The functions that the family exports, declared at the level that is being compiled.
#pragma once

#include "core/level.h"
#include "vspsc/g729.h"

namespace vsp::VSP_LEVEL {
#include "g729/exports.def"
}  // namespace vsp::VSP_LEVEL
