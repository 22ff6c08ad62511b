// Linear prediction of GSM-AMR: recorded calls.
#include "support/guarded.h"
#include "support/level_test.h"
#include "support/vector_case.h"

namespace vsp::test {

class LinearPredictionGSMAMR : public LevelTest {
  protected:
    // call(items, results): appends the status and what the call writes in the order of the items behind the inputs.
    template <class Call>
    void runCases(const char* name, std::size_t inputs, Call call) {
        SCOPED_TRACE(name);
        const auto cases = readItemCases(std::string("gsmamr/") + name + ".vec");
        ASSERT_FALSE(cases.empty());
        for (std::size_t i = 0; i < cases.size(); i++) {
            std::vector<std::vector<Vsp32s>> results, expected;
            for (std::size_t k = inputs; k < cases[i].size(); k++)
                expected.push_back(cases[i][k].type == 'i' ? cases[i][k].values<Vsp32s>()
                                                           : wide(cases[i][k].values<Vsp16s>()));
            call(cases[i], results);
            ASSERT_EQ(expected, results) << "case " << i;
        }
    }
    static std::vector<Vsp32s> wide(const std::vector<Vsp16s>& x) { return {x.begin(), x.end()}; }
};
VSPSC_EVERY_LEVEL(LinearPredictionGSMAMR);

TEST_P(LinearPredictionGSMAMR, RecordedCalls) {
    const auto words = [](const Item& x) { return Guarded<Vsp16s>(x.values<Vsp16s>()); };
    const auto longs = [](const Item& x) { return Guarded<Vsp32s>(x.values<Vsp32s>()); };
    runCases("vspsAutoCorr_GSMAMR_16s32s", 2, [&](auto& c, auto& results) {
        Guarded<Vsp32s> dst(11), norm(1);
        results = {{api.vspsAutoCorr_GSMAMR_16s32s(words(c[0]).data(), longs(c[1])[0], dst.data(), norm.data())}};
        results.insert(results.end(), {dst.values(), norm.values()});
    });
    runCases("vspsLevinsonDurbin_GSMAMR_32s16s", 2, [&](auto& c, auto& results) {
        auto mem = words(c[1]);
        Guarded<Vsp16s> lpc(11), rc(4);
        results = {{api.vspsLevinsonDurbin_GSMAMR_32s16s(longs(c[0]).data(), mem.data(), lpc.data(), rc.data())}};
        results.insert(results.end(), {wide(mem.values()), wide(lpc.values()), wide(rc.values())});
    });
    runCases("vspsLPCToLSP_GSMAMR_16s", 2, [&](auto& c, auto& results) {
        Guarded<Vsp16s> lsp(10);
        results = {{api.vspsLPCToLSP_GSMAMR_16s(words(c[0]).data(), words(c[1]).data(), lsp.data())}};
        results.push_back(wide(lsp.values()));
    });
    const auto conversion = [&](const char* name, auto function, std::size_t count) {
        runCases(name, 1, [&](auto& c, auto& results) {
            Guarded<Vsp16s> dst(count);
            results = {{function(words(c[0]).data(), dst.data())}};
            results.push_back(wide(dst.values()));
        });
    };
    conversion("vspsLSPToLPC_GSMAMR_16s", api.vspsLSPToLPC_GSMAMR_16s, 11);
    conversion("vspsLSPToLSF_GSMAMR_16s", api.vspsLSPToLSF_GSMAMR_16s, 10);
    conversion("vspsLSFToLSP_GSMAMR_16s", api.vspsLSFToLSP_GSMAMR_16s, 10);
    runCases("vspsInterpolateLSP_GSMAMR_16s", 4, [&](auto& c, auto& results) {
        Guarded<Vsp16s> lsp(40);
        const auto middle = words(c[1]);
        results = {{api.vspsInterpolateLSP_GSMAMR_16s(words(c[0]).data(), middle.values().empty() ? nullptr : middle.data(),
                                                      words(c[2]).data(), longs(c[3])[0], lsp.data())}};
        results.push_back(wide(lsp.values()));
    });
    runCases("vspsWeightedSpeech_GSMAMR_16s", 4, [&](auto& c, auto& results) {
        auto mem = words(c[3]);
        Guarded<Vsp16s> dst(160);
        results = {{api.vspsWeightedSpeech_GSMAMR_16s(words(c[0]).data() + 10, words(c[1]).data(), longs(c[2])[0],
                                                      mem.data(), dst.data())}};
        results.insert(results.end(), {wide(mem.values()), wide(dst.values())});
    });
    Vsp32s size;
    ASSERT_EQ(vspStsNoErr, api.vspsHighPassFilterGetSize_GSMAMR_16s(&size));
    Guarded<std::byte> state{std::size_t(size)};
    runCases("stream-hp", 4, [&](auto& c, auto& results) {
        if (const Vsp16s start = words(c[0])[0]; start != 0) api.vspsHighPassFilterInit_GSMAMR_16s(start - 1, state.data());
        auto x = words(c[2]);
        results = {{api.vspsHighPassFilter_GSMAMR_16s_I(x.data(), longs(c[3])[0], state.data())}};
        results.push_back(wide(x.values()));
    });
}

}  // namespace vsp::test
