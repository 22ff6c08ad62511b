// Speech level as telephony measures it.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

// Level of a power (mean square of 16-bit samples), dB relative to the overload point: a full-scale sine is at -3 dBov.
double toDbov(double power);

struct ActiveLevel {
    double dbov;      // mean power while there is speech, dBov
    double activity;  // part of the time with speech, 0 to 1
};

// Levels of samples at 8 or 16 kHz, which come in blocks.
class LevelMeter {
  public:
    explicit LevelMeter(int rate = 8000);

    void process(std::span<const std::int16_t> block);

    // Active speech level, ITU-T P.56 method B. Empty for silence and for what is too short to tell.
    std::optional<ActiveLevel> activeLevel() const;
    double meanDbov() const;  // over all of it, -infinity for silence
    double peakDbov() const;

  private:
    static constexpr int kThresholds = 15;  // 2^0 to 2^14

    double smoothing_;
    std::int64_t longHangover_;  // samples
    double p_ = 0, envelope_ = 0;
    std::array<std::int64_t, kThresholds> hangover_;
    std::array<double, kThresholds>
        active_{};  // samples with the envelope above each threshold, now or within the hangover
    double energy_ = 0, samples_ = 0, peak_ = 0;
};

// Of all samples at once, at 8 kHz.
std::optional<ActiveLevel> activeLevel(std::span<const std::int16_t> x);
