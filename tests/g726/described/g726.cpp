// The functions of G.726.
#include "support/described.h"

namespace vsp::test {

static const Argument kRate = oneOf({17, 22, 23, 24}), kLaw = range(0, 1);
static const Argument kEncoder =
    state(88, [](const Api& api, int, void* s) { api.vspsEncodeInit_G726_16s8u(s, 23); }).alwaysInitialised();
static const Argument kDecoder =
    state(92, [](const Api& api, int, void* s) { api.vspsDecodeInit_G726_8u16s(s, 23); }).alwaysInitialised();

static const Described functions(
    "g726", {
                VSPSC_FUNCTION(vspsEncodeGetStateSize_G726_16s8u, size(88)).notRecorded(),
                VSPSC_FUNCTION(vspsDecodeGetStateSize_G726_8u16s, size(92)).notRecorded(),
                VSPSC_FUNCTION(vspsEncodeInit_G726_16s8u, kEncoder, kRate).notRecorded(),
                VSPSC_FUNCTION(vspsDecodeInit_G726_8u16s, kDecoder, kRate).notRecorded(),
                VSPSC_FUNCTION(vspsEncodeSetRate_G726_16s8u, kEncoder, kRate).notRecorded(),
                VSPSC_FUNCTION(vspsDecodeSetRate_G726_8u16s, kDecoder, kRate).notRecorded(),
                VSPSC_FUNCTION(vspsEncode_G726_16s8u, in(len), out(len), length(), kEncoder).notRecorded(),
                VSPSC_FUNCTION(vspsDecode_G726_8u16s, in(len), out(len), length(), kDecoder).notRecorded(),
                VSPSC_FUNCTION(vspsEncodePCM_G726_8u, in(len), out(len).mayBe(0), length(), kLaw, kEncoder).notRecorded(),
                VSPSC_FUNCTION(vspsDecodePCM_G726_8u, in(len), out(len).mayBe(0), length(), kLaw, kDecoder).notRecorded(),
            });

}  // namespace vsp::test
