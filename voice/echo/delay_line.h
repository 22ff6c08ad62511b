// The last frames of a signal in sub-bands.
#pragma once

#include "echo/memory.h"

namespace vspv {

// Rows of one length in a ring. at(t) is the array of pointers that the library's sub-band functions take: its element 0
// is the row that is t frames old, element 1 the one before.
template <class T>
class DelayLine {
  public:
    DelayLine(int frames, int bands, Memory& memory)
        : frames_(static_cast<std::size_t>(frames)),
          values_(memory.take<T>(frames * pitch(bands))),
          rows_(memory.take<T*>(2 * frames)) {
        if (memory.measures()) return;
        for (std::size_t i = 0; i < rows_.size(); i++)
            rows_[i] = &values_[i % frames_ * static_cast<std::size_t>(pitch(bands))];
    }
    DelayLine(const DelayLine&) = delete;
    DelayLine& operator=(const DelayLine&) = delete;

    // Ages all rows by a frame and returns the row for the new one.
    T* push() {
        newest_ = (newest_ + frames_ - 1) % frames_;
        return rows_[newest_];
    }
    T* const* at(int age) const { return rows_.data() + newest_ + age; }

  private:
    // Every row begins with a cache line, so that no vector of it lies in two.
    static constexpr int kLine = 64 / sizeof(T);
    static constexpr int pitch(int bands) { return (bands + kLine - 1) / kLine * kLine; }

    std::size_t frames_, newest_ = 0;
    std::span<T> values_;
    std::span<T*> rows_;
};

}  // namespace vspv
