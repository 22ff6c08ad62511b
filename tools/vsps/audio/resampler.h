// Sample-rate conversion, a stretch of a recording at a time.
#pragma once

#include <soxr.h>

#include <memory>
#include <span>
#include <vector>

// Converts interleaved samples of any number of channels from one rate to another (libsoxr, high quality). The delay of
// the filter is compensated: n samples become n * to / from.
class Resampler {
  public:
    Resampler(int from, int to, int channels);

    // The output that the input completes; the reference holds until the next call.
    const std::vector<float>& process(std::span<const float> in);
    // What is left when there is no more input.
    const std::vector<float>& finish();

  private:
    struct Deleter {
        void operator()(soxr_t s) const { soxr_delete(s); }
    };
    const std::vector<float>& convert(const float* in, std::size_t frames);

    std::unique_ptr<soxr, Deleter> soxr_;
    std::size_t channels_;
    double ratio_;
    std::vector<float> out_;
};
