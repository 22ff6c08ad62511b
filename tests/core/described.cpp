// Every exported function is described, so that nothing escapes the checks that the descriptions drive.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/described.h"

namespace vsp::test {

namespace {

// Those that are tested by hand. New functions are described: this list only gets shorter.
const std::vector<std::string> kNotDescribed = {
    "vspsALCGetStateSize_G169_16s",
    "vspsALCInit_G169_16s",
    "vspsALCSetLevel_G169_16s",
    "vspsALCSetGain_G169_16s",
    "vspsALC_G169_16s",
    "vspsHighPassFilterGetSize_AMRWB_16s",
    "vspsAdaptiveCodebookDecodeGetSize_AMRWB_16s",
    "vspsVADGetSize_AMRWB_16s",
    "vspsMulC_NR_16s_Sfs",
    "vspsMulC_NR_16s_ISfs",
    "vspsMul_NR_16s_Sfs",
    "vspsMul_NR_16s_ISfs",
    "vspsMulPowerC_NR_16s_Sfs",
    "vspsInterpolate_G729_16s",
    "vspsInterpolateC_G729_16s_Sfs",
    "vspsInterpolateC_NR_G729_16s_Sfs",
    "vspsInterpolateC_NR_16s",
    "vspsAutoScale_16s",
    "vspsAutoScale_16s_I",
    "vspsDotProd_G729A_16s32s",
    "vspsDotProdAutoScale_16s32s_Sfs",
    "vspsInvSqrt_32s_I",
    "vspsLagWindow_G729_32s_I",
    "vspsRandomNoiseExcitation_G729B_16s",
    "vspsAutoCorrLagMax_Inv_16s",
    "vspsCrossCorr_NormM_16s",
    "vspsConvPartial_16s_Sfs",
    "vspsSynthesisFilter_NR_16s_Sfs",
    "vspsSubbandProcessGetSize_32f",
    "vspsSubbandProcessGetSize_16s",
    "vspsSubbandProcessInit_32f",
    "vspsSubbandProcessInit_16s",
    "vspsSubbandAnalysis_32f32fc",
    "vspsSubbandAnalysis_16s32sc_Sfs",
    "vspsSubbandSynthesis_32fc32f",
    "vspsSubbandSynthesis_32sc16s_Sfs",
    "vspsFIRSubband_EC_32fc",
    "vspsFIRSubband_EC_32sc_Sfs",
    "vspsFIRSubbandLow_EC_32sc_Sfs",
    "vspsFIRSubbandCoeffUpdate_EC_32fc_I",
    "vspsFIRSubbandCoeffUpdate_EC_32sc_I",
    "vspsFIRSubbandLowCoeffUpdate_EC_32sc_I",
    "vspsFIRSubbandAPCoeffUpdate_EC_32fc_I",
    "vspsFIR_EC_32f",
    "vspsFIR_EC_16s",
    "vspsNLMS_EC_32f",
    "vspsNLMS_EC_16s",
    "vspsToneDetectGetStateSize_EC_32f",
    "vspsToneDetectGetStateSize_EC_16s",
    "vspsToneDetectInit_EC_32f",
    "vspsToneDetectInit_EC_16s",
    "vspsToneDetect_EC_32f",
    "vspsToneDetect_EC_16s",
    "vspsFullbandControllerGetSize_EC_16s",
    "vspsFullbandControllerGetSize_EC_32f",
    "vspsSBADPCMEncodeStateSize_G722_16s",
    "vspsSBADPCMDecodeStateSize_G722_16s",
    "vspsSBADPCMEncodeInit_G722_16s",
    "vspsSBADPCMDecodeInit_G722_16s",
    "vspsQMFAnalysis_G722_16s",
    "vspsSBADPCMEncode_G722_16s",
    "vspsSBADPCMDecode_G722_16s",
    "vspsQMFSynthesis_G722_16s",
    "vspsConcealCodes_G722_16s_I",
    "vspsEncodeGetStateSize_G726_16s8u",
    "vspsDecodeGetStateSize_G726_8u16s",
    "vspsEncodeInit_G726_16s8u",
    "vspsDecodeInit_G726_8u16s",
    "vspsEncodeSetRate_G726_16s8u",
    "vspsDecodeSetRate_G726_8u16s",
    "vspsEncode_G726_16s8u",
    "vspsDecode_G726_8u16s",
    "vspsEncodePCM_G726_8u",
    "vspsDecodePCM_G726_8u",
    "vspsCombinedFilterGetStateSize_G728_16s",
    "vspsIIR16sGetStateSize_G728_16s",
    "vspsPostFilterGetStateSize_G728_16s",
    "vspsPostFilterAdapterGetStateSize_G728",
    "vspsSynthesisFilterGetStateSize_G728_16s",
    "vspsOpenLoopPitchSearch_G729_16s",
    "vspsOpenLoopPitchSearch_G729A_16s",
    "vspsOpenLoopPitchSearch_G729A_32f",
    "vspsAdaptiveCodebookSearch_G729_16s",
    "vspsAdaptiveCodebookSearch_G729A_16s",
    "vspsAdaptiveCodebookSearch_G729D_16s",
    "vspsDecodeAdaptiveVector_G729_16s",
    "vspsDecodeAdaptiveVector_G729_16s_I",
    "vspsDecodeAdaptiveVector_G729_32f_I",
    "vspsAdaptiveCodebookGain_G729_16s",
    "vspsAdaptiveCodebookGain_G729A_16s",
    "vspsAdaptiveCodebookContribution_G729_16s",
    "vspsAdaptiveCodebookContribution_G729_32f",
    "vspsFilteredExcitation_G729_32f",
    "vspsDotProd_G729A_32f",
    "vspsInterpolateC_G729_32f",
    "vspsHighPassFilterSize_G729",
    "vspsPhaseDispersionGetStateSize_G729D_16s",
    "vspsWinHybridGetStateSize_G729E_16s",
    "vspsWinHybridGetStateSize_G729E_32f",
    "vspsFilterHighpassGetStateSize_G7291_16s",
    "vspsGenerateExcitationGetStateSize_G7291_16s",
    "vspsQMFGetStateSize_G7291_16s",
    "vspsVAD1_GSMAMR_16s",
    "vspsVAD2_GSMAMR_16s",
    "vspsFFTFwd_RToPerm_GSMAMR_16s_I",
    "vspsPostFilterGetStateSize_RTA_32f",
    "vspsQMFGetStateSize_RTA_32f",
    "vspscGetLibVersion",
};

}  // namespace

TEST(Descriptions, EveryExportedFunctionHasOne) {
    std::vector<std::string> described;
    for (const Function& f : Described::all()) described.push_back(f.name);
    const auto contains = [](const std::vector<std::string>& names, const std::string& name) {
        return std::find(names.begin(), names.end(), name) != names.end();
    };
    for (const std::string name : {
#define VSPSC_EXPORT(family, name) #name,
#include "core/exports.def"
#undef VSPSC_EXPORT
         }) {
        if (contains(described, name))
            EXPECT_FALSE(contains(kNotDescribed, name)) << name << " is described: take it off the list";
        else
            EXPECT_TRUE(contains(kNotDescribed, name)) << name << " is not described";
    }
}

}  // namespace vsp::test
