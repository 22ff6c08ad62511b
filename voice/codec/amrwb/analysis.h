// The encoder of AMR-WB up to its open-loop search (3GPP TS 26.190 5.1 to 5.4), with the voice activity detector that
// listens there (TS 26.194).
#pragma once

#include "codec/amrwb/high_band.h"
#include "codec/library_state.h"

namespace vspv::amrwb {

constexpr Vsp32s kCore = 256;  // samples of a frame at 12.8 kHz

class Analysis {
  public:
    // Of a frame. The samples are times 2^exponent, the weighted speech besides times 2^weightedShift.
    struct Result {
        Vsp32s exponent, weightedShift;
        Vsp32s change;  // what is kept of earlier samples has to be multiplied by 2^change
        Vsp16s plain[4 * 17], weighted[4 * 17], isf[16];
        Vsp16s lags[2];  // open loop
    };

    // Clears the two lowest bits of a frame, which the encoder does not hear; tells whether it is the one that resets an
    // encoder (3GPP TS 26.173).
    static bool clearLowBits(const Vsp16s* frame, Vsp16s* samples);

    void reset();

    // In this order, each once a frame; the two lowest bits of the samples are 0.
    void take(const Vsp16s* samples, Result& result);
    bool isSpeech(const Result& result);
    void predict(Result& result);
    void search(bool once, Result& result);  // one lag for the frame or two
    void finish();

    // A subframe, behind 16 samples before it.
    const Vsp16s* speech(Vsp32s i) const { return speech_ + 64 + kSubframe * i; }

  private:
    static constexpr Vsp32s kWindow = 384, kNew = 116, kLookAhead = 12, kPast = 115;

    void weigh(Result& result);

    Vsp32s exponent_, weightedShift_;
    Vsp16s speech_[kWindow], weighted_[kPast + kCore / 2];
    Vsp16s downsampling_[30], preemphasis_, scales_[2], recursion_[16], isp_[16];
    Vsp16s decimation_[3], deemphasis_, largestWeighted_, openLoopPast_[kPast], openLoopTrack_[8];
    HighPass input_, weightedHighPass_;
    LibraryState<172> detector_;
};

extern const Vsp16s kIspReset[16];

}  // namespace vspv::amrwb
