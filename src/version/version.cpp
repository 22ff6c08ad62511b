#include "version/version_records.h"

#include "core/cpu.h"
#include "version/exports.h"

namespace vsp::VSP_LEVEL {

const VspLibraryVersion* vspscGetLibVersion(void) {
    return ownGetFeature(kFeatureV3) != 0 ? &kVersionAboveBaseline : &kVersionBaseline;
}

}  // namespace vsp::VSP_LEVEL
