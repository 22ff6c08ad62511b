// Takes an array in blocks.
#pragma once

#include "core/inline.h"
#include "vspsc/types.h"

namespace vsp::VSP_LEVEL {

// Calls op(first, count) for the blocks of `size` elements that elements 0 .. len-1 consist of; the last one may be
// shorter. Nothing is added to an index that could take it past len, which may be the largest integer.
template <class Op>
VSP_INLINE constexpr void forBlocks(Vsp32s len, Vsp32s size, Op op) {
    Vsp32s count;
    for (Vsp32s first = 0; first < len; first += count) {
        count = len - first < size ? len - first : size;
        op(first, count);
    }
}
static_assert([] {
    Vsp64s blocks = 0, elements = 0;
    forBlocks(0x7FFFFFFF, 0x3FFFFFFF, [&](Vsp32s, Vsp32s count) {
        blocks++;
        elements += count;
    });
    return blocks == 3 && elements == 0x7FFFFFFF;
}());

}  // namespace vsp::VSP_LEVEL
