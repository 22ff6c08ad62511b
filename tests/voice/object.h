// An object of the voice layer in memory of exactly the size that it may have, and signals in blocks of any length.
#pragma once

#include <gtest/gtest.h>

#include <random>
#include <span>

#include "support/guarded.h"
#include "vspsvoice.h"

namespace vsp::test {

template <class Object>
class VoiceObject {
  public:
    // Up to 8 bytes away from the other alignment.
    template <class GetSize, class... Arguments>
    explicit VoiceObject(std::size_t gap, GetSize getSize, Arguments... arguments)
        : memory_(words(getSize, arguments...), Guard::end, gap) {}

    Object* get() { return reinterpret_cast<Object*>(memory_.data()); }
    std::vector<Vsp64s> values() const { return memory_.values(); }
    void moveTo(VoiceObject& other) {
        std::copy(memory_.begin(), memory_.end(), other.memory_.begin());
        std::fill(memory_.begin(), memory_.end(), -1);
    }

  private:
    template <class GetSize, class... Arguments>
    static std::size_t words(GetSize getSize, Arguments... arguments) {
        Vsp32s bytes = 0;
        EXPECT_EQ(vspStsNoErr, getSize(arguments..., &bytes));
        EXPECT_EQ(0, bytes % 8);
        return std::size_t(bytes) / 8;
    }

    Guarded<Vsp64s> memory_;
};

// Calls take with the samples in blocks of 1 to longest, whole multiples of a unit.
template <class Take>
void inBlocks(std::span<const Vsp16s> samples, std::size_t longest, std::size_t unit, Take take) {
    std::mt19937 random(1);
    while (!samples.empty()) {
        const std::size_t count = std::min(samples.size(), unit * (1 + random() % longest));
        take(samples.first(count));
        samples = samples.subspan(count);
    }
}

}  // namespace vsp::test
