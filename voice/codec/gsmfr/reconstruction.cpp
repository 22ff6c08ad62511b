#include "codec/gsmfr/reconstruction.h"

#include "vspsc/gsmfr.h"

namespace vspv::gsmfr {

void Reconstruction::reset() { *this = {{}, 40}; }

void Reconstruction::add(const SubFrame& s, Vsp16s* residual) {
    Vsp16s factor = 0, scale = 0, pulses[13], excitation[40];
    vspsRPEScaleDecode_GSMFR_16s(s.max, &factor, &scale);
    vspsRPEQuantDecode_GSMFR_16s(s.pulses, pulses, factor, scale);
    vspsRPEGridPosition_GSMFR_16s(pulses, excitation, s.grid);
    vspsLongTermSynthesis_GSMFR_16s(excitation, past, residual, s.lag, s.gain, &previousLag);
}

}  // namespace vspv::gsmfr
