// The fixed codebooks.
#include "support/described.h"

namespace vsp::test {

static const Argument lag = range(18, 145), mode = range(0, 1), subframe = range(0, 1);

static const Described functions(
    "g729", {
                VSPSC_FUNCTION(vspsFixedCodebookSearch_G729_16s, in(40), in(40), lag, value(), subframe, io(1), out(40),
                               out(40), out(2))
                    .recorded("vspsFixedCodebookSearch_G729_16s", {item(0), item(1), item(2), item(3), item(4),
                                                                   item(5).to(6), result(7), result(8), result(9)}),
                VSPSC_FUNCTION(vspsFixedCodebookSearch_G729A_16s, in(40), in(40), lag, value(), out(40), out(40), out(2))
                    .recorded("vspsFixedCodebookSearch_G729A_16s",
                              {item(0), item(1), item(2), item(3), result(4), result(5), result(6)}),
                VSPSC_FUNCTION(vspsFixedCodebookSearch_G729D_16s, in(40), in(40), lag, value(), out(40), out(40), out(2))
                    .recorded("vspsFixedCodebookSearch_G729D_16s",
                              {item(0), item(1), item(2), item(3), result(4), result(5), result(6)}),
                VSPSC_FUNCTION(vspsFixedCodebookSearch_G729E_16s, mode, in(40), in(40), in(40), lag, value(), out(40),
                               out(40), out(5)),
                VSPSC_FUNCTION(vspsFixedCodebookSearch_G729_32f, in(40), in(40), lag, value(), subframe, io(1), out(40),
                               out(40), out(2)),
                VSPSC_FUNCTION(vspsFixedCodebookSearch_G729A_32f, in(40), in(40), lag, value(), out(40), out(40), out(2)),
                VSPSC_FUNCTION(vspsFixedCodebookDecode_G729_16s, in(2), lag, value(), out(40))
                    .recorded("vspsFixedCodebookDecode_G729_16s", {item(0), item(1), item(2), result(3)}),
                VSPSC_FUNCTION(vspsFixedCodebookDecode_G729D_16s, in(2), lag, value(), out(40))
                    .recorded("vspsFixedCodebookDecode_G729D_16s", {item(0), item(1), item(2), result(3)}),
                VSPSC_FUNCTION(vspsFixedCodebookDecode_G729E_16s, mode, in(5), lag, value(), out(40)),
                VSPSC_FUNCTION(vspsFixedCodebookRandom_G729_16s, io(1), out(2))
                    .recorded("vspsFixedCodebookRandom_G729_16s", {item(0).to(3), result(1)}),
                VSPSC_FUNCTION(vspsFixedCodebookRandom_G729D_16s, io(1), out(2))
                    .recorded("vspsFixedCodebookRandom_G729_16s", {item(0).to(3), result(2)}),
                VSPSC_FUNCTION(vspsFixedCodebookRandom_G729E_16s, io(1), out(5)),
            });

}  // namespace vsp::test
