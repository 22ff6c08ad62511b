// The library's exported names as functions of this program, at any level: shared libraries that are linked here, such as
// the voice layer, call these.
#pragma once

#include <vector>

#include "core/api.h"

// Those that the processor has.
std::vector<const vsp::Api*> runnableLevels();
void chooseLevel(const vsp::Api& level);
