// What the decoder does besides decoding, and silence on both sides.
#include "support/described.h"

namespace vsp::test {

namespace {

const std::vector<Vsp64s> kRates{0, 1, 3, 6, 7, 8, 11, 12}, kRatesAndSid{0, 1, 3, 6, 7, 8, 11, 12, 25};

Argument mode() { return oneOf(kRates); }
Argument bfState() { return range(0, 6); }

Argument dtxState() {
    return state(192, [](const Api& api, int, void* s) { api.vspsDTXInit_GSMAMR_16s(s); });
}
void initCng(const Api& api, int, void* s) { api.vspsCNGInit_GSMAMR_16s(s); }
// As after an update, whose indices the decoder reads.
Argument cngState() {
    return state(408, [](const Api& api, int, void* s) {
        constexpr Vsp32s kUpdate = 5;
        Vsp32s newState = 0;
        initCng(api, 1, s);
        api.vspsCNGHandler_GSMAMR_16s(kUpdate, 0, &newState, s);
    });
}
Argument postFilterState() {
    return state(44, [](const Api& api, int, void* s) { api.vspsPostFilterInit_GSMAMR_16s(s); });
}

const Described functions(
    "gsmamr",
    {
        VSPSC_FUNCTION(vspsPitchGainConceal_GSMAMR_16s, value(), value(), bfState(), io(7), io(1)),
        VSPSC_FUNCTION(vspsCodeGainConceal_GSMAMR_16s, value(), value(), bfState(), io(7), io(8), io(1)),
        VSPSC_FUNCTION(vspsCodeGainSmooth_GSMAMR_16s, in(10), in(10), in(6), mode(), value(), io(9), out(1)),
        VSPSC_FUNCTION(vspsPhaseDispersion_GSMAMR_16s, value(), value(), mode(), value(), io(40), io(40), io(8)),
        VSPSC_FUNCTION(vspsExcitationControl_GSMAMR_16s, in(6), mode(), bfState(), io(40), io(9)),
        VSPSC_FUNCTION(vspsExcitationEmphasis_GSMAMR_16s, in(40), in(40), mode(), value(), value(), out(40)),
        VSPSC_FUNCTION(vspsBackgroundNoiseDetect_GSMAMR_16s, in(9), in(160), io(61), io(1), out(1)),
        VSPSC_FUNCTION(vspsRandomParameters_GSMAMR_16s, mode(), io(1), out([](const Values& v) {
                           return Vsp64s(v[0] == 0 ? 17 : v[0] <= 7 ? 19 : v[0] == 8 ? 23 : v[0] == 11 ? 39 : 57);
                       })),

        VSPSC_FUNCTION(vspsDTXGetStateSize_GSMAMR_16s, size(192)).notRecorded(),
        VSPSC_FUNCTION(vspsDTXInit_GSMAMR_16s, state(192)).notRecorded(),
        VSPSC_FUNCTION(vspsDTXHandler_GSMAMR_16s, value(), io(1).holdingOneOf(vspStsRangeErr, kRates), out(1), dtxState())
            .stream("stream-dtx", 0),
        VSPSC_FUNCTION(vspsDTXBuffer_GSMAMR_16s, in(10), in(160), dtxState()).stream("stream-dtx", 1),
        VSPSC_FUNCTION(vspsDTXEncode_GSMAMR_16s, value(), io(8), out(5), dtxState()).stream("stream-dtx", 2),
        VSPSC_FUNCTION(vspsSIDSync_GSMAMR_16s, oneOf(kRatesAndSid), io(2), out(1)),

        VSPSC_FUNCTION(vspsCNGGetStateSize_GSMAMR_16s, size(408)).notRecorded(),
        VSPSC_FUNCTION(vspsCNGInit_GSMAMR_16s, state(408)).notRecorded(),
        VSPSC_FUNCTION(vspsCNGHandler_GSMAMR_16s, range(0, 7), range(0, 2), out(1), cngState())
            .stream("stream-cng", 0, {}, -1, initCng),
        // The indices are read and checked after an update only.
        VSPSC_FUNCTION(vspsCNGDecode_GSMAMR_16s,
                       in(5).holding(vspStsRangeErr, {{0, 7}, {0, 255}, {0, 511}, {0, 511}, {0, 63}}).perhapsRead(),
                       oneOf(kRatesAndSid), range(0, 2), range(1, 2), io(10), io(8), out(10), out(160), out(44),
                       cngState().alwaysInitialised())
            .stream("stream-cng", 1, {}, -1, initCng),
        VSPSC_FUNCTION(vspsCNGUpdate_GSMAMR_16s, in(10), in(160), cngState()).stream("stream-cng", 2, {}, -1, initCng),

        VSPSC_FUNCTION(vspsPostFilterGetStateSize_GSMAMR_16s, size(44)).notRecorded(),
        VSPSC_FUNCTION(vspsPostFilterInit_GSMAMR_16s, state(44)).notRecorded(),
        VSPSC_FUNCTION(vspsPostFilter_GSMAMR_16s, in(160), in(44), mode(), out(160).mayBe(0), postFilterState())
            .stream("stream-pf", 0),
    });

}  // namespace

}  // namespace vsp::test
