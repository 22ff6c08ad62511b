#pragma once

#include "core/inline.h"

namespace vsp {

template <class... Pointers>
VSP_INLINE constexpr bool anyNull(Pointers... pointers) {
    return ((pointers == nullptr) || ...);
}

}  // namespace vsp
