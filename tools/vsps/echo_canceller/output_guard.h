// How much of the estimated echo is subtracted from the near end.
//
// An adaptive filter always estimates some echo, if only from noise, and what is no echo makes the line louder when it is
// subtracted. So the filter has to prove itself: the logarithm of the power that it removes, added up over time, tells how
// likely it is that there is an echo and that it is the estimated one. What talks at the near end neither adds to it nor
// takes from it, for it has nothing in common with the estimate. A filter that learns fast follows whatever it hears; what
// it removes then proves little.
//
// Until there is proof no millisecond gets louder. After it the same holds where the near end is quiet and the echo of
// louder moments may be estimated wrongly; where it is loud, both ends may be talking, and the sum of two voices is at
// times quieter than one of them.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <span>

class OutputGuard {
  public:
    // Blocks come in whole milliseconds.
    explicit OutputGuard(int rate) : millisecond_(static_cast<std::size_t>(rate / 1000)) {}

    // A block of the near end and of the echo estimated in it, which becomes what is subtracted. learning: the step size.
    template <class Sample>
    void limit(std::span<const Sample> near, std::span<float> echo, double learning) {
        judge(measure<Sample>(near, echo), static_cast<double>(near.size()), learning);
        for (std::size_t i = 0; i < near.size(); i += millisecond_)
            limitMillisecond(near.subspan(i, millisecond_), echo.subspan(i, millisecond_));
    }

    // The filter has been seen to remove echo.
    bool removing() const { return evidence_ >= kRemoving; }

  private:
    static constexpr double kHopeful = 500, kRemoving = 1000, kProven = 2500, kMost = 2900;   // dB removed, times ms
    static constexpr double kInaudible = 0.25, kFaintest = 3;                                 // powers of a sample
    static constexpr double kSmoothing = 0.4, kFall = 0.995, kRise = 1.0005, kForget = 0.99;  // in a millisecond
    static constexpr double kTolerance = 6;  // ms of the near end's power by which a quiet stretch may get louder
    static constexpr double kAboveNoise = 10, kBelowPeak = 0.005, kLouder = 1.5;  // ratios of powers
    static constexpr double kMostOfMs = 100;                                      // of the near end's power, in one ms

    struct Energies {
        double near = 0, echo = 0, product = 0;
        double left() const { return std::max(0.0, near - 2 * product + echo); }
        // The largest share of the echo that leaves so much.
        double share(double most) const {
            const double root = product * product + echo * (most - near);
            return root > 0 && echo > 0 ? std::clamp((product + std::sqrt(root)) / echo, 0.0, 1.0) : 0;
        }
    };

    template <class Sample>
    static Energies measure(std::span<const Sample> near, std::span<const float> echo) {
        float nearEnergy = 0, echoEnergy = 0, product = 0;
        for (std::size_t n = 0; n < near.size(); n++) {
            const float x = static_cast<float>(near[n]), y = echo[n];
            nearEnergy += x * x;
            echoEnergy += y * y;
            product += x * y;
        }
        return {nearEnergy, echoEnergy, product};
    }

    bool proven() const { return evidence_ >= kProven; }

    void judge(const Energies& e, double samples, double learning) {
        const double ms = samples / static_cast<double>(millisecond_), little = kInaudible * samples;
        const double removed = 10 * std::log10((e.near + little) / (e.left() + little)) * ms;
        const bool wasProven = proven();
        hope_ = std::clamp(hope_ + removed, 0.0, kHopeful);
        evidence_ += removed > 0 ? (1 - learning) * (1 - learning) * removed : removed;
        evidence_ = wasProven && !proven() ? 0 : std::clamp(evidence_, 0.0, kMost);
    }

    template <class Sample>
    void limitMillisecond(std::span<const Sample> near, std::span<float> echo) {
        const Energies e = measure<Sample>(near, echo);
        follow(e);
        const bool silence = e.near == 0, afterSilence = lastNear_ == 0;
        lastNear_ = e.near;
        const bool strict = !proven() || mayBeWrong();
        const double most = e.near + (proven() ? std::clamp(kTolerance * level_ - excess_, 0.0, kMostOfMs * e.near) : 0);
        double share = proven() ? 1 : hope_ / kHopeful;
        if (silence || afterSilence) share = 0;
        if (strict && e.left() > most) share = std::min(share, e.share(most));
        if (silence) share_ = 0;
        fade(echo, static_cast<float>(share));
        if (!strict) return;
        const Energies faded = measure<Sample>(near, echo);
        if (faded.left() > most) {
            const auto less = static_cast<float>(faded.share(most));
            for (float& y : echo) y *= less;
            share_ *= less;
        }
        excess_ = kForget * std::max(0.0, excess_ + measure<Sample>(near, echo).left() - e.near);
    }

    void fade(std::span<float> echo, float share) {
        const float step = (share - share_) / static_cast<float>(echo.size());
        for (float& y : echo) y *= share_ += step;
        share_ = share;
    }

    // Levels from millisecond to millisecond; digital silence is none.
    void follow(const Energies& e) {
        leftLevel_ += kSmoothing * (e.left() - leftLevel_);
        level_ += (level_ > 0 ? kSmoothing : 1) * (e.near - level_);
        if (e.near == 0) {
            level_ = 0;
            return;
        }
        noise_ = std::min(level_, noise_ * kRise);
        peak_ = std::max(level_, peak_ * kFall);
    }

    bool mayBeWrong() const {
        const double faintest = kFaintest * static_cast<double>(millisecond_);
        return leftLevel_ > kLouder * level_ && (level_ < kAboveNoise * (noise_ + faintest) || level_ < kBelowPeak * peak_);
    }

    std::size_t millisecond_;
    double hope_ = 0, evidence_ = 0;
    double level_ = 0, leftLevel_ = 0, peak_ = 0, noise_ = std::numeric_limits<float>::max();
    double excess_ = 0, lastNear_ = 0;  // energy by which the output is above the near end, not long ago
    float share_ = 0;
};
