// The step-size controllers against their rule in double precision, and what a canceller relies on.
#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <random>
#include <vector>

#include "support/level_test.h"

namespace vsp::test {

namespace {

constexpr int kRate = 8000, kFrame = 112;
constexpr double kFrameRate = double(kRate) / kFrame;

double decay(double time) { return std::exp(-1 / (time * kFrameRate)); }
double norm(Vsp32fc z) { return double(z.re) * z.re + double(z.im) * z.im; }

// The rule of the sub-band controller, group by group and band by band.
class PlainController {
  public:
    PlainController(int len, int bands) : len_(len), bands_(bands), groups_((len + 3) / 4), noise_(bands) {
        double sum = 0;
        for (int t = 0; t < len; t++) sum += std::pow(0.8, t);
        for (int g = 0; g < groups_; g++) prior_.push_back(std::pow(0.8, 4 * g) / sum);
        for (int g = 0; g < groups_; g++) uncertainty_.emplace_back(bands, prior_[std::size_t(g)]);
        coefficients_.assign(std::size_t(groups_), std::vector<double>(std::size_t(bands)));
        predicted_.assign(std::size_t(groups_), 1);
    }

    using Rows = std::vector<std::vector<Vsp32fc>>;
    // [group][band]; an empty row for a group that does not adapt
    std::vector<std::vector<double>> update(const Rows& src, const std::vector<Vsp32fc>& err,
                                            const std::vector<Vsp32fc>& est, const Rows& coef) {
        const auto bands = std::size_t(bands_);
        const double n = decay(0.02);
        double total = noiseSum_, unknown = 0;
        for (const double p : predicted_) unknown += p;
        total += unknown;
        const bool changed = compare(err, est, unknown);
        const double leak = leak_, spread = std::max(leak, changed ? 16.0 : 0.0);

        auto& measured = coefficients_[std::size_t(turn_)];
        measured.assign(bands, 0);
        for (int t = 4 * turn_; t < std::min(len_, 4 * turn_ + 4); t++)
            for (std::size_t k = 0; k < bands; k++) measured[k] += norm(coef[std::size_t(t)][k]) / taps(turn_);
        turn_ = (turn_ + 1) % groups_;

        std::vector<double> path(bands), residual(bands);
        for (int g = 0; g < groups_; g++)
            for (std::size_t k = 0; k < bands; k++) path[k] += taps(g) * coefficients_[std::size_t(g)][k];
        using Table = std::vector<std::vector<double>>;
        Table power, steps;
        power.assign(std::size_t(groups_), std::vector<double>(bands));
        steps.resize(std::size_t(groups_));
        std::vector<bool> adapts;
        for (int g = 0; g < groups_; g++) {
            const auto i = std::size_t(g);
            adapts.push_back(spread > 0 || g == turn_ || predicted_[i] >= 0.0005 * total);
            if (!adapts.back()) continue;
            predicted_[i] = 0;
            for (std::size_t k = 0; k < bands; k++) {
                for (int t = 4 * g; t < std::min(len_, 4 * g + 4); t++) power[i][k] += norm(src[std::size_t(t)][k]);
                double& u = uncertainty_[i][k];
                u = std::max(u + coefficients_[i][k] / (3e5 * kFrameRate),
                             leak * coefficients_[i][k] + spread * prior_[i] * path[k]);
                predicted_[i] += u * power[i][k];
                residual[k] += u * power[i][k];
            }
        }
        noiseSum_ = 0;
        for (std::size_t k = 0; k < bands; k++) noiseSum_ += noise_[k] = n * noise_[k] + (1 - n) * norm(err[k]);
        for (int g = 0; g < groups_; g++)
            for (std::size_t k = 0; adapts[std::size_t(g)] && k < bands; k++) {
                double& u = uncertainty_[std::size_t(g)][k];
                steps[std::size_t(g)].push_back(u / (residual[k] + noise_[k] + 1));
                u *= 1 - 0.4 / taps(g) * steps[std::size_t(g)][k] * power[std::size_t(g)][k];
            }
        return steps;
    }

    int changes = 0;  // of the path, as far as they have been noticed

  private:
    // What error and estimate have in common: sets the leakage, tells whether the path is another one.
    bool compare(const std::vector<Vsp32fc>& err, const std::vector<Vsp32fc>& est, double unknown) {
        leak_ = 0;
        double power = 0, error = 0, correlation = 0, weight = 0, chance = 0, common = 0, own = 0;
        for (const Vsp32fc y : est) power += norm(y);
        for (const Vsp32fc e : err) error += norm(e);
        if (power < 1) return false;
        const double a = decay(0.25), c = decay(0.1);
        for (std::size_t k = 0; k < err.size(); k++) {
            const std::complex<double> e(err[k].re, err[k].im), y(est[k].re, est[k].im);
            const double w = 1 / (std::norm(e) + std::norm(y) + noise_[k] + 1 + 0.001 / bands_ * (error + power));
            const std::complex<double> product = w * e * std::conj(y);
            correlation += product.real();
            weight += w * std::norm(y);
            chance += w * w * std::norm(e) * std::norm(y);
            common_[k] = a * common_[k] + (1 - a) * product;
            own_[k] = a * own_[k] + (1 - a) * w * std::norm(y);
            common += std::norm(common_[k]);
            own += own_[k] * own_[k];
        }
        chance_ = a * chance_ + (1 - a) * (1 - a) * chance;
        correlation_ = c * correlation_ + (1 - c) * correlation;
        weight_ = c * weight_ + (1 - c) * weight;
        power_ = c * power_ + (1 - c) * power;
        error_ = c * error_ + (1 - c) * error;
        if (own > 0.03 * bands_) leak_ = std::clamp((common - 2.5 * chance_ - 0.003 * own) / (own + 0.001), 0.0, 1.0);
        certain_ = unknown < 0.01 * power_ ? 21 : std::max(certain_ - 1, 0);
        const bool shows =
            certain_ > 0 && error_ > 0.5 * power_ && correlation_ < -0.4 * weight_ && common > 1.75 * chance_ + 1e-9;
        showing_ = shows ? showing_ + 1 : 0;
        if (showing_ < 5) return false;
        certain_ = 0;
        changes++;
        return true;
    }

    int taps(int g) const { return std::min(4, len_ - 4 * g); }

    int len_, bands_, groups_, turn_ = 0;
    std::vector<double> noise_, prior_, predicted_;
    std::vector<std::vector<double>> uncertainty_, coefficients_;
    std::vector<std::complex<double>> common_ = std::vector<std::complex<double>>(std::size_t(bands_));
    std::vector<double> own_ = std::vector<double>(std::size_t(bands_));
    int certain_ = 0, showing_ = 0;
    double leak_ = 0, chance_ = 0, correlation_ = 0, weight_ = 0, power_ = 0, error_ = 0, noiseSum_ = 0;
};

template <class T>
std::vector<T*> pointers(std::vector<std::vector<T>>& rows) {
    std::vector<T*> p;
    for (auto& row : rows) p.push_back(row.data());
    return p;
}

// A sub-band canceller without a filter bank: bands of noise through a path, in each frame adapted by the library.
struct Loop {
    const Api& api;
    int len, bands, groups = (len + 3) / 4;
    std::mt19937 random{3};
    std::normal_distribution<float> gauss;
    PlainController::Rows src = rowsOf(len), coef = rowsOf(len), path = rowsOf(len);
    std::vector<Vsp32fc> err = std::vector<Vsp32fc>(std::size_t(bands)), est = err;
    std::vector<std::vector<Vsp64f>> steps{std::size_t(groups), std::vector<Vsp64f>(std::size_t(bands))};
    std::vector<Vsp32s> adapt = std::vector<Vsp32s>(std::size_t(groups));
    std::vector<Vsp32f> residual = std::vector<Vsp32f>(std::size_t(bands));
    Vsp32f learning = 0;
    Vsp32s doubleTalk = 0;
    std::vector<Vsp8u> memory;
    VspSubbandControllerState_EC_32f* state;
    double farLevel = 1000, noise = 3, talk = 0;

    Loop(const Api& functions, int taps, int numBands) : api(functions), len(taps), bands(numBands) {
        Vsp32s size = 0;
        EXPECT_EQ(vspStsNoErr, api.vspsSubbandControllerGetSize_EC_32f(len, bands, kFrame, kRate, &size));
        memory.resize(std::size_t(size));
        state = reinterpret_cast<VspSubbandControllerState_EC_32f*>(memory.data());
        EXPECT_EQ(vspStsNoErr, api.vspsSubbandControllerInit_EC_32f(state, len, bands, kFrame, kRate));
        for (int t = 0; t < len; t++)
            for (Vsp32fc& h : path[std::size_t(t)]) h = value(0.3 * std::pow(0.7, t));
    }
    PlainController::Rows rowsOf(int n) const { return {std::size_t(n), std::vector<Vsp32fc>(std::size_t(bands))}; }
    Vsp32fc value(double level) { return {Vsp32f(level * gauss(random)), Vsp32f(level * gauss(random))}; }

    // The error of a frame, before the update.
    void receive() {
        std::rotate(src.begin(), src.end() - 1, src.end());
        for (Vsp32fc& x : src[0]) x = value(farLevel);
        for (std::size_t k = 0; k < std::size_t(bands); k++) {
            const Vsp32fc near = value(noise + talk);
            Vsp32fc y{}, d{};
            for (std::size_t t = 0; t < std::size_t(len); t++) {
                const Vsp32fc x = src[t][k], c = coef[t][k], h = path[t][k];
                y = {y.re + x.re * c.re - x.im * c.im, y.im + x.re * c.im + x.im * c.re};
                d = {d.re + x.re * h.re - x.im * h.im, d.im + x.re * h.im + x.im * h.re};
            }
            est[k] = y;
            err[k] = {d.re + near.re - y.re, d.im + near.im - y.im};
        }
    }
    void update() {
        ASSERT_EQ(vspStsNoErr, api.vspsSubbandControllerUpdate_EC_32f(
                                   pointers(src).data(), err.data(), est.data(), pointers(coef).data(), 1,
                                   pointers(steps).data(), adapt.data(), residual.data(), &learning, &doubleTalk, state));
        for (int g = 0; g < groups; g++) {
            if (adapt[std::size_t(g)] == 0) continue;
            ASSERT_EQ(vspStsNoErr, api.vspsFIRSubbandCoeffUpdate_EC_32fc_I(
                                       steps[std::size_t(g)].data(), pointers(src).data() + 4 * g, err.data(),
                                       pointers(coef).data() + 4 * g, std::min(4, len - 4 * g), bands));
        }
    }
    void run(int frames) {
        for (int f = 0; f < frames; f++) {
            receive();
            update();
        }
    }
    // Of the error without the near end, dB below the echo.
    double misalignment() const {
        double left = 0, all = 0;
        for (std::size_t t = 0; t < std::size_t(len); t++)
            for (std::size_t k = 0; k < std::size_t(bands); k++) {
                const Vsp32fc c = coef[t][k], h = path[t][k];
                left += norm({h.re - c.re, h.im - c.im});
                all += norm(h);
            }
        return 10 * std::log10(left / all);
    }
};

}  // namespace

class Controllers : public LevelTest {};
VSPSC_EVERY_LEVEL(Controllers);

TEST_P(Controllers, SubbandStepsFollowTheRule) {
    for (const auto& [len, bands] : {std::pair{1, 1}, {7, 5}, {10, 33}, {13, 129}}) {
        Loop loop(api, len, bands);
        PlainController plain(len, bands);
        for (int f = 0; f < 640; f++) {
            loop.talk = f > 120 && f < 140 ? 500 : 0;
            if (f == 580) std::reverse(loop.path.begin(), loop.path.end());  // another path
            loop.receive();
            const auto wanted = plain.update(loop.src, loop.err, loop.est, loop.coef);
            loop.update();
            for (std::size_t g = 0; g < wanted.size(); g++) {
                ASSERT_EQ(!wanted[g].empty(), loop.adapt[g] != 0) << len << ' ' << bands << ' ' << f << ' ' << g;
                for (std::size_t k = 0; k < wanted[g].size(); k++)
                    ASSERT_NEAR(wanted[g][k], loop.steps[g][k], 2e-3 * wanted[g][k] + 1e-15) << len << ' ' << f << ' ' << g;
            }
        }
        EXPECT_GE(plain.changes, bands > 20 ? 1 : 0);
    }
}

TEST_P(Controllers, LearnHoldStillInDoubleTalkAndLearnAnotherPath) {
    Loop loop(api, 12, 40);
    loop.run(150);
    EXPECT_LT(loop.misalignment(), -35);
    EXPECT_EQ(0, loop.doubleTalk);
    loop.talk = 500;
    loop.run(100);
    EXPECT_EQ(1, loop.doubleTalk);
    EXPECT_LT(loop.learning, 0.05);
    EXPECT_LT(loop.misalignment(), -25);
    loop.talk = 0;
    loop.run(100);
    std::rotate(loop.path.begin(), loop.path.end() - 1, loop.path.end());
    for (auto& row : loop.path)
        for (Vsp32fc& h : row) h = {2 * h.re, 2 * h.im};
    loop.run(70);  // 1 s
    EXPECT_LT(loop.misalignment(), -20);
    ASSERT_EQ(vspStsNoErr, api.vspsSubbandControllerReset_EC_32f(loop.state, 12));
    loop.run(1);
    EXPECT_GT(loop.learning, 0.5);
}

// After frames of what is no number the controller and the filters are what they were.
TEST_P(Controllers, BearNotANumberAndInfinity) {
    for (const Vsp32f bad : {std::numeric_limits<Vsp32f>::quiet_NaN(), std::numeric_limits<Vsp32f>::infinity(), 1e30f}) {
        Loop loop(api, 6, 20);
        loop.run(100);
        const std::vector<Vsp8u> before = loop.memory;
        const auto coefficients = loop.coef[1][3].re;
        loop.receive();
        for (std::vector<Vsp32fc>* x : {&loop.err, &loop.est, &loop.src[2]}) {
            const Vsp32fc kept = (*x)[7];
            (*x)[7] = {bad, 0};
            if (x == &loop.src[2]) loop.err[7] = {bad, bad};  // as the filters make it
            loop.update();
            (*x)[7] = kept;
            EXPECT_EQ(before, loop.memory);
            EXPECT_EQ(coefficients, loop.coef[1][3].re);
            EXPECT_EQ(0, loop.learning);
        }
        loop.run(20);
        EXPECT_LT(loop.misalignment(), -30);
    }
}

// The fixed-point controller gives the steps of the floating-point one, in the units of its filters.
TEST_P(Controllers, FixedPointStepsAreThoseOfFloatingPoint) {
    constexpr int kBandBits = 6, kCoefBits = 27, kTaps = 6, kBands = 20;
    Loop loop(api, kTaps, kBands);
    std::vector<Vsp8u> memory(loop.memory.size()), memoryDT = memory;
    auto* state = reinterpret_cast<VspSubbandControllerState_EC_16s*>(memory.data());
    auto* stateDT = reinterpret_cast<VspSubbandControllerDTState_EC_16s*>(memoryDT.data());
    api.vspsSubbandControllerInit_EC_16s(state, kTaps, kBands, kFrame, kRate, -kBandBits, kCoefBits);
    api.vspsSubbandControllerDTInit_EC_16s(stateDT, kTaps, kBands, kFrame, kRate, -kBandBits, kCoefBits);
    const auto fixed = [](const std::vector<Vsp32fc>& x, int bits) {
        std::vector<Vsp32sc> y;
        for (const Vsp32fc z : x)
            y.push_back({Vsp32s(std::lrint(std::ldexp(z.re, bits))), Vsp32s(std::lrint(std::ldexp(z.im, bits)))});
        return y;
    };
    for (int f = 0; f < 60; f++) {
        loop.receive();
        std::vector<std::vector<Vsp32sc>> src, coef, steps(2, std::vector<Vsp32sc>(kBands)), stepsDT = steps;
        for (const auto& row : loop.src) src.push_back(fixed(row, kBandBits));
        for (const auto& row : loop.coef) coef.push_back(fixed(row, kCoefBits));
        auto err = fixed(loop.err, kBandBits), est = fixed(loop.est, kBandBits);
        Vsp32s adapt[2], doubleTalk = 0;
        Vsp32f residual[kBands], learning = 0;
        ASSERT_EQ(vspStsNoErr, api.vspsSubbandControllerDTUpdate_EC_16s(pointers(src).data(), err.data(), est.data(),
                                                                        pointers(coef).data(), 1, pointers(stepsDT).data(),
                                                                        adapt, residual, &learning, &doubleTalk, stateDT));
        ASSERT_EQ(vspStsNoErr, api.vspsSubbandControllerUpdate_EC_16s(pointers(src).data(), err.data(), est.data(),
                                                                      pointers(coef).data(), pointers(steps).data(), adapt,
                                                                      residual, &learning, state));
        loop.update();
        ASSERT_EQ(loop.doubleTalk, doubleTalk);
        ASSERT_NEAR(loop.learning, learning, 1e-3);
        for (std::size_t g = 0; g < 2; g++) {
            ASSERT_EQ(loop.adapt[g], adapt[g]);
            for (std::size_t k = 0; adapt[g] != 0 && k < kBands; k++) {
                const double step = std::ldexp(steps[g][k].re, 2 * kBandBits - kCoefBits - steps[g][k].im);
                ASSERT_NEAR(loop.steps[g][k], step, 0.02 * loop.steps[g][k] + 1e-12);
                ASSERT_EQ(steps[g][k].re, stepsDT[g][k].re);
                ASSERT_EQ(steps[g][k].im, stepsDT[g][k].im);
            }
        }
    }
}

// A filter of the whole band learns a path with the steps, stands still in double talk, and bears what is no number.
TEST_P(Controllers, FullbandLearnsAndHoldsStill) {
    constexpr int kTaps = 32, kBlock = 40;
    std::mt19937 random(1);
    std::normal_distribution<float> gauss;
    std::vector<Vsp32f> far(kTaps + kBlock), near(kBlock), err(kBlock), steps(kBlock), taps(kTaps), path(kTaps);
    for (int k = 0; k < kTaps; k++) path[std::size_t(k)] = 0.3f * gauss(random) * std::pow(0.9f, float(k));
    std::vector<Vsp8u> memory(72);
    auto* state = reinterpret_cast<VspFullbandControllerState_EC_32f*>(memory.data());
    ASSERT_EQ(vspStsNoErr, api.vspsFullbandControllerInit_EC_32f(state, kTaps, kBlock, kRate));
    Vsp32f learning = 0, scaled = 0;
    Vsp32s doubleTalk = 0;
    const auto run = [&](int blocks, float talk, bool broken = false) {
        for (int b = 0; b < blocks; b++) {
            std::copy(far.end() - kTaps, far.end(), far.begin());
            for (int n = 0; n < kBlock; n++) far[std::size_t(kTaps + n)] = 1000 * gauss(random);
            const Vsp32f* ref = far.data() + kTaps;
            for (int n = 0; n < kBlock; n++) {
                float y = (talk + 1) * gauss(random);
                for (int k = 0; k < kTaps; k++) y += path[std::size_t(k)] * ref[n - k];
                near[std::size_t(n)] = y;
            }
            if (broken) near[5] = std::numeric_limits<Vsp32f>::quiet_NaN();
            api.vspsFIR_EC_32f(ref, near.data(), err.data(), kBlock, taps.data(), kTaps);
            ASSERT_EQ(vspStsNoErr,
                      api.vspsFullbandControllerUpdate_EC_32f(ref, near.data(), err.data(), kBlock, taps.data(), 1,
                                                              steps.data(), &learning, &doubleTalk, state));
            if (learning == 0) continue;
            api.vspsNLMS_EC_32f(ref, near.data(), steps.data(), err.data(), kBlock, taps.data(), kTaps, &scaled);
        }
    };
    const auto misalignment = [&] {
        double left = 0, all = 0;
        for (std::size_t k = 0; k < kTaps; k++) {
            left += (path[k] - taps[k]) * (path[k] - taps[k]);
            all += path[k] * path[k];
        }
        return 10 * std::log10(left / all);
    };
    run(400, 0);
    EXPECT_LT(misalignment(), -40);
    EXPECT_EQ(0, doubleTalk);
    const std::vector<Vsp8u> before = memory;
    run(3, 0, true);
    EXPECT_EQ(before, memory);
    run(100, 500);
    EXPECT_EQ(1, doubleTalk);
    EXPECT_LT(misalignment(), -25);
}

// The size is known for whatever is legal, and nothing overflows on the way.
TEST_P(Controllers, SizesOfTheLargestAreKnown) {
    Vsp32s size = 0;
    ASSERT_EQ(vspStsNoErr, api.vspsSubbandControllerGetSize_EC_32f(255, 4097, 1, 16000, &size));
    EXPECT_GT(size, 3 * 64 * 4097 * 4);
    for (const Vsp32s absurd : {0, -1, 256, 0x7FFFFFFF, -0x7FFFFFFF - 1})
        EXPECT_EQ(vspStsBadArgErr, api.vspsSubbandControllerGetSize_EC_32f(absurd, 4097, 1, 16000, &size));
    EXPECT_EQ(vspStsBadArgErr, api.vspsSubbandControllerGetSize_EC_32f(255, 0x7FFFFFFF, 0x7FFFFFFF, 16000, &size));
}

}  // namespace vsp::test
