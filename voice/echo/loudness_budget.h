// How loud the output may be: over any tenth of a second, wherever it begins, at most 24 % above the energy of the near
// end, which is less than 1 dB.
//
// What has come out cannot be taken back, and the near end is known only as far ahead as it waits for its turn. So a
// millisecond gets louder only by so much that every tenth of a second with it keeps the promise if from then on the output
// has a quarter of the near end's energy, and the near end is silent where it is not known yet. The output can always be
// turned down that far, so the promise can always be kept.
//
// A tenth of a second that begins within a millisecond consists of the end of that one, 99 more and the beginning of
// another. Of the near end the 99 count; the output adds to them, at both ends, what its louder samples are louder.
//
// In a wide budget the output may be 4 dB louder where the near end is not quiet.
#pragma once

#include <emmintrin.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

namespace vspv {

// In energies of milliseconds, rounded to integers: sums and differences are exact.
class LoudnessBudget {
  public:
    static constexpr int kMostMilliseconds = 16;  // of a block

    LoudnessBudget() { spentBefore_.fill(kUnlimited); }

    // The near end's next millisecond, as soon as it is known: at the latest before the block with it.
    void expect(double near) {
        near = std::floor(near);
        near_[at(known_, kKept)] = near;
        if (known_ > now_ && known_ <= now_ + kInner) ahead_ += near;
        for (Index k = std::max({known_ - kInner, now_ - kWindow, Index{0}}); k < now_; k++)
            near99_[at(k, kWindow)] += near;
        known_++;
    }

    // Before a block of so many milliseconds.
    void begin(int milliseconds, bool wide) {
        wide_ = wide;
        for (std::size_t k = 0; k < kWindow; k++) {
            spentBefore_[k] -= spent_;
            limit_[k] = spentBefore_[k] + more(near99_[k]);
        }
        spent_ = 0;
        double lowest = lowestLimit(now_ + milliseconds, now_ + kWindow);
        for (Index i = milliseconds - 1; i >= 0; i--) {
            lowest_[at(i, kMostMilliseconds)] = lowest;
            lowest = std::min(lowest, limit_[at(now_ + i, kWindow)]);
        }
        lowestNew_ = kUnlimited;
        begin_ = now_;
    }

    // The energy that the next millisecond may have, and by how much its louder samples may be louder.
    double most() const {
        const double limit = std::min(lowestNew_, lowest_[at(now_ - begin_, kMostMilliseconds)]);
        return kLeast * near_[at(now_, kKept)] + std::max(0.0, limit - spent_);
    }
    double louderSamples() const { return std::max(0.0, std::min(limit_[at(now_, kWindow)] - spent_, more(ahead_))); }

    // The output's next millisecond is the near end as it is.
    void pass() { spend(near_[at(now_, kKept)], 0); }
    // It is something else; and by how much its louder samples are louder.
    void spend(double out, double louderSamples) {
        const std::size_t i = at(now_, kWindow);
        spent_ += std::ceil(out) - kLeast * near_[at(now_, kKept)];
        spentBefore_[i] = spent_ - std::ceil(louderSamples);
        near99_[i] = ahead_;
        limit_[i] = spentBefore_[i] + more(ahead_);
        lowestNew_ = std::min(lowestNew_, limit_[i]);
        peak_ = std::max(ahead_, kFall * peak_);
        now_++;
        if (now_ < known_) ahead_ -= near_[at(now_, kKept)];
        if (now_ + kInner < known_) ahead_ += near_[at(now_ + kInner, kKept)];
    }

  private:
    using Index = long long;                                             // of milliseconds
    static constexpr double kLeast = 0.25, kNarrow = 1.24, kWide = 2.5;  // of the near end's energy
    static constexpr double kQuiet = 0.001, kFall = 0.998;               // of its peak; what is left of that after 1 ms
    static constexpr double kUnlimited = std::numeric_limits<double>::infinity();
    static constexpr Index kWindow = 100, kInner = kWindow - 1, kKept = 256;

    static std::size_t at(Index index, Index size) {
        return static_cast<std::size_t>(index) % static_cast<std::size_t>(size);
    }
    double lowestLimit(Index from, Index to) const {
        const double *const first = &limit_[at(from, kWindow)], *const last = &limit_[at(to - 1, kWindow)];
        if (first <= last) return lowestOf(first, last);
        return std::min(lowestOf(limit_.data(), last), lowestOf(first, &limit_.back()));
    }
    static double lowestOf(const double* first, const double* last) {
        __m128d a = _mm_set1_pd(*first), b = a;
        for (; last - first >= 4; first += 4) {
            a = _mm_min_pd(a, _mm_loadu_pd(first));
            b = _mm_min_pd(b, _mm_loadu_pd(first + 2));
        }
        const __m128d both = _mm_min_pd(a, b);
        double lowest = std::min(both[0], both[1]);
        for (; first <= last; first++) lowest = std::min(lowest, *first);
        return lowest;
    }
    // What the output may have in 99 ms above what it is expected to have.
    double more(double near) const { return ((wide_ && near > kQuiet * peak_ ? kWide : kNarrow) - kLeast) * near; }

    std::array<double, kKept> near_{};
    // Of the tenths of a second that begin in the last 100 ms: what had been spent before, the energy of the near end in
    // their 99 ms as far as it is known, and how far spending may go.
    std::array<double, kWindow> spentBefore_, near99_{}, limit_{};
    std::array<double, kMostMilliseconds> lowest_{};  // of the limits of before the block that hold in each millisecond
    double lowestNew_ = kUnlimited;                   // of those of the block
    double spent_ = 0;                                // above a quarter of the near end
    double ahead_ = 0;                                // of the near end in the 99 ms after the next
    double peak_ = 0;
    Index now_ = 0, known_ = 0, begin_ = 0;
    bool wide_ = false;
};

}  // namespace vspv
