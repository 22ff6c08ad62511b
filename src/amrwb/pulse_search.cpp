#include "amrwb/pulse_search.h"

#include "common/cross_correlation.h"

namespace vsp::VSP_LEVEL {

namespace {

void filterBackwards(const Vsp16s* target, const Vsp16s* h, Vsp16s* d) {
    constexpr int kHeadroom = 4, kTracks = 4;
    Vsp32s sums[kWideSubframe];
    if (doubledSumsFit(energy(target, kWideSubframe), energy(h, kWideSubframe))) {
        ownCrossCorr_32s(target, h, kWideSubframe, sums);
        for (Vsp32s& sum : sums) sum++;
    } else {
        for (int i = 0; i < kWideSubframe; i++) {
            sums[i] = 1;
            for (int j = i; j < kWideSubframe; j++) sums[i] = mac_32s(sums[i], target[j], h[j - i]);
        }
    }
    Vsp32s largest[kTracks] = {};
    for (int i = 0; i < kWideSubframe; i += kTracks)
        for (int t = 0; t < kTracks; t++) {
            const Vsp32s magnitude = Abs_32s(sums[i + t]);
            largest[t] = magnitude > largest[t] ? magnitude : largest[t];
        }
    Vsp32s total = 1;
    for (const Vsp32s a : largest) total = Add_32s(Add_32s(total, a >> 2), a >> 3);
    // No sum is above 8/3 of the total, which the headroom has room for.
    const int shift = norm_32s(total) - kHeadroom;
    for (int i = 0; i < kWideSubframe; i++) d[i] = round_32s(shift < 0 ? sums[i] >> -shift : sums[i] * (1 << shift));
}

Vsp16s normalisation(const Vsp16s* x, int shift) {
    const Normalised root = ownInverseSqrt(ownNormalisedEnergy(x, kWideSubframe));
    return round_32s(shl_32s(root.value, root.exponent + shift));
}

}  // namespace

PulseTarget::PulseTarget(const Vsp16s* target, const Vsp16s* residual, const Vsp16s* h, Vsp16s weight) {
    filterBackwards(target, h, d);
    const Vsp16s ofResidual = normalisation(residual, 5), ofTarget = mulRound_16s(weight, normalisation(d, 8));
    // high(L_shl(sum, 8)) of products that are not doubled; the factors are not negative.
    const S16_128 factors{S32_128::splat(Vsp16u(ofResidual) | ofTarget << 16).v}, zero = S16_128::splat(0);
    for (int i = 0; i < kWideSubframe; i += S16_128::width) {
        const S16_128 r = S16_128::load(residual + i), x = S16_128::load(d + i);
        const S16_128 b =
            packSat(shr(dot2(S16_128{zipLo(r, x).v}, factors), 7), shr(dot2(S16_128{zipHi(r, x).v}, factors), 7));
        const S16_128 negative = shr(b, 15);
        S16_128{negative.v ^ S16_128::splat(kMax16).v}.store(sign + i);
        select(negative, subSat(zero, x), x).store(d + i);
        select(negative, subSat(zero, b), b).store(mean + i);
    }
}

}  // namespace vsp::VSP_LEVEL
