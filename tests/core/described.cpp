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
    "vspsHighPassFilterGetSize_AMRWB_16s",
    "vspsAdaptiveCodebookDecodeGetSize_AMRWB_16s",
    "vspsVADGetSize_AMRWB_16s",
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
    "vspsCombinedFilterGetStateSize_G728_16s",
    "vspsIIR16sGetStateSize_G728_16s",
    "vspsPostFilterGetStateSize_G728_16s",
    "vspsPostFilterAdapterGetStateSize_G728",
    "vspsSynthesisFilterGetStateSize_G728_16s",
    "vspsFilterHighpassGetStateSize_G7291_16s",
    "vspsGenerateExcitationGetStateSize_G7291_16s",
    "vspsQMFGetStateSize_G7291_16s",
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
