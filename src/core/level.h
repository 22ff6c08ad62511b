// Included first by every source that is compiled once per instruction-set level. VSP_LEVEL is the namespace of the level.
#pragma once

#include "core/inline.h"
#include "vspsc.h"

namespace vsp::VSP_LEVEL {

// The exported functions as this level defines them, so that a call inside the library stays at its level and a definition
// with another signature does not link.
#define VSPSC_EXPORT(family, name) decltype(::name) name;
#include "core/exports.def"
#undef VSPSC_EXPORT

}  // namespace vsp::VSP_LEVEL
