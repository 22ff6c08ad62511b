// Weighting, open-loop pitch, harmonic shaping, and the combined filter of G.723.1.
#include "support/described.h"

namespace vsp::test {

static const Argument delay = range(15, 145);

static const Described functions(
    "g723",
    {
        VSPSC_FUNCTION(vspsWeightLPC_G723_16s, in(10), out(20)),
        VSPSC_FUNCTION(vspsFIR16s_G723_16s32s, in(10), in(len), out(len), length(), io(10)),
        VSPSC_FUNCTION(vspsIIR16s_G723_32s16s_Sfs, in(10), in(len), out(len), length(), scale(0, 15), io(10)),
        VSPSC_FUNCTION(vspsOpenLoopPitchSearch_G723_16s, in(120).after(142), out(1)),
        VSPSC_FUNCTION(vspsHarmonicSearch_G723_16s, in(60).after(argument(1) + 3), range(18, 142), out(1), out(1)),
        VSPSC_FUNCTION(vspsHarmonicFilter_G723_16s, in(60).after(argument(1)), delay, value(), out(60)),
        VSPSC_FUNCTION(vspsImpulseResponse_G723_16s, in(10), in(20), delay, value(), out(60)),
        VSPSC_FUNCTION(vspsSubtractRinging_G723_16s_I, in(10), in(20), in(145), in(10), in(10), delay, value(), io(60)),
        VSPSC_FUNCTION(vspsUpdateRinging_G723_16s_I, in(10), in(20), io(60), io(145), io(10), io(10)),
    });

}  // namespace vsp::test
