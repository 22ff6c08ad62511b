// Families of which the sizes of states are all that is there.
#include "support/described.h"

namespace vsp::test {

static const Described functions("core",
                                 {
                                     VSPSC_FUNCTION(vspsFilterHighpassGetStateSize_G7291_16s, size(24)).notRecorded(),
                                     VSPSC_FUNCTION(vspsGenerateExcitationGetStateSize_G7291_16s, size(128)).notRecorded(),
                                     VSPSC_FUNCTION(vspsQMFGetStateSize_G7291_16s, size(128)).notRecorded(),
                                     VSPSC_FUNCTION(vspsPostFilterGetStateSize_RTA_32f, size(32)).notRecorded(),
                                     VSPSC_FUNCTION(vspsQMFGetStateSize_RTA_32f, size(208)).notRecorded(),
                                 });

}  // namespace vsp::test
