#pragma once

#include "vspsc/types.h"

namespace vsp {

// What a pulse is spread to, Q15: strongly (`ph_imp_low`) and moderately (`ph_imp_mid`).
extern const Vsp16s ph_imp[2][40], ph_imp_MR795[2][40];

}  // namespace vsp
