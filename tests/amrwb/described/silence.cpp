// Detection, description and synthesis of silence.
#include "support/described.h"

namespace vsp::test {

namespace {

Argument vadState() {
    return state(172, [](const Api& api, int, void* s) { api.vspsVADInit_AMRWB_16s(s); });
}

const Described functions("amrwb",
                          {
                              VSPSC_FUNCTION(vspsVADInit_AMRWB_16s, state(172)).operation("VAD-stream", 0),
                              VSPSC_FUNCTION(vspsVAD_AMRWB_16s, in(256), out(1), vadState()).operation("VAD-stream", 1),
                              VSPSC_FUNCTION(vspsVADTone_AMRWB_16s, value(), vadState()).operation("VAD-stream", 2),
                          });

}  // namespace

}  // namespace vsp::test
