// The picture of a run of vsps denoise.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "analysis/power_spectrum.h"
#include "audio/audio.h"
#include "plot/gnuplot.h"
#include "plot/spectrogram.h"

// Of a signal that comes block by block.
class SignalSpectrogram {
  public:
    explicit SignalSpectrogram(int rate) : spectrum_(spectrumOrder(rate)) {}

    void add(std::span<const std::int16_t> samples);
    // When there are no more: silence fills up the last step.
    void finish();

    const Spectrogram& spectrogram() const { return spectrogram_; }
    std::size_t step() const { return spectrum_.step(); }

  private:
    PowerSpectrum spectrum_;
    Spectrogram spectrogram_;
    Samples pending_;
};

struct DenoiseSpectrograms {
    explicit DenoiseSpectrograms(int rate) : before(rate), after(rate) {}

    SignalSpectrogram before, after;
};

constexpr std::size_t kDenoisePlotChannels = 4;  // more do not fit a picture

// Two panels for every channel. Returns the bytes of the picture.
std::string drawDenoise(const Gnuplot& gnuplot, const std::string& title,
                        const std::vector<std::unique_ptr<DenoiseSpectrograms>>& channels, int rate);
