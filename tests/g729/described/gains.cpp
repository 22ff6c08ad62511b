// Codes of delays, taming, gains.
#include "support/described.h"

namespace vsp::test {

static const Argument kLag = range(18, 145), kSubframe = range(0, 1);

static Limits delayIndex(const Values& values, Vsp64s last) { return {0, values[2] == 0 ? 255 : last}; }

static const Described functions(
    "g729",
    {
        VSPSC_FUNCTION(vspsDelayEncode_G729_16s, in(2), kLag, kSubframe, out(1))
            .recorded("vspsDelayEncode_G729_16s", {item(0), item(1), item(2), result(3)}),
        VSPSC_FUNCTION(vspsDelayEncode_G729D_16s, in(2), kLag, kSubframe, out(1))
            .recorded("vspsDelayEncode_G729D_16s", {item(0), item(1), item(2), result(3)}),
        VSPSC_FUNCTION(vspsDelayParity_G729_16s, value(), out(1)).notRecorded(),
        VSPSC_FUNCTION(vspsDelayDecode_G729_16s,
                       limited(vspStsCodeRangeErr, [](const Values& v) { return delayIndex(v, 31); }), value(), kSubframe,
                       out(2))
            .recorded("vspsDelayDecode_G729_16s", {item(0), item(1), item(2), result(3)}),
        VSPSC_FUNCTION(vspsDelayDecode_G729D_16s,
                       limited(vspStsCodeRangeErr, [](const Values& v) { return delayIndex(v, 15); }), value(), kSubframe,
                       out(2))
            .recorded("vspsDelayDecode_G729D_16s", {item(0), item(1), item(2), result(3)}),
        VSPSC_FUNCTION(vspsTamingTest_G729_16s, in(2).holding(vspStsCodeRangeErr, {{18, 145}, {-1, 1}}), in(4), out(1))
            .recorded("vspsTamingTest_G729_16s", {item(0), item(1), result(2)})
            .recorded("vspsTamingTest_G729_16s+g"),
        VSPSC_FUNCTION(vspsTamingUpdate_G729_16s, value(), code(18, 145), io(4))
            .recorded("vspsTamingUpdate_G729_16s", {item(0), item(1), item(2).to(3)}),
        VSPSC_FUNCTION(vspsWeightedErrorUpdate_G729_16s, in(40), in(40), in(40), in(2), out(10))
            .recorded("vspsWeightedErrorUpdate_G729_16s", {item(0), item(1), item(2), item(3), result(4)}),
        VSPSC_FUNCTION(vspsGainQuant_G729_16s, in(40), in(40), in(40), in(40), range(0, 1), io(4), out(2), out(1))
            .recorded("vspsGainQuant_G729_16s",
                      {item(0), item(1), item(2), item(3), item(4), item(5).to(8), result(6), result(7)})
            .recorded("vspsGainQuant_G729_16s+g"),
        VSPSC_FUNCTION(vspsGainQuant_G729D_16s, in(40), in(40), in(40), in(40), range(0, 1), io(4), out(2), out(1))
            .recorded("vspsGainQuant_G729D_16s",
                      {item(0), item(1), item(2), item(3), item(4), item(5).to(8), result(6), result(7)}),
        VSPSC_FUNCTION(vspsGainQuant_G729_32f, in(40), in(40), in(40), in(40), range(0, 1), io(4), out(2), out(1))
            .recorded("vspsGainQuant_G729_32f"),
        VSPSC_FUNCTION(vspsGainDecode_G729_16s, code(0, 127), in(40), io(4), out(2))
            .recorded("vspsGainDecode_G729_16s", {item(0), item(1), item(2).to(4), result(3)}),
        VSPSC_FUNCTION(vspsGainDecode_G729D_16s, code(0, 63), in(40), io(4), out(2))
            .recorded("vspsGainDecode_G729D_16s", {item(0), item(1), item(2).to(4), result(3)}),
        VSPSC_FUNCTION(vspsGainDecodeErased_G729_16s, io(4), io(2))
            .recorded("vspsGainDecodeErased_G729_16s", {item(0).to(3), item(1).to(2)}),
        VSPSC_FUNCTION(vspsGainDecodeErased_G729E_16s, range(0, 32767), range(0, 1), io(1), io(4), io(2))
            .recorded("vspsGainDecodeErased_G729E_16s"),
    });

}  // namespace vsp::test
