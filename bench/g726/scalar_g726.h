#pragma once

#include "core/api.h"

namespace bench {

constexpr int kScalarG726Words = 32;  // of 32 bits in its state, which is larger than the library's

// Sets the coder.
void addScalarG726(vsp::Api& api);

}  // namespace bench
