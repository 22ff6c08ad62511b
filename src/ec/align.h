#pragma once

#include "core/inline.h"

namespace vsp {

constexpr int kAlignment = 16;

// The first aligned address at or behind p: states and work buffers come with as many bytes of slack.
template <class T>
VSP_INLINE T* aligned(void* p) {
    return reinterpret_cast<T*>((reinterpret_cast<unsigned long>(p) + (kAlignment - 1)) &
                                -static_cast<unsigned long>(kAlignment));
}

}  // namespace vsp
