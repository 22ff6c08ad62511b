#include "tone/answer_tone.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <functional>
#include <numbers>
#include <stdexcept>
#include <string>

#include "console/progress.h"
#include "vspsc.h"

namespace {

void check(VspStatus status) {
    if (status != vspStsNoErr) throw std::logic_error("tone detection: status " + std::to_string(status));
}

struct FloatDetector {
    using Sample = Vsp32f;
    using State = VspToneDetectState_EC_32f;
    static constexpr auto getSize = vspsToneDetectGetStateSize_EC_32f;
    static constexpr auto init = vspsToneDetectInit_EC_32f;
    static constexpr auto detect = vspsToneDetect_EC_32f;
};

struct FixedDetector {
    using Sample = Vsp16s;
    using State = VspToneDetectState_EC_16s;
    static constexpr auto getSize = vspsToneDetectGetStateSize_EC_16s;
    static constexpr auto init = vspsToneDetectInit_EC_16s;
    static constexpr auto detect = vspsToneDetect_EC_16s;
};

// The ends of the blocks of 1 ms in which the detector reports a reversal, in samples. The detector begins anew after 50 ms
// of constant samples: with nothing to hear it does not forget a tone.
template <typename Detector>
std::vector<std::size_t> findReversals(const Samples& samples, int rate) {
    Vsp32s size = 0;
    check(Detector::getSize(rate, &size));
    std::vector<Vsp8u> memory(static_cast<std::size_t>(size));
    auto* const state = reinterpret_cast<typename Detector::State*>(memory.data());
    check(Detector::init(state, rate));

    const std::vector<typename Detector::Sample> in(samples.begin(), samples.end());
    const auto block = static_cast<std::size_t>(rate / 1000);
    std::vector<std::size_t> reversals;
    std::size_t constant = 0;
    Progress progress("detecting tones", in.size());
    for (std::size_t begin = 0; begin < in.size(); begin += block) {
        const std::size_t count = std::min(block, in.size() - begin);
        Vsp32s reported = 0;
        check(Detector::detect(in.data() + begin, static_cast<Vsp32s>(count), &reported, state));
        if (reported != 0) reversals.push_back(begin + count);
        const auto end = in.begin() + std::ptrdiff_t(begin + count);
        constant = std::adjacent_find(end - std::ptrdiff_t(count), end, std::not_equal_to<>()) == end ? constant + 1 : 0;
        if (constant >= 50) check(Detector::init(state, rate));
        progress.advance(count);
    }
    return reversals;
}

// True if most of the power of 10 ms is at 2100 Hz.
bool isTone(const std::int16_t* x, std::size_t count, int rate) {
    std::complex<double> sum = 0;
    double energy = 0;
    for (std::size_t n = 0; n < count; n++) {
        sum += std::polar(double(x[n]), -2 * std::numbers::pi * 2100 * double(n) / rate);
        energy += double(x[n]) * x[n];
    }
    return 2 * std::norm(sum) > 0.5 * energy * double(count);
}

// Where 2100 Hz prevails around a reversal: in blocks of 10 ms, across gaps of three of them, as at reversals.
class ToneExtent {
  public:
    static constexpr std::size_t kGap = 3;  // blocks

    ToneExtent(const Samples& samples, int rate) : samples_(samples), rate_(rate), block_(std::size_t(rate) / 100) {}

    AnswerTone around(std::size_t reversal) const {
        const std::size_t blocks = samples_.size() / block_, middle = std::min(reversal / block_, blocks);
        std::size_t first = middle, last = middle;  // last: one behind
        for (std::size_t b = middle; b > 0 && first - b <= kGap; b--)
            if (isToneBlock(b - 1)) first = b - 1;
        for (std::size_t b = middle; b < blocks && b - last <= kGap; b++)
            if (isToneBlock(b)) last = b + 1;
        double energy = 0;
        for (std::size_t n = first * block_; n < last * block_; n++) energy += double(samples_[n]) * samples_[n];
        const std::size_t count = std::max<std::size_t>(1, (last - first) * block_);
        return {seconds(first * block_), seconds(last * block_), energy / double(count), {}};
    }

    double seconds(std::size_t n) const { return double(n) / rate_; }

  private:
    bool isToneBlock(std::size_t b) const { return isTone(samples_.data() + b * block_, block_, rate_); }

    const Samples& samples_;
    int rate_;
    std::size_t block_;
};

}  // namespace

std::vector<AnswerTone> findAnswerTones(const Samples& samples, int rate, bool fixedPoint) {
    const std::vector<std::size_t> reversals =
        fixedPoint ? findReversals<FixedDetector>(samples, rate) : findReversals<FloatDetector>(samples, rate);
    const ToneExtent extent(samples, rate);
    std::vector<AnswerTone> tones;
    for (const std::size_t reversal : reversals) {
        const double time = extent.seconds(reversal);
        if (tones.empty() || time > tones.back().end + ToneExtent::kGap * 0.01) tones.push_back(extent.around(reversal));
        tones.back().reversals.push_back(time);
    }
    return tones;
}
