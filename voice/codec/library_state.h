#pragma once

#include "vspsc/types.h"

namespace vspv {

// Memory of a state of the library, whose size is part of its interface.
template <Vsp32s kBytes>
struct alignas(8) LibraryState {
    Vsp8u bytes[kBytes];

    template <class State>
    operator State*() {
        return static_cast<State*>(static_cast<void*>(bytes));
    }
};

}  // namespace vspv
