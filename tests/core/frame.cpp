// Version query and the fixed sizes of the state objects.
#include <cstring>

#include "core/cpu.h"
#include "support/guarded.h"
#include "support/level_test.h"
#include "support/status_order.h"
#include "version/version_records.h"

namespace vsp::test {

class Frame : public LevelTest {};
VSPSC_EVERY_LEVEL(Frame);

TEST_P(Frame, VersionQueryGivesTheRecordOfTheProcessor) {
    const VspLibraryVersion* version = api.vspscGetLibVersion();
    ASSERT_NE(nullptr, version);
    EXPECT_EQ(version, api.vspscGetLibVersion());
    EXPECT_STREQ(ownGetFeature(0x80) != 0 ? "libvspscy8.so.6.1+" : "libvspscy8.so.6.1", version->Name);
}

TEST(Version, RecordsDifferOnlyInTheName) {
    EXPECT_STREQ("libvspscy8.so.6.1+", kVersionAboveBaseline.Name);
    EXPECT_STREQ("libvspscy8.so.6.1", kVersionBaseline.Name);
    for (const VspLibraryVersion& version : {kVersionAboveBaseline, kVersionBaseline}) {
        EXPECT_EQ(6, version.major);
        EXPECT_EQ(1, version.minor);
        EXPECT_EQ(137, version.majorBuild);
        EXPECT_EQ(818, version.build);
        EXPECT_EQ(0, std::memcmp(version.targetCpu, "y8\0\0", 4));
        EXPECT_STREQ("6.1 build 137.56", version.Version);
        EXPECT_STREQ("Mar 17 2010", version.BuildDate);
    }
}

TEST_P(Frame, StateSizesAreTheFixedOnes) {
    const struct {
        VspStatus (*query)(Vsp32s*);
        Vsp32s size;
    } queries[] = {
        {api.vspsHighPassFilterSize_G729, 24},
        {api.vspsAdaptiveCodebookDecodeGetSize_AMRWB_16s, 24},
        {api.vspsVADGetSize_AMRWB_16s, 172},
        {api.vspsPhaseDispersionGetStateSize_G729D_16s, 20},
        {api.vspsWinHybridGetStateSize_G729E_16s, 124},
        {api.vspsWinHybridGetStateSize_G729E_32f, 124},
        {api.vspsFilterHighpassGetStateSize_G7291_16s, 24},
        {api.vspsGenerateExcitationGetStateSize_G7291_16s, 128},
        {api.vspsQMFGetStateSize_G7291_16s, 128},
        {api.vspsSBADPCMEncodeStateSize_G722_16s, 144},
        {api.vspsSBADPCMDecodeStateSize_G722_16s, 144},
        {api.vspsEncodeGetStateSize_G726_16s8u, 88},
        {api.vspsDecodeGetStateSize_G726_8u16s, 92},
        {api.vspsCombinedFilterGetStateSize_G728_16s, 208},
        {api.vspsIIR16sGetStateSize_G728_16s, 64},
        {api.vspsPostFilterGetStateSize_G728_16s, 64},
        {api.vspsPostFilterAdapterGetStateSize_G728, 176},
        {api.vspsSynthesisFilterGetStateSize_G728_16s, 144},
        {api.vspsALCGetStateSize_G169_16s, 124},
        {api.vspsFullbandControllerGetSize_EC_16s, 96},
        {api.vspsFullbandControllerGetSize_EC_32f, 72},
        {api.vspsPostFilterGetStateSize_RTA_32f, 32},
        {api.vspsQMFGetStateSize_RTA_32f, 208},
    };
    for (const auto& [query, size] : queries) {
        SCOPED_TRACE(size);
        Guarded<Vsp32s> result(1);
        EXPECT_EQ(vspStsNoErr, query(result.data()));
        EXPECT_EQ(size, result[0]);
        EXPECT_EQ(vspStsNullPtrErr, query(nullptr));
    }
}

TEST_P(Frame, StateSizesOfAModeOrRateCheckIt) {
    const std::vector<VspStatus> order{vspStsNullPtrErr, vspStsRangeErr};
    const auto expectSizes = [&](VspStatus (*query)(Vsp32s, Vsp32s*), const std::vector<Vsp32s>& good,
                                 const std::vector<Vsp32s>& bad, Vsp32s size) {
        Choices<Vsp32s> selector{good[0], {}};
        for (const Vsp32s x : bad) selector.bad.emplace_back(x, vspStsRangeErr);
        expectStatusOrder(query, order, selector, pointer);
        for (const Vsp32s x : good) {
            Guarded<Vsp32s> result(1);
            EXPECT_EQ(vspStsNoErr, query(x, result.data()));
            EXPECT_EQ(size, result[0]);
        }
    };
    expectSizes(api.vspsHighPassFilterGetSize_AMRWB_16s, {2, 3}, {1, 4, 0, -2, kLowest}, 40);
    const std::vector<Vsp32s> badRates{0, 7999, 8001, 11025, 15999, 16001, 32000, -8000, kLowest};
    expectSizes(api.vspsToneDetectGetStateSize_EC_16s, {8000, 16000}, badRates, 72);
    expectSizes(api.vspsToneDetectGetStateSize_EC_32f, {8000, 16000}, badRates, 80);
}

}  // namespace vsp::test
