// The level control.
#include "support/described.h"

namespace vsp::test {

static const Argument kState = state(124, [](const Api& api, int, void* s) {
                                   api.vspsALCInit_G169_16s(static_cast<VspALCState_G169_16s*>(s));
                               }).alwaysInitialised();
static const Argument kLevel = range(0, 0x7FFFFFFF);

static const Described functions(
    "alc", {
               VSPSC_FUNCTION(vspsALCGetStateSize_G169_16s, size(124)).notRecorded(),
               VSPSC_FUNCTION(vspsALCInit_G169_16s, state(124)).notRecorded(),
               VSPSC_FUNCTION(vspsALCSetLevel_G169_16s, kState, kLevel, kLevel).notRecorded(),
               VSPSC_FUNCTION(vspsALCSetGain_G169_16s, kState, kLevel).notRecorded(),
               VSPSC_FUNCTION(vspsALC_G169_16s, in(len), out(len).mayBe(0), length(8).multipleOf(8), kState).notRecorded(),
           });

}  // namespace vsp::test
