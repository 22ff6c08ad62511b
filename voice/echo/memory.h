// The caller's memory, dealt out piece by piece. An object takes its parts in its constructor; without memory to deal out,
// the same constructor tells how much it would take.
#pragma once

#include <string.h>

#include <cstdint>
#include <span>

#include "vspsc/types.h"

namespace vspv {

class Memory {
  public:
    // Only measures.
    Memory() = default;
    // begin: aligned to kPromised bytes.
    explicit Memory(void* begin) : begin_(static_cast<Vsp8u*>(begin)) {
        begin_ += (kAligned - reinterpret_cast<std::uintptr_t>(begin) % kAligned) % kAligned;
    }

    // Nothing that is taken may be touched.
    bool measures() const { return begin_ == nullptr; }

    // All zero.
    template <class T>
    std::span<T> take(int count) {
        // NOLINTNEXTLINE(bugprone-sizeof-expression): some are arrays of pointers
        const std::size_t bytes = static_cast<std::size_t>(count) * sizeof(T), at = used_;
        used_ += (bytes + kAligned - 1) / kAligned * kAligned;
        if (measures()) return {static_cast<T*>(nullptr), static_cast<std::size_t>(count)};
        memset(begin_ + at, 0, bytes);
        return {reinterpret_cast<T*>(begin_ + at), static_cast<std::size_t>(count)};
    }

    // Wherever the memory begins.
    Vsp32s size() const { return static_cast<Vsp32s>(used_ + kAligned - kPromised); }

  private:
    static constexpr std::size_t kPromised = 8, kAligned = 64;

    Vsp8u* begin_ = nullptr;
    std::size_t used_ = 0;
};

}  // namespace vspv
