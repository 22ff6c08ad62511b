#pragma once

#include "core/api.h"

namespace bench {

// Sets members of the linear prediction of G.729: autocorrelation, filters, recursion of order 30, root searches.
void addScalarLp(vsp::Api& api);

}  // namespace bench
