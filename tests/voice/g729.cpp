// G.729 and its annexes: recorded codings of the reference, with erased and damaged frames and with pauses.
#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "support/vector_case.h"
#include "voice/coder.h"

namespace vsp::test {

namespace {

// What happens to a frame between the encoder and the decoder, as the recordings number it.
enum Fate : Vsp8u { kReceived = 0, kErased = 1, kBit20Inverted = 2, kBit1Inverted = 3 };

struct Coding {
    const VspvCodec& codec;
    bool silence;
    Samples pcm;
    std::vector<Vsp32s> rates;  // asked for
    std::vector<Octets> frames;
    bool rateOfErasedKnown;

    VspvFrame told(std::size_t i) const {
        const Vsp32s bytes = Vsp32s(frames[i].size());
        const Vsp32s type = bytes == 0 ? vspvFrameNoData : bytes == 2 ? vspvFrameSIDUpdate : vspvFrameSpeech;
        return {type, vspvQualityGood, rates[i], bytes};
    }

    void expectFrames() const {
        Encoder encoder(codec);
        ASSERT_EQ(vspStsNoErr, vspvEncoderSetDTX(encoder.get(), silence));
        for (std::size_t i = 0; i < frames.size(); i++) {
            ASSERT_EQ(vspStsNoErr, vspvEncoderSetRate(encoder.get(), rates[i]));
            const Octets coded = encoder(Samples(&pcm[80 * i], &pcm[80 * i] + 80));
            ASSERT_EQ(frames[i], coded) << "frame " << i;
        }
    }

    void expectSamples(const Samples& expected, const Octets& fates) const {
        Decoder decoder(codec);
        for (std::size_t i = 0; i < frames.size(); i++) {
            VspvFrame frame = told(i);
            Octets bytes = frames[i];
            const auto invert = [&](std::size_t bit) {
                if (bytes.size() > bit / 8) bytes[bit / 8] ^= Vsp8u(0x80 >> bit % 8);
            };
            const Vsp8u fate = fates.empty() ? Vsp8u(kReceived) : fates[i];
            if (fate == kErased) frame.quality = rateOfErasedKnown ? vspvQualityBad : vspvQualityLost;
            if (fate == kBit20Inverted) invert(20);
            if (fate == kBit1Inverted) invert(1);
            ASSERT_EQ(Samples(&expected[80 * i], &expected[80 * i] + 80), decoder.frame(bytes, frame)) << "frame " << i;
        }
    }
};

void expectCodings(const char* name, const std::string& file, const std::string& pcmFile, bool silence,
                   bool rateOfErasedKnown) {
    const auto pcm = readItemCases("g729/" + pcmFile + ".vec");
    const auto cases = readItemCases("g729/" + file + ".vec");
    ASSERT_FALSE(cases.empty());
    for (std::size_t number = 0; number < cases.size(); number++) {
        SCOPED_TRACE(file + ", case " + std::to_string(number));
        const std::vector<Item>& items = cases[number];
        const auto head = items[0].values<Vsp32s>();
        const bool ratesGiven = head.size() == 2;  // and whether there are pauses
        const std::size_t at = ratesGiven ? 2 : 1;
        const auto bits = items[at].values<Vsp8u>(), packed = items[at + 1].values<Vsp8u>();
        Coding coding{codecNamed(name),
                      ratesGiven ? head[1] != 0 : silence,
                      pcm.at(std::size_t(head[0])).at(0).values<Vsp16s>(),
                      {},
                      {},
                      rateOfErasedKnown};
        auto next = packed.begin();
        for (std::size_t i = 0; i < bits.size(); i++) {
            const std::size_t octets = (bits[i] + 7u) / 8;
            const Vsp32s rates[] = {6400, 8000, 11800};
            coding.rates.push_back(ratesGiven ? rates[items[1].values<Vsp8u>()[i]] : bits[i] == 64 ? 6400 : 8000);
            coding.frames.emplace_back(next, next + std::ptrdiff_t(octets));
            next += std::ptrdiff_t(octets);
        }
        coding.expectFrames();
        coding.expectSamples(items[at + 2].values<Vsp16s>(), {});
        coding.expectSamples(items[at + 4].values<Vsp16s>(), items[at + 3].values<Vsp8u>());
    }
}

}  // namespace

// The ITU-T's own sequences, which may not be passed on: below the folder that VSPSC_ITU_G729 names, in folders called
// after the codec or as in the ITU's archive, the streams NAME.bit with NAME.in and NAME.pst, or what else Release 2 calls
// them.
TEST(VoiceG729, SequencesOfTheItu) {
    namespace fs = std::filesystem;
    const char* folder = std::getenv("VSPSC_ITU_G729");
    if (folder == nullptr) GTEST_SKIP() << "VSPSC_ITU_G729 names no folder with the ITU's sequences";
    const auto lower = [](std::string name) {
        std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
        return name;
    };
    const auto words = [](const fs::path& file) {
        std::ifstream in(file, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(in), {}};
        Samples samples(bytes.size() / 2);
        std::memcpy(samples.data(), bytes.data(), 2 * samples.size());
        return samples;
    };
    const auto sibling = [&](const fs::path& file, std::initializer_list<const char*> extensions) {
        for (const auto& entry : fs::directory_iterator(file.parent_path()))
            for (const char* extension : extensions)
                if (lower(entry.path().filename()) == lower(file.stem()) + extension) return entry.path();
        return fs::path();
    };
    int run = 0;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (lower(entry.path().extension()) != ".bit") continue;
        const VspvCodec* codec = nullptr;
        for (const auto& [part, name] : {std::pair("g729annexa", "g729a"),
                                         {"g729annexd", "g729d"},
                                         {"g729annexe", "g729e"},
                                         {"g729annexi", "g729i"},
                                         {"g729annexb", "g729"},
                                         {"g729", "g729"},
                                         {"g729a", "g729a"},
                                         {"g729d", "g729d"},
                                         {"g729e", "g729e"},
                                         {"g729i", "g729i"}})
            for (const fs::path& folderName : entry.path().parent_path())
                if (lower(folderName) == part) codec = vspvFindCodec(name);
        if (codec == nullptr) continue;
        SCOPED_TRACE(entry.path().string());
        Coding coding{*codec, false, {}, {}, {}, std::string(codec->name) != "g729i"};
        Octets fates;
        const Samples serial = words(entry.path());
        for (std::size_t i = 0; i + 2 <= serial.size();) {
            const auto bits = std::size_t(serial[i + 1]);
            ASSERT_LE(i + 2 + bits, serial.size());
            Octets octets((bits + 7) / 8);
            bool erased = serial[i] != 0x6B21;
            for (std::size_t k = 0; k < bits; k++) {
                erased = erased || serial[i + 2 + k] == 0;
                if (serial[i + 2 + k] == 0x81) octets[k / 8] |= Vsp8u(0x80 >> k % 8);
            }
            coding.silence = coding.silence || bits < 64;
            coding.rates.push_back(bits == 64 ? 6400 : bits == 118 ? 11800 : bits == 80 ? 8000 : codec->pBitRates[0]);
            coding.frames.push_back(octets);
            fates.push_back(erased ? kErased : kReceived);
            i += 2 + bits;
        }
        const bool damaged = std::find(fates.begin(), fates.end(), kErased) != fates.end();
        const fs::path input = sibling(entry.path(), {".in", ".inp", ".bin", ".pcm"});
        const fs::path output = sibling(entry.path(), {".pst", ".out"});
        if (!input.empty() && !damaged) {
            coding.pcm = words(input);
            ASSERT_GE(coding.pcm.size(), 80 * coding.frames.size());
            coding.expectFrames();
        }
        if (!output.empty()) {
            const Samples expected = words(output);
            ASSERT_GE(expected.size(), 80 * coding.frames.size());
            coding.expectSamples(expected, fates);
        }
        run += !input.empty() || !output.empty();
    }
    EXPECT_GT(run, 0) << "no sequence found in " << folder;
}

TEST(VoiceG729, RecordedCodings) {
    expectCodings("g729", "codec-main", "codec-pcm", false, false);
    expectCodings("g729", "codec-b", "codec-pcm", true, false);
}

TEST(VoiceG729, RecordedCodingsOfTheFastCoder) {
    expectCodings("g729a", "codec-a", "codec-pcm", false, false);
    expectCodings("g729a", "codec-ba", "codec-pcm", true, false);
}

TEST(VoiceG729, RecordedCodingsAtOtherRates) {
    expectCodings("g729d", "codec-d", "codec-pcm", false, true);
    expectCodings("g729d", "codec-d3", "codec-pcm", false, true);
    expectCodings("g729e", "codec-e", "codec-pcme", false, true);
    expectCodings("g729i", "codec-i", "codec-pcme", false, false);
}

}  // namespace vsp::test
