// What the loudspeaker makes of the far end before the echo path. One that saturates adds harmonics that no linear filter
// removes. So where the filters leave more than on a linear path, it is tried whether a saturation explains some of that,
// and if so, one is put before the filters and fitted: what they leave is explained by how the estimate would change with
// the limit and the hardness (A. Stenger, W. Kellermann: Adaptation of a memoryless preprocessor for nonlinear acoustic
// echo cancelling, Signal Processing 80, 2000). A few bands are enough for that.
#pragma once

#include <algorithm>
#include <cmath>

#include "echo/delay_line.h"
#include "echo/error_regression.h"
#include "echo/filter_bank.h"
#include "echo/frame_powers.h"
#include "echo/saturation.h"

namespace vspv {

template <class Arithmetic>
class LoudspeakerModel {
    using Complex = typename Arithmetic::Complex;
    using Sample = typename Arithmetic::Sample;

  public:
    LoudspeakerModel(const BankShape& shape, const Window& far, int taps, int maxDelay, Memory& memory)
        : shape_(shape),
          taps_(taps),
          filling_(taps + maxDelay + shape.window / shape.frame),
          limitBank_(shape, far, memory),
          hardnessBank_(shape, far, memory),
          byLimit_(taps + maxDelay, kRegressionBands, memory),
          byHardness_(taps + maxDelay, kRegressionBands, memory),
          path_(taps, kRegressionBands, memory),
          bands_(memory.take<Vsp32fc>(shape.bands())),
          played_(memory.take<float>(shape.frame)),
          limitSamples_(memory.take<float>(shape.frame)),
          hardnessSamples_(memory.take<float>(shape.frame)) {}

    // Turns a frame of the far end into what the loudspeaker plays.
    void play(std::span<Sample> far) {
        constexpr float kFall = 0.9995f;  // of the peak, a frame
        peak_ *= kFall;
        peak_ = std::max(peak_, peakOf<Sample>(far));
        if (stage_ == Stage::linear) return;
        const bool saturates = stage_ == Stage::saturates;
        if (saturates) {
            Saturation(limit_, hardness_).apply<Sample>(far, played_.data(), limitSamples_.data(), hardnessSamples_.data());
            std::transform(played_.begin(), played_.end(), far.begin(), Arithmetic::sample);
        } else {
            Saturation::softest<Sample>(far, limit_, limitSamples_.data());
        }
        analyse(limitBank_, limitSamples_, byLimit_);
        if (saturates) analyse(hardnessBank_, hardnessSamples_, byHardness_);
    }

    // What the filters made of a frame; learning: their step size. Returns by what their coefficients are to be multiplied.
    float learn(const FramePowers& powers, const Complex* estimate, const Complex* error,
                const Complex* const* coefficients, int delay, double learning, bool nearSpeech) {
        constexpr double kLearnedToLook = 0.2, kLearned = 0.5;
        constexpr int kStep = 16;  // frames
        if (!nearSpeech) watch(powers.estimate, powers.left, learning);
        if (stage_ == Stage::linear) return 1;
        if (frames_ < 0) {
            frames_++;
            return 1;
        }
        if (stage_ == Stage::looks ? nearSpeech || learning > kLearnedToLook : learning > kLearned) return 1;
        correlate(estimate, error, coefficients, delay);
        if (++frames_ < kStep) return 1;
        frames_ = 0;
        if (stage_ == Stage::saturates) return improve();
        return look();
    }

  private:
    // Looks: the filters work on the far end itself, and a saturation is tried beside it.
    enum class Stage { linear, looks, saturates };
    using Rows = DelayLine<Vsp32fc>;
    using Shares = ErrorRegression::Shares;

    static constexpr std::size_t kBasesOfLook = 2;
    static constexpr float kMost = 1e16f;   // power of a frame
    static constexpr float kTried = 0.35f;  // limit, of the peak

    std::size_t band(int i) const {
        return static_cast<std::size_t>((i + 2) * (shape_.bands() - 1) / (kRegressionBands + 4));
    }

    void analyse(FilterBank<FloatArithmetic>& bank, std::span<const float> samples, Rows& to) {
        bank.analyse(samples.data(), bands_.data());
        Vsp32fc* row = to.push();
        for (int i = 0; i < kRegressionBands; i++) row[i] = bands_[band(i)];
    }

    void copyBands(const Complex* from, float one, Vsp32fc* to) const {
        for (int i = 0; i < kRegressionBands; i++) to[i] = inFloat(from[band(i)], one);
    }

    void begin(Stage stage, float limit) {
        stage_ = stage;
        limit_ = limit;
        hardness_ = 0;
        frames_ = -filling_;
        found_ = worse_ = 0;
        best_ = 1;
        regression_.forget();
    }

    // The share of the echo's power that is left while there is one.
    void watch(float echo, float left, double learning) {
        constexpr float kShare = 0.02f, kPause = 0.1f;                                 // of a new frame, of the mean power
        constexpr float kSuspicious = 0.002f, kExplained = 0.001f, kCancelled = 0.5f;  // what is left
        if (!(echo <= kMost && left <= kMost) || echo < kPause * echo_) return;
        echo_ += kShare * (echo - echo_);
        left_ += kShare * (left - left_);
        if (stage_ == Stage::linear && left_ > kSuspicious * echo_ && left_ < kCancelled * echo_)
            begin(Stage::looks, kTried * peak_ + 1);
        if (stage_ == Stage::looks && left_ < kExplained * echo_) stage_ = Stage::linear;
        best_ = std::min(best_, left_ / echo_);
        if (stage_ == Stage::saturates) doubt(left / echo, learning);
    }

    // It is given up if much more is left than there was at best, and the filters have to learn again, as they do not while
    // somebody talks: a loudspeaker that saturates less is not found from one that saturates more.
    void doubt(float left, double learning) {
        constexpr float kMuch = 0.03f, kMore = 8;
        constexpr double kLearns = 0.05;
        constexpr int kPatience = 70;  // frames
        worse_ = left > std::max(kMuch, kMore * best_) && learning > kLearns ? worse_ + 1 : std::max(worse_ - 1, 0);
        if (worse_ > kPatience) stage_ = Stage::linear;
    }

    void correlate(const Complex* estimate, const Complex* error, const Complex* const* coefficients, int delay) {
        constexpr float kAudible = 0.1f, kNothing = 1000;
        ErrorRegression::Bases bases;
        RegressionFrame left;
        copyBands(estimate, Arithmetic::kBand, bases[0].data());
        copyBands(error, Arithmetic::kBand, left.data());
        const float power = product(left, left) + kNothing, echo = product(bases[0], bases[0]);
        if (!(echo > kAudible * power && echo <= kMost)) return;
        for (int t = 0; t < taps_; t++) copyBands(coefficients[t], Arithmetic::kCoefficient, path_.at(0)[t]);
        FloatArithmetic::filter(byLimit_.at(delay), path_.at(0), bases[1].data(), taps_, kRegressionBands);
        if (!(product(bases[1], bases[1]) <= kMost)) return;
        if (stage_ == Stage::looks) return regression_.add(bases, kBasesOfLook, left, power);
        FloatArithmetic::filter(byHardness_.at(delay), path_.at(0), bases[2].data(), taps_, kRegressionBands);
        if (product(bases[2], bases[2]) <= kMost) regression_.add(bases, ErrorRegression::kBases, left, power);
    }

    // A saturation makes the echo of what is quiet louder beside the estimate, and that of what is loud quieter. A path
    // that changes, or a talker, would not do so for long.
    float look() {
        constexpr double kMore = 0.03, kLess = 0.25, kExplains = 0.1;
        constexpr int kTimes = 3;
        const Shares x = regression_.fit(kBasesOfLook);
        const double explained = regression_.explained(x) - regression_.explained(regression_.fit(1));
        const bool likely = x[0] > kMore && x[0] < 1 && x[1] > kLess && x[1] < 1 / kLess && explained > kExplains;
        found_ = likely ? found_ + 1 : 0;
        const float tried = kTried * peak_ + 1;
        if (found_ == kTimes) {
            begin(Stage::saturates, x[1] < 1 ? limit_ / static_cast<float>(std::sqrt(x[1])) : limit_);
            return static_cast<float>(1 + x[0]);
        }
        if (!likely && (tried > 2 * limit_ || 2 * tried < limit_)) begin(Stage::looks, tried);
        return 1;
    }

    float improve() {
        constexpr double kCertain = 0.003, kWay = 0.7, kMostLouder = 0.05, kMostLimit = 0.15, kMostHarder = 0.5;
        constexpr float kFar = 4;  // limit, of the peak
        const Shares x = regression_.fit(ErrorRegression::kBases);
        if (!(regression_.explained(x) > kCertain)) return 1;
        const auto step = [&x](std::size_t i, double most) { return std::clamp(kWay * x[i], -most, most); };
        const double before = hardness_, louder = step(0, kMostLouder), limit = step(1, kMostLimit);
        hardness_ = std::clamp(hardness_ + static_cast<float>(step(2, kMostHarder)), 0.0f, Saturation::kHardest);
        limit_ = std::max(1.0f, limit_ * static_cast<float>(1 + limit));
        regression_.take({louder, limit, hardness_ - before});
        if (limit_ > kFar * peak_) stage_ = Stage::linear;
        return static_cast<float>(1 + louder);
    }

    BankShape shape_;
    int taps_, filling_;  // frames until the delay lines are full
    FilterBank<FloatArithmetic> limitBank_, hardnessBank_;
    Rows byLimit_, byHardness_, path_;
    std::span<Vsp32fc> bands_;
    std::span<float> played_, limitSamples_, hardnessSamples_;
    ErrorRegression regression_;
    Stage stage_ = Stage::linear;
    int frames_ = 0;             // of a step, below 0 while the delay lines fill
    int found_ = 0, worse_ = 0;  // how often in succession
    float peak_ = 0, limit_ = 1, hardness_ = 0;
    float left_ = 0, echo_ = 0, best_ = 1;  // best: left of an echo of 1
};

}  // namespace vspv
