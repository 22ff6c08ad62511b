#pragma once

#include "core/checks.h"
#include "vspsc/types.h"

namespace vsp {

// The answer of a size query without parameters.
VSP_INLINE VspStatus fixedSize(Vsp32s* pSize, Vsp32s size) {
    if (anyNull(pSize)) return vspStsNullPtrErr;
    *pSize = size;
    return vspStsNoErr;
}

}  // namespace vsp
