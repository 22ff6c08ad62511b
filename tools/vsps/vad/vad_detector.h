// The voice activity detectors of GSM-AMR, one frame after the other, with what they think of the signal.
#pragma once

#include <memory>

#include "vad/amr_open_loop.h"

class VadDetector {
  public:
    virtual ~VadDetector() = default;

    // A pre-processed frame and the kAmrLookAhead samples before it; what the search left in the previous frame.
    virtual bool detect(const Vsp16s* pastAndFrame, const OpenLoopResult& openLoop) = 0;
    // dB, in the frame: mean ratio of the energies in the bands to the noise estimates.
    virtual double snr() const = 0;
    // dB. Option 1: the ratio above which the frame is taken for speech, before hangover. Option 2: the long-term ratio.
    virtual double reference() const = 0;
};

// option: 1 or 2
std::unique_ptr<VadDetector> makeVadDetector(int option);
