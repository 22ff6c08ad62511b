// Recorded signals through the filter bank and the tone detectors, call by call.
#include <algorithm>

#include "support/guarded.h"
#include "support/level_test.h"
#include "support/upper_halves.h"
#include "support/vector_case.h"

namespace vsp::test {

namespace {

using Items = std::vector<Item>;

template <class T>
Guarded<T> guarded(const Item& item) {
    return Guarded<T>(item.values<T>());
}

template <class T>
Item itemOf(const Guarded<T>& values) {
    const auto* bytes = reinterpret_cast<const std::byte*>(values.data());
    return {0, {bytes, bytes + values.size() * sizeof(T)}};
}

// Integers by value; floats too, so that -0 is 0.
template <class T>
void expectSame(const Item& expected, const Item& actual) {
    EXPECT_EQ(expected.values<T>(), actual.values<T>());
}

// Runs a check over every case of a file, which gives it the items and the integers of the first one.
template <class Check>
void forEveryCase(const std::string& file, Check check) {
    const auto cases = readItemCases("ec/" + file + ".vec");
    ASSERT_FALSE(cases.empty());
    for (std::size_t number = 0; number < cases.size(); number++) {
        SCOPED_TRACE(file + ", case " + std::to_string(number));
        const auto run = [&] {
            check(cases[number], cases[number][0].values<Vsp32s>());
            return !upperHalvesInUse();
        };
        EXPECT_TRUE(run() || run());  // a change of threads may make the processor say so once
    }
}

// Frames through a freshly initialised state; the memory begins at an odd address.
template <class In, class Out, class State, class Window, class GetSize, class Init, class Process>
void checkFilterBank(const std::string& file, GetSize getSize, Init init,
                     std::size_t inPerFrame(Vsp32s order, Vsp32s frame),
                     std::size_t outPerFrame(Vsp32s order, Vsp32s frame), Process process) {
    forEveryCase(file, [&](const Items& items, const std::vector<Vsp32s>& p) {
        Vsp32s stateSize = 0, initSize = 0, bufSize = 0;
        ASSERT_EQ(vspStsNoErr, getSize(p[0], p[2], &stateSize, &initSize, &bufSize));
        Guarded<Vsp8u> stateMemory(std::size_t(stateSize), Guard::end), buffer(std::size_t(bufSize), Guard::begin, 1);
        Guarded<Vsp8u> initBuffer{std::size_t(initSize)};
        const auto window = guarded<Window>(items[1]);
        State* const state = reinterpret_cast<State*>(stateMemory.data());
        ASSERT_EQ(vspStsNoErr, init(state, p[0], p[1], p[2], window.data(), initBuffer.data()));
        const auto input = items[2].values<In>();
        const std::size_t in = inPerFrame(p[0], p[1]), out = outPerFrame(p[0], p[1]);
        Item results{0, {}};
        for (std::size_t i = 0; i < input.size(); i += in) {
            const auto begin = input.begin() + std::ptrdiff_t(i);
            const Guarded<In> src(std::vector<In>(begin, begin + std::ptrdiff_t(in)));
            Guarded<Out> dst(out);
            ASSERT_EQ(vspStsNoErr, process(src.data(), dst.data(), state, p[3], buffer.data()));
            const Item frame = itemOf(dst);
            results.bytes.insert(results.bytes.end(), frame.bytes.begin(), frame.bytes.end());
        }
        using Value = std::conditional_t<sizeof(Window) == 4, Vsp32f,
                                         std::conditional_t<std::is_same_v<Out, Vsp16s>, Vsp16s, Vsp32s>>;
        expectSame<Value>(items[3], results);
    });
}

std::size_t bands(Vsp32s order, Vsp32s) { return (std::size_t(1) << order) / 2 + 1; }
std::size_t frame(Vsp32s, Vsp32s frameSize) { return std::size_t(frameSize); }

}  // namespace

class EcVectors : public LevelTest {};
VSPSC_EVERY_LEVEL(EcVectors);

TEST_P(EcVectors, FilterBank) {
    checkFilterBank<Vsp32f, Vsp32fc, VspSubbandProcessState_32f, Vsp32f>(
        "analysis_32f", api.vspsSubbandProcessGetSize_32f, api.vspsSubbandProcessInit_32f, frame, bands,
        [&](auto src, auto dst, auto state, Vsp32s, auto buf) {
            return api.vspsSubbandAnalysis_32f32fc(src, dst, state, buf);
        });
    checkFilterBank<Vsp16s, Vsp32sc, VspSubbandProcessState_16s, Vsp16s>("analysis_16s", api.vspsSubbandProcessGetSize_16s,
                                                                         api.vspsSubbandProcessInit_16s, frame, bands,
                                                                         api.vspsSubbandAnalysis_16s32sc_Sfs);
    checkFilterBank<Vsp32fc, Vsp32f, VspSubbandProcessState_32f, Vsp32f>(
        "synthesis_32f", api.vspsSubbandProcessGetSize_32f, api.vspsSubbandProcessInit_32f, bands, frame,
        [&](auto src, auto dst, auto state, Vsp32s, auto buf) {
            return api.vspsSubbandSynthesis_32fc32f(src, dst, state, buf);
        });
    checkFilterBank<Vsp32sc, Vsp16s, VspSubbandProcessState_16s, Vsp16s>("synthesis_16s", api.vspsSubbandProcessGetSize_16s,
                                                                         api.vspsSubbandProcessInit_16s, bands, frame,
                                                                         api.vspsSubbandSynthesis_32sc16s_Sfs);
}

TEST_P(EcVectors, ToneDetectors) {
    const auto check = [](const std::string& file, auto sample, auto getSize, auto init, auto detect) {
        using T = decltype(sample);
        forEveryCase(file, [&](const Items& items, const std::vector<Vsp32s>& p) {
            Vsp32s size = 0, flag = 0;
            ASSERT_EQ(vspStsNoErr, getSize(p[0], &size));
            Guarded<Vsp8u> state{std::size_t(size)};
            ASSERT_EQ(vspStsNoErr, init(state.data(), p[0]));
            const auto recorded = items[1].values<Vsp16s>();
            const std::vector<T> signal(recorded.begin(), recorded.end());
            std::vector<Vsp32s> flags;
            for (std::size_t i = 0; i < signal.size(); i += std::size_t(p[1])) {
                const auto n = std::min(signal.size() - i, std::size_t(p[1]));
                ASSERT_EQ(vspStsNoErr, detect(&signal[i], Vsp32s(n), &flag, state.data()));
                flags.push_back(flag);
            }
            EXPECT_EQ(items[2].values<Vsp32s>(), flags);
        });
    };
    using State_32f = VspToneDetectState_EC_32f;
    using State_16s = VspToneDetectState_EC_16s;
    check(
        "tone_32f", Vsp32f(), api.vspsToneDetectGetStateSize_EC_32f,
        [&](Vsp8u* state, Vsp32s rate) { return api.vspsToneDetectInit_EC_32f(reinterpret_cast<State_32f*>(state), rate); },
        [&](auto src, Vsp32s n, Vsp32s* flag, Vsp8u* state) {
            return api.vspsToneDetect_EC_32f(src, n, flag, reinterpret_cast<State_32f*>(state));
        });
    check(
        "tone_16s", Vsp16s(), api.vspsToneDetectGetStateSize_EC_16s,
        [&](Vsp8u* state, Vsp32s rate) { return api.vspsToneDetectInit_EC_16s(reinterpret_cast<State_16s*>(state), rate); },
        [&](auto src, Vsp32s n, Vsp32s* flag, Vsp8u* state) {
            return api.vspsToneDetect_EC_16s(src, n, flag, reinterpret_cast<State_16s*>(state));
        });
}

}  // namespace vsp::test
