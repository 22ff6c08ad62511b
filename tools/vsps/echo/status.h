// Calls of the library that cannot fail unless the program is wrong.
#pragma once

#include <stdexcept>
#include <string>

#include "vspsc/types.h"

inline void check(VspStatus status) {
    if (status != vspStsNoErr) throw std::logic_error("echo canceller: status " + std::to_string(status));
}
