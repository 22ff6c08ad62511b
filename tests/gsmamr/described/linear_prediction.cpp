// Linear prediction of GSM-AMR.
#include "support/described.h"

namespace vsp::test {

static const std::vector<Vsp64s> kRates{0, 1, 3, 6, 7, 8, 11, 12};

static Initialiser filterOfStart() {
    return [](const Api& api, int start, void* state) { api.vspsHighPassFilterInit_GSMAMR_16s(start == 2, state); };
}

static const Described functions(
    "gsmamr",
    {
        VSPSC_FUNCTION(vspsHighPassFilterGetSize_GSMAMR_16s, size(16)).notRecorded(),
        VSPSC_FUNCTION(vspsHighPassFilterInit_GSMAMR_16s, range(0, 1), state(16)).notRecorded(),
        VSPSC_FUNCTION(vspsHighPassFilter_GSMAMR_16s_I, io(len), length(), state(16, filterOfStart()))
            .stream("stream-hp", 0),
        VSPSC_FUNCTION(vspsAutoCorr_GSMAMR_16s32s, in(240), range(0, 2), out(11), out(1)),
        VSPSC_FUNCTION(vspsLevinsonDurbin_GSMAMR_32s16s, in(11), io(11), out(11), out(4)),
        VSPSC_FUNCTION(vspsLPCToLSP_GSMAMR_16s, in(11), in(10), out(10).mayBe(1)),
        VSPSC_FUNCTION(vspsLSPToLPC_GSMAMR_16s, in(10), out(11)),
        VSPSC_FUNCTION(vspsLSPToLSF_GSMAMR_16s, in(10), out(10).mayBe(0)),
        VSPSC_FUNCTION(vspsLSFToLSP_GSMAMR_16s, in(10), out(10).mayBe(0)),
        VSPSC_FUNCTION(vspsInterpolateLSP_GSMAMR_16s, in(10), in(10).when(3, {12}), in(10), oneOf(kRates), out(40)),
        VSPSC_FUNCTION(vspsWeightedSpeech_GSMAMR_16s, in(160).after(10), in(44), oneOf(kRates), io(10), out(160)),
        VSPSC_FUNCTION(vspsLSFAverage_GSMAMR_16s, in(10), io(10)),
        VSPSC_FUNCTION(vspsResonanceDetect_GSMAMR_16s, in(10), io(1), out(1)),
        VSPSC_FUNCTION(vspsPitchTarget_GSMAMR_16s, in(40).after(10), in(11), in(11), in(10), in(10), oneOf(kRates), out(40),
                       out(40), out(40)),
    });

}  // namespace vsp::test
