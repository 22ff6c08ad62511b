// The residual echo suppressor: what it takes away, what it leaves alone, and the noise that it puts in place.
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "support/level_test.h"

namespace vsp::test {

namespace {

constexpr int kBands = 129, kFrame = 112, kRate = 8000;

// Frames of bands: an echo estimate, an error of noise, of a share of the estimate that is left, and of a talker.
struct Line {
    const Api& api;
    double noise = 10, echo = 3000, left = 0.05, talk = 0;
    std::mt19937 random{4};
    std::normal_distribution<float> gauss;
    std::vector<Vsp8u> memory;
    VspSubbandSuppressorState_EC_32f* state;
    std::vector<Vsp32fc> est{kBands}, err{kBands};
    std::vector<Vsp32f> residual = std::vector<Vsp32f>(kBands);
    double before = 0, after = 0, changed = 0;  // powers of a run: the error, what comes out, their difference

    explicit Line(const Api& functions) : api(functions) {
        Vsp32s size = 0;
        EXPECT_EQ(vspStsNoErr, api.vspsSubbandSuppressorGetSize_EC_32f(kBands, kFrame, kRate, &size));
        memory.resize(std::size_t(size));
        state = reinterpret_cast<VspSubbandSuppressorState_EC_32f*>(memory.data());
        EXPECT_EQ(vspStsNoErr, api.vspsSubbandSuppressorInit_EC_32f(state, kBands, kFrame, kRate));
    }
    Vsp32fc value(double level) { return {Vsp32f(level * gauss(random)), Vsp32f(level * gauss(random))}; }
    void run(int frames) {
        before = after = changed = 0;
        for (int f = 0; f < frames; f++) {
            for (std::size_t k = 0; k < kBands; k++) {
                est[k] = value(echo);
                const Vsp32fc n = value(noise), t = value(talk);
                err[k] = {n.re + t.re + Vsp32f(left) * est[k].im, n.im + t.im + Vsp32f(left) * est[k].re};
            }
            err[0].im = err[kBands - 1].im = 0;
            const std::vector<Vsp32fc> input = err;
            ASSERT_EQ(vspStsNoErr,
                      api.vspsSubbandSuppressor_EC_32fc_I(est.data(), residual.data(), talk > 0, err.data(), state));
            for (std::size_t k = 0; k < kBands; k++) {
                before += std::pow(input[k].re, 2) + std::pow(input[k].im, 2);
                after += std::pow(err[k].re, 2) + std::pow(err[k].im, 2);
                changed += std::pow(err[k].re - input[k].re, 2) + std::pow(err[k].im - input[k].im, 2);
            }
        }
    }
    double noisePower(int frames) const { return frames * kBands * 2 * noise * noise; }
};

double decibels(double ratio) { return 10 * std::log10(ratio); }

}  // namespace

class Suppressor : public LevelTest {};
VSPSC_EVERY_LEVEL(Suppressor);

TEST_P(Suppressor, BringsEchoDownToTheNoiseAndKeepsTheTalker) {
    Line line(api);
    line.echo = 0;
    line.run(300);
    EXPECT_EQ(line.before, line.after) << "without an echo nothing changes";
    line.echo = 3000;
    line.run(400);
    line.run(100);
    EXPECT_GT(decibels(line.before / line.noisePower(100)), 20);
    // independent bands: the synthesis takes off what comfort noise is louder here
    EXPECT_NEAR(decibels(line.after / line.noisePower(100)), decibels(1.6 * 128 / kFrame), 3);
    line.talk = 3000;
    line.run(100);
    EXPECT_LT(decibels(line.changed / line.before), -20);
}

// Also where a filter bank fills first.
TEST_P(Suppressor, PutsComfortNoiseAlsoAfterDigitalSilence) {
    Line line(api);
    line.echo = line.noise = 0;
    line.run(300);
    for (const double level : {1, 3, 6, 10}) {
        line.noise = level;
        line.run(level < 10 ? 2 : 30);
    }
    line.echo = 3000;
    line.run(150);
    line.run(50);
    EXPECT_NEAR(decibels(line.after / line.noisePower(50)), decibels(1.6 * 128 / kFrame), 4);
}

TEST_P(Suppressor, TakesWhatTheControllerExpects) {
    Line line(api);
    line.echo = 0;
    line.run(300);
    line.left = 0;
    line.talk = 100;
    line.residual.assign(kBands, 1e6f);
    line.run(1);
    EXPECT_LT(line.after, 0.2 * line.before);
}

TEST_P(Suppressor, BearsNotANumberAndInfinity) {
    for (const Vsp32f bad : {std::numeric_limits<Vsp32f>::quiet_NaN(), std::numeric_limits<Vsp32f>::infinity(), 1e30f}) {
        Line line(api);
        line.echo = 0;
        line.run(50);
        line.echo = 3000;
        line.run(300);
        line.err[5] = {bad, 1};
        line.est[6] = {1, bad};
        line.residual[7] = bad;
        ASSERT_EQ(vspStsNoErr, api.vspsSubbandSuppressor_EC_32fc_I(line.est.data(), line.residual.data(), 0,
                                                                   line.err.data(), line.state));
        for (const Vsp32fc z : line.err) ASSERT_TRUE(std::isfinite(z.re) && std::isfinite(z.im));
        line.residual[7] = 0;
        line.run(100);
        EXPECT_LT(decibels(line.after / line.noisePower(100)), 6);
    }
}

// The fixed-point suppressor does the same, in the units of its bands.
TEST_P(Suppressor, FixedPointDoesAsFloatingPoint) {
    constexpr float kUnit = 64;
    Line line(api);
    std::vector<Vsp8u> memory(line.memory.size());
    auto* state = reinterpret_cast<VspSubbandSuppressorState_EC_16s*>(memory.data());
    ASSERT_EQ(vspStsNoErr, api.vspsSubbandSuppressorInit_EC_16s(state, kBands, kFrame, kRate, -6));
    double all = 0, different = 0;
    const auto fixed = [](Vsp32fc z) {
        return Vsp32sc{Vsp32s(std::lrint(kUnit * z.re)), Vsp32s(std::lrint(kUnit * z.im))};
    };
    for (int f = 0; f < 200; f++) {
        std::vector<Vsp32sc> est, err;
        for (std::size_t k = 0; k < kBands; k++) {
            est.push_back(fixed(line.est[k] = line.value(3000)));
            err.push_back(fixed(line.err[k] = line.value(f % 20 < 5 ? 4000 : 100)));
        }
        ASSERT_EQ(vspStsNoErr, api.vspsSubbandSuppressor_EC_32fc_I(line.est.data(), line.residual.data(), 0,
                                                                   line.err.data(), line.state));
        ASSERT_EQ(vspStsNoErr, api.vspsSubbandSuppressor_EC_32sc_I(est.data(), line.residual.data(), 0, err.data(), state));
        for (std::size_t k = 0; k < kBands; k++) {
            all += std::pow(line.err[k].re, 2) + std::pow(line.err[k].im, 2);
            different += std::pow(line.err[k].re - float(err[k].re) / kUnit, 2);
            different += std::pow(line.err[k].im - float(err[k].im) / kUnit, 2);
        }
    }
    EXPECT_LT(decibels(different / all), -60);
}

}  // namespace vsp::test
