// What a GSM-AMR encoder does with the speech up to its open-loop pitch search (3GPP TS 26.090 5.1 to 5.3), as far as its
// voice activity detectors hear of it.
#pragma once

#include "vspsc/types.h"

namespace vspv {

constexpr Vsp32s kFrame = 160;

// One frame after the other. At 5.9 to 7.95 kbit/s the search is the same.
class OpenLoop {
  public:
    static Vsp32s stateBytes();

    // The state of the encoder's high-pass filter is memory of the caller.
    OpenLoop(Vsp32s option, void* highPass);

    // Takes a frame and pre-processes it.
    void read(const Vsp16s* frame, void* highPass);
    // Takes a frame that has been pre-processed.
    void readProcessed(const Vsp16s* frame);
    // The pre-processed frame; 40 samples of the last one lie before it.
    const Vsp16s* frame() const { return speech_ + kWindow - kFrame; }
    // After the detector has decided: the linear prediction, the weighting and the search of the encoder's frame, which
    // ends 40 samples before that one. The first option's pitch flags are those of the detector's record.
    void search(Vsp16s* pitchFlags);

    Vsp16s toneFlags() const { return vadMem_[0]; }
    Vsp16s bestCorrHp() const { return vadMem_[1]; }
    Vsp16s ltpFlag() const { return vadMem_[4]; }

  private:
    static constexpr Vsp32s kWindow = 240, kLongestLag = 143, kOrder = 10;

    void weigh(Vsp16s* weighted);

    Vsp32s option_;
    Vsp16s speech_[kWindow] = {};
    Vsp16s weighted_[kLongestLag + kFrame] = {};
    Vsp16s lpc_[kOrder + 1] = {4096};  // the last good filter
    Vsp16s lsp_[kOrder] = {30000, 26000, 21000, 15000, 8000, 0, -8000, -15000, -21000, -26000};
    Vsp16s weightingMem_[kOrder] = {};
    Vsp16s searchMem_[10] = {40, 40, 40, 40, 40, 0, 0, 40, 0, 0};
    Vsp16s vadMem_[5] = {0, 13106, 0, 0, 0};
};

}  // namespace vspv
