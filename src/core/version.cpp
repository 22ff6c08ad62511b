#include "core/version.h"

#include "core/cpu.h"
#include "core/level.h"

namespace vsp::VSP_LEVEL {

const VspLibraryVersion* vspscGetLibVersion(void) {
    return ownGetFeature(kFeatureV3) != 0 ? &kVersionAboveBaseline : &kVersionBaseline;
}

}  // namespace vsp::VSP_LEVEL
