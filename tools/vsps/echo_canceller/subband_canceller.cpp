#include "echo_canceller/subband_canceller.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "echo_canceller/arithmetic.h"
#include "echo_canceller/bulk_delay.h"
#include "echo_canceller/delay_line.h"
#include "echo_canceller/echo_presence.h"
#include "echo_canceller/far_activity.h"
#include "echo_canceller/filter_bank.h"
#include "echo_canceller/output_guard.h"
#include "echo_canceller/step_size.h"
#include "echo_canceller/tone_disabler.h"

namespace {

// Between bands of frames, a path of no delay also looks into the future: the near end waits for so many frames. Into the
// past it gets as much longer.
constexpr int kLookAhead = 1, kLookBack = 3;

template <class Arithmetic>
class SubbandCanceller : public EchoCanceller {
    using Sample = typename Arithmetic::Sample;
    using Complex = typename Arithmetic::Complex;

  public:
    explicit SubbandCanceller(const EchoCancellerSettings& s)
        : shape_(bankShape(s.rate)),
          bands_(shape_.bands()),
          frameMs_(1000.0 * shape_.frame / s.rate),
          taps_(static_cast<int>(s.tailMs / frameMs_) + 1 + kLookAhead + kLookBack),
          maxDelay_(static_cast<int>(s.maxBulkDelayMs / frameMs_)),
          farBank_(shape_, farWindow(shape_)),
          nearBank_(shape_, nearWindow(shape_)),
          outBank_(shape_, backwards(synthesisWindow(shape_, nearWindow(shape_)))),
          far_(taps_ + maxDelay_, bands_),
          farPower_(taps_ + maxDelay_, bands_),
          near_(kLookAhead + 1, bands_),
          coefficients_(taps_, bands_),
          stepSize_(bands_, taps_, 1000 / frameMs_),
          farActivity_(maxDelay_ + taps_),
          presence_(1000 / frameMs_),
          guard_(s.rate),
          steps_(static_cast<std::size_t>(bands_)),
          tapEnergy_(static_cast<std::size_t>(taps_)),
          estimate_(steps_.size()),
          error_(steps_.size()),
          errorPower_(steps_.size()),
          estimatePower_(steps_.size()),
          correlation_(steps_.size()),
          farIn_(static_cast<std::size_t>(shape_.frame)),
          estimated_(farIn_.size()),
          echo_(farIn_.size()),
          out_(farIn_.size()),
          nearIn_(static_cast<std::size_t>(latency())) {
        if (s.toneDisabling) tone_.emplace(s.rate);
        if (maxDelay_ > 0)
            bulkDelay_.emplace(BulkDelay::Shape{maxDelay_, taps_, double(s.rate) / shape_.transform(), 1000 / frameMs_});
    }

    // Of analysis and synthesis, of the waiting for the future, and of the collecting of a frame.
    int latency() const override { return shape_.window - shape_.frame + kLookAhead * shape_.frame + shape_.frame; }

    EchoCancellerStatus status() const override { return status_; }

    void process(std::span<const float> far, std::span<const float> near, std::span<float> out) override {
        for (std::size_t i = 0, count = 0; i < out.size(); i += count) {
            count = std::min(out.size() - i, farIn_.size() - static_cast<std::size_t>(filled_));
            const auto part = [i, count](auto x) { return x.subspan(i, count); };
            std::ranges::transform(part(far), farIn_.begin() + filled_, Arithmetic::sample);
            std::ranges::transform(part(near), newest() + filled_, Arithmetic::sample);
            std::copy_n(out_.begin() + filled_, count, part(out).begin());
            filled_ += static_cast<std::ptrdiff_t>(count);
            if (filled_ < shape_.frame) continue;
            processFrame();
            filled_ = 0;
        }
    }

  private:
    static std::vector<double> backwards(std::vector<double> w) {
        std::reverse(w.begin(), w.end());
        return w;
    }
    static float meanSquare(std::span<const Sample> x) {
        float sum = 0;
        for (const Sample v : x) sum += static_cast<float>(v) * static_cast<float>(v);
        return sum / static_cast<float>(x.size());
    }
    // The near end as far back as the output lags; its newest frame comes last.
    Sample* newest() { return nearIn_.data() + nearIn_.size() - farIn_.size(); }
    int delay() const { return bulkDelay_ ? bulkDelay_->frames() : 0; }

    void processFrame() {
        if (tone_) tone_->process(farIn_.data(), newest(), shape_.frame);
        const bool disabled = tone_ && tone_->disabled();

        Complex* x = far_.push();
        farBank_.analyse(farIn_.data(), x);
        powers(x, farPower_.push());
        nearBank_.analyse(newest(), near_.push());
        cancel(near_.at(kLookAhead)[0]);
        if (!disabled) adapt();
        if (bulkDelay_ && !disabled && bulkDelay_->update(x, error_.data())) followDelay();
        subtract(disabled);
        observe(disabled);
        std::copy(nearIn_.begin() + shape_.frame, nearIn_.end(), nearIn_.begin());
    }

    // |z|^2 of each band.
    void powers(const Complex* z, float* power) const {
        constexpr float kUnit = 1 / Arithmetic::kBand;
        for (int k = 0; k < bands_; k++) {
            const float re = kUnit * static_cast<float>(z[k].re), im = kUnit * static_cast<float>(z[k].im);
            power[k] = re * re + im * im;
        }
    }

    void cancel(const Complex* near) {
        Arithmetic::filter(far_.at(delay()), coefficients_.at(0), estimate_.data(), taps_, bands_);
        constexpr float kUnit = 1 / Arithmetic::kBand;
        const Complex* y = estimate_.data();
        Complex* __restrict e = error_.data();
        float* __restrict errorPower = errorPower_.data();
        float* __restrict estimatePower = estimatePower_.data();
        float* __restrict correlation = correlation_.data();
        for (int k = 0; k < bands_; k++) {
            e[k] = Arithmetic::subtract(near[k], y[k]);
            const float er = kUnit * static_cast<float>(e[k].re), ei = kUnit * static_cast<float>(e[k].im);
            const float yr = kUnit * static_cast<float>(y[k].re), yi = kUnit * static_cast<float>(y[k].im);
            errorPower[k] = er * er + ei * ei;
            estimatePower[k] = yr * yr + yi * yi;
            correlation[k] = er * yr + ei * yi;
        }
        float left = 0, heard = 0;
        for (int k = 0; k < bands_; k++) {
            left += errorPower[k];
            heard += errorPower[k] + 2 * correlation[k] + estimatePower[k];
        }
        presence_.update(heard, left);
    }

    // The bank would give the near end back as it was, but for rounding.
    void subtract(bool disabled) {
        outBank_.synthesise(estimate_.data(), estimated_.data());
        std::transform(estimated_.begin(), estimated_.end(), echo_.begin(), [](Sample y) { return static_cast<float>(y); });
        guard_.limit(std::span<const Sample>(nearIn_.data(), echo_.size()), echo_, stepSize_.learning());
        if (disabled) std::fill(echo_.begin(), echo_.end(), 0.0f);
        for (std::size_t n = 0; n < out_.size(); n++)
            out_[n] = Arithmetic::sample(static_cast<float>(nearIn_[n]) - echo_[n]);
    }

    void adapt() {
        stepSize_.update(
            {farPower_.at(delay()), errorPower_.data(), estimatePower_.data(), correlation_.data(), guard_.removing()});
        for (int g = 0; g < stepSize_.groups(); g++) {
            if (!stepSize_.adapts(g)) continue;
            std::transform(stepSize_.steps(g), stepSize_.steps(g) + bands_, steps_.begin(), Arithmetic::step);
            const int first = stepSize_.firstTap(g);
            Arithmetic::adapt(steps_.data(), far_.at(delay() + first), error_.data(), coefficients_.at(first),
                              stepSize_.taps(g), bands_);
        }
        turn_ = (turn_ + 1) % stepSize_.groups();
        measureCoefficients(turn_);
    }

    void measureCoefficients(int group) {
        constexpr float kUnit = 1 / Arithmetic::kCoefficient;
        const float share = kUnit * kUnit / static_cast<float>(stepSize_.taps(group));
        float* power = stepSize_.coefficientPower(group);
        std::fill_n(power, bands_, 0.0f);
        for (int t = 0; t < stepSize_.taps(group); t++) {
            const Complex* c = coefficients_.at(stepSize_.firstTap(group))[t];
            for (int k = 0; k < bands_; k++) {
                const auto re = static_cast<float>(c[k].re), im = static_cast<float>(c[k].im);
                power[k] += share * (re * re + im * im);
            }
        }
    }

    void followDelay() {
        constexpr float kUnit = 1 / Arithmetic::kCoefficient;
        for (int t = 0; t < taps_; t++) {
            const Complex* c = coefficients_.at(t)[0];
            float energy = 0;
            for (int i = 0; i < BulkDelay::bands(); i++) {
                const Complex z = c[bulkDelay_->band(i)];
                const float re = kUnit * static_cast<float>(z.re), im = kUnit * static_cast<float>(z.im);
                energy += re * re + im * im;
            }
            tapEnergy_[static_cast<std::size_t>(t)] = energy / BulkDelay::bands();
        }
        const int before = delay();
        if (bulkDelay_->decide(tapEnergy_, presence_.leftShare())) realign(delay() - before);
    }

    // When the bulk delay has changed, the coefficients move with it.
    void realign(int shift) {
        const auto row = [this](int t) { return coefficients_.at(0)[t]; };
        const auto move = [&](int t) {
            if (t + shift >= 0 && t + shift < taps_)
                std::copy_n(row(t + shift), bands_, row(t));
            else
                std::fill_n(row(t), bands_, Complex{});
        };
        for (int t = 0; t < taps_; t++) move(shift > 0 ? t : taps_ - 1 - t);
        if (bulkDelay_->useful())
            stepSize_.shift(shift);
        else
            stepSize_.reset();
    }

    void observe(bool disabled) {
        farActivity_.update(meanSquare(farIn_));
        status_ = {.echoFound = presence_.found(),
                   .bulkDelayMs = delay() * frameMs_,
                   .stepSize = disabled ? 0 : stepSize_.learning(),
                   .farActive = farActivity_.active(),
                   .doubleTalk = !disabled && farActivity_.active() && stepSize_.nearSpeech(),
                   .toneDisabled = disabled};
    }

    BankShape shape_;
    int bands_;
    double frameMs_;
    int taps_, maxDelay_;
    FilterBank<Arithmetic> farBank_, nearBank_, outBank_;
    DelayLine<Complex> far_;
    DelayLine<float> farPower_;
    DelayLine<Complex> near_, coefficients_;
    SubbandStepSize stepSize_;
    FarActivity farActivity_;
    EchoPresence presence_;
    OutputGuard guard_;
    std::optional<ToneDisabler> tone_;
    std::optional<BulkDelay> bulkDelay_;
    std::vector<typename Arithmetic::Step> steps_;
    std::vector<float> tapEnergy_;
    std::vector<Complex> estimate_, error_;
    std::vector<float> errorPower_, estimatePower_, correlation_;
    std::vector<Sample> farIn_, estimated_;
    std::vector<float> echo_;
    std::vector<Sample> out_, nearIn_;
    std::ptrdiff_t filled_ = 0;
    int turn_ = 0;
    EchoCancellerStatus status_;
};

}  // namespace

std::unique_ptr<EchoCanceller> makeSubbandCanceller(const EchoCancellerSettings& settings) {
    if (settings.fixedPoint) return std::make_unique<SubbandCanceller<FixedArithmetic>>(settings);
    return std::make_unique<SubbandCanceller<FloatArithmetic>>(settings);
}
