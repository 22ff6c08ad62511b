#pragma once

#include "codec/gsmfr/reconstruction.h"

namespace vspv::gsmfr {

class Encoder {
  public:
    void reset();
    void encode(const Vsp16s* samples, Frame& frame);

  private:
    Vsp32s input_[3];
    Vsp16s previousLar_[8], lattice_[8];
    Reconstruction reconstruction_;
};

}  // namespace vspv::gsmfr
