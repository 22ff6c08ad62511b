// Quantiser and decoder of the line spectral pairs.
#include "support/described.h"

namespace vsp::test {

static const Described functions(
    "g729",
    {
        VSPSC_FUNCTION(vspsLSFDecode_G729_16s, in(2), io(40), out(10))
            .recorded("vspsLSFDecode_G729_16s", {item(0), item(1).to(4), result(2)})
            .recorded("vspsLSFDecode_G729_16s+g"),
        VSPSC_FUNCTION(vspsLSFDecodeErased_G729_16s, code(0, 1), in(10), io(40))
            .recorded("vspsLSFDecodeErased_G729_16s", {item(0), item(1), item(2).to(3)}),
        VSPSC_FUNCTION(vspsLSPQuant_G729_16s, in(10), io(40), out(10), out(2))
            .recorded({item(0), item(1).to(4), result(2), result(3)}),
        VSPSC_FUNCTION(vspsLSPQuant_G729_32f, in(10), io(40), out(10), out(2)).recorded("vspsLSPQuant_G729_32f"),
        VSPSC_FUNCTION(vspsLSFDecode_G729_32f, in(2), io(40), out(10)).recorded("vspsLSFDecode_G729_32f"),
        VSPSC_FUNCTION(vspsLSFDecodeErased_G729_32f, code(0, 1), in(10), io(40)).recorded("vspsLSFDecodeErased_G729_32f"),
    });

}  // namespace vsp::test
