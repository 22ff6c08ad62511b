// The speech detector of the voice layer against encoders of the standards.
#include <algorithm>
#include <cmath>

#include "support/samples.h"
#include "support/speech.h"
#include "support/status_order.h"
#include "support/vector_case.h"
#include "voice/coder.h"
#include "voice/object.h"

namespace vsp::test {

namespace {

using Detector = VoiceObject<VspvSpeechDetector>;
using Decisions = std::vector<VspvSpeechDecision>;

constexpr Vsp32s kOptions[] = {1, 2, vspvSpeechWide};

constexpr std::size_t frameOf(Vsp32s option) { return option == vspvSpeechWide ? vspvSpeechFrameWide : vspvSpeechFrame; }

// On an object that moves after every call.
Decisions decide(Vsp32s option, std::span<const Vsp16s> samples, std::size_t longestBlock) {
    Detector one(0, vspvSpeechDetectorGetSize, option), two(1, vspvSpeechDetectorGetSize, option);
    EXPECT_EQ(vspStsNoErr, vspvSpeechDetectorInit(one.get(), option));
    const std::size_t kFrame = frameOf(option);
    Detector *current = &one, *next = &two;
    Decisions all;
    inBlocks(samples, longestBlock, 1, [&](std::span<const Vsp16s> block) {
        const Guarded<Vsp16s> guarded(Samples(block.begin(), block.end()));
        Guarded<VspvSpeechDecision> decisions((block.size() + kFrame - 1) / kFrame);
        Vsp32s count = -1;
        ASSERT_EQ(vspStsNoErr, vspvSpeechDetectorProcess(current->get(), guarded.data(), Vsp32s(block.size()),
                                                         decisions.data(), &count));
        all.insert(all.end(), decisions.begin(), decisions.begin() + count);
        current->moveTo(*next);
        std::swap(current, next);
    });
    VspvSpeechDecision last;
    Vsp32s count = -1;
    EXPECT_EQ(vspStsNoErr, vspvSpeechDetectorFinish(current->get(), &last, &count));
    EXPECT_EQ(samples.size() % kFrame != 0, count);
    if (count == 1) all.push_back(last);
    return all;
}

// Which frames an encoder sends as speech (3GPP TS 26.093 5.1.1).
std::vector<bool> sentAsSpeech(const Decisions& decisions) {
    std::vector<bool> sent;
    int hangover = 7, elapsed = 1000;  // frames
    for (const VspvSpeechDecision& d : decisions) {
        elapsed++;
        bool speech = true;
        if (d.speech == 1) {
            hangover = 7;
        } else if (hangover == 0) {
            elapsed = 0;
            speech = false;
        } else {
            hangover--;
            speech = elapsed + hangover >= 30;
        }
        sent.push_back(speech);
    }
    return sent;
}

// Of frames in RFC 4867 storage form.
std::vector<bool> speechFrames(const Octets& stream) {
    constexpr int kOctets[16] = {12, 13, 15, 17, 19, 20, 26, 31, 5};
    std::vector<bool> speech;
    for (std::size_t i = 0; i < stream.size(); i += std::size_t(1 + kOctets[stream[i] >> 3 & 15]))
        speech.push_back((stream[i] >> 3 & 15) < 8);
    return speech;
}

// What AMR-WB's detector decided: it is the first bit of a frame of speech. In the same form, behind its first octets.
std::vector<bool> detectedFrames(const Octets& stream, std::size_t begin) {
    constexpr int kOctets[16] = {17, 23, 32, 36, 40, 46, 50, 58, 60, 5};
    std::vector<bool> speech;
    for (std::size_t i = begin; i < stream.size(); i += std::size_t(1 + kOctets[stream[i] >> 3 & 15]))
        speech.push_back((stream[i] >> 3 & 15) < 9 && (stream[i + 1] & 0x80) != 0);
    return speech;
}

std::vector<bool> flags(const Decisions& decisions) {
    std::vector<bool> speech;
    for (const VspvSpeechDecision& d : decisions) speech.push_back(d.speech == 1);
    return speech;
}

}  // namespace

TEST(VoiceSpeechDetector, DecidesAsEncodersOfTheStandard) {
    const auto signals = readItemCases("gsmamr/codec-pcm.vec");
    int pauses = 0, recordings = 0;
    for (const auto& items : readItemCases("gsmamr/codec.vec")) {
        const auto settings = items.at(0).values<Vsp32s>();
        const Vsp32s rate = settings.at(1), option = settings.at(2);
        if (option == 0 || (rate != 3 && rate != 6 && rate != 7 && rate != 8)) continue;
        SCOPED_TRACE("signal " + std::to_string(settings[0]) + ", rate " + std::to_string(rate));
        const Samples samples = signals.at(std::size_t(settings[0])).at(0).values<Vsp16s>();
        const std::vector<bool> expected = speechFrames(items.at(2).values<Vsp8u>());
        EXPECT_EQ(expected, sentAsSpeech(decide(option, samples, 1000)));
        pauses += int(std::count(expected.begin(), expected.end(), false));
        recordings++;
    }
    EXPECT_GE(recordings, 20);
    EXPECT_GE(pauses, 500);
}

TEST(VoiceSpeechDetector, DecidesAsEncodersOfTheWideBandStandard) {
    const auto signals = readItemCases("amrwb/codec-pcm.vec");
    int pauses = 0, speech = 0, recordings = 0;
    for (const auto& items : readItemCases("amrwb/codec.vec")) {
        const auto modes = items.at(1).values<Vsp8u>();
        if (std::count(modes.begin(), modes.end(), 0) != 0) continue;  // searches once a frame
        const Vsp32s signal = items.at(0).values<Vsp32s>().at(0);
        SCOPED_TRACE("signal " + std::to_string(signal) + ", mode " + std::to_string(modes.at(0)));
        const auto expected = detectedFrames(items.at(3).values<Vsp8u>(), sizeof "#!AMR-WB");
        const Samples samples = signals.at(std::size_t(signal)).at(0).values<Vsp16s>();
        EXPECT_EQ(expected, flags(decide(vspvSpeechWide, samples, 1000)));
        const auto count = std::count(expected.begin(), expected.end(), true);
        speech += int(count);
        pauses += int(std::ssize(expected) - count);
        recordings++;
    }
    EXPECT_GE(recordings, 10);
    EXPECT_GE(pauses, 150);
    EXPECT_GE(speech, 500);
}

// A frame that resets an encoder resets the detector, and a tone that comes and goes is not learned as noise: this hears
// the open-loop search.
TEST(VoiceSpeechDetector, ComesHomeAndHearsTonesAsAWideBandEncoder) {
    Samples samples = recordedSpeech();
    samples.resize(vspvSpeechFrameWide * 80);
    for (const std::size_t frame : {std::size_t(30), std::size_t(31), std::size_t(55)})
        std::fill_n(&samples[frame * vspvSpeechFrameWide], std::size_t(vspvSpeechFrameWide), Vsp16s(8));
    std::mt19937 random(1);
    for (int i = 0; i < vspvSpeechFrameWide * 400; i++) {
        const double loudness = 2000 * (1 + std::sin(i / 9000.0)), noise = double(random() % 1601) - 800;
        samples.push_back(Vsp16s(loudness * std::sin(0.1 * i) + noise));
    }
    Encoder encoder(codecNamed("amrwb"));
    EXPECT_EQ(vspStsNoErr, vspvEncoderSetRate(encoder.get(), 8850));
    std::vector<bool> expected;
    for (std::size_t i = 0; i < samples.size(); i += vspvSpeechFrameWide)
        expected.push_back((encoder(Samples(&samples[i], &samples[i] + vspvSpeechFrameWide)).at(0) & 0x80) != 0);
    EXPECT_EQ(expected, flags(decide(vspvSpeechWide, samples, 1000)));
}

TEST(VoiceSpeechDetector, BlocksOfAnyLengthGiveTheSame) {
    const auto same = [](const VspvSpeechDecision& a, const VspvSpeechDecision& b) {
        const auto equal = [](Vsp64f x, Vsp64f y) { return x == y || (std::isnan(x) && std::isnan(y)); };
        return a.speech == b.speech && a.reserved == b.reserved && a.power == b.power && equal(a.snr, b.snr) &&
               equal(a.reference, b.reference);
    };
    Samples speech = recordedSpeech();
    speech.resize(48077);
    for (const Vsp32s option : kOptions) {
        const std::size_t kFrame = frameOf(option);
        for (const std::size_t count : {std::size_t(0), std::size_t(1), kFrame, speech.size()}) {
            const auto samples = std::span(speech).first(count);
            const Decisions whole = decide(option, samples, 100000);
            EXPECT_EQ((count + kFrame - 1) / kFrame, whole.size());
            for (const std::size_t longest : {1, 13, 159, 3000}) {
                const Decisions parts = decide(option, samples, longest);
                EXPECT_TRUE(std::equal(whole.begin(), whole.end(), parts.begin(), parts.end(), same)) << longest;
            }
            for (std::size_t i = 0; i < whole.size(); i++) {
                const auto frame = samples.subspan(i * kFrame, std::min(kFrame, count - i * kFrame));
                double energy = 0;
                for (const Vsp16s x : frame) energy += double(x) * x;
                EXPECT_EQ(energy / double(frame.size()), whole[i].power);
                EXPECT_EQ(option == vspvSpeechWide, std::isnan(whole[i].snr) && std::isnan(whole[i].reference));
            }
        }
        for (const Vsp16s constant : {Vsp16s(0), Vsp16s(-32768)}) {
            const Decisions decisions = decide(option, Samples(16000, constant), 160);
            EXPECT_EQ(0, decisions.back().speech);
            EXPECT_EQ(double(constant) * constant, decisions.back().power);
        }
    }
}

TEST(VoiceSpeechDetector, ChecksComeInOrderAndTouchNothing) {
    const std::vector<VspStatus> order{vspStsNullPtrErr, vspStsBadArgErr};
    const Choices<Vsp32s> options{2, {{0, vspStsBadArgErr}, {4, vspStsBadArgErr}, {kLowest, vspStsBadArgErr}}};
    expectStatusOrder(vspvSpeechDetectorGetSize, order, options, pointer);
    expectStatusOrder(vspvSpeechDetectorInit, order, pointer, options);
    expectStatusOrder(vspvSpeechDetectorProcess, {vspStsNullPtrErr, vspStsSizeErr}, pointer, pointer, length, pointer,
                      pointer);
    expectStatusOrder(vspvSpeechDetectorFinish, order, pointer, pointer, pointer);
}

}  // namespace vsp::test
