#pragma once

#include "vspsc/types.h"

namespace vsp {

// What a pulse is spread to, Q15: strongly (`ph_imp_low`) and moderately (`ph_imp_mid`).
extern const Vsp16s wideDispersion[2][64];

}  // namespace vsp
