// Forward and backward linear prediction, and the pitch of erased frames at 11.8 kbit/s.
#include "support/described.h"

namespace vsp::test {

static const Described functions(
    "g729",
    {
        VSPSC_FUNCTION(vspsLPCModeDecide_G729E_16s, in(80).after(30), in(22), io(62), in(10), in(10), in(31), range(0, 1),
                       io(7), out(1))
            .recorded("vspsLPCModeDecide_G729E_16s"),
        VSPSC_FUNCTION(vspsLPCModeUpdate_G729E_16s, io(7)).recorded("vspsLPCModeUpdate_G729E_16s"),
        VSPSC_FUNCTION(vspsLPCModeTrack_G729E_16s, in(80), range(0, 1), io(3)).recorded("vspsLPCModeTrack_G729E_16s"),
        VSPSC_FUNCTION(vspsInterpolateLPC_G729E_16s, in(31), io(62), io(1)).recorded("vspsInterpolateLPC_G729E_16s"),
        VSPSC_FUNCTION(vspsPitchTrack_G729E_16s, io(2).holding(vspStsCodeRangeErr, {{18, 145}, {-1, 1}}), io(4))
            .recorded("vspsPitchTrack_G729E_16s"),
    });

}  // namespace vsp::test
