// Where 2100 Hz prevails.
#pragma once

#include <complex>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

// A stretch, in blocks of 10 ms, across gaps of three of them, as at phase reversals.
struct ToneStretch {
    std::uint64_t first, last;  // blocks; last: one behind
    double energy;              // sum of squares from first to last
};

class ToneExtent {
  public:
    explicit ToneExtent(int rate);

    std::size_t blockLength() const { return turns_.size(); }
    // Takes the next block; returns the stretch that it ends.
    std::optional<ToneStretch> process(std::span<const std::int16_t> block);
    // There is a tone before the next block, whether it prevails or not.
    void claim();
    // The stretch that has not ended.
    const std::optional<ToneStretch>& current() const { return current_; }

  private:
    bool isTone(std::span<const std::int16_t> block, double energy) const;

    std::vector<std::complex<double>> turns_;  // of the tone, by sample
    std::optional<ToneStretch> current_;
    std::uint64_t position_ = 0;  // blocks
    double gapEnergy_ = 0;        // behind the current stretch
};
