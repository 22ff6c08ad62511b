#include "codec/amrwb/high_band.h"

#include "samples.h"

namespace vspv::amrwb {

void HighBand::reset() {
    clear(synthesis_, kOrder);
    deemphasis_ = 0;
    seed_ = 21845;
    highPass50_.reset(HighPass::k50Hz);
    highPass400_.reset(HighPass::k400Hz);
}

void HighBand::synthesise(const Vsp16s* lpc, const Vsp16s* excitation, Vsp32s exponent, Vsp16s* synthesised) {
    Vsp32s emphasised[kSubframe];
    vspsSynthesisFilter_AMRWB_16s32s(lpc, excitation, exponent, kSubframe, synthesis_, emphasised);
    vspsDeemphasize_AMRWB_32s16s(emphasised, kTilt, kSubframe, &deemphasis_, synthesised);
    highPass50_.filter(synthesised, kSubframe);
}

Vsp16s HighBand::makeNoise(const Vsp16s* excitation, Vsp32s exponent, Vsp16s* synthesised, Vsp32s framesWithoutSpeech,
                           Vsp16s* noise) {
    Vsp16s gain;
    vspsHighBandNoise_AMRWB_16s(excitation, exponent, &seed_, noise);
    highPass400_.filter(synthesised, kSubframe);
    vspsHighBandGain_AMRWB_16s(synthesised, Vsp16s(framesWithoutSpeech > 0), &gain);
    return gain;
}

}  // namespace vspv::amrwb
