#pragma once

#include "core/api.h"

namespace bench {

// Sets the members of the G.729 pitch search that have a scalar definition.
void addScalarG729(vsp::Api& api);

// And that of the quantiser of line spectral pairs.
void addScalarG729Quantisers(vsp::Api& api);

// And those of the fixed-codebook searches.
void addScalarFixedCodebook(vsp::Api& api);

}  // namespace bench
