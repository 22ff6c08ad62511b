// Encoder of AMR-WB (3GPP TS 26.190, 26.192 to 26.194).
#pragma once

#include "codec/amrwb/analysis.h"
#include "codec/amrwb/frame.h"
#include "codec/library_state.h"
#include "samples.h"

namespace vspv::amrwb {

class Encoder {
  public:
    void reset();
    void setDTX(bool on);
    // Type and number of octets of the frame are set.
    void encode(Vsp32s mode, const Vsp16s* samples, Vsp8u* bytes, VspvFrame& told);

  private:
    static constexpr Vsp32s kPast = 248;

    // Of a frame of speech, in the order of the frame.
    class Parameters {
      public:
        void add(Vsp16s value) { values_[number_++] = value; }
        void add(const Vsp16s* values, Vsp32s n) {
            for (Vsp32s i = 0; i < n; i++) add(values[i]);
        }
        const Vsp16s* values() const { return values_; }

      private:
        Vsp16s values_[kMaxParameters];
        Vsp32s number_ = 0;
    };

    // What is known of a frame before its subframes are coded.
    struct Frame : Analysis::Result {
        Vsp32s code;            // of the rate
        Vsp16s hangover;        // of discontinuous transmission
        Vsp16s stability;       // of the spectrum
        const Vsp16s* samples;  // that came, with their two lowest bits cleared
        Vsp16s quantised[4 * 17];
    };

    // A subframe while it is searched.
    struct Subframe {
        Vsp16s impulse[kSubframe], target[kSubframe], residual[kSubframe];
        Vsp16s filteredVector[kSubframe], code[kSubframe], filteredCode[kSubframe];
        Vsp16s pitchGain, codeGain;
        Vsp32s exactCodeGain;
    };

    void rescale(Vsp32s change);
    void quantise(Frame& frame, Parameters& parameters);
    void encodeNoise(const Frame& frame, Vsp16s* silence);
    void encodeSubframe(const Frame& frame, Vsp32s i, Parameters& parameters);
    void findTarget(const Frame& frame, Vsp32s i, Subframe& s);
    void encodeHighBand(const Frame& frame, Vsp32s i, const Vsp16s* lpc, const Vsp16s* excitation, Vsp32s exponent,
                        Vsp16s* index);
    Vsp32s typeOf(bool noise);

    Vsp16s* excitation(Vsp32s i) { return excitation_ + kPast + kSubframe * i; }

    bool dtx_, firstFrame_, lastWasSpeech_;
    Vsp32s framesWithoutSpeech_, descriptorCountdown_, noiseThreshold_;
    Analysis analysis_;
    Vsp16s excitation_[kPast + kCore + 1], quantisedIsp_[16], isf_[16], isfResidual_[16];
    Vsp16s synthesis_[16], weightedError_, clipping_[2], gains_[4], tilt_, lagMin_;
    Vsp16s noiseSynthesis_[16], noiseBand_[30], speechBand_[30], noiseShare_;
    HighBand highBand_;
    LibraryState<432> noise_;
};

}  // namespace vspv::amrwb
