// The functions of one instruction-set level as a table: what the dispatcher jumps through and what tests and benchmarks
// call.
#pragma once

#include "vspsc.h"

namespace vsp {

struct Api {
#define VSPSC_EXPORT(family, name) decltype(&::name) name;
#include "core/exports.def"
#undef VSPSC_EXPORT
};

extern const Api kApi_y8, kApi_v3, kApi_v4;

}  // namespace vsp
