// Frame constants under the standard's names.
#pragma once

#include "common/lengths.h"
#include "core/inline.h"
#include "vspsc/types.h"

namespace vsp {

constexpr int kPitMin = 20, kPitMax = 143;  // lags
constexpr int kL_frame = 80;

// Lags that a caller may give: those above and two beyond either end.
VSP_INLINE constexpr bool isLegalLag(Vsp32s lag) { return lag >= 18 && lag <= 145; }

}  // namespace vsp
