// What is heard in place of lost frames.
#include <cmath>
#include <numeric>

#include "support/samples.h"
#include "support/speech.h"
#include "voice/coder.h"

namespace vsp::test {

namespace {

double energy(const Samples& x) {
    return std::accumulate(x.begin(), x.end(), 0.0, [](double sum, double v) { return sum + v * v; });
}

int largestStep(const Samples& x) {
    int largest = 0;
    for (std::size_t i = 1; i < x.size(); i++) largest = std::max(largest, std::abs(x[i] - x[i - 1]));
    return largest;
}

// A voiced sound: harmonics of a pitch in samples.
Samples voiced(std::size_t n, double period) {
    Samples x(n);
    for (std::size_t i = 0; i < n; i++) {
        double sum = 0;
        for (int h = 1; h <= 5; h++) sum += std::cos(6.283185307 * h * double(i) / period) / h;
        x[i] = Vsp16s(std::lround(4000 * sum));
    }
    return x;
}

}  // namespace

class VoiceConcealment : public ::testing::TestWithParam<const char*> {
  protected:
    const VspvCodec& codec = codecNamed(GetParam());
    const std::ptrdiff_t frameBytes = codec.maxFrameBytes, frameSamples = codec.frameSamples;

    Octets frame(const Octets& coded, std::ptrdiff_t n) const {
        return {coded.begin() + n * frameBytes, coded.begin() + (n + 1) * frameBytes};
    }
};

TEST_P(VoiceConcealment, SilenceStaysSilentAndALongLossBecomesSo) {
    Decoder decoder(codec);
    const double quiet = 40.0 * 40 * double(frameSamples);  // -58 dB of full scale; coders hum at rest
    for (int i = 0; i < 3; i++) EXPECT_LE(energy(decoder.lost()), quiet);
    decoder(Encoder(codec)(recordedSpeech()));
    for (int i = 0; i < 100; i++) decoder.lost();
    EXPECT_LE(energy(decoder.lost()), quiet);
}

TEST_P(VoiceConcealment, BadFramesAreNotHeard) {
    const Octets coded = Encoder(codec)(recordedSpeech());
    Decoder one(codec), other(codec);
    one(coded);
    other(coded);
    VspvFrame bad = goodFrame(codec);
    bad.quality = vspvQualityBad;
    EXPECT_EQ(one.lost(), other.frame(samples<Vsp8u>(std::size_t(frameBytes)), bad));
}

INSTANTIATE_TEST_SUITE_P(, VoiceConcealment,
                         ::testing::Values("pcma", "pcmu", "g722", "gsm", "g726-16", "g726-40", "aal2-g726-32"),
                         [](const auto& test) {
                             std::string name = test.param;
                             std::erase(name, '-');
                             return name;
                         });

// The codecs at 8 kHz that repeat the period.
class VoicePeriodRepetition : public VoiceConcealment {};

TEST_P(VoicePeriodRepetition, AVoicedSoundGoesOnAndIsTakenUpAgainWithoutAClick) {
    for (const double period : {35.0, 57.0, 80.0, 133.0}) {
        SCOPED_TRACE(period);
        const Samples x = voiced(160 * 40, period);
        const Octets coded = Encoder(codec)(x);
        Decoder whole(codec), lossy(codec);
        const Samples expected = whole(coded);
        Samples heard;
        for (int i = 0; i < 40; i++) {
            const Samples samples = i == 30 ? lossy.lost() : lossy.frame(frame(coded, i), goodFrame(codec));
            heard.insert(heard.end(), samples.begin(), samples.end());
        }
        Samples tenMs(expected.begin() + 4800, expected.begin() + 4880), error;  // at full level
        for (std::size_t i = 4800; i < 4880; i++) error.push_back(Vsp16s(heard[i] - expected[i]));
        EXPECT_LT(energy(error), 0.05 * energy(tenMs));
        EXPECT_LT(largestStep(heard), 1.2 * largestStep(expected));
        const Samples lost(heard.begin() + 4800, heard.begin() + 4960), last(heard.begin() + 4640, heard.begin() + 4800);
        EXPECT_LT(energy(lost), energy(last));
        EXPECT_GT(energy(lost), 0.5 * energy(last));
    }
}

// Silence would be at 0 dB, and a repetition at random below it.
TEST_P(VoicePeriodRepetition, OfSpeechItIsNearerToTheFrameThanSilence) {
    const Octets coded = Encoder(codec)(recordedSpeech());
    const Samples whole = Decoder(codec)(coded);
    double sum = 0;
    int frames = 0;
    for (const int first : {3, 6, 9}) {
        Decoder decoder(codec);
        for (std::ptrdiff_t i = 0; (i + 1) * frameBytes <= std::ssize(coded); i++) {
            if (i % 10 != first) {
                decoder.frame(frame(coded, i), goodFrame(codec));
                continue;
            }
            const Samples heard = decoder.lost(),
                          expected(&whole[std::size_t(i) * 160], &whole[std::size_t(i) * 160] + 160);
            if (energy(expected) < 160 * 100.0 * 100) continue;
            Samples error;
            for (std::size_t k = 0; k < 160; k++) error.push_back(Vsp16s((expected[k] - heard[k]) / 2));
            sum += std::max(-10.0, 10 * std::log10(energy(expected) / (4 * energy(error) + 1)));
            frames++;
        }
    }
    EXPECT_GT(frames, 200);
    EXPECT_GT(sum / frames, 1.5);
    RecordProperty("dB", std::to_string(sum / frames));
}

TEST_P(VoicePeriodRepetition, EveryLostFrameIsQuieterThanTheOneBefore) {
    Decoder decoder(codec);
    decoder(Encoder(codec)(voiced(160 * 20, 70.0)));
    double before = energy(decoder.lost());
    for (int i = 0; i < 2; i++) {
        const double now = energy(decoder.lost());
        EXPECT_LT(now, before);
        EXPECT_GT(now, 0);
        before = now;
    }
    EXPECT_EQ(0, energy(decoder.lost()));
}

INSTANTIATE_TEST_SUITE_P(, VoicePeriodRepetition, ::testing::Values("pcma", "pcmu", "g726-32"), [](const auto& test) {
    std::string name = test.param;
    std::erase(name, '-');
    return name;
});

}  // namespace vsp::test
