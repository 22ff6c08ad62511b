// How much of the estimated echo is subtracted from the near end.
//
// An adaptive filter always estimates some echo, if only from noise, and what is no echo makes the line louder when it is
// subtracted. So the filter has to prove itself: the logarithm of the power that it removes, added up over time, tells how
// likely it is that there is an echo and that it is the estimated one. What talks at the near end neither adds to it nor
// takes from it, for it has nothing in common with the estimate. A filter that learns fast follows whatever it hears; what
// it removes then proves little, or a quarter where it is more than 3 dB.
//
// Until there is proof no millisecond gets louder. After it a stretch may get louder within the budget of any tenth of a
// second (loudness_budget.h): the sum of two voices is at times quieter than one of them. Where the budget does not reach,
// less of the estimate is subtracted, down to nothing, and then the output turned down; both in ramps over a millisecond.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>

#include "echo/loudness_budget.h"
#include "echo/samples.h"

namespace vspv {

class OutputGuard {
  public:
    // Blocks come in whole milliseconds, up to 16. ahead: samples that the near end is known ahead of a block.
    OutputGuard(int rate, int ahead) : millisecond_(static_cast<std::size_t>(rate / 1000)) {
        for (int i = 0; i < ahead / (rate / 1000); i++) budget_.expect(0);
    }

    // The near end, as soon as it is known.
    template <class Sample>
    void expect(std::span<const Sample> near) {
        for (; !near.empty(); near = near.subspan(millisecond_)) budget_.expect(energy<Sample>(near.first(millisecond_)));
    }

    // A block of the near end and of the echo estimated in it, which becomes what is subtracted. learning: the step size.
    // residual: what else is to be subtracted; nothing if it is empty. trusted: a louder output is no sign of a wrong
    // estimate.
    template <class Sample>
    void limit(std::span<const Sample> near, std::span<float> echo, double learning, std::span<const float> residual = {},
               bool trusted = false) {
        if (millisecond_ == 8)
            limitBlock<8>(near, echo, learning, residual, trusted);
        else
            limitBlock<16>(near, echo, learning, residual, trusted);
    }

    // The filter has been seen to remove echo.
    bool removing() const { return evidence_ >= kRemoving; }

  private:
    // dB removed, times ms: when a share is subtracted, and when all of it.
    static constexpr double kHopeful = 500, kRemoving = 1000, kProven = 2500, kMost = 6000;
    static constexpr double kMuch = 3, kFast = 0.25;  // dB removed, and what it counts by when the filter learns fast
    static constexpr double kInaudible = 0.25;        // power of a sample
    static constexpr double kOffset = 0.01;           // in a block
    static constexpr double kLoudest = 1e16;          // energy of a millisecond
    static constexpr std::size_t kZeros = 3;          // samples that are silence, not a crossing of zero

    struct Energies {
        double near = 0, echo = 0, product = 0, nearSum = 0, echoSum = 0;
        Energies& operator+=(const Energies& more) {
            near += more.near, echo += more.echo, product += more.product, nearSum += more.nearSum, echoSum += more.echoSum;
            return *this;
        }
        double left() const { return std::max(0.0, near - 2 * product + echo); }
        // The largest share of the echo that leaves so much.
        double share(double most) const {
            const double root = product * product + echo * (most - near);
            return root > 0 && echo > 0 ? std::clamp((product + std::sqrt(root)) / echo, 0.0, 1.0) : 0;
        }
    };

    struct Output {
        double energy, louder;  // louder: of the samples that are louder than the near end's, by how much
    };

    // In milliseconds of so many samples.
    template <std::size_t kCount, class Sample>
    void limitBlock(std::span<const Sample> near, std::span<float> echo, double learning, std::span<const float> residual,
                    bool trusted) {
        const auto forEach = [&](auto work) {
            for (std::size_t n = 0; n < near.size(); n += kCount)
                work(near.subspan(n).template first<kCount>(), echo.subspan(n).template first<kCount>());
        };
        Energies all;
        forEach([&](auto x, auto y) { all += measureFinite(x, y); });
        judge(all, static_cast<double>(near.size()), learning);
        for (std::size_t n = 0; n < residual.size(); n++) echo[n] += residual[n];
        budget_.begin(static_cast<int>(near.size() / kCount), trusted && proven());
        forEach([&](auto x, auto y) {
            if (!passes(x, y)) limitMillisecond<Sample>(x, y, measureFinite(x, y));
        });
    }

    // Of a millisecond. Here and below, spans whose length the compiler knows are the fast ones.
    template <class Near, class Echo>
    static Energies measure(Near near, Echo echo) {
        Four nearEnergy{}, echoEnergy{}, product{}, nearSum{}, echoSum{};
        for (std::size_t n = 0; n < near.size(); n += 4) {
            const Four x = fourOf(&near[n]), y = fourOf(&echo[n]);
            nearEnergy += x * x;
            echoEnergy += y * y;
            product += x * y;
            nearSum += x;
            echoSum += y;
        }
        return {sumOf(nearEnergy), sumOf(echoEnergy), sumOf(product), sumOf(nearSum), sumOf(echoSum)};
    }

    // An estimate that is not finite, or louder than signals can be, becomes 0.
    template <class Near, class Echo>
    static Energies measureFinite(Near near, Echo echo) {
        const Energies e = measure(near, echo);
        if (e.echo <= kLoudest) return e;
        std::fill(echo.begin(), echo.end(), 0.0f);
        return measure(near, echo);
    }

    bool proven() const { return evidence_ >= kProven; }

    // A constant offset is no echo, and a filter that removes it proves nothing.
    void judge(Energies e, double samples, double learning) {
        offset_ += kOffset * (e.nearSum / samples - offset_);
        e.near = std::max(0.0, e.near - 2 * offset_ * e.nearSum + offset_ * offset_ * samples);
        e.product -= offset_ * e.echoSum;
        const double ms = samples / static_cast<double>(millisecond_), little = kInaudible * samples;
        const double removed = 10 * std::log10((e.near + little) / (e.left() + little)) * ms;
        const bool wasProven = proven();
        hope_ = std::clamp(hope_ + removed, 0.0, kHopeful);
        const double slow = (1 - learning) * (1 - learning), least = removed > kMuch * ms ? kFast : 0;
        evidence_ += removed > 0 ? std::max(slow, least) * removed : removed;
        evidence_ = wasProven && !proven() ? 0 : std::clamp(evidence_, 0.0, kMost);
    }

    // What is proven, and within the budget, is subtracted as it is: nearly always.
    template <class Near, class Echo>
    bool passes(Near near, Echo echo) {
        constexpr double kClearly = 0.99;
        if (!proven() || silent_ || share_ != 1 || gain_ != 1) return false;
        bool ends = true;
        for (std::size_t i = 1; i <= kZeros; i++) ends &= near[near.size() - i] == 0;
        if (ends) return false;
        const Output out = outputOf(near, echo);
        if (!(out.energy <= kClearly * budget_.most() && out.louder <= budget_.louderSamples())) return false;
        budget_.spend(out.energy, out.louder);
        return true;
    }

    template <class Sample>
    void limitMillisecond(std::span<const Sample> near, std::span<float> echo, const Energies& e) {
        const bool silence = e.near == 0, afterSilence = silent_;
        silent_ = silence;
        double share = proven() ? 1 : hope_ / kHopeful;
        if (silence || (afterSilence && !proven())) share = 0;
        if (silence || afterSilence) share_ = static_cast<float>(share);
        double most = budget_.most();
        if (!proven()) most = std::min(most, e.near);
        if (e.left() > most) share = std::min(share, e.share(most));
        if (share == 0 && share_ == 0 && most >= e.near && gain_ == 1) {
            std::fill(echo.begin(), echo.end(), 0.0f);
            budget_.pass();
            return;
        }
        fade(echo, static_cast<float>(share));
        keepSilence(near, echo, afterSilence);
        Output out = outputOf(near, echo);
        if (out.energy > most) out = lessen(near, echo, measure(near, echo).share(most));
        const double samples = budget_.louderSamples();
        if (out.louder > samples) out = lessen(near, echo, samples / out.louder);
        if (gain_ < 1 || out.energy > most) out = turnDown(near, echo, out.energy, most);
        budget_.spend(out.energy, out.louder);
    }

    // Where even the near end as it is would be too loud after what has come out: both are turned down.
    template <class Sample>
    Output turnDown(std::span<const Sample> near, std::span<float> echo, double energy, double most) {
        const float before = gain_;
        gain_ = energy > most ? static_cast<float>(std::sqrt(most / energy)) : 1;
        Output out = turn(near, echo, before, gain_);
        if (out.energy <= most) return out;
        const auto less = static_cast<float>(std::sqrt(most / out.energy));
        gain_ *= less;
        return turn(near, echo, less, less);
    }
    template <class Sample>
    static Output turn(std::span<const Sample> near, std::span<float> echo, float from, float to) {
        const float step = (to - from) / static_cast<float>(echo.size());
        for (std::size_t n = 0; n < echo.size(); n++) {
            const auto x = static_cast<float>(near[n]);
            echo[n] = x - (from + static_cast<float>(n + 1) * step) * (x - echo[n]);
        }
        return outputOf(near, echo);
    }

    // Digital silence that begins or ends within a millisecond stays silence.
    template <class Sample>
    static void keepSilence(std::span<const Sample> near, std::span<float> echo, bool ends) {
        for (std::size_t n = 0; ends && n < near.size() && near[n] == 0; n++) echo[n] = 0;
        std::size_t zeros = 0;
        while (zeros < near.size() && near[near.size() - 1 - zeros] == 0) zeros++;
        if (zeros >= kZeros) std::fill(echo.end() - static_cast<std::ptrdiff_t>(zeros), echo.end(), 0.0f);
    }

    // From the share so far to the given one.
    void fade(std::span<float> echo, float share) {
        const float from = share_, step = (share - from) / static_cast<float>(echo.size());
        share_ = share;
        if (step == 0 && share == 1) return;
        for (std::size_t n = 0; n < echo.size(); n++) echo[n] *= from + static_cast<float>(n + 1) * step;
    }

    template <class Sample>
    static double energy(std::span<const Sample> x) {
        Four energy{};
        for (std::size_t n = 0; n < x.size(); n += 4) energy += fourOf(&x[n]) * fourOf(&x[n]);
        return sumOf(energy);
    }

    template <class Near, class Echo>
    static Output outputOf(Near near, Echo echo) {
        Four energy{}, louder{};
        for (std::size_t n = 0; n < near.size(); n += 4) {
            const Four x = fourOf(&near[n]), out = x - fourOf(&echo[n]), more = out * out - x * x;
            energy += out * out;
            louder += more > 0 ? more : Four{};
        }
        return {sumOf(energy), sumOf(louder)};
    }

    template <class Sample>
    Output lessen(std::span<const Sample> near, std::span<float> echo, double share) {
        const auto less = static_cast<float>(share);
        for (float& y : echo) y *= less;
        share_ *= less;
        return outputOf(near, echo);
    }

    std::size_t millisecond_;
    LoudnessBudget budget_;
    double hope_ = 0, evidence_ = 0, offset_ = 0;
    bool silent_ = false;
    float share_ = 0, gain_ = 1;
};

}  // namespace vspv
