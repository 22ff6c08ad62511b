// State of the filters at the ends of the codec.
#pragma once

#include "common/high_pass.h"

namespace vsp::VSP_LEVEL {

struct HighPassState {
    Vsp16s coefficients[6];  // b0 b1 b2 a0 a1 a2; a0 is not used
    HighPassMemory memory;

    template <class Filter>
    Filter filter() const {
        const Vsp16s(&c)[6] = coefficients;
        return {{c[0], c[1], c[2], c[4], c[5]}};
    }
};
static_assert(sizeof(HighPassState) == 24);

using InputFilter = HighPass<12, false>;  // G.729 3.1
using OutputFilter = HighPass<13, true>;  // G.729 4.2.5

}  // namespace vsp::VSP_LEVEL
