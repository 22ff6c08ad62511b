#include "amrwb/filtered_excitation.h"

#include "amrwb/lengths.h"
#include "arithmetic/basic_ops.h"
#include "common/convolve.h"
#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

void ownFilterExcitation(const Vsp16s* x, const Vsp16s* h, Vsp16s* y) {
    if (doubledSumsFit(energy(x, kWideSubframe), energy(h, kWideSubframe))) {
        convolveExact(x, h, y, kWideSubframe, 15, 0x4000);
        return;
    }
    for (int n = 0; n < kWideSubframe; n++) {
        Vsp32s sum = 0;
        for (int i = 0; i <= n; i++) sum = mac_32s(sum, x[i], h[n - i]);
        y[n] = round_32s(sum);
    }
}

}  // namespace vsp::VSP_LEVEL
