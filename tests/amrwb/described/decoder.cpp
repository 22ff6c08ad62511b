// The adaptive codebook and the gains of the decoder.
#include "support/described.h"

namespace vsp::test {

namespace {

const std::vector<Vsp64s> kRates{5, 9, 13, 15, 16, 18, 19, 20, 21};
Argument mode() { return oneOf(kRates); }
bool isLow(Vsp64s mode) { return mode == 5 || mode == 9; }

// The index of a lag by subframe and rate.
Limits lagIndices(const Values& v) {
    const bool absolute = v[2] == 0 || (v[2] == 2 && v[3] != 5);
    return {0, (1 << ((absolute ? 8 : 5) + !isLow(v[3]))) - 1};
}

Argument codebookState() {
    return state(24, [](const Api& api, int, void* s) { api.vspsAdaptiveCodebookDecodeInit_AMRWB_16s(s); });
}

const Described functions(
    "amrwb",
    {
        VSPSC_FUNCTION(vspsAdaptiveCodebookDecodeGetSize_AMRWB_16s, size(24)).notRecorded(),
        VSPSC_FUNCTION(vspsAdaptiveCodebookDecodeInit_AMRWB_16s, state(24)).operation("AdaptiveCodebookDecode-stream", 0),
        VSPSC_FUNCTION(vspsAdaptiveCodebookDecode_AMRWB_16s, limited(vspStsRangeErr, lagIndices), range(0, 1), range(0, 3),
                       mode(), range(0, 2), in(5), io(65).after(248), out(2), codebookState())
            .operation("AdaptiveCodebookDecode-stream", 1),
        VSPSC_FUNCTION(vspsAdaptiveCodebookDecodeReset_AMRWB_16s, codebookState())
            .operation("AdaptiveCodebookDecode-stream", 2),

        VSPSC_FUNCTION(vspsGainDecode_AMRWB_16s,
                       limited(vspStsRangeErr,
                               [](const Values& v) {
                                   return Limits{0, isLow(v[2]) ? 63 : 127};
                               }),
                       in(64), mode(), range(0, 2), range(0, 1), range(0, 6), value(), io(22), out(1), out(1)),
        VSPSC_FUNCTION(vspsExcitationScale_AMRWB_16s, value(), in(4), out(1), out(1)),
        VSPSC_FUNCTION(vspsExcitationHeadroom_AMRWB_16s, in(64), range(0, 8), io(4)),
    });

}  // namespace

}  // namespace vsp::test
