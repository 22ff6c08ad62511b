#pragma once

#include "codec/gsmfr/reconstruction.h"

namespace vspv::gsmfr {

class Decoder {
  public:
    void reset();
    void decode(const Frame& frame, Vsp16s* samples);

  private:
    Vsp16s previousLar_[8], lattice_[8], output_;
    Reconstruction reconstruction_;
};

}  // namespace vspv::gsmfr
