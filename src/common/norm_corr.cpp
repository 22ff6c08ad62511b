#include "common/norm_corr.h"

#include "arithmetic/basic_ops.h"
#include "common/exports.h"
#include "common/filtered_lags.h"
#include "common/inv_sqrt.h"
#include "common/lengths.h"
#include "vector/magnitude.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kCells = 64;
constexpr int kFirst = kCells - kL_subfr;  // what longer searches need beyond that, they get by moving the 40 back

// Shifts that turn the product of h[i] and e, shifted right by 12 or 14, into the high half of the product of h[i] << ofH
// and e << ofE; ofE is negative if neither that nor h[0] = 4096 fits 16 bits.
struct HighHalf {
    int ofH, ofE;
};

HighHalf highHalf(int largestH, int largestE, int shift) {
    const int ofH = largestH < 8192 ? 2 : largestH < 16384 ? 1 : 0, ofE = 16 - shift - ofH;
    return {ofH, ofE >= 0 && largestE << ofE <= kMax16 ? ofE : -1};
}

// sat16((e * h[i]) >> shift)
template <class V>
VSP_INLINE V shiftedProduct(V h, V e, int shift) {
    const V lo = mulLo(h, e), hi = mulHi(h, e);
    return packSat(shr(zipLo(lo, hi), shift), shr(zipHi(lo, hi), shift));
}

}  // namespace

void ownNorm_Corr(const Vsp16s* excitation, const Vsp16s* target, const Vsp16s* impulse, int t_min, int t_max,
                  Vsp16s* corr) {
    alignas(64) Vsp16s cells[kCells] = {};
    Vsp16s* const filtered = cells + kFirst;
    vspsConvPartial_16s_Sfs(excitation - t_min, impulse, filtered, kL_subfr, 12);

    // From here on a quarter of it if it is large.
    const bool large = Cnvrt_64s32s(2 * energy(filtered, kL_subfr)) > 1 << 26;
    const int shift = large ? 14 : 12;
    if (large)
        for (int i = 0; i < kL_subfr; i++) filtered[i] >>= 2;

    // The element that a lag adds in front is e or e >> 2, as h[0] = 1 in Q12 gives it.
    const HighHalf high =
        highHalf(maxMagnitude(impulse, kL_subfr), maxMagnitude(excitation - t_max, t_max - t_min + 1), shift);
    Padded<kCells> h{}, x{}, mask{};
    const int scaleOfH = high.ofE < 0 ? 0 : high.ofH;
    for (int i = 0; i < kL_subfr; i++) {
        h.middle()[i] = Vsp16s((i == 0 ? 4096 : impulse[i]) << scaleOfH);
        x.middle()[i] = target[i];
        mask.middle()[i] = -1;
    }

    const Vsp64s targetEnergy = energy(target, kL_subfr);
    for (int k = t_min, first = kFirst; k <= t_max; k++, first--) {
        if (first < 0) {
            first = kFirst - 1;
            for (int i = kL_subfr - 1; i >= 0; i--) cells[kFirst + i] = cells[i];
            for (int i = 0; i < kFirst; i++) cells[i] = 0;
        }
        const auto add = [&](auto contribution) {
            return addSample<kCells>(cells, h.from(first), x.from(first), mask.from(first), contribution);
        };
        const Vsp16s e = excitation[-k];
        Products products;
        if (k == t_min)
            products = add([](S16) { return S16::splat(0); });
        else if (high.ofE >= 0)
            products = add([e = S16::splat(Vsp16s(e << high.ofE))](S16 a) { return mulHi(a, e); });
        else
            products = add([e = S16::splat(e), shift](S16 a) { return shiftedProduct(a, e, shift); });
        const Vsp32s product = doubledSumsFit(targetEnergy, products.filteredFiltered)
                                   ? 2 * products.targetFiltered
                                   : dotSaturating(target, cells + first, kL_subfr);
        corr[k - t_min] = sat_16s(Mpy_32(product, ownInvSqrt(Cnvrt_64s32s(2 * products.filteredFiltered))));
    }
}

}  // namespace vsp::VSP_LEVEL
