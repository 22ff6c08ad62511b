// Frame constants under the standard's names.
#pragma once

#include "common/lengths.h"

namespace vsp {

constexpr int kPitMin = 20, kPitMax = 143;  // lags
constexpr int kL_frame = 80;

}  // namespace vsp
