#pragma once

#include "core/api.h"

namespace bench {

// Sets the shared kernels that have a loop tuned by hand.
void addHandTunedCommon(vsp::Api& api);

}  // namespace bench
