#pragma once

#include "core/api.h"

namespace bench {

// Sets the members of the G.729 pitch search that have a scalar definition.
void addScalarG729(vsp::Api& api);

}  // namespace bench
