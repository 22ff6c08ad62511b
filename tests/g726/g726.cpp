// The coder against recorded calls, the test sequences of the ITU-T software tools, and its definition.
#include <algorithm>
#include <functional>
#include <random>
#include <sstream>

#include "g726/definitions.h"
#include "support/guarded.h"
#include "support/level_test.h"
#include "support/samples.h"
#include "support/test_data.h"
#include "support/vector_case.h"

namespace vsp::test {

namespace {

constexpr Vsp32s kRates[] = {17, 22, 23, 24};

// One direction of a coder on a state of exactly the size that it may have.
template <class In, class Out>
struct Stream {
    using Run = std::function<VspStatus(const In*, Out*, Vsp32s, void*)>;
    using Setter = VspStatus (*)(void*, Vsp32s);

    Setter setRate;
    Run run;
    Guarded<Vsp32s> state;

    Stream(Setter init, Setter rateSetter, Run function, Vsp32s rate, std::size_t bytes)
        : setRate(rateSetter), run(std::move(function)), state(bytes / 4) {
        EXPECT_EQ(vspStsNoErr, init(state.data(), rate));
    }

    // In pieces of n elements, in place where it may be.
    std::vector<Out> operator()(const std::vector<In>& source, std::size_t n, bool inPlace = false) {
        std::vector<Out> result;
        for (std::size_t i = 0; i < source.size(); i += n) {
            const std::vector<In> piece(source.begin() + long(i), source.begin() + long(std::min(i + n, source.size())));
            const Guarded<In> src(piece);
            Guarded<Out> dst(piece.size());
            const In* from = src.data();
            if constexpr (std::is_same_v<In, Out>)
                if (inPlace) {
                    std::copy(piece.begin(), piece.end(), dst.begin());
                    from = dst.data();
                }
            EXPECT_EQ(vspStsNoErr, run(from, dst.data(), Vsp32s(piece.size()), state.data()));
            result.insert(result.end(), dst.begin(), dst.end());
        }
        return result;
    }

    // The rate of every block is given; each block in pieces of n elements.
    std::vector<Out> operator()(const std::vector<In>& source, std::size_t block, const std::vector<Vsp32s>& rates,
                                std::size_t n, bool inPlace) {
        std::vector<Out> result;
        for (std::size_t i = 0; i < source.size(); i += block) {
            const std::vector<In> part(source.begin() + long(i), source.begin() + long(std::min(i + block, source.size())));
            EXPECT_EQ(vspStsNoErr, setRate(state.data(), rates[i / block]));
            const std::vector<Out> coded = (*this)(part, n, inPlace);
            result.insert(result.end(), coded.begin(), coded.end());
        }
        return result;
    }
};

std::vector<Vsp8u> octets(const std::string& file) {
    const std::string bytes = testData("g726/official/" + file);
    return {bytes.begin(), bytes.end()};
}

}  // namespace

class G726 : public LevelTest {
  protected:
    Stream<Vsp16s, Vsp8u> encoder(Vsp32s rate) {
        return {api.vspsEncodeInit_G726_16s8u, api.vspsEncodeSetRate_G726_16s8u, api.vspsEncode_G726_16s8u, rate, 88};
    }
    Stream<Vsp8u, Vsp16s> decoder(Vsp32s rate) {
        return {api.vspsDecodeInit_G726_8u16s, api.vspsDecodeSetRate_G726_8u16s, api.vspsDecode_G726_8u16s, rate, 92};
    }
    Stream<Vsp8u, Vsp8u> pcm(bool encodes, Vsp32s rate, Vsp32s law) {
        const auto function = encodes ? api.vspsEncodePCM_G726_8u : api.vspsDecodePCM_G726_8u;
        const auto run = [=](const Vsp8u* src, Vsp8u* dst, Vsp32s n, void* state) {
            return function(src, dst, n, law, state);
        };
        if (encodes) return {api.vspsEncodeInit_G726_16s8u, api.vspsEncodeSetRate_G726_16s8u, run, rate, 88};
        return {api.vspsDecodeInit_G726_8u16s, api.vspsDecodeSetRate_G726_8u16s, run, rate, 92};
    }

    // make gives a fresh stream for a rate and a law.
    template <class In, class Out, class Make>
    void expectRecorded(const std::string& file, Make make) {
        const auto cases = readItemCases("g726/" + file + ".vec");
        ASSERT_FALSE(cases.empty());
        for (std::size_t c = 0; c < cases.size(); c++) {
            SCOPED_TRACE(file + " case " + std::to_string(c));
            const auto settings = cases[c][0].values<Vsp32s>(), rates = cases[c][1].values<Vsp32s>();
            const auto source = cases[c][2].values<In>();
            const auto expected = cases[c][3].values<Out>();
            const std::size_t block = std::size_t(settings[0]);
            for (const std::size_t n : {block, std::size_t(1) + c % 7}) {
                auto stream = make(rates[0], settings.back());
                ASSERT_EQ(expected, stream(source, block, rates, n, n != block));
            }
        }
    }
};
VSPSC_EVERY_LEVEL(G726);

TEST_P(G726, RecordedCalls) {
    expectRecorded<Vsp16s, Vsp8u>("encode", [&](Vsp32s rate, Vsp32s) { return encoder(rate); });
    expectRecorded<Vsp8u, Vsp16s>("decode", [&](Vsp32s rate, Vsp32s) { return decoder(rate); });
    expectRecorded<Vsp8u, Vsp8u>("encode_pcm", [&](Vsp32s rate, Vsp32s law) { return pcm(true, rate, law); });
    expectRecorded<Vsp8u, Vsp8u>("decode_pcm", [&](Vsp32s rate, Vsp32s law) { return pcm(false, rate, law); });
}

TEST_P(G726, SequencesOfTheSoftwareTools) {
    std::istringstream list(testData("g726/official/tests.txt"));
    std::string line, direction, law, preset, input, output;
    std::getline(list, line);
    int tests = 0;
    for (Vsp32s rate; list >> direction >> rate >> law >> preset >> input >> output; tests++) {
        auto stream = pcm(direction == "enc", rate, law == "m" ? 1 : 0);
        if (preset != "-") stream(octets(preset), 3496);
        EXPECT_EQ(octets(output), stream(octets(input), 333)) << direction << ' ' << rate << ' ' << input;
    }
    EXPECT_EQ(76, tests);

    std::vector<Vsp32s> rates;
    const std::vector<Vsp8u> voice = octets("voice.a");
    for (std::size_t i = 0; i < voice.size(); i += 16) rates.push_back(std::vector{17, 22, 23, 24, 23, 22}[i / 16 % 6]);
    const std::vector<Vsp8u> codes = pcm(true, 17, 0)(voice, 16, rates, 16, false);
    EXPECT_EQ(octets("voicevbr.a"), pcm(false, 17, 0)(codes, 16, rates, 16, true));
}

// Codes that no encoder sends, signals beyond the range of the predictor, changing rates, both forms on one state.
TEST_P(G726, AnyInputGivesWhatTheDefinitionGives) {
    std::mt19937 random(1);
    auto linearEncoder = encoder(17);
    auto linearDecoder = decoder(17);
    plain::G726 plainEncoder(17), plainDecoder(17);
    for (int round = 0; round < 3000; round++) {
        const Vsp32s rate = kRates[random() % 4], law = Vsp32s(random() % 2);
        for (auto* plain : {&plainEncoder, &plainDecoder}) plain->setRate(rate);
        linearEncoder.setRate(linearEncoder.state.data(), rate);
        linearDecoder.setRate(linearDecoder.state.data(), rate);

        std::vector<Vsp16s> signal = samples(20, unsigned(random()));
        if (round % 3 == 0)
            std::generate(signal.begin(), signal.end(), [&] { return Vsp16s(random() % 4 < 2 ? -32768 : 32767); });
        std::vector<Vsp8u> codes(signal.size()), octet(signal.size());
        std::transform(signal.begin(), signal.end(), codes.begin(),
                       [&](int x) { return Vsp8u(plainEncoder.encode(x >> 2)); });
        ASSERT_EQ(codes, linearEncoder(signal, 20));

        if (round % 2 == 0) std::generate(codes.begin(), codes.end(), [&] { return Vsp8u(random()); });
        if (round % 4 == 1) {
            std::transform(codes.begin(), codes.end(), octet.begin(),
                           [&](int c) { return Vsp8u(plainDecoder.decodePcm(c, law)); });
            std::vector<Vsp8u> decoded(codes.size());
            api.vspsDecodePCM_G726_8u(codes.data(), decoded.data(), 20, law, linearDecoder.state.data());
            ASSERT_EQ(octet, decoded);
        } else {
            std::transform(codes.begin(), codes.end(), signal.begin(),
                           [&](int c) { return Vsp16s(plainDecoder.decode(c)); });
            ASSERT_EQ(signal, linearDecoder(codes, 20));
        }
    }
}

}  // namespace vsp::test
