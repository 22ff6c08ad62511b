#include "support/bench.h"

namespace {

// Log-area ratios of speech.
constexpr Vsp16s kLar[8] = {-9000, 6000, -2000, 3000, -500, 1500, -1000, 500}, kPrevLar[8] = {-8000, 7000, -3000, 2500};
Vsp16s words[160], lag, gain;
Vsp32s correlations[9] = {900000000, 700000000, 300000000, -100000000, -400000000, -450000000, -300000000, 0, 200000000};

template <class Function, class Call>
bool add(const char* name, Function vsp::Api::*member, int len, Call call) {
    return bench::add(name, member, {len}, call);
}

[[maybe_unused]] const bool registered[] = {
    add("vspsPreprocess_GSMFR_16s", &vsp::Api::vspsPreprocess_GSMFR_16s, 160,
        [](auto f, bench::Buffers& x, int) {
            Vsp32s memory[3] = {};
            f(x.a.data(), words, memory);
        }),
    add("vspsAutoCorr_GSMFR_16s32s", &vsp::Api::vspsAutoCorr_GSMFR_16s32s, 160,
        [](auto f, bench::Buffers& x, int) { f(x.inPlace(), x.words.data()); }),
    add("vspsSchur_GSMFR_32s16s", &vsp::Api::vspsSchur_GSMFR_32s16s, 9,
        [](auto f, bench::Buffers&, int) { f(correlations, words); }),
    add("vspsShortTermAnalysisFilter_GSMFR_16s_I", &vsp::Api::vspsShortTermAnalysisFilter_GSMFR_16s_I, 160,
        [](auto f, bench::Buffers& x, int) {
            Vsp16s memory[8] = {};
            f(kPrevLar, kLar, x.inPlace(), memory);
        }),
    add("vspsLongTermPredict_GSMFR_16s", &vsp::Api::vspsLongTermPredict_GSMFR_16s, 120,
        [](auto f, bench::Buffers& x, int) { f(x.a.data(), x.b.data(), words, &lag, &gain); }),
    add("vspsWeightingFilter_GSMFR_16s", &vsp::Api::vspsWeightingFilter_GSMFR_16s, 40,
        [](auto f, bench::Buffers& x, int) { f(x.a.data(), words); }),
    add("vspsRPEGridSelect_GSMFR_16s", &vsp::Api::vspsRPEGridSelect_GSMFR_16s, 40,
        [](auto f, bench::Buffers& x, int) { f(x.a.data(), words, &lag); }),
    add("vspsRPEQuantEncode_GSMFR_16s", &vsp::Api::vspsRPEQuantEncode_GSMFR_16s, 13,
        [](auto f, bench::Buffers& x, int) { f(x.a.data(), words, &lag); }),
    add("vspsRPEQuantDecode_GSMFR_16s", &vsp::Api::vspsRPEQuantDecode_GSMFR_16s, 13,
        [](auto f, bench::Buffers& x, int) { f(x.a.data(), words, 24575, 3); }),
    add("vspsLongTermSynthesis_GSMFR_16s", &vsp::Api::vspsLongTermSynthesis_GSMFR_16s, 120,
        [](auto f, bench::Buffers& x, int) { f(x.a.data(), x.b.data(), words, 57, 1, &lag); }),
    add("vspsShortTermSynthesisFilter_GSMFR_16s", &vsp::Api::vspsShortTermSynthesisFilter_GSMFR_16s, 160,
        [](auto f, bench::Buffers& x, int) {
            Vsp16s memory[8] = {};
            f(kPrevLar, kLar, x.a.data(), words, memory);
        }),
    add("vspsPostprocess_GSMFR_16s_I", &vsp::Api::vspsPostprocess_GSMFR_16s_I, 160,
        [](auto f, bench::Buffers& x, int) {
            Vsp16s memory = 0;
            f(x.inPlace(), &memory);
        }),
};

}  // namespace
