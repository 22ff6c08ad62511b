// Annex A: detector, discontinuous transmission, comfort noise.
#include "support/described.h"

namespace vsp::test {

namespace {

Argument vadState() {
    return state(40, [](const Api& api, int, void* s) { api.vspsVADInit_G723_16s(s); });
}
Argument dtxState() {
    return state(176, [](const Api& api, int, void* s) { api.vspsDTXInit_G723_16s(s); });
}
Argument pastType() { return range(0, 2); }

// At least one, of which the last argument but one says how many count.
Count known() {
    return Count([](const Values& v) { return v[2] < 1 ? Vsp64s(1) : v[2]; });
}

const Described functions(
    "g723",
    {
        VSPSC_FUNCTION(vspsVADGetSize_G723_16s, size(40)).notRecorded(),
        VSPSC_FUNCTION(vspsVADInit_G723_16s, state(40)).notRecorded(),
        VSPSC_FUNCTION(vspsVAD_G723_16s, in(240), in(4), value(), out(1), vadState()).stream("vspsVAD_G723_16s", 0),
        VSPSC_FUNCTION(vspsVADUpdate_G723_16s, in(10), vadState()).stream("vspsVAD_G723_16s", 1),

        VSPSC_FUNCTION(vspsDTXGetStateSize_G723_16s, size(176)).notRecorded(),
        VSPSC_FUNCTION(vspsDTXInit_G723_16s, state(176)).notRecorded(),
        VSPSC_FUNCTION(vspsDTXEncode_G723_16s, in(10), pastType(), out(1), out(4).onlyWhenWritten(2, 2), out(10), out(1),
                       out(10).onlyWhenWritten(2, 2), dtxState())
            .stream("vspsDTXEncode_G723_16s", 0),
        VSPSC_FUNCTION(vspsDTXUpdate_G723_16s, in(44), in(4), dtxState()).stream("vspsDTXEncode_G723_16s", 1),

        VSPSC_FUNCTION(vspsSIDGainQuant_G723_16s, in(known()), in(known()), length(0, 3), out(1)),
        VSPSC_FUNCTION(vspsSIDGainDecode_G723_16s, code(0, 63), out(1)),
        VSPSC_FUNCTION(vspsCNGGain_G723_16s, value(), pastType(), io(1)),
        VSPSC_FUNCTION(vspsRandomNoiseExcitation_G723_16s, value(), io(1), io(145), out(240), out(2), out(4), out(4)),
    });

}  // namespace

}  // namespace vsp::test
