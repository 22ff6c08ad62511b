// An echo canceller through the voice layer, in memory of exactly the size that it may have.
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "support/guarded.h"
#include "vspsvoice.h"

namespace vsp::test {

using Signal = std::vector<float>;

// The usual one with another tail.
inline VspvEchoSettings echoSettings(Vsp32s engine, Vsp32s arithmetic, double tailMs = 32, Vsp32s rate = 8000) {
    VspvEchoSettings settings{};
    EXPECT_EQ(vspStsNoErr, vspvEchoCancellerDefaults(rate, &settings));
    settings.engine = engine;
    settings.arithmetic = arithmetic;
    settings.tailMs = tailMs;
    return settings;
}

class Canceller {
  public:
    explicit Canceller(const VspvEchoSettings& settings) : memory_(words(settings)) {
        EXPECT_EQ(vspStsNoErr, vspvEchoCancellerInit(get(), &settings));
    }
    VspvEchoCanceller* get() { return reinterpret_cast<VspvEchoCanceller*>(memory_.data()); }
    const Guarded<Vsp64s>& memory() const { return memory_; }

    std::size_t latency() {
        Vsp32s samples = 0;
        EXPECT_EQ(vspStsNoErr, vspvEchoCancellerLatency(get(), &samples));
        return std::size_t(samples);
    }
    VspvEchoStatus status() {
        VspvEchoStatus status{};
        EXPECT_EQ(vspStsNoErr, vspvEchoCancellerStatus(get(), &status));
        return status;
    }
    void process(const float* far, const float* near, float* out, std::size_t count) {
        ASSERT_EQ(vspStsNoErr, vspvEchoCancellerProcess_32f(get(), far, near, out, Vsp32s(count)));
    }
    Signal process(const Signal& far, const Signal& near) {
        Signal out(near.size());
        process(far.data(), near.data(), out.data(), out.size());
        return out;
    }

  private:
    static std::size_t words(const VspvEchoSettings& settings) {
        Vsp32s bytes = 0;
        EXPECT_EQ(vspStsNoErr, vspvEchoCancellerGetSize(&settings, &bytes));
        EXPECT_EQ(0, bytes % 8);
        return std::size_t(bytes) / 8;
    }

    Guarded<Vsp64s> memory_;
};

}  // namespace vsp::test
