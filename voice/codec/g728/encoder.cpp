#include "codec/g728/encoder.h"

#include "samples.h"

namespace vspv::g728 {

void Encoder::reset() {
    *this = {};
    synthesis_.reset();
    gain_.reset();
    vspsIIR16sInit_G728_16s(weighting_);
    vspsCombinedFilterInit_G728_16s(combined_);
    vspsWinHybridInit_G728_16s(10, 30, 20, window_);
    respond();
}

void Encoder::encode(const Vsp16s* samples, Vsp16s* indices) {
    Vector cycle[kCycle];
    for (Vsp32s n = 0; n < kCycle; n++) {
        indices[n] = encodeVector(samples + kVector * n, cycle[n]);
        if (n == 0) {
            synthesis_.complete();
            gain_.adapt();
        } else if (n == 1) {
            synthesis_.use();
            adaptWeighting();
            respond();
        }
    }
    synthesis_.analyse(cycle);
}

// G.728 3.3 to 3.11
Vsp16s Encoder::encodeVector(const Vsp16s* samples, Vector& coded) {
    constexpr Vsp32s kMostGain = 14336;
    Vsp16s *const x = recent_ + kFrame - kVector, gain[2], zeroInput[kVector], weighted[kVector];
    Vsp16s target[kVector], targetScale, index, excitation[kVector], scale, logGain;
    for (Vsp32s i = 0; i < kFrame - kVector; i++) recent_[i] = recent_[i + kVector];
    for (Vsp32s i = 0; i < kVector; i++) x[i] = Vsp16s(samples[i] >> 1);
    const Vsp16s predicted = gain_.predict(kMostGain, gain);
    vspsCombinedFilterZeroInput_G728_16s(synthesis_.lpc(), zero_, pole_, zeroInput, combined_);
    vspsIIR16s_G728_16s(x, zero_, pole_, weighted, kVector, weighting_);
    vspsTargetNormalize_G728_16s(weighted, zeroInput, gain, target, &targetScale);
    vspsCodebookSearch_G728_16s(target, targetScale, response_, energies_, &index);
    vspsExcitation_G728_16s(index, gain, excitation, &scale);
    vspsCombinedFilterUpdate_G728_16s(excitation, scale, synthesis_.lpc(), zero_, pole_, coded.x, &coded.scale, combined_);
    vspsGainUpdate_G728_16s(predicted, index, &logGain);
    gain_.append(logGain);
    return index;
}

// G.728 3.3
void Encoder::adaptWeighting() {
    Vsp16s r[kOrder + 1], filter[kOrder], zero[kOrder], pole[kOrder], reflection, energy, scale;
    Vsp32s overflow[2];
    if (vspsWinHybrid_G728_16s(recent_, r, window_) != vspStsNoErr) return;
    if (vspsLevinsonDurbin_G728_16s_ISfs(r, 0, kOrder, filter, &reflection, &energy, &scale) != vspStsNoErr) return;
    vspsBandwidthExpand_G728_16s(filter, 2, scale, pole, &overflow[0]);
    vspsBandwidthExpand_G728_16s(filter, 3, scale, zero, &overflow[1]);
    if (overflow[0] != 0 || overflow[1] != 0) return;
    copy(pole, pole_, kOrder);
    copy(zero, zero_, kOrder);
}

void Encoder::respond() {
    vspsImpulseResponse_G728_16s(synthesis_.lpc(), zero_, pole_, response_);
    vspsCodebookEnergy_G728_16s(response_, energies_);
}

}  // namespace vspv::g728
