#include "vector/tables.h"

namespace vsp {

#define VSP_8(x) x, x, x, x, x, x, x, x
constexpr Vsp16s kLastMask[2 * kMaskElements] = {VSP_8(0),  VSP_8(0),  VSP_8(0),  VSP_8(0),
                                                 VSP_8(-1), VSP_8(-1), VSP_8(-1), VSP_8(-1)};
#undef VSP_8
static_assert(kLastMask[kMaskElements - 1] == 0 && kLastMask[kMaskElements] == -1 && kLastMask[63] == -1);

}  // namespace vsp
