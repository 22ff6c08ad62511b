// What every source that is compiled once per instruction-set level includes. VSP_LEVEL is the namespace of the level.
#pragma once

#include "core/inline.h"
#include "vspsc/types.h"

// What the list of a family declares in its exports.h: its functions as this level defines them, so that a call inside the
// library stays at its level and a definition with another signature does not link.
#define VSPSC_EXPORT(family, name) decltype(::name) name;
