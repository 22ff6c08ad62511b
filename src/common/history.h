#pragma once

#include "core/level.h"

namespace vsp::VSP_LEVEL {

// Moves the values of a history by one and adds the newest at its end or at its front.
template <int N>
VSP_INLINE void pushBack(Vsp16s* history, Vsp16s newest) {
    for (int i = 0; i + 1 < N; i++) history[i] = history[i + 1];
    history[N - 1] = newest;
}
template <int N>
VSP_INLINE void pushFront(Vsp16s* history, Vsp16s newest) {
    for (int i = N - 1; i > 0; i--) history[i] = history[i - 1];
    history[0] = newest;
}

}  // namespace vsp::VSP_LEVEL
