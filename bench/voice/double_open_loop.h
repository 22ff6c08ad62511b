// The open-loop pitch search of a GSM-AMR encoder, as far as its voice activity detectors listen to it.
#pragma once

#include <array>

#include "voice/double_weighted_speech.h"
#include "vspsc.h"

// What a frame leaves for the detector of the next one.
struct OpenLoopResult {
    Vsp16s bestCorrHp = 13106;  // best high-pass normalised correlation, Q15
    Vsp16s toneFlags = 0;       // flags of tones, one for each half-frame, newest in bit 14
    bool steadyPitch = false;   // the lag has hardly changed
    bool ltpFlag = false;       // strongly periodic
};

// Two searches a frame, lags 20 to 143, as at 5.9 to 7.95 kbit/s (3GPP TS 26.090 5.3; 26.094 for the flags). Integer
// arithmetic as in the standard, but for the comparison between the three ranges of lags.
class AmrOpenLoop {
  public:
    static constexpr std::size_t kHalf = kAmrFrame / 2, kMinLag = 20, kMaxLag = 143;

    // Of the weighted speech of a frame.
    const OpenLoopResult& process(const AmrFrame& weighted);
    const OpenLoopResult& result() const { return result_; }

  private:
    std::array<Vsp16s, kMaxLag + kAmrFrame> speech_{};  // the frame with its past
    OpenLoopResult result_;
    int oldLag_ = 0, oldLagCount_ = 0;
};
