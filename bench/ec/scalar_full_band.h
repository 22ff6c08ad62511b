#pragma once

#include "core/api.h"

namespace bench {

// Sets the full-band filters and the tone detectors. The states of the detectors are their own.
void addScalarFullBand(vsp::Api& api);

}  // namespace bench
