// Resampling and filters of AMR-WB.
#include "support/described.h"

namespace vsp::test {

namespace {

// The filter of the weighted speech, which is the one of order 3.
void initialiseHighPass(const Api& api, int, void* state) {
    const Vsp16s a[4] = {8192, 21663, -19258, 5734}, b[4] = {-3432, 10280, -10280, 3432};
    api.vspsHighPassFilterInit_AMRWB_16s(a, b, 3, state);
}

// The first coefficient may also be 16384.
const Argument kFeedback = in(Count(1, 2, 1)).holding(vspStsRangeErr, std::vector<Limits>{{8192, 8192}}).perhapsRead();

const Described functions(
    "amrwb",
    {
        VSPSC_FUNCTION(vspsDownsample_AMRWB_16s, in(len), length(5, 320).multipleOf(5), io(30),
                       out([](const Values& v) { return v[1] / 5 * 4; })),
        VSPSC_FUNCTION(vspsUpsample_AMRWB_16s, in(len), length(8, 256).multipleOf(8), io(24),
                       out([](const Values& v) { return v[1] / 4 * 5; })),
        VSPSC_FUNCTION(vspsHighPassFilterGetSize_AMRWB_16s, range(2, 3), size(40)).notRecorded(),
        VSPSC_FUNCTION(vspsHighPassFilterInit_AMRWB_16s, kFeedback, in(Count(1, 2, 1)), range(2, 3),
                       state(40, initialiseHighPass))
            .stream("HighPassFilter-stream", 0)
            .operation("OpenLoopPitchSearch-stream", 0),
        VSPSC_FUNCTION(vspsHighPassFilter_AMRWB_16s_I, io(len), length(), state(40, initialiseHighPass))
            .stream("HighPassFilter-stream", 1),
        VSPSC_FUNCTION(vspsHighPassFilterScale_AMRWB_16s, range(-31, 31), state(40, initialiseHighPass))
            .stream("HighPassFilter-stream", 2)
            .operation("OpenLoopPitchSearch-stream", 2),
        VSPSC_FUNCTION(vspsPreemphasize_AMRWB_16s_ISfs, value(), io(len), length(), scale(-8, 1), io(1)),
        VSPSC_FUNCTION(vspsPreemphasizeScale_AMRWB_16s, in(len), length(), value(), value(), io(2), out(1)),
        VSPSC_FUNCTION(vspsDeemphasize_AMRWB_16s_ISfs, value(), io(len), length(), range(0, 1), io(1)),
        VSPSC_FUNCTION(vspsDeemphasize_AMRWB_32s16s, in(len), value(), length(), io(1), out(len)),
        VSPSC_FUNCTION(vspsResidualFilter_AMRWB_16s_Sfs, in(17), in(len).after(16), out(len), length(), scale(0, 15)),
        VSPSC_FUNCTION(vspsSynthesisFilter_AMRWB_16s, in(Count(1, 1, 1)), oneOf({16, 20}), in(len), out(len).mayBe(2),
                       length(1, 80), in(argument(1))),
        VSPSC_FUNCTION(vspsSynthesisFilter_AMRWB_16s32s, in(17), in(len), range(0, 8), length(1, 64), io(16), out(len)),
        VSPSC_FUNCTION(vspsLowPassDecimate_AMRWB_16s, in(len), length(4, 256).multipleOf(2), io(3),
                       out([](const Values& v) { return v[1] / 2; })),
        VSPSC_FUNCTION(vspsBandPassFilter_AMRWB_16s_I, io(len), length(1, 80), io(30)),
        VSPSC_FUNCTION(vspsLowPassFilter_AMRWB_16s_I, io(len), length(1, 80), io(30)),
    });

}  // namespace

}  // namespace vsp::test
