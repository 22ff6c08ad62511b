// The steps as the tests define them. Arguments are taken as valid.
#include "gsmfr/scalar_gsmfr.h"

#include "gsmfr/definitions.h"

void bench::addScalarGsmfr(vsp::Api& api) {
    using namespace vsp::test;
    api.vspsPreprocess_GSMFR_16s = gsmfr::preprocess;
    api.vspsAutoCorr_GSMFR_16s32s = gsmfr::autoCorr;
    api.vspsSchur_GSMFR_32s16s = gsmfr::schur;
    api.vspsShortTermAnalysisFilter_GSMFR_16s_I = gsmfr::analysisFilter;
    api.vspsLongTermPredict_GSMFR_16s = gsmfr::longTermPredict;
    api.vspsWeightingFilter_GSMFR_16s = gsmfr::weightingFilter;
    api.vspsLongTermSynthesis_GSMFR_16s = gsmfr::longTermSynthesis;
    api.vspsShortTermSynthesisFilter_GSMFR_16s = gsmfr::synthesisFilter;
    api.vspsPostprocess_GSMFR_16s_I = gsmfr::postprocess;
}
