// Power over frequency of a signal that comes in steps.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "vspsc.h"

// The order for windows of about 32 ms.
inline int spectrumOrder(int rate) { return rate <= 8000 ? 8 : rate <= 16000 ? 9 : 10; }

// Hann windows of 2^order samples that overlap by a half, transformed by the library's filter bank.
class PowerSpectrum {
  public:
    explicit PowerSpectrum(int order);
    PowerSpectrum(const PowerSpectrum&) = delete;  // the state points into itself
    PowerSpectrum& operator=(const PowerSpectrum&) = delete;

    std::size_t step() const { return std::size_t(1) << (order_ - 1); }
    std::size_t bins() const { return step() + 1; }  // from 0 to half the sampling rate

    // Of the window that ends with these step() samples, which are scaled to 1 at overload: a sine has in its bin the power
    // that it has. The reference holds until the next call.
    const std::vector<float>& process(std::span<const std::int16_t> samples);

  private:
    int order_;
    std::vector<std::uint8_t> state_, work_;
    std::vector<float> input_, power_;
    std::vector<Vsp32fc> bands_;
};
