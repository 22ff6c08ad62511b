// Discontinuous transmission: streams that update and encode one state.
#include <cmath>

#include "support/guarded.h"
#include "support/level_test.h"
#include "support/vector_case.h"

namespace vsp::test {

namespace {

using Encode = VspStatus (*)(Vsp16s, Vsp16s*, Vsp16s*, Vsp16s*, Vsp16s*, Vsp16s*, Vsp32s*, Vsp16s*, Vsp16s*, Vsp16s*,
                             void*);

constexpr int kHistory = 154, kStateWords = 104;

// The bits below the high words are random: they do not count.
std::vector<Vsp32s> autocorrelation(const std::vector<Vsp16s>& high, Vsp32s low) {
    std::vector<Vsp32s> values;
    for (const Vsp16s word : high) values.push_back(word * 0x10000 + low);
    return values;
}

void runStream(const Api& api, const std::string& file, Encode encode) {
    Guarded<Vsp16s> state(kStateWords);
    int number = 0;
    for (const auto& items : readItemCases("g729/" + file + ".vec")) {
        SCOPED_TRACE(file + ", case " + std::to_string(number++));
        const auto words = [&](std::size_t i) { return items.at(i).values<Vsp16s>(); };
        if (words(0)[0] != 0) {
            ASSERT_EQ(vspStsNoErr, api.vspsDTXInit_G729B_16s(state.data()));
        }
        if (words(1)[0] == 0) {
            const Guarded<Vsp32s> autocorr(autocorrelation(words(2), number & 0xFFFF));
            ASSERT_EQ(vspStsNoErr, api.vspsDTXUpdate_G729B_16s(autocorr.data(), words(3)[0], words(4)[0], state.data()));
            continue;
        }
        auto buffer = words(3);
        buffer.resize(kHistory + 80);
        Guarded<Vsp16s> excitation(buffer), lsp(words(4)), previous(words(5)), seed(words(6)), memory(words(7)), lpc(22),
            type(1), index(4);
        Guarded<Vsp32s> errors(items.at(8).values<Vsp32s>());
        ASSERT_EQ(vspStsNoErr, encode(words(2)[0], excitation.data() + kHistory, lsp.data(), previous.data(), seed.data(),
                                      memory.data(), errors.data(), lpc.data(), type.data(), index.data(), state.data()));
        const auto made = excitation.values();
        EXPECT_EQ(words(9), std::vector(made.begin() + kHistory, made.end()));
        EXPECT_EQ(words(10), lsp.values());
        EXPECT_EQ(words(11), previous.values());
        EXPECT_EQ(words(12), seed.values());
        EXPECT_EQ(words(13), memory.values());
        EXPECT_EQ(items.at(14).values<Vsp32s>(), errors.values());
        EXPECT_EQ(words(15), lpc.values());
        EXPECT_EQ(words(16), type.values());
        if (type[0] == 2) {
            EXPECT_EQ(words(17), index.values());
        }
    }
    EXPECT_GT(number, 0);
}

}  // namespace

class Silence : public LevelTest {};
VSPSC_EVERY_LEVEL(Silence);

TEST_P(Silence, RecordedStreams) {
    runStream(api, "vspsDTX_G729B_16s-stream", api.vspsDTXEncode_G729B_16s);
    runStream(api, "vspsDTX_G729A_16s-stream", api.vspsDTXEncode_G729A_16s);
}

// A long recording of what the detector in integers decides.
TEST_P(Silence, DetectorInFloatingPointDecidesLikeTheOneInIntegers) {
    Guarded<std::byte> state(172);
    int number = 0;
    for (const auto& items : readItemCases("g729/vspsVAD_G729B_16s.vec")) {
        const auto words = [&](std::size_t i) { return items.at(i).values<Vsp16s>(); };
        if (words(0)[0] != 0) {
            ASSERT_EQ(vspStsNoErr, api.vspsVADInit_G729B_32f(state.data()));
        }
        Guarded<Vsp32f> autocorr(13), lsf(10), speech(240);
        const auto lags = items.at(1).values<Vsp32s>();
        for (std::size_t i = 0; i < 13; i++) autocorr[i] = std::ldexp(Vsp32f(lags[i]), words(2)[0]);
        for (std::size_t i = 0; i < 10; i++) lsf[i] = Vsp32f(words(4)[i]) * 6.2831853f / 32768;
        for (std::size_t i = 0; i < 82; i++) speech[119 + i] = Vsp32f(words(5)[i]);
        Guarded<Vsp32s> vad(1);
        ASSERT_EQ(vspStsNoErr, api.vspsVAD_G729B_32f(autocorr.data(), Vsp32f(words(3)[0]) / 32768, lsf.data(),
                                                     speech.data(), vad.data(), state.data()));
        ASSERT_EQ(words(6)[0], vad[0]) << "case " << number;
        number++;
    }
    EXPECT_GT(number, 1000);
}

}  // namespace vsp::test
