// Decoder of G.723.1 and its Annex A.
#pragma once

#include "codec/g723/frame.h"

namespace vspv::g723 {

class Decoder {
  public:
    void reset();
    void setPostFilter(bool on) { postFilter_ = on; }
    void decode(const Frame& frame, Vsp16s* samples);
    // A null index stands for a frame without data.
    void decodeNoise(const Vsp16s* index, Vsp16s* samples);
    void conceal(Vsp16s* samples);

  private:
    void makeExcitation(const Frame& frame);
    void postFilterPitch(const Vsp16s* normalised, const Frame& frame, Vsp16s* filtered) const;
    void synthesise(const Vsp16s* lpc, const Vsp16s* excitation, Vsp16s* samples);

    Vsp32s postFilter_, pastType_, erasures_;
    Vsp16s excitation_[kPast + kFrame];
    Vsp16s lsf_[kOrder], noiseLsf_[kOrder];
    Vsp16s synthesisMemory_[kOrder], postZeros_[kOrder], postPoles_[kOrder], tilt_, outputGain_;
    Vsp16s erasureGain_, erasureDelay_, erasureSeed_;
    Vsp16s energy_, energyScale_;  // of the excitation of the last good frame of speech
    Vsp16s noiseGain_, descriptorGain_, noiseSeed_;
};

}  // namespace vspv::g723
