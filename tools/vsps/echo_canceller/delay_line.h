// The last frames of a signal in sub-bands.
#pragma once

#include <cstddef>
#include <vector>

// Rows of one length in a ring. at(t) is the array of pointers that the library's sub-band functions take: its element 0
// is the row that is t frames old, element 1 the one before.
template <class T>
class DelayLine {
  public:
    DelayLine(int frames, int bands)
        : frames_(static_cast<std::size_t>(frames)),
          bands_(static_cast<std::size_t>(bands)),
          values_(frames_ * bands_),
          rows_(2 * frames_) {
        for (std::size_t i = 0; i < rows_.size(); i++) rows_[i] = values_.data() + i % frames_ * bands_;
    }
    DelayLine(const DelayLine&) = delete;
    DelayLine& operator=(const DelayLine&) = delete;

    // Ages all rows by a frame and returns the row for the new one.
    T* push() {
        newest_ = (newest_ + frames_ - 1) % frames_;
        return rows_[newest_];
    }
    T* const* at(int age) const { return rows_.data() + newest_ + age; }
    int frames() const { return static_cast<int>(frames_); }

  private:
    std::size_t frames_, bands_, newest_ = 0;
    std::vector<T> values_;
    std::vector<T*> rows_;
};
