#pragma once

#include "core/api.h"

namespace bench {

// Sets the searches of the codebooks.
void addScalarG723(vsp::Api& api);

}  // namespace bench
