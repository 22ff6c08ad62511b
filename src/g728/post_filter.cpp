// The adaptive post-filter: long-term, short-term, and the gain of its output (G.728 blocks 71 to 77).
#include "core/checks.h"
#include "core/state_size.h"
#include "g728/exact_sums.h"
#include "g728/exports.h"
#include "g728/pitch.h"

namespace vsp::VSP_LEVEL {

using namespace g728;

namespace {

constexpr int kOrder = 10;

struct State {
    Vsp16s longTerm[kOrder], shortTerm[kOrder];  // past outputs, the oldest first
    Vsp16s gain;                                 // Q14
    Vsp16s unused[11];
};
static_assert(sizeof(State) == 64);

int sumOfMagnitudes(const Vsp16s* x) {
    int sum = 0;
    for (int n = 0; n < kVector; n++) sum += x[n] < 0 ? -x[n] : x[n];
    return sum;
}

// The high half of 4 x, rounded, of sums of two products.
S16_128 clippedQ14(Eight32s x) {
    const Eight32s fitting = add(x, Eight32s::splat(-0x10000));
    return narrowSat(add(shr(add(fitting, Eight32s::splat(0x2000)), 14), Eight32s::splat(0x10000 >> 14)));
}

// The products, as roundQ14().
S16_128 productsQ14(S16_128 a, S16_128 b) {
    const Eight32s products = pairsOf(mulLo(a, b), mulHi(a, b));
    return narrowSat(shr(add(products, Eight32s::splat(0x2000)), 14));
}

}  // namespace

VspStatus vspsPostFilterGetStateSize_G728_16s(Vsp32s* pSize) { return fixedSize(pSize, sizeof(State)); }

VspStatus vspsPostFilterInit_G728_16s(void* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    State& s = *static_cast<State*>(pState);
    s = {};
    s.gain = 16384;
    return vspStsNoErr;
}

VspStatus vspsPostFilter_G728_16s(const Vsp16s* pSrc, const Vsp16s* pPast, Vsp32s pitch, const Vsp16s* pGain,
                                  const Vsp16s* pZero, const Vsp16s* pPole, Vsp32s tilt, Vsp16s* pDst, void* pState) {
    constexpr int kPast = 140, kNew = 20972, kOld = 16220;  // 0.01, Q21, and 0.99, Q14
    if (anyNull(pSrc, pPast, pGain, pZero, pPole, pDst, pState)) return vspStsNullPtrErr;
    if (!isPitch(pitch)) return vspStsRangeErr;
    State& s = *static_cast<State*>(pState);
    const S16_128 src = loadFive(pSrc), past = loadFive(pPast + kPast - pitch);
    const Eight32s longTerm = dotPairs(pairsOf(src, past), pGain);
    const Fifteen f(s.longTerm, clippedQ14(longTerm)), old(s.shortTerm, S16_128::splat(0));
    ExactSums total;
    total.addProducts(longTerm);
    addTenTaps(total, pZero, f);
    subtractTenTaps(total, pPole, old);
    Vsp64s sums[kOutputs];
    total.store(sums);
    Vsp16s y[kVector], out[kVector];
    Vsp16s previous = s.shortTerm[kOrder - 1];
    for (int n = 0; n < kVector; n++) {
        Vsp64s sum = sums[n];
        for (int i = 0; i < n; i++) sum -= pPole[i] * y[n - 1 - i];
        y[n] = sat16(sum >> 14);
        out[n] = sat16((sum + Vsp64s(tilt) * previous) >> 14);
        previous = y[n];
    }
    f.storeNewest(s.longTerm);
    Fifteen(s.shortTerm, five(y)).storeNewest(s.shortTerm);

    Float16 ratio{16384, 14};
    const Vsp64s before = sumOfMagnitudes(pSrc), after = sumOfMagnitudes(out);
    if (after > 4) {
        const Float16 num = normalised(before), den = normalised(after);
        ratio = divide(num.mantissa, num.scale, den.mantissa, den.scale);
    }
    const Vsp64s target = shift_32s(kNew * ratio.mantissa, 14 - 7 - ratio.scale);
    Vsp16s gains[kVector], gain = s.gain;
    for (int n = 0; n < kVector; n++) gains[n] = gain = roundQ14(target + Vsp64s(kOld) * gain);
    s.gain = gain;
    storeFive(productsQ14(five(gains), five(out)), pDst);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
