#pragma once

#include "core/api.h"

namespace bench {

// Sets the detectors and their transform.
void addScalarGsmamr(vsp::Api& api);

}  // namespace bench
