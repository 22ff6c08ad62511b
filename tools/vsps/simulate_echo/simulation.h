// What a microphone or a telephone line picks up: the near end, the echo of the far end, and noise.
#pragma once

#include <cstdint>
#include <optional>
#include <random>
#include <span>
#include <vector>

#include "audio/audio.h"
#include "simulate_echo/loudspeaker.h"

struct NoiseSettings {
    double level;  // dBov
    unsigned seed;
};

// White and Gaussian, the same on every system.
class NoiseSource {
  public:
    explicit NoiseSource(const NoiseSettings& settings);

    double next();

  private:
    std::mt19937_64 source_;
    double amplitude_;
};

// A delay and an impulse response.
class EchoFilter {
  public:
    EchoFilter(std::vector<double> response, std::size_t delay);

    // The echo of the next samples; the reference holds until the next call.
    const std::vector<double>& process(std::span<const double> far);

  private:
    std::vector<double> response_;
    std::size_t past_;             // samples, that the echo reaches back
    std::vector<double> history_;  // so many of them, then the block
    std::vector<double> echo_;
};

class LineSimulation {
  public:
    LineSimulation(const EchoFilter& filter, const std::optional<NoiseSettings>& noise,
                   const std::optional<Loudspeaker>& loudspeaker = {});

    // far and near are of one length.
    void process(const Samples& far, const Samples& near);

    // Of the last block.
    const Samples& echo() const { return echo_; }
    const Samples& noise() const { return noise_; }
    const Samples& out() const { return out_; }
    // From the beginning. The energy of the echo is that before rounding.
    double farEnergy() const { return farEnergy_; }
    double echoEnergy() const { return echoEnergy_; }
    std::size_t clipped() const { return clipped_; }  // samples of out at full scale because the sum was beyond

  private:
    EchoFilter filter_;
    std::optional<NoiseSource> source_;
    std::optional<Loudspeaker> loudspeaker_;
    std::vector<double> sound_;  // of the far end
    Samples echo_, noise_, out_;
    double farEnergy_ = 0, echoEnergy_ = 0;
    std::size_t clipped_ = 0;
};
