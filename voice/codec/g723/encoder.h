// Encoder of G.723.1 and its Annex A.
#pragma once

#include "codec/codec.h"
#include "codec/g723/frame.h"

namespace vspv::g723 {

class Encoder {
  public:
    void reset();
    void setSilence(bool on);
    void setHighPass(bool on) { highPass_ = on; }
    // Type and number of octets of the frame are set.
    void encode(Rate rate, const Vsp16s* samples, Vsp8u* bytes, VspvFrame& told);

  private:
    static constexpr Vsp32s kKept = 120;  // samples before the frame: what is coded ends 60 samples before what has come

    // What the frame is filtered with, of each subframe.
    struct Filters {
        Vsp16s plain[kSubframes * kOrder], weighting[kSubframes * 2 * kOrder], quantised[kSubframes * kOrder];
    };
    struct Harmonic {
        Vsp16s delay, gain;
    };

    void takeSamples(const Vsp16s* samples);
    void analyse(Filters& filters);
    bool isSpeech();
    void weightSpeech(const Filters& filters);
    void findOpenLoopLags(Vsp16s* normalised);
    void encodeSpeech(const Vsp16s* lsf, const Vsp16s* normalised, Filters& filters, Frame& frame);
    void encodeSubframe(Vsp32s i, const Filters& filters, const Harmonic& harmonic, Vsp16s* target, Frame& frame);
    void encodeNoise(Filters& filters, Vsp8u* bytes, VspvFrame& told);

    Vsp32s withSilence_, highPass_;
    Vsp32s inputFilter_[2], excitationError_[5];
    Vsp16s speech_[kKept + kFrame], weighted_[kPast + kFrame], excitation_[kPast + kFrame];
    Vsp16s lsf_[kOrder], weightingZeros_[kOrder], weightingPoles_[kOrder];
    Vsp16s ringingZeros_[kOrder], ringingPoles_[kOrder], ringing_[kPast];
    Vsp16s sine_, openLoopLags_[4], seed_, searchBudget_;
    Vsp32s pastType_;
    alignas(8) Vsp8u detector_[40], noise_[176];  // states of the library
};

}  // namespace vspv::g723
