// G.722.1 and Annex C in frames: recorded codings with and without errors, corrupt frames, the ITU-T's sequences.
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "support/vector_case.h"
#include "voice/coder.h"

namespace vsp::test {

namespace {

// Words of frames as octets, the top first.
Octets octetsOf(const Samples& words) {
    Octets octets;
    for (const Vsp16s word : words) octets.insert(octets.end(), {Vsp8u(word >> 8), Vsp8u(word)});
    return octets;
}

// Frames of so many bits; a frame is lost where the map has another number than 0.
Samples decodedFrames(const VspvCodec& codec, Vsp32s bits, const Octets& octets, const Octets& lost) {
    Decoder decoder(codec);
    Samples all;
    const auto size = std::size_t(bits) / 8;
    for (std::size_t i = 0; i < octets.size() / size; i++) {
        const auto begin = octets.begin() + std::ptrdiff_t(i * size);
        const Samples samples = i < lost.size() && lost[i] != 0
                                    ? decoder.lost()
                                    : decoder.frame(Octets(begin, begin + std::ptrdiff_t(size)),
                                                    {vspvFrameSpeech, vspvQualityGood, 50 * bits, Vsp32s(size)});
        all.insert(all.end(), samples.begin(), samples.end());
    }
    return all;
}

Octets encodedFrames(const VspvCodec& codec, Vsp32s bits, const Samples& samples) {
    Encoder encoder(codec);
    EXPECT_EQ(vspStsNoErr, vspvEncoderSetRate(encoder.get(), 50 * bits));
    return encoder(samples);
}

}  // namespace

TEST(VoiceG7221, RecordedCodings) {
    const auto cases = readItemCases("g7221/codec.vec");
    ASSERT_FALSE(cases.empty());
    for (std::size_t i = 0; i < cases.size(); i++) {
        const std::vector<Item>& items = cases[i];
        const auto head = items[0].values<Vsp32s>();
        SCOPED_TRACE("case " + std::to_string(i) + ", " + std::to_string(head[0]) + " bits");
        const VspvCodec& codec = codecNamed(head[1] != 0 ? "g7221c" : "g7221");
        const Octets coded = octetsOf(items[2].values<Vsp16s>());
        EXPECT_EQ(coded, encodedFrames(codec, head[0], items[1].values<Vsp16s>()));
        EXPECT_EQ(items[3].values<Vsp16s>(), decodedFrames(codec, head[0], coded, {}));
        EXPECT_EQ(items[6].values<Vsp16s>(),
                  decodedFrames(codec, head[0], octetsOf(items[5].values<Vsp16s>()), items[4].values<Vsp8u>()));
    }
}

// Frames of any bits are decoded, or concealed where they are found to be corrupt; lost ones fade to the transform's bias.
TEST(VoiceG7221, FramesOfAnyBits) {
    for (const char* name : {"g7221", "g7221c"}) {
        const VspvCodec& codec = codecNamed(name);
        Decoder decoder(codec);
        Vsp32u random = 1;
        for (int i = 0; i < 3000; i++) {
            const Vsp32s rate = codec.pBitRates[i % codec.numBitRates];
            Octets octets(std::size_t(speechBytes(codec, rate)));
            for (Vsp8u& octet : octets) {
                random = random * 1664525 + 1013904223;
                octet = i % 7 == 0 ? 0xFF : i % 7 == 1 ? 0 : Vsp8u(random >> 24);
            }
            decoder.frame(octets, {vspvFrameSpeech, vspvQualityGood, rate, Vsp32s(octets.size())});
        }
        for (int i = 0; i < 3; i++) decoder.lost();
        for (const Vsp16s x : decoder.lost()) ASSERT_LE(std::abs(x), 40);
    }
}

// The ITU-T's own sequences, which may not be passed on: anywhere below the folder that VSPSC_ITU_G7221 names, streams in
// the serial format, NAME.bit or NAME.g192, and NAME.pcm or NAME.out with what is decoded, all little-endian, in folders or
// files that have 24, 32 or 48 kbit/s by the number of bits, and 14 kHz by "14k" or "annexc" in the path. The two lowest
// bits of the samples are 0 there.
TEST(VoiceG7221, SequencesOfTheItu) {
    namespace fs = std::filesystem;
    const char* folder = std::getenv("VSPSC_ITU_G7221");
    if (folder == nullptr) GTEST_SKIP() << "VSPSC_ITU_G7221 names no folder with the ITU's sequences";
    const auto lower = [](std::string text) {
        for (char& c : text) c = char(std::tolower(static_cast<unsigned char>(c)));
        return text;
    };
    const auto words = [](const fs::path& file) {
        std::ifstream in(file, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(in), {}};
        Samples samples(bytes.size() / 2);
        std::memcpy(samples.data(), bytes.data(), 2 * samples.size());
        return samples;
    };
    int run = 0;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const std::string extension = lower(entry.path().extension());
        if (extension != ".bit" && extension != ".g192") continue;
        const std::string path = lower(entry.path());
        const bool wide = path.find("14k") != std::string::npos || path.find("annexc") != std::string::npos;
        const Samples serial = words(entry.path());
        if (serial.size() < 2) continue;
        SCOPED_TRACE(entry.path().string());
        const Vsp32s bits = serial[1];
        Octets octets, lost;
        for (std::size_t i = 0; i + 2 + std::size_t(bits) <= serial.size(); i += 2 + std::size_t(bits)) {
            bool erased = serial[i] != 0x6B21;
            octets.resize(octets.size() + std::size_t(bits) / 8);
            for (std::size_t b = 0; b < std::size_t(bits); b++) {
                const Vsp16s word = serial[i + 2 + b];
                erased = erased || (word != 0x7F && word != 0x81);
                if (word == 0x81) octets[octets.size() - std::size_t(bits) / 8 + b / 8] |= Vsp8u(0x80 >> b % 8);
            }
            lost.push_back(erased);
        }
        for (const char* decoded : {".pcm", ".out"}) {
            fs::path file = entry.path();
            if (!fs::exists(file.replace_extension(decoded))) continue;
            Samples samples = decodedFrames(codecNamed(wide ? "g7221c" : "g7221"), bits, octets, lost);
            for (Vsp16s& x : samples) x = Vsp16s(x & ~3);
            EXPECT_EQ(words(file), samples);
            run++;
        }
    }
    EXPECT_GT(run, 0);
}

}  // namespace vsp::test
