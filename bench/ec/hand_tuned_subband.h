#pragma once

#include "core/api.h"

namespace bench {

// Sets the sub-band filters and updates.
void addHandTunedSubband(vsp::Api& api);

}  // namespace bench
