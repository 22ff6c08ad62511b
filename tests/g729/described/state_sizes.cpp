// The sizes of states.
#include "support/described.h"

namespace vsp::test {

static const Described functions("g729", {
                                             VSPSC_FUNCTION(vspsHighPassFilterSize_G729, size(24)).notRecorded(),
                                             VSPSC_FUNCTION(vspsWinHybridGetStateSize_G729E_16s, size(124)).notRecorded(),
                                             VSPSC_FUNCTION(vspsWinHybridGetStateSize_G729E_32f, size(124)).notRecorded(),
                                         });

}  // namespace vsp::test
