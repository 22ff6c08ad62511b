// What encoder and decoder reconstruct alike: the residual behind the short-term filter.
#pragma once

#include "codec/gsmfr/frame.h"

namespace vspv::gsmfr {

struct Reconstruction {
    Vsp16s past[120];  // latest residual, oldest first
    Vsp16s previousLag;

    void reset();
    void add(const SubFrame& s, Vsp16s* residual);
};

}  // namespace vspv::gsmfr
