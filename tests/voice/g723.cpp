// G.723.1: recorded codings of the reference at both rates, with pauses and erased frames, and frames that are damaged.
#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "support/speech.h"
#include "support/status_order.h"
#include "support/vector_case.h"
#include "voice/coder.h"

namespace vsp::test {

namespace {

const VspvCodec& g723() { return codecNamed("g723"); }

VspvFrame told(const Octets& frame) {
    VspvFrame f{};
    EXPECT_EQ(vspStsNoErr, vspvG723Frame(frame.at(0), &f));
    return f;
}

std::vector<Octets> framesOf(const Octets& stream) {
    std::vector<Octets> frames;
    for (auto next = stream.begin(); next != stream.end();) {
        const auto bytes = std::min(std::ptrdiff_t(told({*next}).numBytes), stream.end() - next);
        frames.emplace_back(next, next + bytes);
        next += bytes;
    }
    return frames;
}

// The number of the first frame that differs, or -1. The rates are those of the frames.
std::ptrdiff_t firstOtherFrame(const Samples& pcm, const std::vector<Octets>& frames, bool dtx, bool highPass) {
    Encoder encoder(g723());
    EXPECT_EQ(vspStsNoErr, vspvEncoderSetDTX(encoder.get(), dtx));
    EXPECT_EQ(vspStsNoErr, vspvG723SetHighPass(encoder.get(), highPass));
    for (std::size_t i = 0; i < frames.size(); i++) {
        EXPECT_EQ(vspStsNoErr, vspvEncoderSetRate(encoder.get(), told(frames[i]).bitRate));
        Octets coded = encoder(Samples(&pcm[240 * i], &pcm[240 * i] + 240));
        if (coded.empty()) coded = {3};
        if (coded != frames[i]) return std::ptrdiff_t(i);
    }
    return -1;
}

// The same of the samples.
std::ptrdiff_t firstOtherSamples(const std::vector<Octets>& frames, const std::vector<bool>& erased,
                                 const Samples& expected, bool postFilter) {
    Decoder decoder(g723());
    EXPECT_EQ(vspStsNoErr, vspvG723SetPostFilter(decoder.get(), postFilter));
    for (std::size_t i = 0; i < frames.size(); i++) {
        VspvFrame frame = told(frames[i]);
        if (erased[i]) frame.quality = i % 2 == 0 ? vspvQualityLost : vspvQualityBad;
        if (decoder.frame(frames[i], frame) != Samples(&expected[240 * i], &expected[240 * i] + 240))
            return std::ptrdiff_t(i);
    }
    return -1;
}

std::vector<bool> flags(const Octets& octets) { return {octets.begin(), octets.end()}; }

}  // namespace

TEST(VoiceG723, RecordedCodings) {
    constexpr std::size_t kClips = 8;
    const auto cases = readItemCases("g723/codec.vec");
    ASSERT_GT(cases.size(), kClips);
    for (std::size_t number = kClips; number < cases.size(); number++) {
        SCOPED_TRACE("case " + std::to_string(number));
        const auto& items = cases[number];
        const auto settings = items[0].values<Vsp32s>();  // clip, DTX, high-pass, post-filter
        const auto frames = framesOf(items[3].values<Vsp8u>());
        const auto rates = items[1].values<Vsp8u>();
        ASSERT_EQ(rates.size(), frames.size());
        for (std::size_t i = 0; i < frames.size(); i++) {
            const VspvFrame frame = told(frames[i]);
            ASSERT_TRUE(frame.type != vspvFrameSpeech || frame.bitRate == (rates[i] == 4 ? 6300 : 5300)) << "frame " << i;
        }
        const Samples pcm = cases[std::size_t(settings[0])][0].values<Vsp16s>();
        EXPECT_EQ(-1, firstOtherFrame(pcm, frames, settings[1] != 0, settings[2] != 0));
        EXPECT_EQ(-1,
                  firstOtherSamples(frames, flags(items[2].values<Vsp8u>()), items[4].values<Vsp16s>(), settings[3] != 0));
    }
}

TEST(VoiceG723, RecordedDecodingsOfDamagedFrames) {
    for (const auto& items : readItemCases("g723/decoder.vec"))
        EXPECT_EQ(-1, firstOtherSamples(framesOf(items[1].values<Vsp8u>()), flags(items[2].values<Vsp8u>()),
                                        items[3].values<Vsp16s>(), items[0].values<Vsp32s>()[0] != 0));
}

TEST(VoiceG723, PausesAreDescribedAndThenNotSent) {
    Samples pcm = recordedSpeech();
    pcm.resize(240 * 60);
    std::fill(pcm.begin() + 240 * 30, pcm.end(), Vsp16s(0));
    Encoder encoder(g723());
    ASSERT_EQ(vspStsNoErr, vspvEncoderSetDTX(encoder.get(), 1));
    Vsp32s counts[4] = {}, last = vspvFrameSpeech;
    for (std::size_t i = 0; i < 60; i++) {
        Octets bytes(24);
        VspvFrame frame{};
        ASSERT_EQ(vspStsNoErr, vspvEncode(encoder.get(), &pcm[240 * i], bytes.data(), &frame));
        ASSERT_EQ(frame.type == vspvFrameSIDFirst, last == vspvFrameSpeech && frame.type != vspvFrameSpeech);
        ASSERT_EQ(frame.type == vspvFrameSpeech ? 24 : frame.type == vspvFrameNoData ? 0 : 4, frame.numBytes);
        counts[frame.type]++;
        last = frame.type;
    }
    EXPECT_GT(counts[vspvFrameSpeech], 20);
    EXPECT_GT(counts[vspvFrameSIDFirst], 0);
    EXPECT_GT(counts[vspvFrameNoData], 10);
}

// A frame without data may be the octet 3 or nothing; octets of another kind than is told are none of the codec's.
TEST(VoiceG723, KindsOfFrames) {
    const Vsp32s bytes[] = {24, 20, 4, 1};
    for (Vsp8u first = 0; first < 8; first++) EXPECT_EQ(bytes[first % 4], told({first}).numBytes);
    EXPECT_EQ(vspStsNullPtrErr, vspvG723Frame(0, nullptr));

    Octets stream = Encoder(g723())(recordedSpeech());
    stream.resize(24 * 8);
    Decoder one(g723()), other(g723());
    one(stream);
    other(stream);
    const Samples pause = one.frame({3}, {vspvFrameNoData, vspvQualityGood, 6300, 1});
    EXPECT_EQ(pause, other.frame({}, {vspvFrameNoData, vspvQualityGood, 5300, 0}));

    const std::vector<Vsp64s> before = one.memory().values();
    Samples samples(240);
    for (const auto& [type, bitRate, numBytes, kind] : std::vector<std::array<Vsp32s, 4>>{{vspvFrameSpeech, 6300, 24, 0},
                                                                                          {vspvFrameSpeech, 5300, 20, 1},
                                                                                          {vspvFrameSIDFirst, 5300, 4, 2},
                                                                                          {vspvFrameSIDUpdate, 6300, 4, 2}})
        for (Vsp8u first = 0; first < 4; first++) {
            if (first == kind) continue;
            const Octets octets(24, first);
            const VspvFrame frame{type, vspvQualityGood, bitRate, numBytes};
            EXPECT_EQ(vspStsCodeRangeErr, vspvDecode(one.get(), octets.data(), &frame, samples.data()));
        }
    EXPECT_EQ(before, one.memory().values());
}

TEST(VoiceG723, FiltersAreOptionsOfThisCodecOnly) {
    Encoder encoder(g723()), otherEncoder(codecNamed("gsm"));
    Decoder decoder(g723()), otherDecoder(codecNamed("gsm"));
    const std::vector<VspStatus> order{vspStsNullPtrErr, vspStsBadArgErr, vspStsRangeErr};
    const Choices<Vsp32s> on{0, {{2, vspStsRangeErr}, {-1, vspStsRangeErr}}};
    expectStatusOrder(
        vspvG723SetHighPass, order,
        Choices<VspvEncoder*>{encoder.get(), {{nullptr, vspStsNullPtrErr}, {otherEncoder.get(), vspStsBadArgErr}}}, on);
    expectStatusOrder(
        vspvG723SetPostFilter, order,
        Choices<VspvDecoder*>{decoder.get(), {{nullptr, vspStsNullPtrErr}, {otherDecoder.get(), vspStsBadArgErr}}}, on);
}

// The ITU-T's own sequences, which may not be passed on: below the folder that VSPSC_ITU_G723 names, streams of frames
// NAME.tco or NAME.rco with the input NAME.tin, the output NAME.rou and erasures NAME.crc, as far as they are there. The
// files do not say which filters and whether Annex A are meant to be on; one choice must give them all.
TEST(VoiceG723, SequencesOfTheItu) {
    namespace fs = std::filesystem;
    const char* folder = std::getenv("VSPSC_ITU_G723");
    if (folder == nullptr) GTEST_SKIP() << "VSPSC_ITU_G723 names no folder with the ITU's sequences";
    const auto lower = [](std::string name) {
        std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
        return name;
    };
    const auto octetsOf = [](const fs::path& file) {
        std::ifstream in(file, std::ios::binary);
        return Octets{std::istreambuf_iterator<char>(in), {}};
    };
    const auto samplesOf = [&](const fs::path& file) {
        const Octets octets = octetsOf(file);
        Samples samples(octets.size() / 2);
        std::memcpy(samples.data(), octets.data(), 2 * samples.size());
        return samples;
    };
    int run = 0;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const std::string extension = lower(entry.path().extension());
        if (extension != ".tco" && extension != ".rco") continue;
        SCOPED_TRACE(entry.path().string());
        const auto frames = framesOf(octetsOf(entry.path()));
        std::vector<bool> erased(frames.size());
        Samples input, output;
        for (const auto& other : fs::directory_iterator(entry.path().parent_path())) {
            const std::string name = lower(other.path().filename()), stem = lower(entry.path().stem());
            if (name == stem + ".tin") input = samplesOf(other);
            if (name == stem + ".rou" || name == stem + ".out") output = samplesOf(other);
            if (name != stem + ".crc") continue;
            const Octets octets = octetsOf(other);
            const std::size_t width = octets.size() / frames.size();
            ASSERT_GE(octets.size(), frames.size());
            for (std::size_t i = 0; i < frames.size(); i++) erased[i] = octets[width * i] != 0;
        }
        if (input.size() >= 240 * frames.size()) {
            const bool some = std::any_of(frames.begin(), frames.end(), [](const Octets& f) { return f.size() < 20; });
            std::ptrdiff_t best = 0;
            for (const bool highPass : {true, false}) {
                const std::ptrdiff_t first = firstOtherFrame(input, frames, some, highPass);
                best = best < 0 || first < 0 ? -1 : std::max(best, first);
            }
            EXPECT_EQ(-1, best) << "the first frame that is coded otherwise";
            run++;
        }
        if (output.size() >= 240 * frames.size()) {
            std::ptrdiff_t best = 0;
            for (const bool postFilter : {true, false}) {
                const std::ptrdiff_t first = firstOtherSamples(frames, erased, output, postFilter);
                best = best < 0 || first < 0 ? -1 : std::max(best, first);
            }
            EXPECT_EQ(-1, best) << "the first frame that is decoded otherwise";
            run++;
        }
    }
    EXPECT_GT(run, 0) << "no sequence found in " << folder;
}

}  // namespace vsp::test
