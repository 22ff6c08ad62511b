// LD-CELP.
#include "support/described.h"

namespace vsp::test {

template <int kOrder, int kNonRecursive, int kBlock>
static void initWindow(const Api& api, int, void* s) {
    api.vspsWinHybridInit_G728_16s(kOrder, kNonRecursive, kBlock, s);
}
static Argument window() { return state(192, initWindow<10, 30, 20>).alwaysInitialised(); }
static Argument windowOfVectors() { return state(384, initWindow<50, 35, 20>); }
// The other two windows are the initialisers of streams.
static Argument of(Vsp64s number) { return oneOf({number}, vspStsSizeErr).above(vspStsRangeErr); }

static Argument input() {
    return state(64, [](const Api& api, int, void* s) { api.vspsIIR16sInit_G728_16s(s); });
}
static Argument combined() {
    return state(208, [](const Api& api, int, void* s) { api.vspsCombinedFilterInit_G728_16s(s); });
}
static Argument synthesis() {
    return state(144, [](const Api& api, int, void* s) { api.vspsSynthesisFilterInit_G728_16s(s); });
}
static Argument adapter() {
    return state(176, [](const Api& api, int, void* s) { api.vspsPostFilterAdapterInit_G728(s); });
}
static Argument postFilter() {
    return state(64, [](const Api& api, int, void* s) { api.vspsPostFilterInit_G728_16s(s); });
}
static Argument conceal() {
    return state(384, [](const Api& api, int, void* s) { api.vspsConcealInit_G728_16s(s); });
}

static Vsp64s expanded(const Values& v) { return v[1] == 0 || v[1] == 6 ? 50 : 10; }
// The scale of a filter is read where there is one already.
static Limits scaleSoFar(const Values& v, int) { return v[1] > 0 ? Limits{13, 15} : Limits{}; }

static const Described functions(
    "g728",
    {
        VSPSC_FUNCTION(vspsWinHybridGetStateSize_G728_16s, oneOf({50}), of(35), of(20), size(384)).notRecorded(),
        VSPSC_FUNCTION(vspsWinHybridInit_G728_16s, oneOf({50}), of(35), of(20), windowOfVectors()).notRecorded(),
        VSPSC_FUNCTION(vspsWinHybrid_G728_16s, in(20), out(11), window())
            .stream("stream-WinHybrid-10-30-20", 0)
            .stream("stream-WinHybrid-10-20-4", 0, {item(2), result(4), unrecorded()}, 3, initWindow<10, 20, 4>),
        VSPSC_FUNCTION(vspsWinHybridBlock_G728_16s, in(20), in(4), out(51), windowOfVectors())
            .stream("stream-WinHybridBlock", 0),
        VSPSC_FUNCTION(vspsLevinsonDurbin_G728_16s_ISfs,
                       in(Count(1, 2, 1)).holding(vspStsLevinsonErr, -32768, 32767).perhapsRead(), range(0, 49),
                       limited(vspStsRangeErr,
                               [](const Values& v) {
                                   return Limits{v[1] + 1, 50};
                               }),
                       io(argument(2)), out(1).when(1, {0}).anyway(), io(1),
                       io(1).holding(vspStsScaleRangeErr, scaleSoFar)),
        VSPSC_FUNCTION(vspsBandwidthExpand_G728_16s, in(Count(expanded)), range(0, 6), range(13, 15),
                       io(Count(expanded)).mayBe(0), out(1)),
        VSPSC_FUNCTION(vspsGainPredict_G728_16s, in(10), in(10), range(-16384, 14336), out(1), out(2)),
        VSPSC_FUNCTION(vspsGainUpdate_G728_16s, range(-16384, 14336), range(0, 1023), out(1)),
        VSPSC_FUNCTION(vspsIIR16sGetStateSize_G728_16s, size(64)).notRecorded(),
        VSPSC_FUNCTION(vspsIIR16sInit_G728_16s, state(64)).notRecorded(),
        VSPSC_FUNCTION(vspsIIR16s_G728_16s, in(len), in(10), in(10), out(len).mayBe(0), length(), input())
            .stream("stream-IIR16s", 0),
        VSPSC_FUNCTION(vspsCombinedFilterGetStateSize_G728_16s, size(208)).notRecorded(),
        VSPSC_FUNCTION(vspsCombinedFilterInit_G728_16s, state(208)).notRecorded(),
        VSPSC_FUNCTION(vspsCombinedFilterZeroInput_G728_16s, in(50), in(10), in(10), out(5), combined())
            .stream("stream-CombinedFilter", 0),
        VSPSC_FUNCTION(vspsCombinedFilterUpdate_G728_16s, in(5), value(), in(50), in(10), in(10), out(5), out(1),
                       combined())
            .stream("stream-CombinedFilter", 1),
        VSPSC_FUNCTION(vspsTargetNormalize_G728_16s, in(5), in(5), in(2), out(5), out(1)),
        VSPSC_FUNCTION(vspsImpulseResponse_G728_16s, in(4), in(10), in(10), out(5)),
        VSPSC_FUNCTION(vspsCodebookEnergy_G728_16s, in(5), out(128)),
        VSPSC_FUNCTION(vspsCodebookSearch_G728_16s, in(5), range(-6, 0x7FFFFFFF), in(5), in(128), out(1)),
        VSPSC_FUNCTION(vspsExcitation_G728_16s, range(0, 1023), in(2), out(5), out(1)),
        VSPSC_FUNCTION(vspsSynthesisFilterGetStateSize_G728_16s, size(144)).notRecorded(),
        VSPSC_FUNCTION(vspsSynthesisFilterInit_G728_16s, state(144)).notRecorded(),
        VSPSC_FUNCTION(vspsSynthesisFilter_G728_16s, in(5), value(), in(50), value(), out(5), out(1), synthesis())
            .stream("stream-SynthesisFilter", 0),
        VSPSC_FUNCTION(vspsSpeechConvert_G728_16s, in(len), value(), range(2, 3), out(len).mayBe(0), length()),
        VSPSC_FUNCTION(vspsPostFilterAdapterGetStateSize_G728, size(176)).notRecorded(),
        VSPSC_FUNCTION(vspsPostFilterAdapterInit_G728, state(176)).notRecorded(),
        VSPSC_FUNCTION(vspsLPCInverseFilter_G728_16s, in(5), in(10), out(5).mayBe(0), adapter())
            .stream("stream-PostFilterAdapter", 0),
        VSPSC_FUNCTION(vspsPitchExtract_G728_16s, in(240), io(1).holding(vspStsRangeErr, 20, 140), adapter())
            .stream("stream-PostFilterAdapter", 1),
        VSPSC_FUNCTION(vspsPitchTap_G728_16s, in(240), range(20, 140), out(1), out(2)),
        VSPSC_FUNCTION(vspsPostFilterCoeff_G728_16s, in(10), range(13, 15), range(-32768, 32767), io(10), io(10), io(1),
                       out(10)),
        VSPSC_FUNCTION(vspsPostFilterGetStateSize_G728_16s, size(64)).notRecorded(),
        VSPSC_FUNCTION(vspsPostFilterInit_G728_16s, state(64)).notRecorded(),
        VSPSC_FUNCTION(vspsPostFilter_G728_16s, in(5), in(140), range(20, 140), in(2), in(10), in(10), value(),
                       out(5).mayBe(0), postFilter())
            .stream("stream-PostFilter", 0),
        VSPSC_FUNCTION(vspsConcealGetStateSize_G728_16s, size(384)).notRecorded(),
        VSPSC_FUNCTION(vspsConcealInit_G728_16s, state(384)).notRecorded(),
        VSPSC_FUNCTION(vspsConcealSetup_G728_16s, range(20, 140), value(), range(0, 0x7FFFFFFF), conceal())
            .stream("stream-Conceal", 0),
        VSPSC_FUNCTION(vspsConcealExcitation_G728_16s, out(5), out(1), out(1), conceal()).stream("stream-Conceal", 1),
        VSPSC_FUNCTION(vspsConcealUpdate_G728_16s, in(5), value(), conceal()).stream("stream-Conceal", 2),
    });

}  // namespace vsp::test
