// Linear prediction of AMR-WB.
#include "support/described.h"

namespace vsp::test {

namespace {

const std::vector<Vsp64s> kRates{5, 9, 13, 15, 16, 18, 19, 20, 21};

// Indices of so many bits at a rate.
Argument indices(const Argument& array) {
    return array.holding(vspStsRangeErr, [](const Values& v, int i) {
        const std::vector<int> low{8, 8, 7, 7, 6}, others{8, 8, 6, 7, 7, 5, 5};
        return Limits{0, (1 << (v[1] == 5 ? low : others).at(std::size_t(i))) - 1};
    });
}
Vsp64s indicesOf(const Values& v) { return v[1] == 5 ? 5 : 7; }

const Described functions(
    "amrwb", {
                 VSPSC_FUNCTION(vspsAutoCorr_AMRWB_16s32s, in(384), out(17)),
                 VSPSC_FUNCTION(vspsLagWindow_AMRWB_32s_I, io(len), length(1, 16).above(vspStsRangeErr)),
                 VSPSC_FUNCTION(vspsLevinsonDurbin_AMRWB_32s16s, in(17), io(16), out(17)),
                 VSPSC_FUNCTION(vspsLPCToISP_AMRWB_16s, in(17), in(16), out(16).mayBe(1)),
                 VSPSC_FUNCTION(vspsISPToLPC_AMRWB_16s, in(argument(1)), oneOf({16, 20}), range(0, 1), out(Count(1, 1, 1))),
                 VSPSC_FUNCTION(vspsISPToISF_AMRWB_16s, in(16), out(16).mayBe(0)),
                 VSPSC_FUNCTION(vspsISFToISP_AMRWB_16s, in(argument(1)), oneOf({16, 20}), out(argument(1)).mayBe(0)),
                 VSPSC_FUNCTION(vspsInterpolateISP_AMRWB_16s, in(16), in(16), out(68)),
                 VSPSC_FUNCTION(vspsISFQuant_AMRWB_16s, in(16), oneOf(kRates), io(16), out(16).mayBe(0), out(indicesOf)),
                 VSPSC_FUNCTION(vspsISFDecode_AMRWB_16s, indices(in(indicesOf)), oneOf(kRates), io(16), io(48), out(16)),
                 VSPSC_FUNCTION(vspsISFDecodeErased_AMRWB_16s, in(16), in(48), io(16), out(16).mayBe(0)),
                 VSPSC_FUNCTION(vspsISFQuantDTX_AMRWB_16s, in(16), out(16).mayBe(0), out(5)),
                 VSPSC_FUNCTION(vspsISFDecodeDTX_AMRWB_16s,
                                in(5).holding(vspStsRangeErr, {{0, 63}, {0, 63}, {0, 63}, {0, 31}, {0, 31}}), out(16)),
                 VSPSC_FUNCTION(vspsISFStability_AMRWB_16s, in(16), in(16), out(1)),
                 VSPSC_FUNCTION(vspsISFExtrapolate_AMRWB_16s, in(16), out(20)),
             });

}  // namespace

}  // namespace vsp::test
