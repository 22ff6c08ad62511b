// What follows the decoding of the excitation, and the band above the coded one.
#include "support/described.h"

namespace vsp::test {

static const Described functions("amrwb",
                                 {
                                     VSPSC_FUNCTION(vspsNoiseEnhance_AMRWB_32s_I, value(), value(), io(1), io(1)),
                                     VSPSC_FUNCTION(vspsPitchEnhance_AMRWB_16s, in(64), value(), out(64).mayBe(0)),
                                     VSPSC_FUNCTION(vspsPhaseDispersion_AMRWB_16s_I, value(), value(),
                                                    oneOf({5, 9, 13, 15, 16, 18, 19, 20, 21}), io(64), io(8)),
                                     VSPSC_FUNCTION(vspsPitchPostProcess_AMRWB_16s_I, in(64), value(), io(64)),

                                     VSPSC_FUNCTION(vspsHighBandNoise_AMRWB_16s, in(64), range(0, 8), io(1), out(80)),
                                     VSPSC_FUNCTION(vspsHighBandGain_AMRWB_16s, in(64), value(), out(1)),
                                     VSPSC_FUNCTION(vspsHighBandScale_AMRWB_16s_I, value(), range(-1, 15), io(80)),
                                     VSPSC_FUNCTION(vspsHighBandGainQuant_AMRWB_16s, in(80), in(80), value(), range(0, 7),
                                                    io(1), out(1)),
                                 });

}  // namespace vsp::test
