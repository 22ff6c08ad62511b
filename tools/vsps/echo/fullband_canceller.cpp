#include "echo/fullband_canceller.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "echo/arithmetic.h"
#include "echo/fullband_step_size.h"

namespace {

constexpr int kBlocks = 200;  // a second
// Speech falls off towards high frequencies, and an NLMS filter learns slowly where there is little power. Both signals go
// through a filter that evens that out, and the output through its inverse.
constexpr float kEmphasis = 0.9f, kEmphasisGain = 0.5f;  // the gain keeps the result in 16 bits

constexpr double kSmallStep = 1e-5;  // not worth the time

template <class Arithmetic>
class FullbandCanceller : public EchoCanceller {
    using Sample = typename Arithmetic::Sample;

  public:
    explicit FullbandCanceller(const EchoCancellerSettings& s)
        : rate_(s.rate),
          block_(s.rate / kBlocks),
          taps_(std::max(1, static_cast<int>(s.tailMs * s.rate / 1000))),
          far_(static_cast<std::size_t>(taps_ + block_)),
          near_(static_cast<std::size_t>(block_)),
          error_(near_.size()),
          out_(near_.size()),
          steps_(near_.size()),
          coefficients_(static_cast<std::size_t>(taps_)),
          stepSize_(taps_, kBlocks) {}

    int latency() const override { return block_; }
    EchoCancellerStatus status() const override { return status_; }

    void process(std::span<const float> far, std::span<const float> near, std::span<float> out) override {
        for (std::size_t i = 0; i < out.size(); i++) {
            reference()[filled_] = Arithmetic::sample(emphasise(far[i], lastFar_));
            near_[static_cast<std::size_t>(filled_)] = Arithmetic::sample(emphasise(near[i], lastNear_));
            out[i] = static_cast<float>(out_[filled_]);
            if (++filled_ < block_) continue;
            processBlock();
            filled_ = 0;
        }
    }

  private:
    static float emphasise(float x, float& last) {
        const float y = kEmphasisGain * (x - kEmphasis * last);
        last = x;
        return y;
    }
    Sample* reference() { return far_.data() + taps_; }

    static double energy(const Sample* x, int count) {
        double sum = 0;
        for (int i = 0; i < count; i++) sum += double(x[i]) * x[i];
        return sum;
    }

    void processBlock() {
        Arithmetic::filterFullband(reference(), near_.data(), error_.data(), block_, coefficients_.data(), taps_);
        FullbandStepSize::Block b{};
        b.samples = block_;
        b.farEnergy = energy(reference() - taps_ + block_, taps_);
        double peak = 0;
        for (std::size_t n = 0; n < near_.size(); n++) {
            const double e = error_[n], y = double(near_[n]) - e;
            b.errorPower += e * e / block_;
            b.estimatePower += y * y / block_;
            b.correlation += e * y / block_;
            peak = std::max(peak, std::abs(e));
        }
        const double tapEnergy = energy(coefficients_.data(), taps_) / (Arithmetic::kTap * Arithmetic::kTap);
        const double step = stepSize_.update(b, tapEnergy);
        if (step > kSmallStep) {
            double power = energy(reference() - taps_, taps_);
            for (int n = 0; n < block_; n++) {
                const double in = reference()[n], gone = reference()[n - taps_];
                power += in * in - gone * gone;
                steps_[static_cast<std::size_t>(n)] = Arithmetic::fullbandStep(step / (power + 1), 2 * peak, std::sqrt(power));
            }
            Arithmetic::adaptFullband(reference(), near_.data(), steps_.data(), error_.data(), block_, coefficients_.data(), taps_,
                                      &scaledError_);
        }
        for (std::size_t n = 0; n < out_.size(); n++) {
            last_ = static_cast<float>(error_[n]) / kEmphasisGain + kEmphasis * last_;
            out_[n] = static_cast<float>(Arithmetic::sample(last_));
        }
        std::copy(far_.begin() + block_, far_.end(), far_.begin());
    }

    int rate_, block_, taps_;
    std::vector<Sample> far_, near_, error_;
    std::vector<float> out_;
    std::vector<typename Arithmetic::FullbandStep> steps_;
    std::vector<Sample> coefficients_;
    Sample scaledError_ = 0;
    FullbandStepSize stepSize_;
    float lastFar_ = 0, lastNear_ = 0, last_ = 0;
    int filled_ = 0;
    EchoCancellerStatus status_;
};

}  // namespace

std::unique_ptr<EchoCanceller> makeFullbandCanceller(const EchoCancellerSettings& settings) {
    if (settings.fixedPoint) return std::make_unique<FullbandCanceller<FixedArithmetic>>(settings);
    return std::make_unique<FullbandCanceller<FloatArithmetic>>(settings);
}
