#pragma once

#include "core/api.h"

namespace bench {

// Sets the full-band filters, for numbers of taps and of samples that are multiples of 32.
void addHandTunedFullBand(vsp::Api& api);

}  // namespace bench
