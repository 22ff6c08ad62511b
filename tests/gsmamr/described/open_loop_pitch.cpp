// The open-loop pitch search.
#include "support/described.h"

namespace vsp::test {

// At 10.2 kbit/s the median lag is checked, before the pointers that are not always used.
static Argument searchMemory() {
    Argument memory = io(10);
    memory.error = vspStsRangeErr;
    memory.limits = [](const Values& values, int element) {
        return values[1] == 11 && element == 7 ? Limits{17, 144} : Limits{};
    };
    return memory;
}

static const Described functions("gsmamr",
                                 {
                                     VSPSC_FUNCTION(vspsOpenLoopPitchSearch_GSMAMR_16s, in(160).after(143),
                                                    oneOf({0, 1, 3, 6, 7, 8, 11, 12}), range(0, 2), searchMemory(),
                                                    io(5).unless(2, {0}), io(1).when(2, {1}), out(2)),
                                 });

}  // namespace vsp::test
