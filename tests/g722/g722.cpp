// G.722: recorded calls, the sequence of the ITU-T, and the definition at any input.
#include <algorithm>
#include <functional>

#include "g722/definitions.h"
#include "support/guarded.h"
#include "support/level_test.h"
#include "support/samples.h"
#include "support/test_data.h"
#include "support/upper_halves.h"
#include "support/vector_case.h"

namespace vsp::test {

namespace {

using Samples = std::vector<Vsp16s>;

Samples samplesOf(const Item& item) {
    if (item.type == 'h') return item.values<Vsp16s>();
    const auto bytes = item.values<Vsp8u>();
    return {bytes.begin(), bytes.end()};
}

}  // namespace

class G722 : public LevelTest {
  protected:
    // A call with a block of samples, its length and its results.
    using Call = std::function<VspStatus(const Vsp16s*, Vsp16s*, Vsp32s)>;

    // The results of calls with blocks of a length; a block of n samples has n * out / in results.
    static Samples inBlocks(const Samples& src, std::size_t block, std::size_t in, std::size_t out, const Call& call) {
        Samples results;
        std::size_t calls = 0, leftUpperHalves = 0;
        for (std::size_t i = 0; i < src.size(); i += block) {
            const std::size_t n = std::min(block, src.size() - i);
            const Guarded<Vsp16s> x(Samples(src.begin() + std::ptrdiff_t(i), src.begin() + std::ptrdiff_t(i + n)));
            Guarded<Vsp16s> y(n * out / in);
            EXPECT_EQ(vspStsNoErr, call(x.data(), y.data(), Vsp32s(n)));
            leftUpperHalves += upperHalvesInUse();
            calls++;
            results.insert(results.end(), y.begin(), y.end());
        }
        EXPECT_TRUE(calls < 2 || leftUpperHalves < calls);  // a change of threads may make the processor say so once
        return results;
    }

    Samples analysed(const Samples& src, std::size_t block, bool inPlace = false) const {
        Guarded<Vsp16s> delay(Samples(24));
        return inBlocks(src, block, 1, 1, [&](const Vsp16s* x, Vsp16s* y, Vsp32s n) {
            if (inPlace) std::copy(x, x + n, y);
            return api.vspsQMFAnalysis_G722_16s(inPlace ? y : x, y, n, delay.data());
        });
    }

    Samples synthesised(const Samples& src, std::size_t block, bool inPlace = false) const {
        Guarded<Vsp16s> delay(Samples(24));
        return inBlocks(src, block, 1, 1, [&](const Vsp16s* x, Vsp16s* y, Vsp32s n) {
            if (inPlace) std::copy(x, x + n, y);
            return api.vspsQMFSynthesis_G722_16s(inPlace ? y : x, y, n, delay.data());
        });
    }

    Samples encoded(const Samples& src, std::size_t block) const {
        Guarded<Vsp32s> state(144 / sizeof(Vsp32s));
        EXPECT_EQ(vspStsNoErr, api.vspsSBADPCMEncodeInit_G722_16s(state.data()));
        return inBlocks(src, block, 2, 1, [&](const Vsp16s* x, Vsp16s* y, Vsp32s n) {
            return api.vspsSBADPCMEncode_G722_16s(x, y, n, state.data());
        });
    }

    // With the mode of every block.
    Samples decoded(const Samples& src, std::size_t block, const std::vector<Vsp32s>& modes) const {
        Guarded<Vsp32s> state(144 / sizeof(Vsp32s));
        EXPECT_EQ(vspStsNoErr, api.vspsSBADPCMDecodeInit_G722_16s(state.data()));
        std::size_t number = 0;
        return inBlocks(src, block, 1, 2, [&](const Vsp16s* x, Vsp16s* y, Vsp32s n) {
            return api.vspsSBADPCMDecode_G722_16s(x, y, n, modes.at(number++), state.data());
        });
    }
    Samples decoded(const Samples& src, std::size_t block, Vsp32s mode) const {
        return decoded(src, block, std::vector<Vsp32s>(src.size() / block + 1, mode));
    }

    // The block lengths of a case: as recorded, everything at once, and odd pieces.
    static std::vector<std::size_t> blockLengths(const Item& recorded, const Samples& src) {
        return {std::size_t(recorded.values<Vsp32s>().at(0)), src.size(), 2, 358};
    }
};
VSPSC_EVERY_LEVEL(G722);

TEST_P(G722, RecordedFilterCallsInAnyBlocks) {
    for (const auto& items : readItemCases("g722/qmf_analysis.vec")) {
        const Samples src = samplesOf(items[1]), expected = samplesOf(items[2]);
        for (const std::size_t block : blockLengths(items[0], src)) ASSERT_EQ(expected, analysed(src, block));
        ASSERT_EQ(expected, analysed(src, 320, true));
    }
    for (const auto& items : readItemCases("g722/qmf_synthesis.vec")) {
        const Samples src = samplesOf(items[1]), expected = samplesOf(items[2]);
        for (const std::size_t block : blockLengths(items[0], src)) ASSERT_EQ(expected, synthesised(src, block));
        ASSERT_EQ(expected, synthesised(src, 322, true));
    }
}

TEST_P(G722, RecordedCoderCallsInAnyBlocks) {
    for (const auto& items : readItemCases("g722/encode.vec")) {
        const Samples src = samplesOf(items[1]), expected = samplesOf(items[2]);
        for (const std::size_t block : blockLengths(items[0], src)) ASSERT_EQ(expected, encoded(src, block));
    }
    for (const auto& items : readItemCases("g722/decode.vec")) {
        const auto block = std::size_t(items[0].values<Vsp32s>().at(0));
        const auto modes = items[1].values<Vsp32s>();
        const Samples src = samplesOf(items[2]);
        ASSERT_EQ(samplesOf(items[3]), decoded(src, block, modes));
        std::vector<Vsp32s> everyMode;  // of single codes, whose bits above the eighth do not count
        for (std::size_t i = 0; i < src.size(); i++) everyMode.push_back(modes[i / block]);
        Samples marked = src;
        for (std::size_t i = 0; i < src.size(); i++) marked[i] = Vsp16s(src[i] - 256 * Vsp16s(i % 100));
        ASSERT_EQ(samplesOf(items[3]), decoded(marked, 1, everyMode));
    }
}

TEST_P(G722, RecordedCodec) {
    for (const auto& items : readItemCases("g722/codec.vec")) {
        const Samples codes = encoded(analysed(samplesOf(items[0]), 320), 320);
        ASSERT_EQ(samplesOf(items[1]), codes);
        for (const Vsp32s mode : {1, 2, 3})
            ASSERT_EQ(samplesOf(items[std::size_t(1 + mode)]), synthesised(decoded(codes, 160, mode), 320));
    }
}

TEST_P(G722, SequenceOfTheItu) {
    const auto words = [](const std::string& name) {
        const std::string bytes = testData("g722/official/" + name);
        Samples x(bytes.size() / sizeof(Vsp16s));
        std::memcpy(x.data(), bytes.data(), bytes.size());
        return x;
    };
    const std::string octets = testData("g722/official/codsp.cod");
    Samples codes;
    for (const char octet : octets) codes.push_back(Vsp16s(Vsp8u(octet)));
    ASSERT_EQ(48768u, codes.size());
    ASSERT_EQ(codes, encoded(analysed(words("inpsp.bin"), 320), 320));
    for (const Vsp32s mode : {1, 2, 3})
        ASSERT_EQ(words("outsp" + std::to_string(mode) + ".bin"), synthesised(decoded(codes, 160, mode), 320));
}

TEST_P(G722, AnyInputGivesWhatTheDefinitionGives) {
    // Steady extremes drive the coefficients to their limits; samples() has values that no filter gives.
    for (unsigned seed = 1; seed <= 8; seed++) {
        Samples src = samples(8000, seed), expected(src.size());
        for (std::size_t i = 2000; i < 6000; i++)
            src[i] = Vsp16s((i / (seed * 2) % 2 == 0 ? 32767 : -32768) >> (i / 1000 * seed % 6));
        g722::Bands encoder, decoder;
        Samples codes(src.size() / 2);
        g722::encode(src.data(), codes.data(), int(src.size()), encoder);
        ASSERT_EQ(codes, encoded(src, 1000));
        for (std::size_t i = 0; i < codes.size(); i += seed) codes[i] = src[i];  // codes that no encoder sends
        // The largest level of one sign, until what the zero predictor adds up does not fit.
        std::fill_n(codes.begin() + 1000, 1000, Vsp16s(seed % 2 == 0 ? 0xA0 : 0x10));
        const Vsp32s mode = Vsp32s(seed % 3) + 1;
        g722::decode(codes.data(), expected.data(), int(codes.size()), mode, decoder);
        ASSERT_EQ(expected, decoded(codes, 700, mode));
        Vsp16s history[24] = {};
        g722::analyse(src.data(), expected.data(), int(src.size()), history);
        ASSERT_EQ(expected, analysed(src, 34));
        std::fill(std::begin(history), std::end(history), Vsp16s(0));
        g722::synthesise(src.data(), expected.data(), int(src.size()), history);
        ASSERT_EQ(expected, synthesised(src, 646));
    }
}

TEST_P(G722, RecordedConcealment) {
    for (const auto& items : readItemCases("g722/conceal.vec")) {
        const auto len = std::size_t(items[0].values<Vsp32s>().at(0));
        const auto lost = items[1].values<Vsp32s>();
        const Samples received = samplesOf(items[2]);
        Samples start(4 * len + 1, 0xFF), concealed;
        start[0] = 0;
        Guarded<Vsp16s> history(start);
        for (std::size_t i = 0; i < lost.size(); i++) {
            const auto first = received.begin() + std::ptrdiff_t(i * len);
            Guarded<Vsp16s> frame(Samples(first, first + std::ptrdiff_t(len)));
            ASSERT_EQ(vspStsNoErr, api.vspsConcealCodes_G722_16s_I(frame.data(), Vsp32s(len), lost[i], history.data()));
            concealed.insert(concealed.end(), frame.begin(), frame.end());
        }
        ASSERT_EQ(samplesOf(items[3]), concealed);
        ASSERT_TRUE(history[0] >= 0 && history[0] <= 5);
    }
}

}  // namespace vsp::test
