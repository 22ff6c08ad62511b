#include <cmath>
#include <numbers>

#include "vector/real_fft_bench.h"
#include "vector/scalar_real_fft.h"

namespace {

void scalar(benchmark::State& state, int len) {
    bench::RealFft<vsp::test::SinglePrecision_y8> fft(len);
    int order = 0;
    while (1 << order < len) order++;
    std::vector<float> factors, work(static_cast<std::size_t>(len));
    for (int k = 0; k < len / 2; k++) {
        factors.push_back(float(std::cos(2 * std::numbers::pi * k / len)));
        factors.push_back(float(-std::sin(2 * std::numbers::pi * k / len)));
    }
    for (auto _ : state) {
        bench::scalarRealFft(fft.samples.data(), &fft.bins.data()->re, order, factors.data(), work.data());
        benchmark::ClobberMemory();
    }
}

const bool registered = [] {
    using namespace vsp::test;
    const vsp::Level level = vsp::bestLevel(vsp::readCpuRegisters());
    bench::addBestRealFft<SinglePrecision_y8, SinglePrecision_v3, SinglePrecision_v4>("_32f");
    bench::addBestRealFft<FixedPoint_y8, FixedPoint_v3, FixedPoint_v4>("_16s");
    bench::addRealFft<SinglePrecision_y8>("y8", "_32f");
    bench::addRealFft<FixedPoint_y8>("y8", "_16s");
    if (level >= vsp::Level::v3) {
        bench::addRealFft<SinglePrecision_v3>("v3", "_32f");
        bench::addRealFft<FixedPoint_v3>("v3", "_16s");
    }
    for (const int len : bench::kFftLengths)
        benchmark::RegisterBenchmark(("realFftForward_32f/scalar/" + std::to_string(len)).c_str(), scalar, len);
    return true;
}();

}  // namespace
