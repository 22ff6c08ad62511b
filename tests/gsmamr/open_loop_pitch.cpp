// The open-loop search of GSM-AMR: recorded calls at all rates.
#include "support/guarded.h"
#include "support/level_test.h"
#include "support/samples.h"
#include "support/vector_case.h"

namespace vsp::test {

namespace {

struct Call {
    Guarded<Vsp16s> src, mem, vadMem, pitchFlags, lag{std::size_t(2)};
    Vsp32s mode, vad;

    VspStatus run(const Api& api) {
        return api.vspsOpenLoopPitchSearch_GSMAMR_16s(src.data() + 143, mode, vad, mem.data(),
                                                      vad == 0 ? nullptr : vadMem.data(),
                                                      vad == 1 ? pitchFlags.data() : nullptr, lag.data());
    }
};

}  // namespace

class OpenLoopGSMAMR : public LevelTest {};
VSPSC_EVERY_LEVEL(OpenLoopGSMAMR);

TEST_P(OpenLoopGSMAMR, RecordedCalls) {
    const auto cases = readItemCases("gsmamr/vspsOpenLoopPitchSearch_GSMAMR_16s.vec");
    ASSERT_FALSE(cases.empty());
    for (std::size_t i = 0; i < cases.size(); i++) {
        const auto item = [&](std::size_t n) { return cases[i].at(n).values<Vsp16s>(); };
        const auto words = [&](std::size_t n) { return Guarded<Vsp16s>(item(n)); };
        Call call{.src = words(0),
                  .mem = words(3),
                  .vadMem = words(4),
                  .pitchFlags = words(5),
                  .mode = cases[i].at(1).values<Vsp32s>().at(0),
                  .vad = cases[i].at(2).values<Vsp32s>().at(0)};
        SCOPED_TRACE("case " + std::to_string(i) + ", mode " + std::to_string(call.mode));
        ASSERT_EQ(cases[i].at(6).values<Vsp32s>().at(0), call.run(api));
        EXPECT_EQ(item(7), call.mem.values());
        EXPECT_EQ(item(8), call.vadMem.values());
        EXPECT_EQ(item(9), call.pitchFlags.values());
        EXPECT_EQ(item(10), call.lag.values());
    }
}

}  // namespace vsp::test
