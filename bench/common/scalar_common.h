#pragma once

#include "core/api.h"

namespace bench {

// Sets the shared kernels that have a scalar definition.
void addScalarCommon(vsp::Api& api);

}  // namespace bench
