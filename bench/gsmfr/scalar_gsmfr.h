#pragma once

#include "core/api.h"

namespace bench {

// Sets the steps of GSM full rate that the library does with vectors.
void addScalarGsmfr(vsp::Api& api);

}  // namespace bench
