#pragma once

#include "core/api.h"

namespace bench {

// Sets the G.722 coders and filters. The state is one of its own.
void addScalarG722(vsp::Api& api);

}  // namespace bench
