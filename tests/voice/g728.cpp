// G.728 in frames of four vectors: recorded codings of the standard's fixed-point arithmetic, lost frames, the post-filter
// as an option, the ITU-T's sequences.
#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>

#include "support/status_order.h"
#include "support/vector_case.h"
#include "voice/coder.h"

namespace vsp::test {

namespace {

const VspvCodec& g728() { return codecNamed("g728"); }

// Whole frames of four, ten bits each, the highest first.
Octets packed(const Samples& indices) {
    Octets octets(indices.size() / 4 * 5);
    for (std::size_t bit = 0; bit < 8 * octets.size(); bit++)
        octets[bit / 8] |= Vsp8u((indices[bit / 10] >> (9 - bit % 10) & 1) << (7 - bit % 8));
    return octets;
}

Samples unfiltered(const Octets& coded) {
    Decoder decoder(g728());
    EXPECT_EQ(vspStsNoErr, vspvG728SetPostFilter(decoder.get(), 0));
    return decoder(coded);
}

}  // namespace

TEST(VoiceG728, RecordedCodings) {
    const std::size_t samples = std::size_t(g728().frameSamples), octets = std::size_t(g728().maxFrameBytes);
    const auto cases = readItemCases("g728/codec.vec");
    ASSERT_FALSE(cases.empty());
    for (const auto& items : cases) {
        const Octets coded = packed(items[1].values<Vsp16s>());
        EXPECT_EQ(coded, Encoder(g728())(items[0].values<Vsp16s>()));
        EXPECT_EQ(items[2].values<Vsp16s>(), unfiltered(coded));
        EXPECT_EQ(items[3].values<Vsp16s>(), Decoder(g728())(coded));
        // A mark is for so many frames.
        const Octets lost = items[4].values<Vsp8u>();
        const auto frames = std::size_t(items[5].values<Vsp32s>()[0]);
        Decoder decoder(g728());
        Samples heard;
        for (std::size_t i = 0; i * octets < coded.size(); i++) {
            const Octets frame(&coded[octets * i], &coded[octets * i] + octets);
            const Samples part = lost.at(i / frames) != 0 ? decoder.lost() : decoder.frame(frame, goodFrame(g728()));
            heard.insert(heard.end(), part.begin(), part.end());
        }
        EXPECT_EQ(items[6].values<Vsp16s>(), heard);
        EXPECT_EQ(samples * coded.size() / octets, heard.size());
    }
}

TEST(VoiceG728, PostFilterIsAnOptionOfItsDecoder) {
    Decoder decoder(g728()), otherDecoder(codecNamed("gsm"));
    expectStatusOrder(
        vspvG728SetPostFilter, {vspStsNullPtrErr, vspStsBadArgErr, vspStsRangeErr},
        Choices<VspvDecoder*>{decoder.get(), {{nullptr, vspStsNullPtrErr}, {otherDecoder.get(), vspStsBadArgErr}}},
        Choices<Vsp32s>{0, {{2, vspStsRangeErr}, {-1, vspStsRangeErr}}});

    // The filter does not change what is decoded next, and a loss sounds on without it.
    const auto items = readItemCases("g728/codec.vec").at(0);
    const Octets coded = packed(items[1].values<Vsp16s>());
    const Samples without = items[2].values<Vsp16s>(), with = items[3].values<Vsp16s>();
    const auto frame = [&](std::size_t i) { return Octets(&coded[5 * i], &coded[5 * i] + 5); };
    const auto part = [&](const Samples& x, std::size_t i) { return Samples(&x[20 * i], &x[20 * i] + 20); };
    for (std::size_t i = 0; i < coded.size() / 5; i++) {
        const bool on = i / 50 % 2 == 0;
        ASSERT_EQ(vspStsNoErr, vspvG728SetPostFilter(decoder.get(), on));
        const Samples heard = decoder.frame(frame(i), goodFrame(g728()));
        if (!on || i < 50) {
            ASSERT_EQ(part(on ? with : without, i), heard) << "frame " << i;
        }
    }
    Decoder losing(g728());
    ASSERT_EQ(vspStsNoErr, vspvG728SetPostFilter(losing.get(), 0));
    const auto loud = std::size_t(std::max_element(without.begin(), without.end()) - without.begin()) / 20;
    for (std::size_t i = 0; i <= loud; i++) losing.frame(frame(i), goodFrame(g728()));
    const Samples concealed = losing.lost();
    EXPECT_GT(*std::max_element(concealed.begin(), concealed.end()), *std::max_element(without.begin(), without.end()) / 4);
}

// The ITU-T's own sequences, which may not be passed on: anywhere below the folder that VSPSC_ITU_G728 names, those of
// Appendix I for fixed point, by number: the inputs INn, the codewords INCWn or CWn, what is decoded of them OUTAn without
// and OUTBn with the post-filter, each with the G of fixed point behind the number (IN may be without), in any case and
// with any extension. Files of a number are in one folder. Samples and codewords are words of 16 bits; their order of
// octets is the one that gives codewords below 1024. These names are from memory and not tried on the ITU-T's files.
TEST(VoiceG728, SequencesOfTheItu) {
    namespace fs = std::filesystem;
    const char* folder = std::getenv("VSPSC_ITU_G728");
    if (folder == nullptr) GTEST_SKIP() << "VSPSC_ITU_G728 names no folder with the ITU's sequences";
    static const std::regex kName("(in|incw|cw|outa|outb)([0-9]+)(g?)([.].*)?", std::regex::icase);
    std::map<std::pair<fs::path, int>, std::map<std::string, fs::path>> sets;  // the files of a number by what they are
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        std::smatch parts;
        const std::string name = entry.path().filename();
        if (!std::regex_match(name, parts, kName)) continue;
        std::string what = parts[1];
        std::transform(what.begin(), what.end(), what.begin(), [](unsigned char c) { return std::tolower(c); });
        const bool fixed = parts[3].length() > 0;
        if (!fixed && what != "in") continue;
        fs::path& file = sets[{entry.path().parent_path(), std::stoi(parts[2])}][what == "incw" ? "cw" : what];
        if (file.empty() || fixed) file = entry.path();
    }
    int run = 0;
    for (auto& set : sets) {
        auto& files = set.second;
        if (files.count("cw") == 0) continue;
        SCOPED_TRACE(files["cw"].string());
        bool highFirst = false;
        const auto words = [&](const fs::path& file) {
            std::ifstream in(file, std::ios::binary);
            const Octets octets{std::istreambuf_iterator<char>(in), {}};
            Samples samples(octets.size() / 2);
            for (std::size_t i = 0; i < samples.size(); i++)
                samples[i] = Vsp16s(octets[2 * i + highFirst] | octets[2 * i + !highFirst] << 8);
            return samples;
        };
        const auto areIndices = [](const Samples& x) {
            return std::all_of(x.begin(), x.end(), [](Vsp16s index) { return index >= 0 && index < 1024; });
        };
        Samples indices = words(files["cw"]);
        if (!areIndices(indices)) {
            highFirst = true;
            indices = words(files["cw"]);
        }
        ASSERT_TRUE(areIndices(indices));
        const Octets coded = packed(indices);
        const std::size_t whole = coded.size() / 5 * 20;
        const auto expected = [&](const char* what) {
            Samples samples = words(files[what]);
            EXPECT_GE(samples.size(), whole) << files[what];
            samples.resize(whole);
            run++;
            return samples;
        };
        const auto there = [&](const char* what) { return files.count(what) != 0; };
        EXPECT_TRUE(!there("in") || coded == Encoder(g728())(expected("in")));
        EXPECT_TRUE(!there("outa") || unfiltered(coded) == expected("outa"));
        EXPECT_TRUE(!there("outb") || Decoder(g728())(coded) == expected("outb"));
    }
    EXPECT_GT(run, 0) << "no sequence found in " << folder;
}

}  // namespace vsp::test
