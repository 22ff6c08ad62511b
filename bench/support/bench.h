// Registers one benchmark per implementation and length, named function/implementation/length: the shared library as an
// application calls it, each instruction-set level called directly, a scalar definition and a loop tuned by hand.
#pragma once

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "core/api.h"

namespace bench {

struct Implementation {
    const char* name;
    const vsp::Api* api;  // functions that an implementation does not have are null
};

// Those that this processor can run.
std::vector<Implementation> implementations();

inline const std::vector<int> kFrameLengths = {40, 80, 240, 1024};

// An array at the start of a cache line with a free line after it, so that no masked or wide access of a neighbour meets
// it.
template <class T>
class Aligned {
  public:
    explicit Aligned(int len) : storage_(len + 2 * kLine), data_(storage_.data()) {
        while (reinterpret_cast<unsigned long>(data_) % kLine != 0) data_++;
    }
    Aligned(const Aligned&) = delete;
    Aligned& operator=(const Aligned&) = delete;
    T* data() { return data_; }
    T& operator[](int i) { return data_[i]; }

  private:
    static constexpr int kLine = 64;
    std::vector<T> storage_;
    T* data_;
};

// Inputs and outputs of a call, filled with noise.
struct Buffers {
    explicit Buffers(int len);
    Aligned<Vsp16s> a, b, dst;
    Aligned<Vsp32s> words;

    // One of several arrays in turn, so that a call in place does not wait for the stores of the call before.
    Vsp16s* inPlace() { return ring_.data() + (turn_++ % kRing) * stride_; }

  private:
    static constexpr unsigned kRing = 16;
    unsigned turn_ = 0;
    int stride_;
    Aligned<Vsp16s> ring_;
};

// Call is called as call(function, buffers, len).
template <class Function, class Call>
bool add(const std::string& name, Function vsp::Api::*member, const std::vector<int>& lengths, Call call) {
    for (const Implementation& implementation : implementations()) {
        const Function function = implementation.api->*member;
        if (function == nullptr) continue;
        for (const int len : lengths) {
            const std::string full = name + "/" + implementation.name + "/" + std::to_string(len);
            benchmark::RegisterBenchmark(full.c_str(), [=](benchmark::State& state) {
                Buffers buffers(len);
                for (auto _ : state) {
                    call(function, buffers, len);
                    benchmark::ClobberMemory();
                }
            });
        }
    }
    return true;
}

}  // namespace bench
