// The detectors: any frames, records of any content.
#include "support/described.h"

namespace vsp::test {

static const Described functions(
    "gsmamr", {
                  VSPSC_FUNCTION(vspsVAD1_GSMAMR_16s, in(200), io(1), out(1), value(), value()).notRecorded(),
                  VSPSC_FUNCTION(vspsVAD2_GSMAMR_16s, in(160), io(1), out(1), value()).notRecorded(),
                  VSPSC_FUNCTION(vspsFFTFwd_RToPerm_GSMAMR_16s_I, io(128)).notRecorded(),
              });

}  // namespace vsp::test
