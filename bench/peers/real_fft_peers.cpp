// The real transforms in single precision against FFTW, which measures before it plans.
#include <fftw3.h>

#include "vector/real_fft_bench.h"

namespace {

enum class Direction { forward, inverse };

void fftw(benchmark::State& state, int len, Direction direction) {
    float* samples = fftwf_alloc_real(std::size_t(len));
    fftwf_complex* bins = fftwf_alloc_complex(std::size_t(len) / 2 + 1);
    const fftwf_plan plan = direction == Direction::forward ? fftwf_plan_dft_r2c_1d(len, samples, bins, FFTW_MEASURE)
                                                            : fftwf_plan_dft_c2r_1d(len, bins, samples, FFTW_MEASURE);
    std::fill(samples, samples + len, 1.0f);
    for (int k = 0; k <= len / 2; k++) bins[k][0] = bins[k][1] = 0;  // a long inverse one overwrites its input
    for (auto _ : state) {
        fftwf_execute(plan);
        benchmark::ClobberMemory();
    }
    fftwf_destroy_plan(plan);
    fftwf_free(samples);
    fftwf_free(bins);
}

const bool registered = [] {
    using namespace vsp::test;
    bench::addBestRealFft<SinglePrecision_y8, SinglePrecision_v3, SinglePrecision_v4>("_32f");
    for (const int len : bench::kFftLengths) {
        const std::string end = "_32f/fftw/" + std::to_string(len);
        benchmark::RegisterBenchmark(("realFftForward" + end).c_str(), fftw, len, Direction::forward);
        benchmark::RegisterBenchmark(("realFftInverse" + end).c_str(), fftw, len, Direction::inverse);
    }
    return true;
}();

}  // namespace
