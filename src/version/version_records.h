#pragma once

#include "vspsc/version.h"

namespace vsp {

extern const VspLibraryVersion kVersionAboveBaseline, kVersionBaseline;

}  // namespace vsp
