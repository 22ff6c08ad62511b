#include "gsmfr/tables.h"

namespace vsp {

constexpr LarQuantiser larQuantisers[8] = {
    {20480, 0, -32, 31, 13107}, {20480, 0, -32, 31, 13107},   {20480, 2048, -16, 15, 13107}, {20480, -2560, -16, 15, 13107},
    {13964, 94, -8, 7, 19223},  {15360, -1792, -8, 7, 17476}, {8534, -341, -4, 3, 31454},    {9036, -1144, -4, 3, 29708},
};

// inverseA is half the inverse of a, which has Q10; the standard's values are rounded in either direction.
static consteval bool inverses() {
    for (const LarQuantiser& q : larQuantisers) {
        const int product = q.a * q.inverseA / 1024;
        if (product < 262128 || product > 262154 || q.maximum != -q.minimum - 1) return false;
    }
    return true;
}
static_assert(inverses());

static consteval Vsp16s q15(int percent) { return percent < 100 ? Vsp16s((percent * 32768 + 50) / 100) : Vsp16s(32767); }
constexpr Vsp16s DLB[3] = {6554, 16384, 26214};
static_assert(DLB[0] == q15(20) && DLB[1] == q15(50) && DLB[2] == q15(80));
constexpr Vsp16s QLB[4] = {3277, 11469, 21299, 32767};
static_assert(QLB[0] == q15(10) && QLB[1] == q15(35) && QLB[2] == q15(65) && QLB[3] == q15(100));

constexpr Vsp16s H[11] = {-134, -374, 0, 2054, 5741, 8192, 5741, 2054, 0, -374, -134};
static consteval bool symmetric() {
    for (int i = 0; i < 5; i++)
        if (H[i] != H[10 - i]) return false;
    return true;
}
static_assert(symmetric());

constexpr Vsp16s NRFAC[8] = {29128, 26215, 23832, 21846, 20165, 18725, 17476, 16384};
constexpr Vsp16s FAC[8] = {18431, 20479, 22527, 24575, 26623, 28671, 30719, 32767};
static consteval bool mantissas() {
    for (int i = 0; i < 8; i++) {
        if (FAC[i] != 2048 * (i + 9) - 1) return false;
        const int error = NRFAC[i] * (i + 9) - 16 * 16384;
        if (error < -16 || error > 16) return false;
    }
    return true;
}
static_assert(mantissas());

}  // namespace vsp
