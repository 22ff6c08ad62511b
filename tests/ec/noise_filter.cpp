// The noise filter on noise and tones: what it removes, keeps and delays.
#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "support/level_test.h"

namespace vsp::test {

namespace {

class NoiseFilter {
  public:
    NoiseFilter(const Api& api, Vsp32s rate, Vsp32s frameLen, Vsp32s order, Vsp32s mode) : api_(api), frameLen_(frameLen) {
        Vsp32s size = 0;
        EXPECT_EQ(vspStsNoErr, api.vspsFilterNoiseGetStateSize_EC_32f(rate, frameLen, order, &size));
        memory_.resize(std::size_t(size));
        EXPECT_EQ(vspStsNoErr, api.vspsFilterNoiseInit_EC_32f(state(), rate, frameLen, order));
        EXPECT_EQ(vspStsNoErr, api.vspsFilterNoiseSetMode_EC_32f(state(), mode));
    }
    std::vector<float> operator()(std::vector<float> x) {
        for (std::size_t at = 0; at + std::size_t(frameLen_) <= x.size(); at += std::size_t(frameLen_))
            EXPECT_EQ(vspStsNoErr, api_.vspsFilterNoise_EC_32f_I(&x[at], state(), &presence));
        return x;
    }
    float presence = -1;

  private:
    VspFilterNoiseState_EC_32f* state() { return reinterpret_cast<VspFilterNoiseState_EC_32f*>(memory_.data()); }

    const Api& api_;
    Vsp32s frameLen_;
    std::vector<std::byte> memory_;
};

std::vector<float> noise(std::size_t length, float level) {
    std::mt19937 random(3);
    std::vector<float> x(length);
    for (float& v : x) v = level * (float(random()) * 0x1p-31f - 1);
    return x;
}

// Words of a voice around 125 Hz, of half a second each, with pauses as long.
std::vector<float> voice(std::size_t length, Vsp32s rate) {
    std::vector<float> x(length);
    for (std::size_t n = 0; n < length; n++) {
        const double t = double(n) / rate, envelope = std::max(0.0, std::sin(2 * M_PI * t)),
                     phase = 2 * M_PI * 125 * t + 8 * std::sin(2 * M_PI * 0.7 * t);
        for (int h = 1; h <= 24; h++) x[n] += float(1500 * envelope / h * std::sin(phase * h + h * h));
    }
    return x;
}

double decibels(const std::vector<float>& x, std::size_t from) {
    double sum = 1e-9;
    for (std::size_t n = from; n < x.size(); n++) sum += double(x[n]) * x[n];
    return 10 * std::log10(sum / double(x.size() - from));
}

// Of x against y, which is late.
double errorDecibels(const std::vector<float>& x, const std::vector<float>& y, std::size_t delay, std::size_t from) {
    std::vector<float> e(x.size() - delay);
    for (std::size_t n = 0; n < e.size(); n++) e[n] = y[n + delay] - x[n];
    return decibels(e, from);
}

class NoiseFilterTest : public LevelTest {};

}  // namespace

TEST_P(NoiseFilterTest, OffOnlyDelaysAtEveryRateAndFrame) {
    for (const auto& [rate, frameLen, order] :
         {std::tuple{8000, 80, 8}, {8000, 128, 8}, {8000, 1, 5}, {16000, 160, 9}, {22050, 220, 10}, {32000, 2048, 12}}) {
        const std::vector<float> x = voice(std::size_t(frameLen == 1 ? 2000 : 12000), rate);
        const auto delay = std::size_t((1 << order) - frameLen);
        const auto y = NoiseFilter(api, rate, frameLen, order, vspFilterNoiseOff)(x);
        const std::size_t frames = x.size() / std::size_t(frameLen) * std::size_t(frameLen);
        const std::vector<float> in(x.begin(), x.begin() + long(frames)), out(y.begin(), y.begin() + long(frames));
        EXPECT_LT(errorDecibels(in, out, delay, 0), decibels(in, 0) - 100) << rate << ' ' << frameLen << ' ' << order;
    }
}

TEST_P(NoiseFilterTest, NoiseIsAttenuatedByTheModeAndSpeechIsNot) {
    for (const auto& [rate, frameLen, order] : {std::tuple{8000, 80, 8}, {32000, 320, 10}}) {
        const auto second = std::size_t(rate);
        const std::vector<float> hiss = noise(6 * second, 100), clean = voice(6 * second, rate);
        std::vector<float> noisy = clean;
        for (std::size_t n = 0; n < noisy.size(); n++) noisy[n] += 6 * hiss[n];
        for (const auto& [mode, removed] : {std::pair{vspFilterNoiseLow, 10.0},
                                            {vspFilterNoiseNormal, 14.0},
                                            {vspFilterNoiseHigh, 18.0},
                                            {vspFilterNoiseAuto, 18.0}}) {
            NoiseFilter filter(api, rate, frameLen, order, mode);
            EXPECT_NEAR(removed, decibels(hiss, 3 * second) - decibels(filter(hiss), 3 * second), 1) << rate << ' ' << mode;
            EXPECT_LT(filter.presence, 0.05f);
        }
        NoiseFilter filter(api, rate, frameLen, order, vspFilterNoiseAuto);
        const auto delay = std::size_t((1 << order) - frameLen);
        const double before = errorDecibels(clean, noisy, 0, 3 * second);
        EXPECT_LT(errorDecibels(clean, filter(noisy), delay, 3 * second), before - 3) << rate;
    }
}

TEST_P(NoiseFilterTest, AnswersAfterAnyInput) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    for (const float bad : {std::nanf(""), kInfinity, -kInfinity, 3e38f, 1e-45f, -32768.0f}) {
        NoiseFilter filter(api, 8000, 80, 8, vspFilterNoiseAuto);
        const std::vector<float> hiss = noise(32000, 100);
        filter(hiss);
        for (const float v : filter(std::vector<float>(800, bad))) ASSERT_TRUE(std::isfinite(v));
        const double after = decibels(filter(hiss), 24000);
        EXPECT_NEAR(decibels(hiss, 24000) - 18, after, 1.5) << bad;
    }
}

TEST_P(NoiseFilterTest, ConfigurationsThatAreNone) {
    Vsp32s size = 5;
    for (const Vsp32s order : {-0x7FFFFFFF - 1, 0, 4, 13, 31, 0x7FFFFFFF})
        EXPECT_EQ(vspStsBadArgErr, api.vspsFilterNoiseGetStateSize_EC_32f(8000, 1, order, &size));
    for (const Vsp32s frameLen : {-1, 0, 129, 0x7FFFFFFF})
        EXPECT_EQ(vspStsBadArgErr, api.vspsFilterNoiseGetStateSize_EC_32f(8000, frameLen, 8, &size));
    EXPECT_EQ(5, size);
}

VSPSC_EVERY_LEVEL(NoiseFilterTest);

}  // namespace vsp::test
