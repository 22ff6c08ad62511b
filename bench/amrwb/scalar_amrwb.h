#pragma once

#include "core/api.h"

namespace bench {

// Sets the search of the algebraic codebook on four tracks, without the indices.
void addScalarAmrwb(vsp::Api& api);

}  // namespace bench
