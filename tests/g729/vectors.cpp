// Pitch search and adaptive codebook against recorded calls.
#include "support/level_test.h"
#include "support/run_vectors.h"

namespace vsp::test {

class PitchVectors : public LevelTest {};
VSPSC_EVERY_LEVEL(PitchVectors);

#define VSPSC_VECTORS(function) \
    TEST_P(PitchVectors, function) { runVectors("g729/" #function ".vec", api.function); }
VSPSC_VECTORS(vspsOpenLoopPitchSearch_G729_16s)
VSPSC_VECTORS(vspsOpenLoopPitchSearch_G729A_16s)
VSPSC_VECTORS(vspsOpenLoopPitchSearch_G729A_32f)
VSPSC_VECTORS(vspsAdaptiveCodebookSearch_G729_16s)
VSPSC_VECTORS(vspsAdaptiveCodebookSearch_G729A_16s)
VSPSC_VECTORS(vspsAdaptiveCodebookSearch_G729D_16s)
VSPSC_VECTORS(vspsDecodeAdaptiveVector_G729_16s)
VSPSC_VECTORS(vspsDecodeAdaptiveVector_G729_16s_I)
VSPSC_VECTORS(vspsDecodeAdaptiveVector_G729_32f_I)
VSPSC_VECTORS(vspsAdaptiveCodebookGain_G729_16s)
VSPSC_VECTORS(vspsAdaptiveCodebookGain_G729A_16s)
VSPSC_VECTORS(vspsAdaptiveCodebookContribution_G729_16s)
VSPSC_VECTORS(vspsAdaptiveCodebookContribution_G729_32f)
VSPSC_VECTORS(vspsFilteredExcitation_G729_32f)
VSPSC_VECTORS(vspsDotProd_G729A_32f)
VSPSC_VECTORS(vspsInterpolateC_G729_32f)

}  // namespace vsp::test
