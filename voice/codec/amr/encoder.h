// Encoder of GSM-AMR (3GPP TS 26.090, 26.092 to 26.094).
#pragma once

#include "codec/amr/frame.h"
#include "codec/codec.h"
#include "codec/library_state.h"
#include "samples.h"
#include "vspsc/gsmamr.h"

namespace vspv::amr {

class Encoder {
  public:
    void reset();
    void setDetector(Vsp32s option);  // 1 or 2, 0 for no discontinuous transmission
    // Type and number of octets of the frame are set.
    void encode(Vsp32s mode, const Vsp16s* samples, Vsp8u* bytes, VspvFrame& told);

  private:
    static constexpr Vsp32s kFrame = 160, kSubframe = 40, kPast = 154, kPastWeighted = 143;

    struct Memories {  // of the filters
        Vsp16s synthesis[10], error[10], target[10];
    };

    struct Filters {
        Vsp16s plain[44], quantised[44];
    };

    // A subframe between its search and the update of the memories.
    struct Subframe {
        Vsp16s impulse[kSubframe], target[kSubframe], residual[kSubframe], delay[2], code[kSubframe],
            filteredVector[kSubframe], filteredCode[kSubframe];
    };

    // Parameters in the order of the frame.
    class Parameters {
      public:
        void add(Vsp16s value) { values_[number_++] = value; }
        void add(const Vsp16s* values, Vsp32s n) {
            for (Vsp32s i = 0; i < n; i++) add(values[i]);
        }
        Vsp16s* reserve() { return &values_[number_++]; }
        const Vsp16s* values() const { return values_; }

      private:
        Vsp16s values_[kMaxParameters];
        Vsp32s number_ = 0;
    };

    bool isSpeech();
    void analyse(Vsp32s code, Vsp16s* lsp, Filters& filters);
    void quantise(Vsp32s code, const Vsp16s* lsp, Filters& filters, Parameters& parameters);
    void forgetSpeech();
    void encodeSubframes(Vsp32s code, const Filters& filters, Vsp32s resonance, const Vsp16s* lags, Parameters& parameters);
    void search(Vsp32s code, Vsp32s i, const Filters& filters, Vsp32s resonance, Vsp16s lag, const Memories& memories,
                Subframe& s, Vsp16s* gain, Vsp16s* gainBefore, Parameters& parameters, Vsp16s** gainPlace);
    void findTarget(Vsp32s code, Vsp32s i, const Filters& filters, const Memories& memories, Subframe& s);
    void makeVector(Vsp32s code, Vsp32s i, Subframe& s);
    void update(Vsp32s code, Vsp32s i, const Filters& filters, const Subframe& s, const Vsp16s* gain, Memories& memories);

    Vsp16s* excitation(Vsp32s i) { return excitation_ + kPast + kSubframe * i; }
    const Vsp16s* speech(Vsp32s i) const { return speech_ + 120 + kSubframe * i; }

    Vsp32s detector_;
    Vsp16s speech_[2 * kFrame], weighted_[kPastWeighted + kFrame], excitation_[kPast + kFrame];
    Vsp16s recursion_[11], lsp_[10], quantisedLsp_[10], lsfResidual_[10];
    Vsp16s openLoop_[10], openLoopForDetector_[5], weightedMemory_[10];
    Memories memories_;
    Vsp16s sharpening_, previousLag_, resonances_, pitchGains_[7], predictor_[8], gainMemory_[30], descriptorMemory_[2];
    VspGSMAMRVad1State vad1_;
    VspGSMAMRVad2State vad2_;
    LibraryState<16> input_;
    LibraryState<192> noise_;
};

}  // namespace vspv::amr
