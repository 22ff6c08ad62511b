#include "codec/g728/decoder.h"

#include "samples.h"

namespace vspv::g728 {

namespace {

constexpr Vsp32s kMostGain = 14336, kSpeechScale = 2;
constexpr Vsp32s kBlock = 4;  // frames of 2.5 ms for which a concealment is set up

}  // namespace

void History::append(const Vsp16s* vector) {
    if (start_ == kLength) {
        copy(x_ + kLength, x_, kLength);
        start_ = 0;
    }
    copy(vector, x_ + start_ + kLength, kVector);
    start_ += kVector;
}

void Decoder::reset() {
    *this = {};
    synthesis_.reset();
    gain_.reset();
    postFiltered_ = true;
    pitch_ = 50;
    longTerm_[0] = 16384;
    vspsSynthesisFilterInit_G728_16s(synthesisState_);
    vspsPostFilterAdapterInit_G728(adapter_);
    vspsPostFilterInit_G728_16s(postFilter_);
    vspsConcealInit_G728_16s(concealment_);
}

void Decoder::setPostFilter(bool on) {
    if (on && !postFiltered_) vspsPostFilterInit_G728_16s(postFilter_);
    postFiltered_ = on;
}

void Decoder::decode(const Vsp16s* indices, Vsp16s* samples) {
    constexpr Vsp32s kNoLimit = 32767, kLostScale = 16;
    const bool lost = indices == nullptr;
    beginFrame(lost);
    Vector cycle[kCycle];
    for (Vsp32s n = 0; n < kCycle; n++) {
        Vector excitation;
        const Vsp16s logGain = excite(lost ? nullptr : indices + n, excitation);
        vspsSynthesisFilter_G728_16s(excitation.x, excitation.scale, synthesis_.lpc(), lost ? kLostScale : kNoLimit,
                                     cycle[n].x, &cycle[n].scale, synthesisState_);
        output(cycle[n], n == 2, samples + kVector * n);
        gain_.append(logGain);
        if (n == 0) {
            if (lostFrames_ <= 1) synthesis_.complete();
            gain_.adapt(lost);
        } else if (n == 1) {
            if (!lost)
                synthesis_.use();
            else if (lostFrames_ % kBlock == 1)
                synthesis_.attenuate(lostFrames_ == 1);
        }
    }
    synthesis_.analyse(cycle);
    if (synthesis_.stable()) adaptPostFilter();
}

// G.728 Annex I
void Decoder::beginFrame(bool lost) {
    constexpr Vsp32s kMostRecovery = 16;
    if (lost) {
        if (lostFrames_ < 0x7FFFFFFF - kBlock) lostFrames_++;
        if (lostFrames_ % kBlock == 1) vspsConcealSetup_G728_16s(pitch_, tap_, lostFrames_ / kBlock, concealment_);
        return;
    }
    if (recoveryFrames_ > 0) recoveryFrames_--;
    if (lostFrames_ == 0) return;
    recoveryFrames_ += lostFrames_ < kMostRecovery ? lostFrames_ : kMostRecovery;
    if (recoveryFrames_ > kMostRecovery) recoveryFrames_ = kMostRecovery;
    lostFrames_ = 0;
}

// The excitation of a vector, or what takes its place; returns the logarithmic gain.
Vsp16s Decoder::excite(const Vsp16s* index, Vector& excitation) {
    constexpr Vsp32s kSlowRise = 1024;  // 2 dB
    Vsp16s logGain = 0, gain[2];
    if (index == nullptr) {
        vspsConcealExcitation_G728_16s(excitation.x, &excitation.scale, &lastGain_, concealment_);
        return lastGain_;
    }
    const bool slow = recoveryFrames_ > 0 && lastGain_ < kMostGain - kSlowRise;
    lastGain_ = gain_.predict(slow ? lastGain_ + kSlowRise : kMostGain, gain);
    vspsExcitation_G728_16s(*index, gain, excitation.x, &excitation.scale);
    vspsConcealUpdate_G728_16s(excitation.x, excitation.scale, concealment_);
    vspsGainUpdate_G728_16s(lastGain_, *index, &logGain);
    return logGain;
}

// G.728 4.6 and 4.7. The pitch is followed without the post-filter, too: the concealment needs it.
void Decoder::output(const Vector& speech, bool withPitch, Vsp16s* samples) {
    constexpr Vsp32s kMaxLag = 140, kLinearScale = 3;
    Vsp16s x[kVector], residual[kVector], newest[kVector];
    vspsSpeechConvert_G728_16s(speech.x, speech.scale, kSpeechScale, x, kVector);
    vspsLPCInverseFilter_G728_16s(x, inverse_, residual, adapter_);
    residual_.append(residual);
    if (withPitch) {
        vspsPitchExtract_G728_16s(residual_.samples(), &pitch_, adapter_);
        vspsPitchTap_G728_16s(past_.samples(), pitch_, &tap_, longTerm_);
    }
    if (postFiltered_) {
        const Vsp16s* const lately = past_.samples() + History::kLength - kMaxLag;
        vspsPostFilter_G728_16s(x, lately, pitch_, longTerm_, zero_, pole_, tilt_, samples, postFilter_);
        vspsSpeechConvert_G728_16s(samples, kSpeechScale, kLinearScale, samples, kVector);
    } else {
        vspsSpeechConvert_G728_16s(speech.x, speech.scale, kLinearScale, samples, kVector);
    }
    for (Vsp32s i = 0; i < kVector; i++) newest[i] = Vsp16s(x[i] >> 2);
    past_.append(newest);
}

void Decoder::adaptPostFilter() {
    vspsPostFilterCoeff_G728_16s(synthesis_.predictor(), synthesis_.predictorScale(), synthesis_.reflection(), zero_, pole_,
                                 &tilt_, inverse_);
}

}  // namespace vspv::g728
