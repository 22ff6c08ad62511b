// GSM full rate: recorded codings, and the definitions at any input. The functions are described in described/.
#include <tuple>

#include "gsmfr/codec.h"
#include "gsmfr/definitions.h"
#include "support/guarded.h"
#include "support/level_test.h"
#include "support/samples.h"
#include "support/upper_halves.h"
#include "support/vector_case.h"

namespace vsp::test {

class GsmFr : public LevelTest {};
VSPSC_EVERY_LEVEL(GsmFr);

TEST_P(GsmFr, RecordedCodings) {
    const auto decoded = [&](const std::vector<Vsp16s>& parameters) {
        gsmfr::Codec decoder(api);
        std::vector<Vsp16s> samples(parameters.size() / gsmfr::kParameters * 160);
        for (std::size_t i = 0; i < samples.size() / 160; i++)
            decoder.decode(&parameters[i * gsmfr::kParameters], &samples[i * 160]);
        return samples;
    };
    for (const auto& items : readItemCases("gsmfr/codec.vec")) {
        const auto samples = items[0].values<Vsp16s>();
        gsmfr::Codec encoder(api);
        std::vector<Vsp16s> parameters(samples.size() / 160 * gsmfr::kParameters);
        for (std::size_t i = 0; i < samples.size() / 160; i++)
            encoder.encode(&samples[i * 160], &parameters[i * gsmfr::kParameters]);
        ASSERT_EQ(items[1].values<Vsp16s>(), parameters);
        ASSERT_EQ(items[2].values<Vsp16s>(), decoded(parameters));
    }
    for (const auto& items : readItemCases("gsmfr/decoder.vec"))
        ASSERT_EQ(items[1].values<Vsp16s>(), decoded(items[0].values<Vsp16s>()));
}

TEST_P(GsmFr, AnyInputGivesWhatTheDefinitionsGive) {
    // Both functions with the same arguments, which are arrays in guarded memory or values.
    const auto compare = [](const char* name, auto function, auto definition, const auto&... arguments) {
        const auto copies = [&] { return std::tuple(std::vector(arguments)...); };
        auto expected = copies();
        std::apply([&](auto&... x) { definition(x.data()...); }, expected);
        const auto run = [&](const auto&... before) {
            std::tuple<Guarded<typename std::decay_t<decltype(before)>::value_type>...> memory(before...);
            std::apply([&](auto&... x) { EXPECT_EQ(vspStsNoErr, function(x.data()...)); }, memory);
            const bool clean = !upperHalvesInUse();
            std::apply(
                [&](auto&... x) {
                    std::apply([&](auto&... y) { EXPECT_TRUE(((x.values() == y) && ...)) << name; }, expected);
                },
                memory);
            return clean;
        };
        // A change of threads may make the processor say so once.
        EXPECT_TRUE(std::apply(run, copies()) || std::apply(run, copies())) << name;
    };
    for (unsigned seed = 1; seed <= 300; seed++) {
        SCOPED_TRACE(seed);
        const auto scaled = [&](std::size_t n, unsigned offset) {  // every fourth time full scale
            auto x = samples(n, seed + offset);
            for (Vsp16s& sample : x) sample = Vsp16s(sample >> (seed % 4 == 0 ? 0 : seed % 13));
            return x;
        };
        const auto frame = scaled(160, 0), other = scaled(160, 1000), lar1 = scaled(8, 2000), lar2 = scaled(8, 3000),
                   mem = scaled(8, 4000), d = scaled(40, 5000), past = scaled(120, 6000);
        auto memory = samples<Vsp32s>(3, seed), acf = samples<Vsp32s>(9, seed);
        for (std::size_t i = 0; i < 9; i++) acf[i] = acf[i] >> (i == 0 ? 0 : seed % 9);
        compare("preprocess", api.vspsPreprocess_GSMFR_16s, gsmfr::preprocess, frame, other, memory);
        compare("autoCorr", api.vspsAutoCorr_GSMFR_16s32s, gsmfr::autoCorr, frame, acf);
        compare("schur", api.vspsSchur_GSMFR_32s16s, gsmfr::schur, acf, lar1);
        compare("analysis", api.vspsShortTermAnalysisFilter_GSMFR_16s_I, gsmfr::analysisFilter, lar1, lar2, frame, mem);
        compare("synthesis", api.vspsShortTermSynthesisFilter_GSMFR_16s, gsmfr::synthesisFilter, lar1, lar2, frame, other,
                mem);
        compare("predict", api.vspsLongTermPredict_GSMFR_16s, gsmfr::longTermPredict, d, past, d, lar1, lar2);
        compare("weighting", api.vspsWeightingFilter_GSMFR_16s, gsmfr::weightingFilter, d, d);
        compare("postprocess", api.vspsPostprocess_GSMFR_16s_I, gsmfr::postprocess, frame, lar1);
    }
}

TEST_P(GsmFr, BitsThatAFrameDoesNotHaveDoNotCount) {
    const auto codes = samples(13, 3);
    const auto masked = [&](std::vector<int> bits) {
        std::vector<Vsp16s> x;
        for (std::size_t i = 0; i < bits.size(); i++) x.push_back(Vsp16s(codes[i] & ((1 << bits[i]) - 1)));
        return x;
    };
    std::vector<Vsp16s> lar[2]{std::vector<Vsp16s>(8), std::vector<Vsp16s>(8)};
    api.vspsLARQuantDecode_GSMFR_16s(codes.data(), lar[0].data());
    api.vspsLARQuantDecode_GSMFR_16s(masked({6, 6, 5, 5, 4, 4, 3, 3}).data(), lar[1].data());
    EXPECT_EQ(lar[1], lar[0]);
    std::vector<Vsp16s> pulses[2]{std::vector<Vsp16s>(13), std::vector<Vsp16s>(13)};
    api.vspsRPEQuantDecode_GSMFR_16s(codes.data(), pulses[0].data(), 24575, 3);
    api.vspsRPEQuantDecode_GSMFR_16s(masked(std::vector<int>(13, 3)).data(), pulses[1].data(), 24575, 3);
    EXPECT_EQ(pulses[1], pulses[0]);
    std::vector<Vsp16s> subframe[2]{std::vector<Vsp16s>(40), std::vector<Vsp16s>(40)};
    for (const int i : {0, 1}) api.vspsRPEGridPosition_GSMFR_16s(codes.data(), subframe[i].data(), Vsp16s(i == 0 ? -2 : 2));
    EXPECT_EQ(subframe[1], subframe[0]);
    Vsp16s scales[2][2];
    for (const int i : {0, 1}) api.vspsRPEScaleDecode_GSMFR_16s(Vsp16s(i == 0 ? -21 : 43), &scales[i][0], &scales[i][1]);
    EXPECT_TRUE(scales[0][0] == scales[1][0] && scales[0][1] == scales[1][1]);
}

TEST_P(GsmFr, LagsOutsideTheirRangeTakeThePreviousOne) {
    const auto past = samples(120, 1), e = samples(40, 2);
    for (const auto& [lag, previous, used, kept] : {std::tuple(40, 77, 40, 40),
                                                    {120, 77, 120, 120},
                                                    {39, 77, 77, 77},
                                                    {121, 77, 77, 77},
                                                    {-32768, 120, 120, 120},
                                                    {0, 0, 40, 0},
                                                    {127, 32767, 40, 32767}}) {
        SCOPED_TRACE(lag);
        Guarded<Vsp16s> memory(past), dst(40), previousLag(std::vector{Vsp16s(previous)});
        auto expectedPast = past;
        std::vector<Vsp16s> expected(40);
        Vsp16s unused = 0;
        gsmfr::longTermSynthesis(e.data(), expectedPast.data(), expected.data(), Vsp16s(used), 6, &unused);
        ASSERT_EQ(vspStsNoErr, api.vspsLongTermSynthesis_GSMFR_16s(e.data(), memory.data(), dst.data(), Vsp16s(lag), 6,
                                                                   previousLag.data()));
        EXPECT_EQ(expected, dst.values());
        EXPECT_EQ(expectedPast, memory.values());
        EXPECT_EQ(kept, previousLag[0]);
    }
}

}  // namespace vsp::test
