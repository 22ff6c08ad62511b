// The open-loop pitch search.
#include "support/described.h"

namespace vsp::test {

namespace {

void initialiseHighPass(const Api& api, int, void* state) {
    const Vsp16s a[4] = {8192, 21663, -19258, 5734}, b[4] = {-3432, 10280, -10280, 3432};
    api.vspsHighPassFilterInit_AMRWB_16s(a, b, 3, state);
}

const Described functions("amrwb", {
                                       VSPSC_FUNCTION(vspsOpenLoopScale_AMRWB_16s, in(len), length(), io(1), out(1)),
                                       VSPSC_FUNCTION(vspsOpenLoopPitchSearch_AMRWB_16s, in(argument(1)).after(115),
                                                      oneOf({64, 128}, vspStsSizeErr), range(17, 115), range(0, 1), io(115),
                                                      out(1), out(1), state(40, initialiseHighPass))
                                           .operation("OpenLoopPitchSearch-stream", 1),
                                       VSPSC_FUNCTION(vspsOpenLoopPitchTrack_AMRWB_16s, value(), value(), io(8)),
                                   });

}  // namespace

}  // namespace vsp::test
