#include "g729/interpol_3.h"

#include "common/norm_corr.h"
#include "g729/tables.h"

namespace vsp::VSP_LEVEL {

Vsp32s ownInterpol_3(const Vsp16s* corr, int fraction) {
    if (fraction < 0) {
        fraction += 3;
        corr--;
    }
    Vsp32s sum = 0;
    for (int i = 0; i < kL_inter4; i++)
        sum += corr[-i] * inter_3[fraction + 3 * i] + corr[1 + i] * inter_3[3 - fraction + 3 * i];
    return (sum + 16384) >> 15;
}

}  // namespace vsp::VSP_LEVEL
