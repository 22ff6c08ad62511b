#include "ec/tables.h"

namespace vsp {

constexpr Vsp32f td_iir_coeffs_8_32f[4] = {0.037804752588272095f, -0.037804752588272095f, 0.1511024385690689f,
                                           0.9243904948234558f};
constexpr Vsp32f td_iir_coeffs_16_32f[4] = {0.019259274005889893f, -0.019259274005889893f, -1.331711769104004f,
                                            0.9614814519882202f};
constexpr Vsp16s td_iir_coeffs_8_16s[4] = {155, -155, 619, 3786};
constexpr Vsp16s td_iir_coeffs_16_16s[4] = {79, -79, -5455, 3938};

namespace {

// The fixed-point coefficients are the floating-point ones to within the last place of Q12.
constexpr bool agree(const Vsp16s (&fixed)[4], const Vsp32f (&single)[4]) {
    for (int i = 0; i < 4; i++) {
        const Vsp32f difference = Vsp32f(fixed[i]) - 4096 * single[i];
        if (difference > 1 || difference < -1) return false;
    }
    return true;
}
static_assert(agree(td_iir_coeffs_8_16s, td_iir_coeffs_8_32f) && agree(td_iir_coeffs_16_16s, td_iir_coeffs_16_32f));

}  // namespace

const Vsp32f* builtInWindow_32f(Vsp32s order, Vsp32s frameSize, Vsp32s windowLen) {
    if (order == 5 && frameSize == 24 && windowLen == 128) return VspsSubbandWindow_5_24_128_32f;
    if (order == 6 && frameSize == 44 && windowLen == 256) return VspsSubbandWindow_6_44_256_32f;
    return nullptr;
}

const Vsp16s* builtInWindow_16s(Vsp32s order, Vsp32s frameSize, Vsp32s windowLen) {
    if (order == 5 && frameSize == 24 && windowLen == 128) return VspsSubbandWindow_5_24_128_16s;
    if (order == 6 && frameSize == 44 && windowLen == 256) return VspsSubbandWindow_6_44_256_16s;
    return nullptr;
}

}  // namespace vsp
