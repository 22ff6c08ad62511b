// The functions of G.722.
#include "support/described.h"

namespace vsp::test {

static const Argument kEncoder =
    state(144, [](const Api& api, int, void* s) { api.vspsSBADPCMEncodeInit_G722_16s(s); }).alwaysInitialised();
static const Argument kDecoder =
    state(144, [](const Api& api, int, void* s) { api.vspsSBADPCMDecodeInit_G722_16s(s); }).alwaysInitialised();
static const Argument kHistory = io(4 * len + 1).holding(vspStsNoErr, {{0, 5}});

static const Described functions(
    "g722",
    {
        VSPSC_FUNCTION(vspsSBADPCMEncodeStateSize_G722_16s, size(144)).notRecorded(),
        VSPSC_FUNCTION(vspsSBADPCMDecodeStateSize_G722_16s, size(144)).notRecorded(),
        VSPSC_FUNCTION(vspsSBADPCMEncodeInit_G722_16s, state(144)).notRecorded(),
        VSPSC_FUNCTION(vspsSBADPCMDecodeInit_G722_16s, state(144)).notRecorded(),
        VSPSC_FUNCTION(vspsQMFAnalysis_G722_16s, in(len), out(len).mayBe(0), length(2).multipleOf(2), io(24)).notRecorded(),
        VSPSC_FUNCTION(vspsQMFSynthesis_G722_16s, in(len), out(len).mayBe(0), length(2).multipleOf(2), io(24))
            .notRecorded(),
        VSPSC_FUNCTION(vspsSBADPCMEncode_G722_16s, in(len), out([](const Values& v) { return v[2] / 2; }),
                       length(2).multipleOf(2), kEncoder)
            .notRecorded(),
        VSPSC_FUNCTION(vspsSBADPCMDecode_G722_16s, in(len), out(2 * len), length(), range(1, 3), kDecoder).notRecorded(),
        VSPSC_FUNCTION(vspsConcealCodes_G722_16s_I, io(len), length(), value(), kHistory).notRecorded(),
    });

}  // namespace vsp::test
