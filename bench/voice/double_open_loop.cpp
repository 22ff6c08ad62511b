#include "voice/double_open_loop.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "arithmetic/basic_ops.h"

namespace {

using namespace vsp;

constexpr std::size_t kHalf = AmrOpenLoop::kHalf, kMinLag = AmrOpenLoop::kMinLag, kMaxLag = AmrOpenLoop::kMaxLag;
constexpr Vsp16s kNewestFlag = 0x4000;

using Signal = std::array<Vsp16s, kMaxLag + kHalf>;  // half a frame with its past
using Correlations = std::array<Vsp32s, kMaxLag + 1>;

// Half a frame "before" samples in the past times itself "lag" samples further in the past.
Vsp32s product(const Signal& s, std::size_t before, std::size_t lag) {
    const Vsp16s *a = s.data() + kMaxLag - before, *b = a - lag;
    Vsp32s sum = 0;
    for (std::size_t n = 0; n < kHalf; n++) sum = mac_32s(sum, a[n], b[n]);
    return sum;
}

Vsp32s energy(const Signal& s, std::size_t lag) { return product(s, lag, 0); }

// Brings the signal to a range in which its sums of products neither overflow nor vanish.
void scale(Signal& s) {
    constexpr Vsp32s kWeak = 1 << 20;
    Vsp32s sum = 0;
    for (const Vsp16s x : s) sum = mac_32s(sum, x, x);
    if (sum == kMax32)
        for (Vsp16s& x : s) x = Vsp16s(x >> 3);
    else if (sum < kWeak)
        for (Vsp16s& x : s) x = ShiftL_16s(x, 3);
}

struct Candidate {
    std::size_t lag;
    Vsp32s correlation, energy;

    double normalised() const { return energy > 0 ? correlation / std::sqrt(double(energy)) : 0; }

    bool isTone() const {
        constexpr Vsp16s kShare = 21298;  // 0.65 in Q15
        const Vsp16s rounded = round_32s(energy);
        return rounded > 0 && Sub_32s(correlation, Mul2_32s(rounded * kShare)) > 0;
    }
};

Candidate bestOf(const Signal& s, const Correlations& c, std::size_t from, std::size_t to) {
    std::size_t best = from;
    for (std::size_t lag = from; lag-- > to;)
        if (c[lag] >= c[best]) best = lag;
    return {best, c[best], energy(s, best)};
}

// Smaller lags are preferred, so that multiples of the pitch are not taken for it.
Candidate choose(const std::array<Candidate, 3>& candidates) {
    constexpr double kPreference = 27853.0 / 32768;
    Candidate best = candidates[0];
    for (const Candidate& c : candidates)
        if (kPreference * best.normalised() < c.normalised()) best = c;
    return best;
}

// The largest correlation of the high-pass filtered signal over its energy, Q15.
Vsp16s highPassCorrelation(const Signal& s, const Correlations& c) {
    Vsp32s most = 0;
    for (std::size_t i = kMinLag + 1; i < kMaxLag; i++)
        most = std::max(most, Abs_32s(Sub_32s(Sub_32s(Mul2_32s(c[i]), c[i + 1]), c[i - 1])));
    const Vsp32s whole = Abs_32s(Sub_32s(Mul2_32s(product(s, 0, 0)), Mul2_32s(product(s, 0, 1))));
    const int a = norm_32s_Pos(most) - 1, b = norm_32s_Pos(whole);
    const int u = (a < 0 ? most >> 1 : most << a) >> 16, v = (whole << b) >> 16;
    const Vsp16s q = v == 0 ? Vsp16s(0) : static_cast<Vsp16s>(div_16s(u, v));
    return a < b ? ShiftL_16s(q, b - a) : static_cast<Vsp16s>(q >> (a - b));
}

}  // namespace

const OpenLoopResult& AmrOpenLoop::process(const AmrFrame& weighted) {
    std::shift_left(speech_.begin(), speech_.end(), kAmrFrame);
    std::copy(weighted.begin(), weighted.end(), speech_.end() - kAmrFrame);

    Vsp32s correlation = 0, chosenEnergy = 0;
    int lagCount = 0;
    for (std::size_t half = 0; half < 2; half++) {
        Signal s;
        std::copy_n(speech_.begin() + half * kHalf, s.size(), s.begin());
        scale(s);
        Correlations c{};
        for (std::size_t lag = kMinLag; lag <= kMaxLag; lag++) c[lag] = product(s, 0, lag);

        const std::array candidates{bestOf(s, c, kMaxLag, 4 * kMinLag), bestOf(s, c, 4 * kMinLag - 1, 2 * kMinLag),
                                    bestOf(s, c, 2 * kMinLag - 1, kMinLag)};
        const bool tone = std::any_of(candidates.begin(), candidates.end(), [](const Candidate& x) { return x.isTone(); });
        result_.toneFlags = static_cast<Vsp16s>(result_.toneFlags >> 1 | (tone ? kNewestFlag : 0));
        const Candidate best = choose(candidates);
        correlation = Add_32s(correlation, best.correlation);
        chosenEnergy = Add_32s(chosenEnergy, best.energy);
        lagCount += std::abs(oldLag_ - int(best.lag)) < 4;
        oldLag_ = int(best.lag);
        if (half == 1) result_.bestCorrHp = highPassCorrelation(s, c);
    }
    result_.steadyPitch = oldLagCount_ + lagCount >= 4;
    oldLagCount_ = lagCount;
    constexpr Vsp16s kPeriodic = 21299;  // 0.65 in Q15
    result_.ltpFlag = correlation > mul_32s16s(chosenEnergy, kPeriodic);
    return result_;
}
