// GSM-AMR: recorded calls of the steps of the coder.
#include <array>
#include <cstring>
#include <string>

#include "support/guarded.h"
#include "support/level_test.h"
#include "support/samples.h"
#include "support/upper_halves.h"
#include "support/vector_case.h"

namespace vsp::test {

namespace {

// What a parameter is: i input, b read and written, o output, s the state of a stream.
struct Place {
    char kind;
    int offset = 0;  // element that the pointer points at
};

template <class P>
struct Argument {
    Argument(const std::vector<Item>& items, Place, std::size_t& before, std::size_t&) {
        pass = items.at(before).type == 'h' ? P(items.at(before).values<Vsp16s>().at(0))
                                            : P(items.at(before).values<Vsp32s>().at(0));
        before++;
    }
    void check() const {}
    P pass;
};

template <class T>
struct Argument<T*> {
    using Element = std::remove_const_t<T>;

    Argument(const std::vector<Item>& items, Place place, std::size_t& before, std::size_t& after) {
        std::vector<Element> input;
        if (place.kind != 'o') input = items.at(before++).values<Element>();
        expected = input;
        if (place.kind != 'i') expected = items.at(after++).values<Element>();
        if (place.kind == 'o') input = samples<Element>(expected.size());
        memory = std::make_unique<Guarded<Element>>(input);
        pass = expected.empty() ? nullptr : memory->data() + place.offset;
    }
    void check() const { EXPECT_EQ(expected, memory->values()); }

    std::vector<Element> expected;
    std::unique_ptr<Guarded<Element>> memory;
    T* pass;
};

template <class... P>
void runCases(const std::string& name, VspStatus (*function)(P...), const std::array<Place, sizeof...(P)>& places) {
    const auto cases =
        readItemCases("gsmamr/" + name + "_GSMAMR_16s" + (name == "vspsDecodeAdaptiveVector" ? "_I.vec" : ".vec"));
    ASSERT_FALSE(cases.empty());
    for (std::size_t number = 0; number < cases.size(); number++) {
        SCOPED_TRACE(name + ", case " + std::to_string(number));
        const auto& items = cases[number];
        std::size_t before = 0, after = 1;
        for (const Place place : places) after += place.kind != 'o';
        const VspStatus expected = items.at(after - 1).template values<Vsp32s>().at(0);
        [&]<std::size_t... I>(std::index_sequence<I...>) {
            const std::tuple<Argument<P>...> arguments{Argument<P>(items, places[I], before, after)...};
            ASSERT_EQ(items.size(), after);
            ASSERT_EQ(expected, function(std::get<I>(arguments).pass...));
            ASSERT_FALSE(upperHalvesInUse());
            (std::get<I>(arguments).check(), ...);
        }
        (std::index_sequence_for<P...>());
        if (::testing::Test::HasFailure()) return;
    }
}

constexpr Place i{'i'}, b{'b'}, o{'o'};

}  // namespace

class GsmAmrSteps : public LevelTest {};
VSPSC_EVERY_LEVEL(GsmAmrSteps);

#define VSPSC_RECORDED(name, ...) \
    TEST_P(GsmAmrSteps, name) { runCases("vsps" #name, api.vsps##name##_GSMAMR_16s, {{__VA_ARGS__}}); }

VSPSC_RECORDED(AdaptiveCodebookSearch, i, i, {'i', 154}, i, i, i, b, o, o)
TEST_P(GsmAmrSteps, DecodeAdaptiveVector) {
    runCases("vspsDecodeAdaptiveVector", api.vspsDecodeAdaptiveVector_GSMAMR_16s_I, {{i, i, {'b', 154}}});
}
VSPSC_RECORDED(AdaptiveCodebookGain, i, i, i, o, o)
VSPSC_RECORDED(PitchGainLimit, i, i, i, b, o)
VSPSC_RECORDED(PitchGainQuant, i, b, o)
VSPSC_RECORDED(AdaptiveCodebookContribution, i, i, i, o)
VSPSC_RECORDED(WeightedErrorUpdate, i, i, i, i, i, i, i, o, o)
VSPSC_RECORDED(AlgebraicCodebookDecode, i, i, i, i, i, o)
VSPSC_RECORDED(PitchGainDecode, i, i, o)
VSPSC_RECORDED(GainDecode, i, i, i, i, b, b)
VSPSC_RECORDED(PitchGainConceal, i, i, i, b, b)
VSPSC_RECORDED(CodeGainConceal, i, i, i, b, b, b)
VSPSC_RECORDED(CodeGainSmooth, i, i, i, i, i, b, o)
VSPSC_RECORDED(PhaseDispersion, i, i, i, i, b, b, b)
VSPSC_RECORDED(ExcitationControl, i, i, i, b, b)
VSPSC_RECORDED(ExcitationEmphasis, i, i, i, i, i, o)
VSPSC_RECORDED(BackgroundNoiseDetect, i, i, b, b, o)
VSPSC_RECORDED(AlgebraicCodebookSearch, i, i, i, i, i, i, i, o, o, o)
VSPSC_RECORDED(DelayDecode, i, i, i, i, i, i, b, b, o)

}  // namespace vsp::test
