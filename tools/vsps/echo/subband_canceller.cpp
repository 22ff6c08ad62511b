#include "echo/subband_canceller.h"

#include <vector>
#include <algorithm>
#include <cstdlib>

#include "echo/arithmetic.h"
#include "echo/delay_line.h"
#include "echo/filter_bank.h"
#include "echo/step_size.h"

namespace {

constexpr int kLookAhead = 2;

BankShape shapeFor(int rate) {
    static int o = getenv("ORD") ? atoi(getenv("ORD")) : 7, f = getenv("FR") ? atoi(getenv("FR")) : 64, l = getenv("LN") ? atoi(getenv("LN")) : 3;
    if (rate == 16000) return {o + 1, 2 * f, l * (2 << o)};
    return {o, f, l * (1 << o)};
}

template <class Arithmetic>
class SubbandCanceller : public EchoCanceller {
    using Sample = typename Arithmetic::Sample;
    using Complex = typename Arithmetic::Complex;
    using Step = typename Arithmetic::Step;

  public:
    explicit SubbandCanceller(const EchoCancellerSettings& s)
        : shape_(shapeFor(s.rate)),
          bands_(shape_.bands()),
          taps_(static_cast<int>(s.tailMs * s.rate / 1000) / shape_.frame + kLookAhead + 3),
          window_(analysisWindow(shape_)),
          farBank_(shape_, window_),
          nearBank_(shape_, window_),
          outBank_(shape_, backwards(synthesisWindow(shape_, window_))),
          far_(taps_, bands_),
          farPower_(taps_, bands_),
          near_(kLookAhead + 1, bands_),
          coefficients_(taps_, bands_),
          stepSize_(bands_, taps_, double(s.rate) / shape_.frame),
          steps_(bands_),
          error_(bands_),
          estimate_(bands_),
          ePower_(bands_),
          yPower_(bands_),
          cross_(bands_),
          farIn_(shape_.frame),
          nearIn_(shape_.frame),
          out_(shape_.frame) {}

    int latency() const override { return shape_.window - shape_.frame + kLookAhead * shape_.frame + shape_.frame; }
    EchoCancellerStatus status() const override { return {}; }

    void process(std::span<const float> far, std::span<const float> near, std::span<float> out) override {
        for (std::size_t i = 0; i < far.size(); i++) {
            farIn_[filled_] = Arithmetic::sample(far[i]);
            nearIn_[filled_] = Arithmetic::sample(near[i]);
            out[i] = static_cast<float>(out_[filled_]);
            if (++filled_ == farIn_.size()) {
                processFrame();
                filled_ = 0;
            }
        }
    }

  private:
    static std::vector<double> backwards(std::vector<double> w) {
        std::reverse(w.begin(), w.end());
        return w;
    }

    void processFrame() {
        constexpr auto unit = static_cast<float>(1 / Arithmetic::kBandScale);
        Complex* x = far_.push();
        farBank_.analyse(farIn_.data(), x);
        float* power = farPower_.push();
        for (int k = 0; k < bands_; k++) power[k] = unit * unit * (float(x[k].re) * float(x[k].re) + float(x[k].im) * float(x[k].im));
        nearBank_.analyse(nearIn_.data(), near_.push());
        const Complex* d = near_.at(kLookAhead)[0];
        Arithmetic::filter(far_.at(0), coefficients_.at(0), estimate_.data(), taps_, bands_);
        for (int k = 0; k < bands_; k++) {
            error_[k] = Arithmetic::subtract(d[k], estimate_[k]);
            const float er = unit * float(error_[k].re), ei = unit * float(error_[k].im);
            const float yr = unit * float(estimate_[k].re), yi = unit * float(estimate_[k].im);
            ePower_[k] = er * er + ei * ei;
            yPower_[k] = yr * yr + yi * yi;
            cross_[k] = er * yr + ei * yi;
        }
        stepSize_.update({farPower_.at(0), ePower_.data(), yPower_.data(), cross_.data()});
        for (int g = 0; g < stepSize_.groups(); g++) {
            const float* s = stepSize_.steps(g);
            for (int k = 0; k < bands_; k++) steps_[k] = Arithmetic::step(s[k]);
            const int first = stepSize_.firstTap(g);
            Arithmetic::update(steps_.data(), far_.at(first), error_.data(), coefficients_.at(first), stepSize_.tapsOf(g), bands_);
        }
        turn_ = (turn_ + 1) % stepSize_.groups();
        const int first = stepSize_.firstTap(turn_), count = stepSize_.tapsOf(turn_);
        float* cp = stepSize_.coefficientPower(turn_);
        constexpr auto cunit = static_cast<float>(1 / Arithmetic::kCoefficientScale);
        for (int k = 0; k < bands_; k++) {
            cp[k] = 0;
            for (int t = 0; t < count; t++) {
                const Complex c = coefficients_.at(first)[t][k];
                const float cr = cunit * float(c.re), ci = cunit * float(c.im);
                cp[k] += (cr * cr + ci * ci) / float(count);
            }
        }
        outBank_.synthesise(error_.data(), out_.data());
    }

    BankShape shape_;
    int bands_, taps_;
    std::vector<double> window_;
    FilterBank<Arithmetic> farBank_, nearBank_, outBank_;
    DelayLine<Complex> far_;
    DelayLine<float> farPower_;
    DelayLine<Complex> near_, coefficients_;
    SubbandStepSize stepSize_;
    std::vector<Step> steps_;
    std::vector<Complex> error_, estimate_;
    std::vector<float> ePower_, yPower_, cross_;
    std::vector<Sample> farIn_, nearIn_, out_;
    std::size_t filled_ = 0;
    int turn_ = 0;
};

}  // namespace

std::unique_ptr<EchoCanceller> makeSubbandCanceller(const EchoCancellerSettings& settings) {
    if (settings.fixedPoint) return std::make_unique<SubbandCanceller<FixedArithmetic>>(settings);
    return std::make_unique<SubbandCanceller<FloatArithmetic>>(settings);
}

std::unique_ptr<EchoCanceller> makeEchoCanceller(const EchoCancellerSettings& settings) { return makeSubbandCanceller(settings); }
