#include <algorithm>
#include <optional>

#include "echo/arithmetic.h"
#include "echo/bulk_delay.h"
#include "echo/delay_line.h"
#include "echo/echo_presence.h"
#include "echo/engine.h"
#include "echo/enhancement.h"
#include "echo/estimate_trust.h"
#include "echo/far_activity.h"
#include "echo/filter_bank.h"
#include "echo/frame_powers.h"
#include "echo/loudspeaker_model.h"
#include "echo/output_guard.h"
#include "echo/residual_echo.h"
#include "echo/subband_controller.h"
#include "echo/tone_disabler.h"

namespace vspv {

namespace {

// Between bands of frames, a path of no delay also looks into the future: the near end waits for so many frames. Into the
// past it gets as much longer.
constexpr int kLookAhead = 1, kLookBack = 3;

constexpr int kFramesKept = 7;  // of the near end, beyond those that are needed: so seldom is it moved

template <class Arithmetic>
class SubbandCanceller {
    using Sample = typename Arithmetic::Sample;
    using Complex = typename Arithmetic::Complex;

  public:
    SubbandCanceller(const VspvEchoSettings& c, Memory& memory)
        : SubbandCanceller(c, memory, memory.measures() ? BankWindows{} : bankWindows(bankShape(c.samplingRate))) {}

    // Of analysis and synthesis, of the waiting for the future, and of the collecting of a frame.
    int latency() const { return shape_.window - shape_.frame + kLookAhead * shape_.frame + shape_.frame; }

    VspvEchoStatus status() const {
        VspvEchoStatus status = status_;
        status.erle = enhancement_.decibels();
        return status;
    }

    template <class Outside>
    void process(const Outside* far, const Outside* near, Outside* out, int len) {
        for (int count = 0; len > 0; len -= count, far += count, near += count, out += count) {
            count = std::min(len, shape_.frame - filled_);
            takeIn(far, count, farIn_.data() + filled_);
            takeIn(near, count, newest() + filled_);
            const Sample* const made = out_.data() + filled_;
            for (int i = 0; i < count; i++) toOutside(static_cast<float>(made[i]), out[i]);
            filled_ += count;
            if (filled_ < shape_.frame) continue;
            processFrame();
            filled_ = 0;
        }
    }

  private:
    SubbandCanceller(const VspvEchoSettings& c, Memory& memory, const BankWindows& windows)
        : shape_(bankShape(c.samplingRate)),
          bands_(shape_.bands()),
          frameMs_(1000.0 * shape_.frame / c.samplingRate),
          taps_(static_cast<int>(c.tailMs / frameMs_) + 1 + kLookAhead + kLookBack),
          maxDelay_(static_cast<int>(c.maxBulkDelayMs / frameMs_)),
          farBank_(shape_, windows.far, memory),
          nearBank_(shape_, windows.near, memory),
          outBank_(shape_, windows.synthesis, memory),
          far_(taps_ + maxDelay_, bands_, memory),
          near_(kLookAhead + 1, bands_, memory),
          coefficients_(taps_, bands_, memory),
          controller_(shape_, taps_, c.samplingRate, memory),
          farActivity_(maxDelay_ + taps_),
          presence_(1000 / frameMs_),
          trust_(1000 / frameMs_),
          guard_(c.samplingRate, latency() - shape_.frame),
          enhancement_(1000 / frameMs_),
          loudspeaker_(shape_, windows.far, taps_, maxDelay_, memory),
          tapEnergy_(memory.take<float>(taps_)),
          estimate_(memory.take<Complex>(bands_)),
          error_(memory.take<Complex>(bands_)),
          farIn_(memory.take<Sample>(shape_.frame)),
          played_(memory.take<Sample>(shape_.frame)),
          estimated_(memory.take<Sample>(shape_.frame)),
          echo_(memory.take<float>(shape_.frame)),
          out_(memory.take<Sample>(shape_.frame)),
          nearLine_(memory.take<Sample>(latency() + kFramesKept * shape_.frame)) {
        if (c.toneDisabling != 0) tone_.emplace(c.samplingRate, shape_.frame, memory);
        if (c.suppression != 0) residualEcho_.emplace(shape_, windows.synthesis, c.samplingRate, memory);
        const double spacing = double(c.samplingRate) / shape_.transform();
        if (maxDelay_ > 0) bulkDelay_.emplace(BulkDelay::Shape{maxDelay_, taps_, spacing, 1000 / frameMs_}, memory);
    }

    // The near end as far back as the output lags; its newest frame comes last.
    std::span<Sample> nearIn() { return nearLine_.subspan(nearBegin_, static_cast<std::size_t>(latency())); }
    Sample* newest() { return nearIn().last(farIn_.size()).data(); }
    // What is in the line moves to its beginning when its end is reached.
    void advanceNear() {
        nearBegin_ += farIn_.size();
        if (nearBegin_ + static_cast<std::size_t>(latency()) <= nearLine_.size()) return;
        std::copy(nearLine_.begin() + static_cast<std::ptrdiff_t>(nearBegin_), nearLine_.end(), nearLine_.begin());
        nearBegin_ = 0;
    }
    int delay() const { return bulkDelay_ ? bulkDelay_->frames() : 0; }

    template <class Outside>
    static void takeIn(const Outside* in, int count, Sample* to) {
        int i = 0;
        if constexpr (std::is_same_v<Outside, float>)
            for (; i + 4 <= count; i += 4) Arithmetic::store(fromOutside(fourOf(in + i)), to + i);
        for (; i < count; i++) to[i] = Arithmetic::sample(fromOutside(in[i]));
    }

    void processFrame() {
        if (tone_) tone_->process(farIn_.data(), newest(), shape_.frame);
        const bool disabled = tone_ && tone_->disabled();

        guard_.expect(std::span<const Sample>(nearIn()).last(farIn_.size()));
        Complex* x = far_.push();
        std::copy(farIn_.begin(), farIn_.end(), played_.begin());
        loudspeaker_.play(played_);
        farBank_.analyse(played_.data(), x);
        nearBank_.analyse(newest(), near_.push());
        const FramePowers powers = cancel(near_.at(kLookAhead)[0]);
        if (!disabled) adapt(powers);
        if (bulkDelay_ && !disabled && bulkDelay_->update(x, error_.data())) followDelay();
        trust_.update(powers, bands_, controller_.learning());
        subtract(disabled);
        observe(disabled);
        advanceNear();
    }

    FramePowers cancel(const Complex* near) {
        Arithmetic::filter(far_.at(delay()), coefficients_.at(0), estimate_.data(), taps_, bands_);
        Arithmetic::subtract(near, estimate_.data(), error_.data(), bands_);
        return FramePowers::of<Arithmetic>(near, estimate_.data(), error_.data(), bands_);
    }

    // The bank would give the near end back as it was, but for rounding.
    void subtract(bool disabled) {
        outBank_.synthesise(estimate_.data(), echo_.data(), estimated_);
        const std::span<const Sample> near = nearIn().first(echo_.size());
        const float power = meanSquare(near);
        presence_.update(power, meanSquareLeft(near));
        if (disabled) std::fill(echo_.begin(), echo_.end(), 0.0f);
        guard_.limit(near, echo_, controller_.learning(), disabled ? std::span<float>() : residualEcho(), trust_.trusted());
        for (std::size_t n = 0; n < out_.size(); n += 4) Arithmetic::store(fourOf(&near[n]) - fourOf(&echo_[n]), &out_[n]);
        enhancement_.update(power, meanSquare(std::span<const Sample>(out_)));
    }

    std::span<float> residualEcho() {
        if (!residualEcho_) return {};
        return residualEcho_->find(estimate_.data(), error_.data(), controller_.residual(), controller_.nearSpeech(),
                                   guard_.removing());
    }

    float meanSquareLeft(std::span<const Sample> near) const {
        const float sum = sumOf(near.size(), [&](std::size_t n) {
            const float left = static_cast<float>(near[n]) - echo_[n];
            return left * left;
        });
        return sum / static_cast<float>(near.size());
    }

    void adapt(const FramePowers& powers) {
        controller_.adapt(far_.at(delay()), error_.data(), estimate_.data(), coefficients_.at(0), guard_.removing());
        const float gain = loudspeaker_.learn(powers, estimate_.data(), error_.data(), coefficients_.at(0), delay(),
                                              controller_.learning(), controller_.nearSpeech());
        if (gain == 1) return;
        for (int t = 0; t < taps_; t++) {
            Complex* c = coefficients_.at(0)[t];
            std::transform(c, c + bands_, c, [gain](Complex z) { return Arithmetic::scaled(z, gain); });
        }
    }

    void followDelay() {
        constexpr float kUnit = Arithmetic::kCoefficient;
        for (int t = 0; t < taps_; t++) {
            Vsp32fc c[BulkDelay::bands()];
            for (int i = 0; i < BulkDelay::bands(); i++) c[i] = inFloat(coefficients_.at(t)[0][bulkDelay_->band(i)], kUnit);
            tapEnergy_[static_cast<std::size_t>(t)] = powerOf(std::span<const Vsp32fc>(c)) / BulkDelay::bands();
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
            controller_.shift(shift);
        else
            controller_.reset();
    }

    void observe(bool disabled) {
        farActivity_.update(meanSquare<Sample>(farIn_));
        status_ = {.echoFound = presence_.found(),
                   .farActive = farActivity_.active(),
                   .doubleTalk = !disabled && farActivity_.active() && controller_.nearSpeech(),
                   .toneDisabled = disabled,
                   .bulkDelayMs = delay() * frameMs_,
                   .stepSize = disabled ? 0 : controller_.learning(),
                   .erle = 0};
    }

    BankShape shape_;
    int bands_;
    double frameMs_;
    int taps_, maxDelay_;
    FilterBank<Arithmetic> farBank_, nearBank_, outBank_;
    DelayLine<Complex> far_;
    DelayLine<Complex> near_, coefficients_;
    SubbandController<Arithmetic> controller_;
    FarActivity farActivity_;
    EchoPresence presence_;
    EstimateTrust trust_;
    OutputGuard guard_;
    Enhancement enhancement_;
    LoudspeakerModel<Arithmetic> loudspeaker_;
    std::optional<ToneDisabler> tone_;
    std::optional<BulkDelay> bulkDelay_;
    std::optional<ResidualEcho<Arithmetic>> residualEcho_;
    std::span<float> tapEnergy_;
    std::span<Complex> estimate_, error_;
    std::span<Sample> farIn_, played_, estimated_;
    std::span<float> echo_;
    std::span<Sample> out_, nearLine_;
    std::size_t nearBegin_ = 0;
    int filled_ = 0;
    VspvEchoStatus status_{};
};

}  // namespace

constexpr EchoEngine kSubbandFloat = engineOf<SubbandCanceller<FloatArithmetic>>();
constexpr EchoEngine kSubbandFixed = engineOf<SubbandCanceller<FixedArithmetic>>();

}  // namespace vspv
