// An echo canceller of the voice layer together with its memory.
#pragma once

#include <span>
#include <stdexcept>
#include <vector>

#include "vspsvoice.h"

class OwnedCanceller {
  public:
    explicit OwnedCanceller(const VspvEchoSettings& settings) {
        Vsp32s bytes = 0;
        if (vspvEchoCancellerGetSize(&settings, &bytes) != vspStsNoErr) throw std::invalid_argument("echo canceller");
        memory_.resize((std::size_t(bytes) + sizeof(Vsp64s) - 1) / sizeof(Vsp64s));
        vspvEchoCancellerInit(get(), &settings);
    }

    // Blocks of one length.
    void process(std::span<const Vsp16s> far, std::span<const Vsp16s> near, std::span<Vsp16s> out) {
        vspvEchoCancellerProcess_16s(get(), far.data(), near.data(), out.data(), Vsp32s(out.size()));
    }
    void process(std::span<const float> far, std::span<const float> near, std::span<float> out) {
        vspvEchoCancellerProcess_32f(get(), far.data(), near.data(), out.data(), Vsp32s(out.size()));
    }

    std::size_t latency() const {
        Vsp32s samples = 0;
        vspvEchoCancellerLatency(get(), &samples);
        return std::size_t(samples);
    }
    VspvEchoStatus status() const {
        VspvEchoStatus status{};
        vspvEchoCancellerStatus(get(), &status);
        return status;
    }

  private:
    VspvEchoCanceller* get() { return reinterpret_cast<VspvEchoCanceller*>(memory_.data()); }
    const VspvEchoCanceller* get() const { return reinterpret_cast<const VspvEchoCanceller*>(memory_.data()); }

    std::vector<Vsp64s> memory_;
};

// The usual configuration.
inline VspvEchoSettings echoSettings(int rate) {
    VspvEchoSettings settings{};
    vspvEchoCancellerDefaults(rate, &settings);
    return settings;
}

inline VspvEchoSettings withoutSuppression(VspvEchoSettings settings) {
    settings.suppression = 0;
    return settings;
}
