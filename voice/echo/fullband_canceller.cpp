#include <algorithm>
#include <optional>

#include "echo/arithmetic.h"
#include "echo/bulk_delay.h"
#include "echo/echo_presence.h"
#include "echo/engine.h"
#include "echo/enhancement.h"
#include "echo/far_activity.h"
#include "echo/output_guard.h"
#include "echo/tone_disabler.h"

namespace vspv {

namespace {

constexpr int kBlockRate = 200;  // blocks a second, for each of which a step size is found
constexpr int kBlocksAhead = 3;  // for which the output waits, to see what the near end will be

// Speech falls off towards high frequencies, and where there is little power an NLMS filter learns slowly. Both signals go
// through a first difference that evens that out, and the output through its inverse. The gain keeps it in 16 bits.
constexpr float kEmphasis = 0.9f, kEmphasisGain = 0.5f;

template <class Arithmetic>
class FullbandCanceller {
    using Sample = typename Arithmetic::Sample;

  public:
    FullbandCanceller(const VspvEchoSettings& c, Memory& memory)
        : rate_(c.samplingRate),
          block_(rate_ / kBlockRate),
          frame_(bankShape(rate_).frame),
          taps_(std::max(1, static_cast<int>(c.tailMs * rate_ / 1000))),
          maxDelay_(static_cast<int>(c.maxBulkDelayMs * rate_ / 1000)),
          farIn_(memory.take<Sample>(block_)),
          nearIn_(memory.take<Sample>((kBlocksAhead + 1) * block_)),
          near_(memory.take<Sample>(block_)),
          error_(memory.take<Sample>(block_)),
          echoes_(memory.take<float>((kBlocksAhead + 1) * block_)),
          echo_(memory.take<float>(block_)),
          out_(memory.take<Sample>(block_)),
          steps_(memory.take<typename Arithmetic::FullbandStep>(block_)),
          far_(memory.take<Sample>(maxDelay_ + taps_ + block_)),
          coefficients_(memory.take<Sample>(taps_)),
          tapEnergy_(memory.take<float>(std::max(1, taps_ / frame_))),
          controller_(takeController(memory)),
          farActivity_((maxDelay_ + taps_) / block_ + 1),
          presence_(kBlockRate),
          guard_(rate_, kBlocksAhead * block_),
          enhancement_(kBlockRate) {
        if (!memory.measures()) Arithmetic::initFullbandController(controller_, taps_, block_, rate_);
        if (c.toneDisabling != 0) tone_.emplace(rate_, block_, memory);
        if (maxDelay_ >= frame_)
            bulkDelay_.emplace(bankShape(rate_), maxDelay_ / frame_, static_cast<int>(tapEnergy_.size()), rate_, memory);
    }

    int latency() const { return (kBlocksAhead + 1) * block_; }
    VspvEchoStatus status() const { return status_; }

    template <class Outside>
    void process(const Outside* far, const Outside* near, Outside* out, int len) {
        for (int i = 0; i < len; i++) {
            farIn_[filled_] = Arithmetic::sample(fromOutside(far[i]));
            newestNear()[filled_] = Arithmetic::sample(fromOutside(near[i]));
            toOutside(static_cast<float>(out_[filled_]), out[i]);
            if (++filled_ < farIn_.size()) continue;
            processBlock();
            filled_ = 0;
        }
    }

  private:
    static typename Arithmetic::FullbandControllerState* takeController(Memory& memory) {
        Vsp32s size = 0;
        Arithmetic::fullbandControllerSize(&size);
        return reinterpret_cast<typename Arithmetic::FullbandControllerState*>(memory.take<Vsp8u>(size).data());
    }
    int delay() const { return bulkDelay_ ? bulkDelay_->samples() : 0; }
    Sample* newestNear() { return nearIn_.data() + kBlocksAhead * block_; }
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
        if (tone_) tone_->process(farIn_.data(), newestNear(), block_);
        const bool disabled = tone_ && tone_->disabled();
        std::copy(far_.begin() + block_, far_.end(), far_.begin());
        for (std::size_t n = 0; n < farIn_.size(); n++) {
            newest()[n] = emphasise(farIn_[n], lastFar_);
            near_[n] = emphasise(newestNear()[n], lastNear_);
        }
        const double step = cancel(!disabled);
        presence_.update(static_cast<float>(energy(near_.data(), block_)),
                         static_cast<float>(energy(error_.data(), block_)));
        if (bulkDelay_ && !disabled) followDelay();
        subtract(disabled, step);
        farActivity_.update(energy(farIn_.data(), block_) / block_);
        status_ = {.echoFound = presence_.found(),
                   .farActive = farActivity_.active(),
                   .doubleTalk = !disabled && farActivity_.active() && nearSpeech_ != 0,
                   .toneDisabled = disabled,
                   .bulkDelayMs = 1000.0 * delay() / rate_,
                   .stepSize = step,
                   .erle = enhancement_.decibels()};
    }

    // First with the filter as it is, which shows how far it may be trusted to adapt; then once more, adapting.
    double cancel(bool mayAdapt) {
        const Sample* ref = reference();
        Arithmetic::filterFullband(ref, near_.data(), error_.data(), block_, coefficients_.data(), taps_);
        if (!mayAdapt) return 0;
        float step = 0;
        Arithmetic::controlFullband(ref, near_.data(), error_.data(), block_, coefficients_.data(), guard_.removing(),
                                    steps_.data(), &step, &nearSpeech_, controller_);
        if (step == 0) {
            scaledError_ = 0;
            return 0;
        }
        Arithmetic::adaptFullband(ref, near_.data(), steps_.data(), error_.data(), block_, coefficients_.data(), taps_,
                                  &scaledError_);
        return step;
    }

    void subtract(bool disabled, double step) {
        float* const newestEcho = echoes_.data() + kBlocksAhead * block_;
        for (std::size_t n = 0; n < out_.size(); n++) {
            lastEcho_ =
                (static_cast<float>(near_[n]) - static_cast<float>(error_[n])) / kEmphasisGain + kEmphasis * lastEcho_;
            newestEcho[n] = lastEcho_;
        }
        const std::span<const Sample> near(nearIn_.data(), out_.size());
        guard_.expect(std::span<const Sample>(newestNear(), out_.size()));
        std::copy_n(echoes_.begin(), out_.size(), echo_.begin());
        if (disabled) std::fill(echo_.begin(), echo_.end(), 0.0f);
        guard_.limit(near, echo_, step);
        for (std::size_t n = 0; n < out_.size(); n++) out_[n] = Arithmetic::sample(static_cast<float>(near[n]) - echo_[n]);
        enhancement_.update(meanSquare(near), meanSquare(std::span<const Sample>(out_)));
        std::copy(nearIn_.begin() + block_, nearIn_.end(), nearIn_.begin());
        std::copy(echoes_.begin() + block_, echoes_.end(), echoes_.begin());
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
        const auto begin = coefficients_.begin(), end = coefficients_.end();
        if (shift > 0)
            std::fill(std::shift_left(begin, end, shift), end, Sample{});
        else
            std::fill(begin, std::shift_right(begin, end, -shift), Sample{});
        scaledError_ = 0;
        if (bulkDelay_->useful())
            Arithmetic::resetFullbandController(controller_, shift);
        else
            Arithmetic::resetFullbandController(controller_, taps_);
    }

    int rate_, block_, frame_, taps_, maxDelay_;
    std::span<Sample> farIn_, nearIn_, near_, error_;
    std::span<float> echoes_, echo_;
    std::span<Sample> out_;
    std::span<typename Arithmetic::FullbandStep> steps_;
    std::span<Sample> far_;  // emphasised, with its past
    std::span<Sample> coefficients_;
    Sample scaledError_ = 0;
    std::span<float> tapEnergy_;  // in frames of the search
    typename Arithmetic::FullbandControllerState* controller_;
    Vsp32s nearSpeech_ = 0;
    FarActivity farActivity_;
    EchoPresence presence_;
    OutputGuard guard_;
    Enhancement enhancement_;
    std::optional<ToneDisabler> tone_;
    std::optional<SignalBulkDelay> bulkDelay_;
    float lastFar_ = 0, lastNear_ = 0, lastEcho_ = 0;
    std::size_t filled_ = 0;
    VspvEchoStatus status_{};
};

}  // namespace

constexpr EchoEngine kFullbandFloat = engineOf<FullbandCanceller<FloatArithmetic>>();
constexpr EchoEngine kFullbandFixed = engineOf<FullbandCanceller<FixedArithmetic>>();

}  // namespace vspv
