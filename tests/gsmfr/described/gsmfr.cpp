// The functions of GSM full rate.
#include "support/described.h"

namespace vsp::test {

static const Described functions(
    "gsmfr",
    {
        VSPSC_FUNCTION(vspsPreprocess_GSMFR_16s, in(160), out(160), io(3))
            .recorded("preprocess", {item(0), result(2), item(1).to(3)}),
        VSPSC_FUNCTION(vspsAutoCorr_GSMFR_16s32s, io(160), out(9)).recorded("autocorr", {item(0).to(1), result(2)}),
        VSPSC_FUNCTION(vspsSchur_GSMFR_32s16s, in(9), out(8)).recorded("schur", {item(0), result(1)}),
        VSPSC_FUNCTION(vspsLARQuantEncode_GSMFR_16s, in(8), out(8)).recorded("lar_encode", {item(0), result(1)}),
        VSPSC_FUNCTION(vspsLARQuantDecode_GSMFR_16s, in(8), out(8)).recorded("lar_decode", {item(0), result(1)}),
        VSPSC_FUNCTION(vspsShortTermAnalysisFilter_GSMFR_16s_I, in(8), in(8), io(160), io(8))
            .recorded("st_analysis", {item(0), item(1), item(2).to(4), item(3).to(5)}),
        VSPSC_FUNCTION(vspsLongTermPredict_GSMFR_16s, in(40), in(120), out(40), out(1), out(1))
            .recorded("lt_predict", {item(0), item(1), result(2), result(3), result(4)}),
        VSPSC_FUNCTION(vspsWeightingFilter_GSMFR_16s, in(40), out(40)).recorded("weighting", {item(0), result(1)}),
        VSPSC_FUNCTION(vspsRPEGridSelect_GSMFR_16s, in(40), out(13), out(1))
            .recorded("rpe_grid", {item(0), result(1), result(2)}),
        VSPSC_FUNCTION(vspsRPEQuantEncode_GSMFR_16s, in(13), out(13), out(1))
            .recorded("rpe_quant", {item(0), result(1), result(2)}),
        VSPSC_FUNCTION(vspsRPEScaleDecode_GSMFR_16s, value(), out(1), out(1))
            .recorded("rpe_scale", {item(0), result(1)[0], result(1)[1]}),
        VSPSC_FUNCTION(vspsRPEQuantDecode_GSMFR_16s, in(13), out(13), value(), scale(0, 10))
            .recorded("rpe_dequant", {item(0), result(2), item(1)[0], item(1)[1]}),
        VSPSC_FUNCTION(vspsRPEGridPosition_GSMFR_16s, in(13), out(40), value())
            .recorded("rpe_position", {item(0), result(2), item(1)}),
        VSPSC_FUNCTION(vspsLongTermSynthesis_GSMFR_16s, in(40), io(120), out(40), value(), value(), io(1))
            .recorded("lt_synthesis", {item(0), item(1).to(4), result(3), item(2)[0], item(2)[1], item(2)[2].to(5)}),
        VSPSC_FUNCTION(vspsShortTermSynthesisFilter_GSMFR_16s, in(8), in(8), in(160), out(160), io(8))
            .recorded("st_synthesis", {item(0), item(1), item(2), result(4), item(3).to(5)}),
        VSPSC_FUNCTION(vspsPostprocess_GSMFR_16s_I, io(160), io(1)).recorded("postprocess", {item(0).to(2), item(1).to(3)}),
    });

}  // namespace vsp::test
