// How much of the estimated echo is subtracted from the near end.
//
// An adaptive filter always estimates some echo, if only from noise, and what is no echo makes the line louder when it is
// subtracted. So the filter has to prove itself: the logarithm of the power that it removes, added up over time, tells how
// likely it is that there is an echo and that it is the estimated one. What talks at the near end neither adds to it nor
// takes from it, for it has nothing in common with the estimate. A filter that learns fast follows whatever it hears; what
// it removes then proves little.
//
// Until there is proof no millisecond gets louder. After it a stretch may get louder by a few milliseconds of the near
// end's power, and by more of it once the filter has long been right: the sum of two voices is at times quieter than one of
// them.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <span>

#include "echo/samples.h"

namespace vspv {

class OutputGuard {
  public:
    // Blocks come in whole milliseconds, up to 16.
    explicit OutputGuard(int rate) : millisecond_(static_cast<std::size_t>(rate / 1000)) {}

    // A block of the near end and of the echo estimated in it, which becomes what is subtracted. learning: the step size.
    // residual: what else is to be subtracted, to the same extent; nothing if it is empty.
    // future: the near end of the next tenth of a second, as far as it is known.
    template <class Sample>
    void limit(std::span<const Sample> near, std::span<float> echo, double learning, std::span<float> residual = {},
               std::span<const Sample> future = {}) {
        future_ = future.empty() ? kUnknown : meanSquare(future) * static_cast<double>(future.size());
        std::array<Energies, kMostMilliseconds> each;
        Energies all;
        const std::size_t count = near.size() / millisecond_;
        for (std::size_t i = 0; i < count; i++)
            all += each[i] =
                measure<Sample>(near.subspan(i * millisecond_, millisecond_), echo.subspan(i * millisecond_, millisecond_));
        judge(all, static_cast<double>(near.size()), learning);
        for (std::size_t i = 0; i < count; i++)
            limitMillisecond(near.subspan(i * millisecond_, millisecond_), echo.subspan(i * millisecond_, millisecond_),
                             each[i], residual.empty() ? residual : residual.subspan(i * millisecond_, millisecond_));
    }

    // The filter has been seen to remove echo.
    bool removing() const { return evidence_ >= kRemoving; }

  private:
    // dB removed, times ms: when a share is subtracted, all of it, and when the filter is trusted in double talk.
    static constexpr double kHopeful = 500, kRemoving = 1000, kProven = 2500, kTrusted = 4500, kMost = 6000;
    static constexpr double kInaudible = 0.25, kFaint = 30;                        // powers of a sample
    static constexpr double kShareOfFuture = 2;                                    // what may be added to it, at most
    static constexpr double kSmoothing = 0.05, kPeakFall = 0.998, kForget = 0.98;  // in a millisecond
    static constexpr double kQuiet = 0.003;                                        // of the peak
    static constexpr double kLouder = 1.1;                                         // ratio of powers that is no matter
    static constexpr double kTolerance = 8, kTrustedTolerance = 40;                // ms of the near end's power
    static constexpr double kOffset = 0.01;                                        // in a block
    static constexpr double kUnknown = 1e30;
    static constexpr std::size_t kMostMilliseconds = 16;
    static constexpr std::size_t kZeros = 3;  // samples that are silence, not a crossing of zero

    struct Energies {
        double near = 0, echo = 0, product = 0, nearSum = 0, echoSum = 0;
        Energies& operator+=(const Energies& more) {
            near += more.near, echo += more.echo, product += more.product, nearSum += more.nearSum, echoSum += more.echoSum;
            return *this;
        }
        double left() const { return std::max(0.0, near - 2 * product + echo); }
        Energies scaled(double share) const {
            return {near, share * share * echo, share * product, nearSum, share * echoSum};
        }
        // The largest share of the echo that leaves so much.
        double share(double most) const {
            const double root = product * product + echo * (most - near);
            return root > 0 && echo > 0 ? std::clamp((product + std::sqrt(root)) / echo, 0.0, 1.0) : 0;
        }
    };

    // Of a millisecond, in four parts, which the compiler adds at once.
    template <class Sample>
    static Energies measure(std::span<const Sample> near, std::span<const float> echo) {
        constexpr std::size_t kParts = 4;
        std::array<float, kParts> nearEnergy{}, echoEnergy{}, product{}, nearSum{}, echoSum{};
        for (std::size_t n = 0; n < near.size(); n += kParts)
            for (std::size_t i = 0; i < kParts; i++) {
                const float x = static_cast<float>(near[n + i]), y = echo[n + i];
                nearEnergy[i] += x * x;
                echoEnergy[i] += y * y;
                product[i] += x * y;
                nearSum[i] += x;
                echoSum[i] += y;
            }
        const auto sum = [](const std::array<float, kParts>& p) { return (p[0] + p[1]) + (p[2] + p[3]); };
        return {sum(nearEnergy), sum(echoEnergy), sum(product), sum(nearSum), sum(echoSum)};
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
        evidence_ += removed > 0 ? (1 - learning) * (1 - learning) * removed : removed;
        evidence_ = wasProven && !proven() ? 0 : std::clamp(evidence_, 0.0, kMost);
    }

    template <class Sample>
    void limitMillisecond(std::span<const Sample> near, std::span<float> echo, const Energies& e,
                          std::span<float> residual) {
        const bool silence = e.near == 0, afterSilence = level_ == 0;
        level_ = silence ? 0 : level_ + kSmoothing * (e.near - level_);
        peak_ = std::max(level_, kPeakFall * peak_);
        const bool quiet = level_ < kQuiet * peak_, faint = e.near < kFaint * static_cast<double>(millisecond_);
        const bool trusted = evidence_ >= kTrusted && !quiet;
        const double tolerance = trusted ? kTrustedTolerance : kTolerance;
        if (trusted) excess_ *= kForget;
        const double more = (kLouder - 1) * e.near + std::min(tolerance * level_, kShareOfFuture * future_) - excess_;
        const double most = e.near + (proven() && !faint ? std::max(0.0, more) : 0);
        double share = proven() ? 1 : hope_ / kHopeful;
        if (silence || afterSilence) share = 0;
        if (e.left() > most) share = std::min(share, e.share(most));
        if (silence) share_ = 0;
        Energies faded = fade(near, echo, e, static_cast<float>(share), residual);
        if (faded.left() > most) {
            const auto less = static_cast<float>(faded.share(most));
            for (float& y : echo) y *= less;
            for (float& y : residual) y *= less;
            share_ *= less;
            faded = faded.scaled(less);
        }
        if (silenceEnd(near, echo, residual)) faded = measure<Sample>(near, echo);
        excess_ = std::max(0.0, excess_ + faded.left() - kLouder * e.near);
    }

    // Digital silence that begins within a millisecond stays silence.
    template <class Sample>
    static bool silenceEnd(std::span<const Sample> near, std::span<float> echo, std::span<float> residual) {
        std::size_t zeros = 0;
        while (zeros < near.size() && near[near.size() - 1 - zeros] == 0) zeros++;
        if (zeros < kZeros) return false;
        std::fill(echo.end() - static_cast<std::ptrdiff_t>(zeros), echo.end(), 0.0f);
        if (!residual.empty()) std::fill(residual.end() - static_cast<std::ptrdiff_t>(zeros), residual.end(), 0.0f);
        return true;
    }

    // From the share so far to the given one. What comes out, measured anew only where it is not a multiple of what was.
    template <class Sample>
    Energies fade(std::span<const Sample> near, std::span<float> echo, const Energies& before, float share,
                  std::span<float> residual) {
        const float from = share_, step = (share - from) / static_cast<float>(echo.size());
        share_ = share;
        if (step == 0) {
            if (share == 1) return before;
            for (float& y : echo) y *= share;
            for (float& y : residual) y *= share;
            return before.scaled(share);
        }
        const auto ramp = [=](std::size_t n) { return from + static_cast<float>(n + 1) * step; };
        for (std::size_t n = 0; n < echo.size(); n++) echo[n] *= ramp(n);
        for (std::size_t n = 0; n < residual.size(); n++) residual[n] *= ramp(n);
        return measure<Sample>(near, echo);
    }

    std::size_t millisecond_;
    double hope_ = 0, evidence_ = 0, offset_ = 0;
    double level_ = 0, peak_ = 0;  // energy of the near end in a millisecond, smoothed; its peak, which falls slowly
    double future_ = 0;            // energy of the near end after the block
    double excess_ = 0;            // energy by which the output is louder in the stretch where it is most so
    float share_ = 0;
};

}  // namespace vspv
