// A real transform of one kind and order with its memory and signals.
#pragma once

#include <random>
#include <string>
#include <vector>

#include "support/bench.h"
#include "vector/real_fft_levels.h"

namespace bench {

inline const std::vector<int> kFftLengths = {32, 64, 128, 256, 512, 1024, 8192, 32768};

template <class Kind>
struct RealFft {
    explicit RealFft(int len) : samples(len), bins(len / 2 + 1), memory(0), work(0) {
        int order = 0;
        while (1 << order < len) order++;
        Vsp32s specSize = 0, initSize = 0, workSize = 0;
        Kind::getSize(order, &specSize, &initSize, &workSize);
        memory.resize(std::size_t(specSize));
        work.resize(std::size_t(workSize));
        std::vector<Vsp8u> init(static_cast<std::size_t>(initSize));
        Kind::init(&spec, order, memory.data(), init.data());
        std::mt19937 random(1);
        for (int i = 0; i < len; i++) samples[i] = typename Kind::Sample(int(random() % 16384) - 8192);
        forward();
    }
    void forward() { Kind::forward(samples.data(), bins.data(), spec, 0, work.data()); }
    void inverse() { Kind::inverse(bins.data(), samples.data(), spec, 0, work.data()); }

    Aligned<typename Kind::Sample> samples;
    Aligned<typename Kind::Bin> bins;
    std::vector<Vsp8u> memory, work;
    const typename Kind::Spec* spec = nullptr;
};

// Registers both directions of one kind.
template <class Kind>
void addRealFft(const std::string& implementation, const std::string& type) {
    for (const int len : kFftLengths) {
        const auto name = [&](const char* direction) {
            return "realFft" + std::string(direction) + type + "/" + implementation + "/" + std::to_string(len);
        };
        benchmark::RegisterBenchmark(name("Forward").c_str(), [len](benchmark::State& state) {
            RealFft<Kind> fft(len);
            for (auto _ : state) {
                fft.forward();
                benchmark::ClobberMemory();
            }
        });
        benchmark::RegisterBenchmark(name("Inverse").c_str(), [len](benchmark::State& state) {
            RealFft<Kind> fft(len);
            for (auto _ : state) {
                fft.inverse();
                benchmark::ClobberMemory();
            }
        });
    }
}

// The level that the shared library takes is called library.
template <class Y8, class V3, class V4>
void addBestRealFft(const std::string& type) {
    const vsp::Level level = vsp::bestLevel(vsp::readCpuRegisters());
    if (level == vsp::Level::v4)
        addRealFft<V4>("library", type);
    else if (level == vsp::Level::v3)
        addRealFft<V3>("library", type);
    else
        addRealFft<Y8>("library", type);
}

}  // namespace bench
