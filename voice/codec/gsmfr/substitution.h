// Substitution and muting of lost frames, after the example of GSM 06.11: the last good frame once more, then ever more
// quietly and with the pulses at random places, at last frames of silence.
#pragma once

#include "codec/gsmfr/frame.h"

namespace vspv::gsmfr {

class Substitution {
  public:
    void reset();
    void good(const Frame& frame);
    const Frame& lost();

  private:
    Frame last_;
    bool lost_;  // the latest frame
    Vsp32u random_;
};

}  // namespace vspv::gsmfr
