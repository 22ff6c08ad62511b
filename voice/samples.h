// Moving samples and memories.
#pragma once

#include "vspsc/types.h"

namespace vspv {

template <class T>
void copy(const T* from, T* to, Vsp32s n) {
    for (Vsp32s i = 0; i < n; i++) to[i] = from[i];
}
template <class T>
void clear(T* x, Vsp32s n) {
    for (Vsp32s i = 0; i < n; i++) x[i] = 0;
}
// Moves the last n elements of a buffer to its beginning.
template <class T>
void moveDown(T* buffer, Vsp32s n, Vsp32s by) {
    for (Vsp32s i = 0; i < n; i++) buffer[i] = buffer[i + by];
}

}  // namespace vspv
