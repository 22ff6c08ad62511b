// Linear prediction of G.729: from the speech, backward, and in floating point.
#include "support/described.h"

namespace vsp::test {

namespace {

Initialiser filterWith(const std::vector<Vsp16s>& coefficients) {
    return [=](const Api& api, int, void* state) { api.vspsHighPassFilterInit_G729(coefficients.data(), state); };
}
const auto kInputFilter = filterWith({1899, -3798, 1899, 4096, 7807, -3733});
const auto kOutputFilter = filterWith({7699, -15398, 7699, 8192, 15836, -7667});

void initialiseFloatFilter(const Api& api, int start, void* state) {
    const Vsp32f input[] = {0.92727435f, -1.8544941f, 0.92727435f, 1, 1.9059465f, -0.9114024f},
                 output[] = {0.93980581f, -1.8795834f, 0.93980581f, 1, 1.9330735f, -0.93589199f};
    api.vspsHighPassFilterInit_G729_32f(start == 2 ? output : input, state);
}

const Described functions(
    "g729",
    {
        VSPSC_FUNCTION(vspsHighPassFilterSize_G729, size(24)).notRecorded(),
        VSPSC_FUNCTION(vspsHighPassFilterInit_G729, in(6), state(24)).notRecorded(),
        VSPSC_FUNCTION(vspsHighPassFilter_G729_16s_ISfs, io(len), length(), scale(12, 13), state(24, kInputFilter))
            .stream("vspsHighPassFilter_G729_16s_ISfs-12", -1, {item(1).to(2), constant(80), constant(12), unrecorded()},
                    -1, kInputFilter)
            .stream("vspsHighPassFilter_G729_16s_ISfs-13", -1, {item(1).to(2), constant(80), constant(13), unrecorded()},
                    -1, kOutputFilter),
        VSPSC_FUNCTION(vspsAnalysisWindow_G729_16s, in(240), out(240).mayBe(0))
            .recorded("vspsAutoCorr_NormE_16s32s", {item(0), result(1)}),
        VSPSC_FUNCTION(vspsAutoCorr_NormE_16s32s, in(len), length(), out(argument(3)),
                       limited(vspStsSizeErr,
                               [](const Values& v) {
                                   return Limits{1, v[1]};
                               }),
                       out(1))
            .recorded("vspsAutoCorr_NormE_16s32s", {item(1), constant(240), result(2), constant(13), result(4)}, 5),
        VSPSC_FUNCTION(vspsLevinsonDurbin_G729_32s16s, in(11), out(11), out(10).firstOnWarning(2),
                       out(1).unchangedOnWarning(), io(13)),
        VSPSC_FUNCTION(vspsResidualFilter_G729_16s, in(len).after(10), in(11), out(len), length())
            .recorded("vspsResidualFilter_G729_16s", {item(0), item(1), result(2), constant(40)}),
        VSPSC_FUNCTION(vspsSynthesisFilterPair_G729_16s, in(11), in(40), out(40).mayBe(1), in(10), in(11), in(40),
                       out(40).mayBe(5), in(10))
            .notRecorded(),
        VSPSC_FUNCTION(vspsSynthesisFilter_NR_16s_ISfs, in(11), io(len), length(), scale(0, 15), in(10))
            .recorded("vspsSynthesisFilter_NR_16s_Sfs", {item(0), item(1).to(3), constant(40), constant(12), item(2)}, 4),
        VSPSC_FUNCTION(vspsLPCToLSP_G729_16s, in(11), in(10), out(10).mayBe(1))
            .recorded("vspsLPCToLSP_G729_16s", {item(0), item(1), result(2)}),
        VSPSC_FUNCTION(vspsLPCToLSP_G729A_16s, in(11), in(10), out(10).mayBe(1))
            .recorded("vspsLPCToLSP_G729A_16s", {item(0), item(1), result(2)}),
        VSPSC_FUNCTION(vspsLSPToLPC_G729_16s, in(10), out(11)).recorded("vspsLSPToLPC_G729_16s", {item(0), result(1)}),
        VSPSC_FUNCTION(vspsLSPToLSF_Norm_G729_16s, in(10), out(10).mayBe(0))
            .recorded("vspsLSPToLSF_Norm_G729_16s", {item(0), result(1)}),
        VSPSC_FUNCTION(vspsLSPToLSF_G729_16s, in(10), out(10).mayBe(0))
            .recorded("vspsLSPToLSF_G729_16s", {item(0), result(1)}),
        VSPSC_FUNCTION(vspsLSFToLSP_G729_16s, in(10), out(10).mayBe(0))
            .recorded("vspsLSFToLSP_G729_16s", {item(0), result(1)}),
        VSPSC_FUNCTION(vspsWeightingFactors_G729_16s, in(10), in(10), in(2), io(3), out(2), out(2))
            .recorded("vspsWeightingFactors_G729_16s", {item(0), item(1), item(2), item(3).to(6), result(4), result(5)}),

        VSPSC_FUNCTION(vspsWinHybridGetStateSize_G729E_16s, size(124)).notRecorded(),
        VSPSC_FUNCTION(vspsWinHybridInit_G729E_16s, state(124)).notRecorded(),
        VSPSC_FUNCTION(vspsWinHybrid_G729E_16s32s, in(145), out(31),
                       state(124, [](const Api& api, int, void* s) { api.vspsWinHybridInit_G729E_16s(s); }))
            .stream("vspsWinHybrid_G729E_16s32s"),
        VSPSC_FUNCTION(vspsLagWindow_G729E_32s_I, io(31)),
        VSPSC_FUNCTION(vspsLevinsonDurbin_G729E_32s16s, in(31), out(31), out(30).firstOnWarning(2),
                       out(1).unchangedOnWarning(), io(33))
            .recorded("vspsLevinsonDurbin_G729E_32s16s")
            .recorded("vspsLevinsonDurbin_G729E_32s16s+g"),
        VSPSC_FUNCTION(vspsResidualFilter_G729E_16s, in(len).after(argument(4)), in(argument(4) + 1), out(len), length(),
                       range(1, 30)),
        VSPSC_FUNCTION(vspsSynthesisFilter_G729E_16s, in(argument(4) + 1), in(len), out(len).mayBe(1), length(),
                       range(1, 30), in(argument(4))),
        VSPSC_FUNCTION(vspsSynthesisFilter_G729E_16s_I, in(argument(3) + 1), io(len), length(), range(1, 30),
                       in(argument(3))),
        VSPSC_FUNCTION(vspsWeightingFactors_G729E_16s, range(0, 1), out(2), out(2)),

        VSPSC_FUNCTION(vspsLevinsonDurbin_G729_32f, in(11), out(11), out(10), out(1)),
        VSPSC_FUNCTION(vspsLPCToLSP_G729_32f, in(11), in(10), out(10).mayBe(1)),
        VSPSC_FUNCTION(vspsLPCToLSP_G729A_32f, in(11), in(10), out(10).mayBe(1)),
        VSPSC_FUNCTION(vspsLSPToLPC_G729_32f, in(10), out(11)),
        VSPSC_FUNCTION(vspsHighPassFilterSize_G729_32f, size(40)).notRecorded(),
        VSPSC_FUNCTION(vspsHighPassFilterInit_G729_32f, in(6), state(40)).notRecorded(),
        VSPSC_FUNCTION(vspsHighPassFilter_G729_32f_I, io(len), length(),
                       state(40, initialiseFloatFilter).alwaysInitialised())
            .stream("vspsHighPassFilter_G729_32f_I"),
        VSPSC_FUNCTION(vspsWinHybridGetStateSize_G729E_32f, size(124)).notRecorded(),
        VSPSC_FUNCTION(vspsWinHybridInit_G729E_32f, state(124)).notRecorded(),
        VSPSC_FUNCTION(
            vspsWinHybrid_G729E_32f, in(145), out(31),
            state(124, [](const Api& api, int, void* s) { api.vspsWinHybridInit_G729E_32f(s); }).alwaysInitialised())
            .stream("vspsWinHybrid_G729E_32f"),
    });

}  // namespace

}  // namespace vsp::test
