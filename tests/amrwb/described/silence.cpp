// Detection, description and synthesis of silence.
#include "support/described.h"

namespace vsp::test {

namespace {

Argument vadState() {
    return state(172, [](const Api& api, int, void* s) { api.vspsVADInit_AMRWB_16s(s); });
}
Argument dtxState() {
    return state(432, [](const Api& api, int, void* s) { api.vspsDTXInit_AMRWB_16s(s); });
}
Argument cngState() {
    return state(400, [](const Api& api, int, void* s) { api.vspsCNGInit_AMRWB_16s(s); });
}
const std::vector<Vsp64s> kRates{5, 9, 13, 15, 16, 18, 19, 20, 21};
Argument mode() { return oneOf(kRates); }

const Described functions(
    "amrwb",
    {
        VSPSC_FUNCTION(vspsVADGetSize_AMRWB_16s, size(172)).notRecorded(),
        VSPSC_FUNCTION(vspsVADInit_AMRWB_16s, state(172)).operation("VAD-stream", 0),
        VSPSC_FUNCTION(vspsVAD_AMRWB_16s, in(256), out(1), vadState()).operation("VAD-stream", 1),
        VSPSC_FUNCTION(vspsVADTone_AMRWB_16s, value(), vadState()).operation("VAD-stream", 2),

        VSPSC_FUNCTION(vspsDTXGetSize_AMRWB_16s, size(432)).notRecorded(),
        VSPSC_FUNCTION(vspsDTXInit_AMRWB_16s, state(432)).operation("DTX-stream", 0),
        VSPSC_FUNCTION(vspsDTXHandler_AMRWB_16s, range(0, 1), io(1).holdingOneOf(vspStsRangeErr, kRates), out(1),
                       dtxState())
            .operation("DTX-stream", 1),
        VSPSC_FUNCTION(vspsDTXBuffer_AMRWB_16s, in(16), in(256), range(0, 8), mode(), dtxState())
            .operation("DTX-stream", 2),
        VSPSC_FUNCTION(vspsDTXEncode_AMRWB_16s, out(16), out(256), out(7), dtxState()).operation("DTX-stream", 3),

        VSPSC_FUNCTION(vspsCNGGetSize_AMRWB_16s, size(400)).notRecorded(),
        VSPSC_FUNCTION(vspsCNGInit_AMRWB_16s, state(400)).operation("CNG-stream", 0),
        VSPSC_FUNCTION(vspsCNGHandler_AMRWB_16s, range(0, 7), out(1), cngState()).operation("CNG-stream", 1),
        VSPSC_FUNCTION(vspsCNGDecode_AMRWB_16s,
                       in(7).holding(vspStsRangeErr, {{0, 63}, {0, 63}, {0, 63}, {0, 31}, {0, 31}, {0, 63}, {0, 1}}),
                       range(1, 2), out(16), out(256), cngState())
            .operation("CNG-stream", 2),
        VSPSC_FUNCTION(vspsCNGUpdate_AMRWB_16s, in(16), in(256), cngState()).operation("CNG-stream", 3),
        VSPSC_FUNCTION(vspsCNGSetState_AMRWB_16s, range(0, 2), range(0, 1), range(0, 1), cngState())
            .operation("CNG-stream", 4),
    });

}  // namespace

}  // namespace vsp::test
