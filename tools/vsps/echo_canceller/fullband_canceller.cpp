#include "echo_canceller/fullband_canceller.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

#include "echo_canceller/arithmetic.h"
#include "echo_canceller/bulk_delay.h"
#include "echo_canceller/echo_presence.h"
#include "echo_canceller/far_activity.h"
#include "echo_canceller/fullband_step_size.h"
#include "echo_canceller/output_guard.h"
#include "echo_canceller/tone_disabler.h"

namespace {

constexpr int kBlockRate = 200;  // blocks a second, for each of which a step size is found

// Speech falls off towards high frequencies, and where there is little power an NLMS filter learns slowly. Both signals go
// through a first difference that evens that out, and the output through its inverse. The gain keeps it in 16 bits.
constexpr float kEmphasis = 0.9f, kEmphasisGain = 0.5f;

constexpr double kSmallStep = 1e-5;  // not worth an update

template <class Arithmetic>
class FullbandCanceller : public EchoCanceller {
    using Sample = typename Arithmetic::Sample;

  public:
    explicit FullbandCanceller(const EchoCancellerSettings& s)
        : rate_(s.rate),
          block_(s.rate / kBlockRate),
          frame_(bankShape(s.rate).frame),
          taps_(std::max(1, static_cast<int>(s.tailMs * s.rate / 1000))),
          maxDelay_(static_cast<int>(s.maxBulkDelayMs * s.rate / 1000)),
          farIn_(static_cast<std::size_t>(block_)),
          nearIn_(farIn_.size()),
          near_(farIn_.size()),
          error_(farIn_.size()),
          echo_(farIn_.size()),
          out_(farIn_.size()),
          steps_(farIn_.size()),
          far_(static_cast<std::size_t>(maxDelay_ + taps_ + block_)),
          coefficients_(static_cast<std::size_t>(taps_)),
          tapEnergy_(static_cast<std::size_t>(std::max(1, taps_ / frame_))),
          stepSize_(taps_, kBlockRate),
          farActivity_((maxDelay_ + taps_) / block_ + 1),
          presence_(kBlockRate),
          guard_(s.rate) {
        if (s.toneDisabling) tone_.emplace(s.rate);
        if (maxDelay_ >= frame_)
            bulkDelay_.emplace(bankShape(s.rate), maxDelay_ / frame_, static_cast<int>(tapEnergy_.size()), s.rate);
    }

    int latency() const override { return block_; }
    EchoCancellerStatus status() const override { return status_; }

    void process(std::span<const float> far, std::span<const float> near, std::span<float> out) override {
        for (std::size_t i = 0; i < out.size(); i++) {
            farIn_[filled_] = Arithmetic::sample(far[i]);
            nearIn_[filled_] = Arithmetic::sample(near[i]);
            out[i] = static_cast<float>(out_[filled_]);
            if (++filled_ < farIn_.size()) continue;
            processBlock();
            filled_ = 0;
        }
    }

  private:
    int delay() const { return bulkDelay_ ? bulkDelay_->samples() : 0; }
    Sample* newest() { return far_.data() + maxDelay_ + taps_; }
    Sample* reference() { return newest() - delay(); }

    static Sample emphasise(Sample x, float& last) {
        const auto now = static_cast<float>(x);
        const Sample y = Arithmetic::sample(kEmphasisGain * (now - kEmphasis * last));
        last = now;
        return y;
    }
    static double energy(const Sample* x, int count) {
        double sum = 0;
        for (int i = 0; i < count; i++) sum += double(x[i]) * x[i];
        return sum;
    }

    void processBlock() {
        if (tone_) tone_->process(farIn_.data(), nearIn_.data(), block_);
        const bool disabled = tone_ && tone_->disabled();
        std::copy(far_.begin() + block_, far_.end(), far_.begin());
        for (std::size_t n = 0; n < farIn_.size(); n++) {
            newest()[n] = emphasise(farIn_[n], lastFar_);
            near_[n] = emphasise(nearIn_[n], lastNear_);
        }
        const double step = cancel(!disabled);
        presence_.update(static_cast<float>(energy(near_.data(), block_)),
                         static_cast<float>(energy(error_.data(), block_)));
        if (bulkDelay_ && !disabled) followDelay();
        subtract(disabled, step);
        farActivity_.update(energy(farIn_.data(), block_) / block_);
        status_ = {.echoFound = presence_.found(),
                   .bulkDelayMs = 1000.0 * delay() / rate_,
                   .stepSize = step,
                   .farActive = farActivity_.active(),
                   .doubleTalk = !disabled && farActivity_.active() && stepSize_.nearSpeech(),
                   .toneDisabled = disabled};
    }

    // First with the filter as it is, which shows how far it may be trusted to adapt; then once more, adapting.
    double cancel(bool mayAdapt) {
        const Sample* ref = reference();
        Arithmetic::filterFullband(ref, near_.data(), error_.data(), block_, coefficients_.data(), taps_);
        if (!mayAdapt) return 0;
        FullbandStepSize::Block b{};
        b.samples = block_;
        b.cancelling = guard_.removing();
        b.farEnergy = energy(ref + block_ - taps_, taps_);
        b.farPower = energy(ref, block_) / block_;
        double peak = 0;
        for (std::size_t n = 0; n < near_.size(); n++) {
            const double e = error_[n], y = double(near_[n]) - e;
            b.errorPower += e * e / block_;
            b.estimatePower += y * y / block_;
            b.correlation += e * y / block_;
            peak = std::max(peak, std::abs(e));
        }
        const double unit = Arithmetic::kTap;
        const double step = stepSize_.update(b, energy(coefficients_.data(), taps_) / (unit * unit));
        if (step < kSmallStep) {
            scaledError_ = 0;
            return 0;
        }
        double power = energy(ref - taps_, taps_);
        for (int n = 0; n < block_; n++) {
            power += double(ref[n]) * ref[n] - double(ref[n - taps_]) * ref[n - taps_];
            steps_[static_cast<std::size_t>(n)] = Arithmetic::fullbandStep(step / (power + 1), 2 * peak, std::sqrt(power));
        }
        Arithmetic::adaptFullband(ref, near_.data(), steps_.data(), error_.data(), block_, coefficients_.data(), taps_,
                                  &scaledError_);
        return step;
    }

    void subtract(bool disabled, double step) {
        for (std::size_t n = 0; n < out_.size(); n++) {
            lastEcho_ =
                (static_cast<float>(near_[n]) - static_cast<float>(error_[n])) / kEmphasisGain + kEmphasis * lastEcho_;
            echo_[n] = lastEcho_;
        }
        guard_.limit(std::span<const Sample>(nearIn_), echo_, step);
        if (disabled) std::fill(echo_.begin(), echo_.end(), 0.0f);
        for (std::size_t n = 0; n < out_.size(); n++)
            out_[n] = Arithmetic::sample(static_cast<float>(nearIn_[n]) - echo_[n]);
    }

    void followDelay() {
        bool due = false;
        for (std::size_t n = 0; n < error_.size(); n++)
            due |= bulkDelay_->update(static_cast<float>(newest()[n]), static_cast<float>(error_[n]));
        if (!due) return;
        const double unit = Arithmetic::kTap;
        for (std::size_t t = 0; t < tapEnergy_.size(); t++) {
            const int first = static_cast<int>(t) * frame_;
            tapEnergy_[t] =
                static_cast<float>(energy(coefficients_.data() + first, std::min(frame_, taps_ - first)) / (unit * unit));
        }
        const int before = delay();
        if (bulkDelay_->decide(tapEnergy_, presence_.leftShare())) realign(delay() - before);
    }

    // When the bulk delay has changed, the coefficients move with it.
    void realign(int shift) {
        std::vector<Sample> moved(coefficients_.size());
        for (int t = std::max(0, -shift); t < std::min(taps_, taps_ - shift); t++)
            moved[static_cast<std::size_t>(t)] = coefficients_[static_cast<std::size_t>(t + shift)];
        coefficients_ = moved;
        scaledError_ = 0;
        if (bulkDelay_->useful())
            stepSize_.forget(std::min(1.0, std::abs(shift) / double(taps_)));
        else
            stepSize_.reset();
    }

    int rate_, block_, frame_, taps_, maxDelay_;
    std::vector<Sample> farIn_, nearIn_, near_, error_;
    std::vector<float> echo_;
    std::vector<Sample> out_;
    std::vector<typename Arithmetic::FullbandStep> steps_;
    std::vector<Sample> far_;  // emphasised, with its past
    std::vector<Sample> coefficients_;
    Sample scaledError_ = 0;
    std::vector<float> tapEnergy_;  // in frames of the search
    FullbandStepSize stepSize_;
    FarActivity farActivity_;
    EchoPresence presence_;
    OutputGuard guard_;
    std::optional<ToneDisabler> tone_;
    std::optional<SignalBulkDelay> bulkDelay_;
    float lastFar_ = 0, lastNear_ = 0, lastEcho_ = 0;
    std::size_t filled_ = 0;
    EchoCancellerStatus status_;
};

}  // namespace

std::unique_ptr<EchoCanceller> makeFullbandCanceller(const EchoCancellerSettings& settings) {
    if (settings.fixedPoint) return std::make_unique<FullbandCanceller<FixedArithmetic>>(settings);
    return std::make_unique<FullbandCanceller<FloatArithmetic>>(settings);
}
