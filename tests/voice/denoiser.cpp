// The denoiser of the voice layer against the noise filter of the library.
#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>
#include <random>

#include "support/samples.h"
#include "support/speech.h"
#include "support/status_order.h"
#include "voice/object.h"
#include "vspsc.h"

namespace vsp::test {

namespace {

using Samples = std::vector<Vsp16s>;
using Denoiser = VoiceObject<VspvDenoiser>;

// In frames of 10 ms, rounded.
Samples filteredByTheLibrary(const Samples& samples, Vsp32s rate, Vsp32s order, Vsp32s mode) {
    const Vsp32s frameLen = rate / 100;
    Vsp32s size = 0;
    EXPECT_EQ(vspStsNoErr, vspsFilterNoiseGetStateSize_EC_32f(rate, frameLen, order, &size));
    std::vector<std::byte> memory{std::size_t(size)};
    const auto state = reinterpret_cast<VspFilterNoiseState_EC_32f*>(memory.data());
    EXPECT_EQ(vspStsNoErr, vspsFilterNoiseInit_EC_32f(state, rate, frameLen, order));
    EXPECT_EQ(vspStsNoErr, vspsFilterNoiseSetMode_EC_32f(state, mode));
    std::vector<Vsp32f> all(samples.begin(), samples.end());
    Vsp32f presence;
    for (std::size_t at = 0; at + std::size_t(frameLen) <= all.size(); at += std::size_t(frameLen))
        EXPECT_EQ(vspStsNoErr, vspsFilterNoise_EC_32f_I(&all[at], state, &presence));
    Samples result;
    for (const Vsp32f v : all) result.push_back(Vsp16s(std::lround(std::clamp(v, -32768.0f, 32767.0f))));
    return result;
}

// After every 10 ms of a signal at 8 kHz.
std::vector<Vsp32f> presenceIn(Samples signal, Vsp32s mode) {
    const VspvDenoiserSettings settings{8000, mode};
    Denoiser denoiser(0, vspvDenoiserGetSize, &settings);
    EXPECT_EQ(vspStsNoErr, vspvDenoiserInit(denoiser.get(), &settings));
    std::vector<Vsp32f> found;
    Vsp32f presence = -1;
    EXPECT_EQ(vspStsNoErr, vspvDenoiserPresence(denoiser.get(), &presence));
    EXPECT_EQ(0, presence);
    for (std::size_t at = 0; at + 80 <= signal.size(); at += 80) {
        EXPECT_EQ(vspStsNoErr, vspvDenoiserProcess_16s(denoiser.get(), &signal[at], &signal[at], 79));
        Vsp32f before = -1;
        EXPECT_EQ(vspStsNoErr, vspvDenoiserPresence(denoiser.get(), &before));
        EXPECT_EQ(presence, before);
        EXPECT_EQ(vspStsNoErr, vspvDenoiserProcess_16s(denoiser.get(), &signal[at + 79], &signal[at + 79], 1));
        EXPECT_EQ(vspStsNoErr, vspvDenoiserPresence(denoiser.get(), &presence));
        found.push_back(presence);
    }
    return found;
}

}  // namespace

TEST(VoiceDenoiser, BlocksOfAnyLengthGiveTheFiltersResultAsLateAsTold) {
    const Samples speech = recordedSpeech();
    for (const auto& [rate, order] : {std::pair{8000, 8}, {16000, 9}, {22050, 9}, {32000, 10}}) {
        const VspvDenoiserSettings settings{rate, vspvDenoiserHigh};
        Denoiser denoiser(std::size_t(rate == 16000), vspvDenoiserGetSize, &settings);
        ASSERT_EQ(vspStsNoErr, vspvDenoiserInit(denoiser.get(), &settings));
        Vsp32s latency = 0;
        ASSERT_EQ(vspStsNoErr, vspvDenoiserLatency(denoiser.get(), &latency));
        EXPECT_EQ(1 << order, latency);
        Samples result;
        inBlocks(speech, 500, 1, [&](std::span<const Vsp16s> block) {
            const auto count = Vsp32s(block.size());
            if (block.size() % 2 == 0) {
                std::vector<Vsp32f> samples(block.begin(), block.end());
                ASSERT_EQ(vspStsNoErr, vspvDenoiserProcess_32f(denoiser.get(), samples.data(), samples.data(), count));
                for (const Vsp32f v : samples) result.push_back(Vsp16s(std::lround(std::clamp(v, -32768.0f, 32767.0f))));
            } else {
                Guarded<Vsp16s> samples(Samples(block.begin(), block.end()));
                ASSERT_EQ(vspStsNoErr, vspvDenoiserProcess_16s(denoiser.get(), samples.data(), samples.data(), count));
                result.insert(result.end(), samples.begin(), samples.end());
            }
        });
        // The filter is late by the transform less a frame, and the blocks by a frame.
        const std::size_t frame = std::size_t(rate / 100), whole = speech.size() / frame * frame;
        const Samples expected = filteredByTheLibrary(speech, rate, order, vspvDenoiserHigh);
        EXPECT_TRUE(std::equal(expected.begin(), expected.begin() + long(whole - frame), result.begin() + long(frame)))
            << rate;
    }
}

TEST(VoiceDenoiser, PresenceIsLargeInSpeechAndSmallInNoiseAndSilence) {
    constexpr std::size_t kSecond = 8000, kFrames = 100;  // of 10 ms, in a second
    const Samples speech = recordedSpeech();
    Samples signal(2 * kSecond);
    signal.insert(signal.end(), speech.begin() + 1600, speech.begin() + 1600 + 2 * kSecond);
    signal.resize(6 * kSecond);
    std::minstd_rand random;
    for (Vsp16s& x : signal) x = Vsp16s(std::clamp(x + std::uniform_int_distribution(-150, 150)(random), -32768, 32767));
    signal.resize(8 * kSecond);  // silence
    const std::vector<Vsp32f> presence = presenceIn(signal, vspvDenoiserNormal);
    for (const Vsp32f p : presence) {
        EXPECT_GE(p, 0);
        EXPECT_LE(p, 1);
    }
    const auto mean = [&](std::size_t second, std::size_t seconds) {
        const auto begin = presence.begin() + long(second * kFrames);
        return std::accumulate(begin, begin + long(seconds * kFrames), 0.0) / double(seconds * kFrames);
    };
    EXPECT_LT(mean(0, 2), 0.01);
    EXPECT_GT(mean(2, 2), 0.75);
    EXPECT_LT(mean(5, 1), 0.01);
    EXPECT_LT(mean(7, 1), 0.01);
    EXPECT_EQ(presence, presenceIn(signal, vspvDenoiserOff));
}

TEST(VoiceDenoiser, ChangedModeIsThatOfAnotherDenoiser) {
    const auto denoised = [](Vsp32s mode, std::optional<Vsp32s> changed) {
        const VspvDenoiserSettings settings{8000, mode};
        Denoiser denoiser(0, vspvDenoiserGetSize, &settings);
        EXPECT_EQ(vspStsNoErr, vspvDenoiserInit(denoiser.get(), &settings));
        if (changed) {
            EXPECT_EQ(vspStsNoErr, vspvDenoiserSetMode(denoiser.get(), *changed));
        }
        Samples speech = recordedSpeech();
        EXPECT_EQ(vspStsNoErr,
                  vspvDenoiserProcess_16s(denoiser.get(), speech.data(), speech.data(), Vsp32s(speech.size())));
        return speech;
    };
    const Samples low = denoised(vspvDenoiserLow, {});
    EXPECT_EQ(low, denoised(vspvDenoiserHigh, vspvDenoiserLow));
    EXPECT_NE(low, denoised(vspvDenoiserHigh, {}));
}

TEST(VoiceDenoiser, ChecksComeInOrderAndTouchNothing) {
    const std::vector<VspStatus> nulls{vspStsNullPtrErr};
    for (const auto& [rate, mode, status] : {std::tuple{11025, 7, vspStsRangeErr},
                                             {0x7FFFFFFF, 0, vspStsRangeErr},
                                             {8000, 5, vspStsBadArgErr},
                                             {16000, -1, vspStsBadArgErr}}) {
        const VspvDenoiserSettings settings{rate, mode};
        Vsp32s size = 7;
        Vsp64s memory = 5;
        EXPECT_EQ(status, vspvDenoiserGetSize(&settings, &size));
        EXPECT_EQ(status, vspvDenoiserInit(reinterpret_cast<VspvDenoiser*>(&memory), &settings));
        EXPECT_EQ(7, size);
        EXPECT_EQ(5, memory);
    }
    expectStatusOrder(vspvDenoiserGetSize, nulls, pointer, pointer);
    expectStatusOrder(vspvDenoiserInit, nulls, pointer, pointer);
    expectStatusOrder(vspvDenoiserLatency, nulls, pointer, pointer);
    expectStatusOrder(vspvDenoiserPresence, nulls, pointer, pointer);
    expectStatusOrder(vspvDenoiserSetMode, {vspStsNullPtrErr, vspStsBadArgErr}, pointer,
                      Choices<Vsp32s>{vspvDenoiserLow, {{-1, vspStsBadArgErr}, {5, vspStsBadArgErr}}});
    expectStatusOrder(vspvDenoiserProcess_16s, {vspStsNullPtrErr, vspStsSizeErr}, pointer, pointer, pointer, length);
    expectStatusOrder(vspvDenoiserProcess_32f, {vspStsNullPtrErr, vspStsSizeErr}, pointer, pointer, pointer, length);
}

}  // namespace vsp::test
