#include "gsmamr/square_root.h"

namespace vsp {

constexpr Vsp16s sqrt_table[49] = {
    16384, 16888, 17378, 17854, 18318, 18770, 19212, 19644, 20066, 20480, 20886, 21283, 21674, 22058, 22435, 22806, 23170,
    23530, 23884, 24232, 24576, 24915, 25249, 25580, 25905, 26227, 26545, 26859, 27170, 27477, 27780, 28081, 28378, 28672,
    28963, 29251, 29537, 29819, 30099, 30377, 30652, 30924, 31194, 31462, 31727, 31991, 32252, 32511, 32767};

static consteval bool squaresMatch() {
    for (int i = 0; i < 49; i++) {
        const Vsp64s error = Vsp64s(sqrt_table[i]) * sqrt_table[i] - ((i + 16LL) << 24);
        if (error > 32768 || error < -65536) return false;
    }
    return true;
}
static_assert(squaresMatch());

}  // namespace vsp
