#include "codec/g728/adaptation.h"

#include "samples.h"

namespace vspv::g728 {

void GainPredictor::reset() {
    *this = {};
    filter_[0] = -16384;
    for (Vsp32s i = kOrder - 3; i < kOrder; i++) gains_[i] = -16384;
    vspsWinHybridInit_G728_16s(10, 20, 4, window_);
}

Vsp16s GainPredictor::predict(Vsp32s most, Vsp16s* gain) const {
    Vsp16s logGain;
    vspsGainPredict_G728_16s(filter_, gains_, most, &logGain, gain);
    return logGain;
}

void GainPredictor::append(Vsp16s logGain) {
    for (Vsp32s i = 0; i < kOrder - 1; i++) gains_[i] = gains_[i + 1];
    gains_[kOrder - 1] = logGain;
}

void GainPredictor::adapt(bool lost) {
    Vsp16s r[kOrder + 1], filter[kOrder], reflection, energy, scale;
    Vsp32s overflow;
    if (vspsWinHybrid_G728_16s(gains_ + kOrder - kCycle, r, window_) != vspStsNoErr || lost) return;
    if (vspsLevinsonDurbin_G728_16s_ISfs(r, 0, kOrder, filter, &reflection, &energy, &scale) != vspStsNoErr) return;
    vspsBandwidthExpand_G728_16s(filter, 1, scale, filter, &overflow);
    if (overflow == 0) copy(filter, filter_, kOrder);
}

void SynthesisFilter::reset() {
    *this = {};
    vspsWinHybridInit_G728_16s(50, 35, 20, window_);
}

void SynthesisFilter::analyse(const Vector* cycle) {
    Vsp16s samples[kFrame], scales[kCycle];
    for (Vsp32s i = 0; i < kCycle; i++) {
        copy(cycle[i].x, samples + kVector * i, kVector);
        scales[i] = cycle[i].scale;
    }
    stable_ = vspsWinHybridBlock_G728_16s(samples, scales, correlation_, window_) == vspStsNoErr &&
              vspsLevinsonDurbin_G728_16s_ISfs(correlation_, 0, kOrder, recursion_, &reflection_, &energy_, &scale_) ==
                  vspStsNoErr;
}

void SynthesisFilter::complete() {
    Vsp32s overflow;
    if (!stable_) return;
    stable_ = vspsLevinsonDurbin_G728_16s_ISfs(correlation_, kOrder, kSynthesisOrder, recursion_, nullptr, &energy_,
                                               &scale_) == vspStsNoErr;
    if (!stable_) return;
    vspsBandwidthExpand_G728_16s(recursion_, 0, scale_, next_, &overflow);
    stable_ = overflow == 0;
}

void SynthesisFilter::use() {
    if (stable_) copy(next_, filter_, kSynthesisOrder);
}

void SynthesisFilter::attenuate(bool latest) {
    Vsp32s overflow;
    vspsBandwidthExpand_G728_16s(latest && stable_ ? next_ : filter_, 6, 14, filter_, &overflow);
}

}  // namespace vspv::g728
